// SceneHooks: the registered scene hooks and their instances, one for each inserted document and
// hook. Owns the instances. Main thread.
#pragma once

#include <map>
#include <vector>

#include "host/BaseDocument.h"
#include "host/Plugins.h"

namespace engine {

struct RegisteredHook {
  host::LONG id;
  host::String name;
  host::LONG info;
  host::DataAllocator* allocator;
  host::LONG priority;
};

class SceneHooks {
 public:
  SceneHooks() = default;
  SceneHooks(const SceneHooks&) = delete;
  SceneHooks& operator=(const SceneHooks&) = delete;
  ~SceneHooks();

  // Every known document gets an instance. Hooks hear messages by priority, the smallest first,
  // then by registration.
  void Add(const RegisteredHook& hook);
  // Ends the instances of that hook everywhere.
  void Remove(host::LONG id);

  // Makes the instances of a document; one whose Init refuses is ended again and left out. `doc`
  // stands for the hook's node in all calls.
  void Attach(host::BaseDocument& doc);
  // Calls Free of each and destroys it.
  void Detach(host::BaseDocument& doc);
  // Hands a message to every instance of the document; true when one of them took it. Messages sent
  // to an attached document itself come here, too.
  bool Send(host::BaseDocument& doc, host::LONG type, void* data);

 private:
  struct Instance {
    host::LONG id;
    host::LONG priority;
    host::SceneHookData* data;
  };
  using Instances = std::vector<Instance>;

  bool Lives(host::BaseDocument& doc, const host::SceneHookData* data) const;
  static void Make(const RegisteredHook& hook, host::BaseDocument& doc, Instances& instances);
  static void End(const Instance& instance, host::BaseDocument& doc);

  std::vector<RegisteredHook> hooks_;
  std::map<host::BaseDocument*, Instances> instances_;
};

}  // namespace engine
