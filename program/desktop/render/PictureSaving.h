// PictureSaving: writes a picture as a TIFF or PNG file, told by the suffix. The bytes are made by
// a background job, since that takes seconds for a large one; the file is written whole or not
// at all. Main thread.
#pragma once

#include <QWidget>
#include <functional>
#include <memory>
#include <string>

#include "engine/outside/Services.h"
#include "engine/render/Image.h"

namespace desktop {

// Asks where to; nothing when canceled. `proposal`: a path or a name.
std::optional<std::string> AskForPicture(QWidget* parent, const std::string& title,
                                         const std::string& proposal);

// Calls `written` on the main thread; what went wrong stands in the status. The file is written
// also when `owner` is gone by then or the program ends; then the person is told what went wrong.
void SavePicture(QObject* owner, const engine::Services& services,
                 std::shared_ptr<const engine::Image> picture, const std::string& path,
                 std::function<void(const engine::Status&)> written);

}  // namespace desktop
