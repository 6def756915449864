#include "engine/scenefile/Trash.h"

#include "engine/scene/NewNodes.h"
#include "engine/scenefile/Bytes.h"
#include "engine/scenefile/SceneFile.h"

namespace engine {
namespace {

constexpr std::uint64_t kDeleted = 1;
constexpr std::uint64_t kOverwritten = 2;
// Name, two dates, reason and scene take a byte each at least.
constexpr std::size_t kLeastBytes = 5;

// Each is packed once, however often it is saved. The lock, because documents are also written
// beside the person's work, from copies that share the list.
const std::string& PackedBytes(const PackedScene& packed) {
  const std::lock_guard held(packed.lock);
  if (!packed.bytes.empty()) return packed.bytes;
  const Result<std::vector<std::string>> pieces = WriteScene(*packed.scene);
  if (!pieces) throw Damage{pieces.Message()};
  std::string bytes;
  for (const std::string& piece : pieces.Value()) bytes += piece;
  return packed.bytes = std::move(bytes);
}

void PutBytes(std::string& out, std::string_view bytes) {
  PutVarint(out, bytes.size());
  out += bytes;
}

std::string TakeText(Cursor& in) { return host::String(in.Take(in.Varint())).ToUtf8(); }

}  // namespace

std::string TrashContents(const DeletedStates& states) {
  std::string out;
  PutVarint(out, states.size());
  for (const DeletedState& state : states) {
    PutBytes(out, state.name);
    PutBytes(out, state.recorded);
    PutBytes(out, state.deleted);
    PutVarint(out, state.overwritten ? kOverwritten : kDeleted);
    PutBytes(out, PackedBytes(*state.packed));
  }
  return out;
}

SharedDeletedStates ReadTrash(std::string_view contents, Budget& budget) {
  Cursor in(contents, kTrashSection, budget);
  const std::uint64_t count = in.Varint();
  if (count > in.Left() / kLeastBytes) in.Refuse("it is too short for what it counts");
  budget.Charge(count, sizeof(DeletedState) + sizeof(PackedScene));
  budget.Charge(in.Left());
  auto states = std::make_shared<DeletedStates>();
  for (std::uint64_t i = 0; i < count; ++i) {
    DeletedState state;
    state.name = TakeText(in);
    state.recorded = TakeText(in);
    state.deleted = TakeText(in);
    const std::uint64_t reason = in.Varint();
    if (reason != kDeleted && reason != kOverwritten) in.Refuse("a reason is unknown");
    state.overwritten = reason == kOverwritten;
    auto packed = std::make_shared<PackedScene>();
    packed->bytes = in.Take(in.Varint());
    if (packed->bytes.empty()) in.Refuse("a Stagemark in it is empty");
    state.packed = std::move(packed);
    states->push_back(std::move(state));
  }
  in.End();
  return states;
}

Result<OwnedDocument> Unpack(const PackedScene& packed) {
  const std::lock_guard held(packed.lock);
  // A copy, since undo may put the deleted one back into the trash.
  return packed.scene ? Result<OwnedDocument>(CopyOf(*packed.scene)) : ReadScene(packed.bytes);
}

void KeepPackedOnly(const DeletedStates& states) {
  for (const DeletedState& state : states) {
    const std::lock_guard held(state.packed->lock);
    if (!state.packed->bytes.empty()) state.packed->scene.reset();
  }
}

}  // namespace engine
