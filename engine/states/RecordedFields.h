// RecordedFields: what a record says of an element, and what the scene says of it now, as fields
// with their values, so that both can be laid side by side. Fields have the numbers that
// engine/editing/Field.h gives them. Main thread.
#pragma once

#include <optional>
#include <vector>

#include "engine/core/ContainerBody.h"
#include "engine/editing/Field.h"
#include "engine/states/RecordedParts.h"
#include "host/BaseDocument.h"
#include "host/RenderData.h"

namespace engine {

struct FieldNow {
  host::LONG field;
  host::GeData value;
};
using Fields = std::vector<FieldNow>;

// Beside the fields of editing/Field.h: the effects and passes of render settings, each as a text
// with all its values: -100, -101, ...
inline constexpr host::LONG kFieldEffects = -100;

// Fields of a record: an object's modes, a layer's flags, a tag's parameters. Values that apply
// alike read alike: a mode outside the three there are is undefined, a flag is 0 or 1, a link to a
// material that is gone is a null link. None for a record that is null.
Fields FieldsOfRecord(const host::BaseDocument& doc, Part part, const ContainerBody* record);
// Those fields of the element in the scene, which must be of the kind that the part is about.
Fields FieldsInScene(const host::BaseDocument& doc, Part part, const host::BaseList2D& element);
// All parameters, and all effects and passes. The name is not among them: loading keeps it.
Fields FieldsOfSettings(const host::RenderData& settings);

// Whether applying the record would leave the element as it is. Where not `everyEntry`, a parameter
// of a compositing tag that is not there counts as 0, and a tag's link to itself, which loading
// puts into some, counts nothing.
class SceneComparison {
 public:
  SceneComparison(const host::BaseDocument& doc, bool everyEntry)
      : doc_(doc), everyEntry_(everyEntry) {}
  bool IsAsRecorded(Part part, const host::BaseList2D& element, const ContainerBody* record);

 private:
  bool IsCompositingAsRecorded(const host::BaseList2D& tag, const ContainerBody* record);

  const host::BaseDocument& doc_;
  bool everyEntry_;
  // The compositing tag met last and what came out, for many that are alike.
  host::BaseContainer likeData_;
  const ContainerBody* likeRecord_ = nullptr;
  bool likeResult_ = false;
};

// The fields in which two lists differ, in the order of the first, then of the second. With
// `nothingIsZero` a missing one equals a number 0.
struct FieldChange {
  host::LONG field;
  std::optional<host::GeData> left;  // nothing where that side says nothing
  std::optional<host::GeData> right;
};
std::vector<FieldChange> FieldsThatDiffer(const Fields& left, const Fields& right,
                                          bool nothingIsZero = false);

}  // namespace engine
