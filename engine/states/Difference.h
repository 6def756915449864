// Difference: in what two Stagemarks differ, or the scene from a Stagemark, which is what loading
// it would change. Computed from the records; what two of them share is not looked at, nothing is
// loaded. It knows elements by identity; FieldText.h gives them names. Main thread.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "engine/states/RecordedFields.h"
#include "engine/states/StoredStates.h"

namespace engine {

enum class ChangeKind : std::uint8_t { Changed, OnlyLeft, OnlyRight };

struct ElementChange {
  Part part;
  ChangeKind kind;
  // Object, tag or layer; of the render settings those of the left side (else of the right), of the
  // camera 0, because it is a fact of the scene.
  NodeId element;
  // `element` in the document of the right side.
  NodeId counterpart;
  // Empty for an element beyond CompareOptions::mostFields. Of one that only one side has: all that
  // it says of it.
  std::vector<FieldChange> fields;
};

struct PartCount {
  std::size_t changed = 0;
  std::size_t onlyLeft = 0;
  std::size_t onlyRight = 0;

  std::size_t Sum() const { return changed + onlyLeft + onlyRight; }
};

struct Difference {
  // By part; within a part first the elements of the left side, in its order.
  std::vector<ElementChange> changes;
  std::array<PartCount, kParts> counts{};
  // Records of elements that are in the scene no more, which apply to nothing: as far as the right
  // side was gone through as a whole, which a comparison of two Stagemarks does not do.
  std::size_t gone = 0;
  // Parts of which a side says anything; the scene does of all. Of two Stagemarks with tags all
  // parts of tags count as held.
  Parts heldLeft;
  Parts heldRight;

  bool IsEmpty() const { return changes.empty(); }
  const PartCount& Of(Part part) const { return counts[IndexOf(part)]; }
};

struct CompareOptions {
  Parts parts = AllParts();
  // Most elements of each part and kind of change whose fields are told, whichever these are; of
  // the others, only that they differ.
  std::size_t mostFields = SIZE_MAX;
  // In CompareWithScene: elements that the state says nothing of, in parts that it holds, count as
  // only in the scene.
  bool unknown = true;
  // In CompareWithScene: also values that mean nothing (see SceneComparison), as loading would
  // write them.
  bool everyEntry = false;
};

// Two Stagemarks of one document, or of two: there elements are the same when they have the same
// identity, type and name, else when they have the same path.
Difference CompareStates(const host::BaseDocument& doc, const host::BaseContainer& left,
                         const host::BaseContainer& right, const CompareOptions& options = {});
Difference CompareStates(const host::BaseDocument& leftDoc, const host::BaseContainer& left,
                         const host::BaseDocument& rightDoc, const host::BaseContainer& right,
                         const CompareOptions& options = {});

// The scene as it is on the left, as loading the record would make it on the right. The changes of
// kind Changed are exactly what loading with these parts changes.
Difference CompareWithScene(const host::BaseDocument& doc, const host::BaseContainer& record,
                            const CompareOptions& options = {});

// The comparisons above in steps, so that a window stays alive meanwhile. The document must neither
// change nor go between the steps; the records are shared.
class StepwiseComparison {
 public:
  StepwiseComparison(const host::BaseDocument& doc, const host::BaseContainer& record,
                     const CompareOptions& options = {});
  // Two Stagemarks of one document.
  StepwiseComparison(const host::BaseDocument& doc, const host::BaseContainer& left,
                     const host::BaseContainer& right, const CompareOptions& options = {});
  StepwiseComparison(const StepwiseComparison&) = delete;
  StepwiseComparison& operator=(const StepwiseComparison&) = delete;
  ~StepwiseComparison();

  // Looks at about so many more elements; false when all is done.
  bool Advance(std::size_t elements);
  // Whether any difference has been found yet.
  bool HasFound() const;
  // To be called once, after the last step.
  Difference Take();

 private:
  struct Walk;
  std::unique_ptr<Walk> walk_;
};

// Fills in the fields of some of the changes (indices) that CompareWithScene with these options has
// found without them.
void TellFields(const host::BaseDocument& doc, const host::BaseContainer& record,
                const CompareOptions& options, Difference& toScene,
                const std::vector<std::size_t>& changes);

// The difference with left and right exchanged.
Difference Mirrored(Difference difference);

// Values that loading would change and no Stagemark of the document could bring back: indices of
// `toScene.changes`, which came from CompareWithScene. LostSearch.h does it in steps.
std::vector<std::size_t> FindLost(const host::BaseDocument& doc,
                                  const std::vector<StoredState>& states,
                                  const Difference& toScene);

// All that a record says, as a difference from nothing: every change is of kind OnlyRight, each
// element once.
Difference ContentsOf(const host::BaseDocument& doc, const host::BaseContainer& record,
                      const CompareOptions& options = {});

}  // namespace engine
