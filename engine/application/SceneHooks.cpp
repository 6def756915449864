#include "engine/application/SceneHooks.h"

#include <algorithm>
#include <memory>

#include "engine/scene/DocumentListener.h"

namespace engine {
namespace {

class HookListener : public DocumentListener {
 public:
  explicit HookListener(SceneHooks& hooks) : hooks_(hooks) {}
  bool Message(host::BaseDocument& doc, host::LONG type, void* data) override {
    return hooks_.Send(doc, type, data);
  }

 private:
  SceneHooks& hooks_;
};

}  // namespace

SceneHooks::~SceneHooks() {
  while (!instances_.empty()) Detach(*instances_.begin()->first);
}

void SceneHooks::Add(const RegisteredHook& hook) {
  const auto later = [](host::LONG priority, const RegisteredHook& other) {
    return priority < other.priority;
  };
  hooks_.insert(std::upper_bound(hooks_.begin(), hooks_.end(), hook.priority, later), hook);
  for (auto& [doc, instances] : instances_) Make(hook, *doc, instances);
}

void SceneHooks::Remove(host::LONG id) {
  for (auto& [doc, instances] : instances_) {
    const auto end = std::stable_partition(instances.begin(), instances.end(),
                                           [&](const Instance& i) { return i.id != id; });
    for (auto it = end; it != instances.end(); ++it) End(*it, *doc);
    instances.erase(end, instances.end());
  }
  std::erase_if(hooks_, [&](const RegisteredHook& hook) { return hook.id == id; });
}

void SceneHooks::Attach(host::BaseDocument& doc) {
  const auto [it, added] = instances_.try_emplace(&doc);
  if (!added) return;
  for (const RegisteredHook& hook : hooks_) Make(hook, doc, it->second);
  SetListener(doc, std::make_unique<HookListener>(*this));
}

void SceneHooks::Detach(host::BaseDocument& doc) {
  const auto it = instances_.find(&doc);
  if (it == instances_.end()) return;
  // Nothing reaches the hooks once their end has begun.
  SetListener(doc, nullptr);
  const Instances instances = std::move(it->second);
  instances_.erase(it);
  for (const Instance& instance : instances) End(instance, doc);
}

bool SceneHooks::Lives(host::BaseDocument& doc, const host::SceneHookData* data) const {
  const auto it = instances_.find(&doc);
  return it != instances_.end() &&
         std::any_of(it->second.begin(), it->second.end(),
                     [&](const Instance& instance) { return instance.data == data; });
}

bool SceneHooks::Send(host::BaseDocument& doc, host::LONG type, void* data) {
  const auto it = instances_.find(&doc);
  if (it == instances_.end()) return false;
  bool taken = false;
  // A hook may close the document and with it the others.
  const Instances instances = it->second;
  for (const Instance& instance : instances)
    taken |= Lives(doc, instance.data) && instance.data->Message(&doc, type, data);
  return taken;
}

void SceneHooks::Make(const RegisteredHook& hook, host::BaseDocument& doc, Instances& instances) {
  host::SceneHookData* data = hook.allocator();
  if (data == nullptr) return;
  if (!data->Init(&doc)) {
    delete data;
    return;
  }
  const auto later = [](host::LONG priority, const Instance& other) {
    return priority < other.priority;
  };
  // Where a hook comes in later, it takes its place among those that are there.
  instances.insert(std::upper_bound(instances.begin(), instances.end(), hook.priority, later),
                   {hook.id, hook.priority, data});
}

void SceneHooks::End(const Instance& instance, host::BaseDocument& doc) {
  instance.data->Free(&doc);
  delete instance.data;
}

}  // namespace engine
