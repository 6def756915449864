// PictureOrders: pictures as they are asked for in the shell: the options that say which, and what
// speaks against them. What makes the pictures stands in program/rendering. Main thread.
#pragma once

#include <string>

#include "program/commandline/Arguments.h"
#include "program/commandline/Session.h"
#include "program/rendering/PictureWork.h"

namespace commandline {

using pictures::CheckPattern;
using pictures::FittedInto;
using pictures::HasPlaceholder;
using pictures::KindOfName;
using pictures::PictureFacts;
using pictures::PictureKind;
using pictures::PictureRecord;
using pictures::PictureSize;
using pictures::SafeFileName;
using pictures::SceneName;
using rendering::DurationText;
using rendering::ParsePictureSize;
using rendering::PictureEstimate;
using rendering::PictureOrder;
using rendering::PicturePlan;
using rendering::PictureTurn;
using rendering::PictureWork;
using rendering::PixelsText;
using rendering::PlannedPicture;
using rendering::SettingsHash;
using rendering::SizeText;
using rendering::StatePictures;
using rendering::WorkRules;

// Adds -o, --only, --size, --frames and --format to a verb; `pattern` gets the value of -o.
void AddPictureOrder(Verb verb, PictureOrder& order, std::string& pattern);
// Says what speaks against the pictures: textures that are missing and what `check` finds in the
// states. With --strict a warning is enough for kFailed.
int CheckPictures(Session& session, PicturePlan& plan, Report& report);

}  // namespace commandline
