#include "engine/editing/StoredStates.h"

#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "host/BaseDocument.h"
#include "host/RenderData.h"

namespace engine {

SettingsOfStates FindSettingsOfStates(const host::BaseDocument* doc) {
  SettingsOfStates found;
  const host::BaseContainer* records =
      doc ? doc->GetDataInstance()->GetContainerInstance(kStagemarksId) : nullptr;
  for (host::LONG i = 0; records && records->GetIndexId(i) != host::NOTOK; ++i) {
    const host::BaseContainer* record = records->GetContainerInstance(records->GetIndexId(i));
    const host::BaseContainer* kept =
        record ? record->GetContainerInstance(kStoredSettings) : nullptr;
    const host::RenderData* settings =
        kept ? AsRenderData(kept->GetLink(kStoredSettings, doc)) : nullptr;
    if (settings) found.emplace(IdOf(*settings), record->GetString(kStoredName).ToUtf8());
  }
  return found;
}

}  // namespace engine
