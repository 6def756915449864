// SceneOrigin: the command that wrote a scene file nobody has changed since, kept in the file's
// section ORIGIN; see docs/SCENE_FILE.md. Any thread, for a document that no other thread uses.
#pragma once

#include <string>
#include <string_view>

namespace host {
class BaseDocument;
}

namespace engine {

// Sets the word that files of this document tell when it is saved from now on; empty: none.
// Opening a file forgets it.
void SetSceneOrigin(host::BaseDocument& doc, const std::string& origin);

// The origin that a scene file with these bytes tells; empty where it tells nothing, is no scene
// file or was changed since.
std::string SceneOriginOf(std::string_view bytes);

}  // namespace engine
