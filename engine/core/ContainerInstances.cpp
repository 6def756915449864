// ContainerAnchor: the instances that a container object handed out, and, of one that is an
// instance itself, whose it is and under which key. Laws 2 to 4 of ContainerBody.h. One thread at a
// time.
#include <array>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "engine/core/ContainerBody.h"

namespace engine {

struct ContainerInstance;
using InstanceTable = std::unordered_map<host::LONG, ContainerInstance>;

struct ContainerAnchor {
  host::BaseContainer* self = nullptr;
  ContainerAnchor* owner = nullptr;  // null: `self` owns its body
  host::LONG key = 0;                // of the owner's entry
  std::unique_ptr<InstanceTable> instances;

  explicit ContainerAnchor(host::BaseContainer* container) : self(container) {}
  ContainerAnchor(const ContainerAnchor&) = delete;
  ContainerAnchor& operator=(const ContainerAnchor&) = delete;
  ~ContainerAnchor();
};

struct ContainerInstance {
  host::BaseContainer container;  // borrows its body
  ContainerAnchor anchor{&container};

  ContainerInstance();
  ContainerInstance(const ContainerInstance&) = delete;
  ContainerInstance& operator=(const ContainerInstance&) = delete;
  ~ContainerInstance();
};

namespace {

using Tables = std::vector<std::unique_ptr<InstanceTable>>;

void TakeTables(InstanceTable& table, Tables& tables) {
  for (auto& [key, instance] : table) {
    if (instance.anchor.instances) tables.push_back(std::move(instance.anchor.instances));
  }
}

// Instances of instances may be nested at any depth: level by level, not by recursion.
void EndTable(std::unique_ptr<InstanceTable> first) {
  Tables tables;
  if (first) tables.push_back(std::move(first));
  while (!tables.empty()) {
    const std::unique_ptr<InstanceTable> table = std::move(tables.back());
    tables.pop_back();
    TakeTables(*table, tables);
  }
}

ContainerAnchor* AnchorOf(host::BaseContainer& container) {
  return ContainerAccess::Anchor(container);
}

ContainerAnchor* OwnerOf(host::BaseContainer& container) {
  const ContainerAnchor* anchor = AnchorOf(container);
  return anchor ? anchor->owner : nullptr;
}

// Where the owner of an instance, whose chain has been made writable, keeps its body.
std::uint64_t& OwnersBits(const ContainerAnchor& anchor) {
  return ContainerBits(*ContainerAccess::Body(*anchor.owner->self), anchor.key);
}

void MakeInstanceUnique(const ContainerAnchor& anchor) {
  std::uint64_t& bits = OwnersBits(anchor);
  ContainerBody* body = MakeUnique(BlockOf<ContainerBody>(bits));
  bits = BitsOf(body);
  ContainerAccess::BodySlot(*anchor.self) = body;
}

}  // namespace

ContainerAnchor::~ContainerAnchor() { EndTable(std::move(instances)); }

ContainerInstance::ContainerInstance() { ContainerAccess::Anchor(container) = &anchor; }

ContainerInstance::~ContainerInstance() {
  ContainerAccess::BodySlot(container) = nullptr;
  ContainerAccess::Anchor(container) = nullptr;
}

void ContainerAccess::PrepareAnchored(host::BaseContainer& container) {
  ContainerAnchor* top = container.anchor_;
  std::size_t depth = 0;
  for (; top->owner; top = top->owner) ++depth;
  BodySlot(*top->self) = MakeUnique(BodySlot(*top->self));
  std::array<ContainerAnchor*, 8> few;
  std::vector<ContainerAnchor*> many(depth > few.size() ? depth : 0);
  ContainerAnchor** const chain = many.empty() ? few.data() : many.data();
  std::size_t i = 0;
  for (ContainerAnchor* anchor = container.anchor_; anchor->owner; anchor = anchor->owner)
    chain[i++] = anchor;
  while (i > 0) MakeInstanceUnique(*chain[--i]);
}

bool ContainerAccess::IsInstance(host::BaseContainer& container) {
  return OwnerOf(container) != nullptr;
}

void ContainerAccess::TellOwner(host::BaseContainer& container, ContainerBody* body) {
  if (OwnerOf(container)) OwnersBits(*container.anchor_) = BitsOf(body);
}

void ContainerAccess::Replace(host::BaseContainer& container, ContainerBody* body) {
  ContainerAnchor* owner = OwnerOf(container);
  ContainerBody* before = container.body_;
  if (owner) {
    PrepareWrite(*owner->self);
    std::uint64_t& bits = OwnersBits(*container.anchor_);
    before = BlockOf<ContainerBody>(std::exchange(bits, BitsOf(body)));
  }
  container.body_ = body;
  ReleaseBody(before);
}

host::BaseContainer* ContainerAccess::Instance(host::BaseContainer& container, host::LONG key) {
  const std::optional<Entry> entry = FindEntry(container.body_, key);
  if (!entry || entry->type != host::DA_CONTAINER) return nullptr;
  if (!container.anchor_) container.anchor_ = new ContainerAnchor(&container);
  ContainerAnchor& anchor = *container.anchor_;
  if (!anchor.instances) anchor.instances = std::make_unique<InstanceTable>();
  const auto [place, isNew] = anchor.instances->try_emplace(key);
  ContainerInstance& instance = place->second;
  if (isNew) {
    instance.anchor.owner = &anchor;
    instance.anchor.key = key;
    instance.container.body_ = BlockOf<ContainerBody>(entry->bits);
  }
  return &instance.container;
}

void ContainerAccess::DropInstances(host::BaseContainer& container) {
  if (container.anchor_) EndTable(std::move(container.anchor_->instances));
}

void ContainerAccess::DropAnchored(host::BaseContainer& container, host::LONG key) {
  if (!container.anchor_->instances) return;
  const auto found = container.anchor_->instances->find(key);
  if (found == container.anchor_->instances->end()) return;
  EndTable(std::move(found->second.anchor.instances));
  container.anchor_->instances->erase(found);
}

void ContainerAccess::Destroy(host::BaseContainer& container) {
  delete container.anchor_;
  ReleaseBody(container.body_);
}

void ContainerAccess::Take(host::BaseContainer& container, host::BaseContainer& from) {
  if (OwnerOf(from)) {
    RetainBody(from.body_);
    container.body_ = from.body_;
    return;
  }
  container.body_ = std::exchange(from.body_, nullptr);
  container.anchor_ = std::exchange(from.anchor_, nullptr);
  if (container.anchor_) container.anchor_->self = &container;
}

}  // namespace engine
