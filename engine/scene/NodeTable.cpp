#include "engine/scene/NodeTable.h"

#include <algorithm>
#include <random>

namespace engine {

using host::BaseList2D;

struct NodeTable::Page {
  // A dense page takes 32 KB, sixteen entries 256 bytes.
  static constexpr std::size_t kFew = 16;

  std::vector<std::pair<NodeId, BaseList2D*>> few;
  std::unique_ptr<BaseList2D*[]> slots;  // set once there were more than kFew
  std::size_t count = 0;

  auto FindFew(NodeId id) const {
    return std::find_if(few.begin(), few.end(),
                        [&](const auto& entry) { return entry.first == id; });
  }
};

NodeTable::NodeTable() = default;
NodeTable::~NodeTable() = default;

// Salted per process: a file cannot choose identities that fall into one bucket.
std::size_t NodeTable::PageHash::operator()(NodeId page) const {
  static const NodeId salt = std::random_device()() | NodeId{1} << 32;
  const NodeId mixed = (page ^ salt) * 0x9E3779B97F4A7C15u;
  return static_cast<std::size_t>(mixed ^ (mixed >> 29));
}

BaseList2D* NodeTable::FindFar(NodeId id) const {
  const auto found = pages_.find(id >> kPageBits);
  if (found == pages_.end()) return nullptr;
  const Page& page = found->second;
  if (!page.slots) {
    const auto entry = page.FindFew(id);
    return entry == page.few.end() ? nullptr : entry->second;
  }
  // Only dense pages are noted: their array stays where it is until the page goes.
  near_[found->first % kNear] = Near{found->first, page.slots.get()};
  return page.slots[id & kPageMask];
}

BaseList2D** NodeTable::MakeDense(Page& page) {
  page.slots = std::make_unique<BaseList2D*[]>(std::size_t{1} << kPageBits);
  for (const auto& [id, node] : page.few) page.slots[id & kPageMask] = node;
  page.few = {};
  return page.slots.get();
}

bool NodeTable::Add(NodeId id, BaseList2D* node) {
  if (Find(id)) return false;
  Page& page = pages_[id >> kPageBits];
  if (!page.slots && page.few.size() == Page::kFew) MakeDense(page);
  if (page.slots) {
    page.slots[id & kPageMask] = node;
  } else {
    page.few.emplace_back(id, node);
  }
  ++page.count;
  ++count_;
  return true;
}

void NodeTable::Remove(NodeId id) {
  const auto found = pages_.find(id >> kPageBits);
  if (found == pages_.end()) return;
  Page& page = found->second;
  --count_;
  if (page.slots) {
    page.slots[id & kPageMask] = nullptr;
  } else {
    page.few.erase(page.FindFew(id));
  }
  if (--page.count > 0) return;
  // The noted page must not outlive its array.
  Near& near = near_[found->first % kNear];
  if (near.page == found->first) near = Near{};
  pages_.erase(found);
}

}  // namespace engine
