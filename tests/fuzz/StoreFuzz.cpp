// The stores of a document as no plug-in wrote them, before the loaded plug-in: an input is a list
// of changes to the containers of a scene with two Stagemarks. Whatever they hold then, the dialog
// lists, loads, renames, records, updates and deletes without a crash, one step takes a load back,
// and the scene can be saved and opened.
#include <cstdint>
#include <stdexcept>

#include "engine/scenefile/SceneFile.h"
#include "source/Stagemarks/keys/PluginIds.h"
#include "tests/fuzz/KeptPlugin.h"
#include "tests/fuzz/Require.h"
#include "tests/support/PluginSession.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/SceneBytes.h"

namespace {

using host::BaseContainer;
using host::GeData;
using host::LONG;

using fuzz::Require;

// Takes bytes from the input, zeros behind its end.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}
  std::uint8_t Byte() {
    if (left_ == 0) return 0;
    --left_;
    return *data_++;
  }
  LONG Long() {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value = value << 8 | Byte();
    return static_cast<LONG>(value);
  }
  bool IsEmpty() const { return left_ == 0; }

 private:
  const std::uint8_t* data_;
  std::size_t left_;
};

GeData Value(Input& input, const BaseContainer& around) {
  switch (input.Byte() % 8) {
    case 0:
      return GeData(static_cast<LONG>(input.Byte()));
    case 1:
      return GeData(input.Long());
    case 2:
      return GeData(host::Real(input.Long()));
    case 3:
      return GeData(host::String("Day"));
    case 4:
      return GeData(host::String(host::LongToString(input.Long())));
    case 5:
      return GeData(around);
    case 6:
      return GeData(BaseContainer(input.Byte()));
    default:
      return GeData();
  }
}

// One change somewhere in the container: at the place that the next bytes lead to.
void Change(BaseContainer& container, Input& input) {
  const LONG count = container.GetCount();
  const std::uint8_t what = input.Byte();
  const LONG index = count > 0 ? input.Byte() % count : 0;
  const LONG key = count > 0 ? container.GetIndexId(index) : input.Byte();
  if (what < 128 && count > 0) {
    const GeData inside = container.GetIndexData(index);
    if (inside.GetType() == host::DA_CONTAINER) {
      BaseContainer changed = inside.GetContainer();
      Change(changed, input);
      container.SetData(key, GeData(changed));
      return;
    }
  }
  switch (what % 4) {
    case 0:
      container.RemoveData(key);
      break;
    case 1:
      container.SetData(input.Long(), Value(input, container));
      break;
    case 2:
      container.SetId(input.Long());
      break;
    default:
      container.SetData(key, Value(input, container));
      break;
  }
}

void Try(const std::function<void()>& act) {
  try {
    act();
  } catch (const std::runtime_error&) {
    // The row is not there, so there is nothing to press.
  }
}

void CheckFile(const host::BaseDocument& doc) {
  Require(engine::ReadScene(tests::Bytes(doc)).Ok());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  tests::PluginSession session;
  session.Person().AnswerOthers(true);
  tests::SceneBuilder(session.Doc()).Cube("Room/Box").Camera("Front").Layer("Props");
  session.Record("Day");
  session.Record("Night");
  Input input(data, size);
  while (!input.IsEmpty()) {
    BaseContainer* all = session.Doc().GetDataInstance();
    const LONG store = input.Byte() % 2 ? stagemarks::kListStore : stagemarks::kRecordStore;
    BaseContainer changed = all->GetContainer(store);
    Change(changed, input);
    all->SetContainer(store, changed);
  }
  host::EventAdd();
  session.Deliver();
  (void)session.Rows();
  Try([&] { session.Load("Day"); });
  Try([&] { session.Undo(); });
  Try([&] { session.Rename("Night", "Noon"); });
  Try([&] { session.Record("Day"); });
  Try([&] { session.Delete("Noon"); });
  CheckFile(session.Doc());
  return 0;
}
