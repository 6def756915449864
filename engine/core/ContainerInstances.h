// ContainerAnchor: what a container object knows about instances: those it handed out, and, if it
// is one itself, whose and under which key. Laws 2 to 4 of ContainerBody.h. One thread at a time.
#pragma once

#include <memory>
#include <unordered_map>

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

}  // namespace engine
