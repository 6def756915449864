// Stagemarks as text, taken into a scene. What is refused changes nothing and says why; what is
// taken in leaves a scene that can be saved, opened and written as text again.
#include <cstdint>

#include "engine/scenefile/SceneFile.h"
#include "engine/states/StateText.h"
#include "tests/fuzz/KeptPlugin.h"
#include "tests/fuzz/Require.h"
#include "tests/support/PluginSession.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/SceneBytes.h"

namespace {

using fuzz::Require;
using tests::Bytes;

std::string Text(const host::BaseDocument& doc) {
  std::string text;
  engine::WriteStatesAsText(doc, engine::ReadStates(doc), "scene", [&](std::string_view piece) {
    text += piece;
    return true;
  });
  return text;
}

// A scene with one Stagemark, as a file; and the text of that.
struct Start {
  std::string scene;
  std::string text;
};

const Start& TheStart() {
  static const Start start = [] {
    tests::PluginSession session;
    tests::SceneBuilder(session.Doc()).Cube("Room/Box").Camera("Front").Layer("Props");
    session.Record("Day");
    return Start{Bytes(session.Doc()), Text(session.Doc())};
  }();
  return start;
}

}  // namespace

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t limit);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto scene = engine::ReadScene(TheStart().scene);
  host::BaseDocument& doc = *scene.Value();
  engine::TakeInOptions options;
  options.sameName = engine::SameName::Replaced;
  const std::string before = Bytes(doc);
  const auto taken =
      engine::TakeInStates(doc, {reinterpret_cast<const char*>(data), size}, options);
  const std::string after = Bytes(doc);
  if (!taken) {
    Require(!taken.Message().empty() && after == before);
    return 0;
  }
  Require(engine::ReadScene(after).Ok());
  Require(engine::TakeInStates(doc, Text(doc), options).Ok());
  return 0;
}

// Starts over with a whole text now and then, so that no corpus has to be kept.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t limit, unsigned seed) {
  const std::string& text = TheStart().text;
  if (seed % 8 != 0 || text.size() > limit) return LLVMFuzzerMutate(data, size, limit);
  std::copy(text.begin(), text.end(), data);
  return LLVMFuzzerMutate(data, text.size(), limit);
}
