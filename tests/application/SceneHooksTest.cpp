// Scene hooks: in which order they hear of what, and when each of them lives.
#include "engine/application/SceneHooks.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "engine/scene/Ownership.h"

namespace {

using engine::SceneHooks;
using host::BaseDocument;
using host::GeListNode;
using host::LONG;

std::string heard;
std::function<void()> onMessage;

std::string Take() { return std::exchange(heard, ""); }

// Takes messages of its own number and says what it hears.
template <LONG kNumber>
class Hook : public host::SceneHookData {
 public:
  static host::SceneHookData* Alloc() { return new Hook; }
  ~Hook() override { heard += "~" + std::to_string(kNumber) + " "; }
  host::Bool Init(GeListNode*) override {
    heard += "+" + std::to_string(kNumber) + " ";
    return kNumber != 9;  // which refuses
  }
  void Free(GeListNode*) override { heard += "-" + std::to_string(kNumber) + " "; }
  host::Bool Message(GeListNode*, LONG type, void*) override {
    heard += std::to_string(kNumber) + ":" + std::to_string(type) + " ";
    if (onMessage) onMessage();
    return type == kNumber;
  }
};

template <LONG kNumber>
engine::RegisteredHook Registered(LONG priority) {
  return {kNumber, "Hook", 0, Hook<kNumber>::Alloc, priority};
}

TEST(SceneHooks, HearByPriorityAndThenByRegistration) {
  const engine::OwnedDocument doc(BaseDocument::Alloc());
  const engine::OwnedDocument other(BaseDocument::Alloc());
  {
    SceneHooks hooks;
    hooks.Add(Registered<1>(20));
    hooks.Add(Registered<2>(10));
    hooks.Add(Registered<9>(5));
    hooks.Attach(*doc);
    hooks.Attach(*doc);
    EXPECT_EQ(Take(), "+9 ~9 +2 +1 ") << "once, without the one that refuses";
    hooks.Add(Registered<3>(10));
    hooks.Add(Registered<4>(20));
    hooks.Add(Registered<5>(15));
    EXPECT_EQ(Take(), "+3 +4 +5 ") << "late ones for the document that is there";
    EXPECT_TRUE(hooks.Send(*doc, 5, nullptr));
    EXPECT_EQ(Take(), "2:5 3:5 5:5 1:5 4:5 ");
    EXPECT_FALSE(doc->Message(77)) << "nobody takes it";
    EXPECT_EQ(Take(), "2:77 3:77 5:77 1:77 4:77 ");
    EXPECT_FALSE(hooks.Send(*other, 5, nullptr));
    hooks.Detach(*other);
    EXPECT_EQ(Take(), "");
    hooks.Remove(3);
    EXPECT_EQ(Take(), "-3 ~3 ");
    hooks.Attach(*other);
    EXPECT_EQ(Take(), "+9 ~9 +2 +5 +1 +4 ");
    EXPECT_TRUE(other->Message(1));
    EXPECT_EQ(Take(), "2:1 5:1 1:1 4:1 ");
    hooks.Detach(*other);
    EXPECT_EQ(Take(), "-2 ~2 -5 ~5 -1 ~1 -4 ~4 ");
    EXPECT_FALSE(other->Message(1));
    EXPECT_EQ(Take(), "");
  }
  EXPECT_EQ(Take(), "-2 ~2 -5 ~5 -1 ~1 -4 ~4 ") << "those that are left";
}

TEST(SceneHooks, OneMayEndTheOthersInTheMiddle) {
  const engine::OwnedDocument doc(BaseDocument::Alloc());
  SceneHooks hooks;
  hooks.Add(Registered<1>(1));
  hooks.Add(Registered<2>(2));
  hooks.Add(Registered<3>(3));
  hooks.Attach(*doc);
  Take();
  onMessage = [&] {
    onMessage = nullptr;
    hooks.Remove(2);
  };
  EXPECT_TRUE(doc->Message(3));
  EXPECT_EQ(Take(), "1:3 -2 ~2 3:3 ");
  hooks.Detach(*doc);
  EXPECT_EQ(Take(), "-1 ~1 -3 ~3 ");
}

}  // namespace
