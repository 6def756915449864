#include "engine/scene/SceneDump.h"
#include "tests/reliability/Rounds.h"
#include "tests/undo/RandomEdits.h"

namespace tests {

namespace {

constexpr int kStepsInOneScene = 30;

// Takes everything back, or does it again; `dumps` are of before and after each step, in the order
// in which they are to be met. False where one differs.
bool Walk(host::BaseDocument& doc, bool back, const std::vector<std::string>& dumps,
          Findings& findings) {
  std::size_t at = 0;
  while (back ? doc.DoUndo() : doc.DoRedo()) {
    ++findings.executions;
    const std::string dump = engine::DumpDocument(doc);
    if (dump != dumps[at] && at + 1 < dumps.size()) ++at;
    if (dump != dumps[at]) return false;
  }
  return at + 1 == dumps.size();
}

}  // namespace

Findings UndoRounds(std::uint64_t seed, const RoundBudget& more) {
  Findings findings;
  for (auto scene = static_cast<unsigned>(seed); more(findings.executions); ++scene) {
    SceneBuilder builder;
    RandomEdits::Build(builder);
    RandomEdits edits(builder.Doc(), scene);
    std::vector<std::string> dumps = {engine::DumpDocument(builder.Doc())};
    for (int i = 0; i < kStepsInOneScene; ++i) {
      edits.Step();
      std::string dump = engine::DumpDocument(builder.Doc());
      if (dump != dumps.back()) dumps.push_back(std::move(dump));
    }
    std::vector<std::string> backwards(dumps.rbegin(), dumps.rend());
    const bool same = Walk(builder.Doc(), true, backwards, findings) &&
                      Walk(builder.Doc(), false, dumps, findings);
    findings.Require(same, "undo or redo of the scene of seed " + std::to_string(scene));
  }
  return findings;
}

}  // namespace tests
