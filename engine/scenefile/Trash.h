// Trash: the section of a scene file with the Stagemarks that were deleted or recorded over. Each
// is a scene file of its own, packed when it is first written and read when it is given back. Any
// thread, for scenes that nobody else changes.
#pragma once

#include <string>
#include <string_view>

#include "engine/core/Result.h"
#include "engine/scene/DeletedStates.h"
#include "engine/scenefile/Damage.h"

namespace engine {

inline constexpr const char* kTrashSection = "TRASH";

// The section's contents. Throws Damage where one cannot be packed.
std::string TrashContents(const DeletedStates& states);
// Looks into none of the packed scenes. Throws Damage.
SharedDeletedStates ReadTrash(std::string_view contents, Budget& budget);

// The scene of a deleted Stagemark as a document that the caller owns. Fails, with the reason for a
// person, where it is damaged.
Result<OwnedDocument> Unpack(const PackedScene& packed);
// Frees the documents of those that have been packed. Main thread.
void KeepPackedOnly(const DeletedStates& states);

}  // namespace engine
