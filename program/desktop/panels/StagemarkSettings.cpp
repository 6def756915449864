#include "program/desktop/panels/StagemarkSettings.h"

#include "host/BaseDocument.h"
#include "host/RenderData.h"
#include "program/desktop/Text.h"

namespace desktop {

namespace {

// Where scenes keep it, for ever: a container of all records, in each the name and one for the
// settings with the link.
constexpr host::LONG kRecords = 1021477;
constexpr host::LONG kName = 20000;
constexpr host::LONG kSettings = 25000;
constexpr host::LONG kLink = 25000;

}  // namespace

StagemarkSettings FindStagemarkSettings(const host::BaseDocument* doc) {
  StagemarkSettings found;
  const host::BaseContainer* records =
      doc ? doc->GetDataInstance()->GetContainerInstance(kRecords) : nullptr;
  for (host::LONG i = 0; records && records->GetIndexId(i) != host::NOTOK; ++i) {
    const host::BaseContainer* record = records->GetContainerInstance(records->GetIndexId(i));
    const host::BaseContainer* kept = record ? record->GetContainerInstance(kSettings) : nullptr;
    const host::RenderData* settings =
        kept ? engine::AsRenderData(kept->GetLink(kLink, doc)) : nullptr;
    if (settings) found.emplace(engine::IdOf(*settings), ToQt(record->GetString(kName)));
  }
  return found;
}

}  // namespace desktop
