// JointCopy: copies of several elements with all below each, whose links among each other lead to
// the copies. Made one by one, so that copying very many can pause or stop in between. It owns
// what it has copied until that is taken. Main thread.
#pragma once

#include <memory>
#include <vector>

#include "host/BaseList2D.h"

namespace engine {

class JointCopy {
 public:
  JointCopy();
  JointCopy(const JointCopy&) = delete;
  JointCopy& operator=(const JointCopy&) = delete;
  // Destroys the copies that nobody took.
  ~JointCopy();

  // The copy is in no place.
  void Add(const host::BaseList2D& element);
  // Lets the links of a copy lead to the others, once all are there; by the order of adding.
  void FollowLinks(std::size_t number);
  // Hands a copy over to the caller; once for each.
  host::BaseList2D* Take(std::size_t number);

 private:
  struct Ids;
  std::unique_ptr<Ids> ids_;
  std::vector<host::BaseList2D*> copies_;
};

}  // namespace engine
