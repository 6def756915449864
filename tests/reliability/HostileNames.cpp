#include <filesystem>

#include "engine/application/Application.h"
#include "engine/scenefile/SceneFile.h"
#include "tests/reliability/Rounds.h"
#include "tests/support/PluginSession.h"
#include "tests/support/SceneBytes.h"

namespace tests {

namespace fs = std::filesystem;

namespace {

const std::vector<std::string>& Pieces() {
  static const std::vector<std::string> pieces = {"..",
                                                  "/",
                                                  "\\",
                                                  ".",
                                                  "~",
                                                  " ",
                                                  "a",
                                                  "Day",
                                                  "%s%n",
                                                  "$(touch x)",
                                                  "`x`",
                                                  ";",
                                                  "*",
                                                  "?",
                                                  "-rf",
                                                  "\n",
                                                  "\t",
                                                  "\x01",
                                                  "\x7f",
                                                  "\xff",
                                                  "\xc3",
                                                  "\xed\xa0\x80",
                                                  "\xe2\x80\xae",
                                                  "\xcc\x81",
                                                  "CON",
                                                  "aux.tif",
                                                  "\"",
                                                  "'",
                                                  "<script>",
                                                  "&amp;",
                                                  "{state}",
                                                  "|",
                                                  "../../etc/x",
                                                  "/tmp/x",
                                                  "link/x",
                                                  std::string(300, 'n'),
                                                  "\xf0\x9f\x8e\xac",
                                                  "\xc3\xa9",
                                                  "e\xcc\x81",
                                                  ":",
                                                  "//"};
  return pieces;
}

std::string Name(std::mt19937_64& random) {
  std::string name;
  for (std::size_t i = random() % 4 + 1; i > 0; --i) name += Pieces()[random() % Pieces().size()];
  return name;
}

std::string Printable(const std::string& text) {
  std::string result;
  for (const char letter : text) {
    const auto code = static_cast<unsigned char>(letter);
    if (code >= 0x20 && code < 0x7f) {
      result += letter;
    } else {
      result += "\\x" + std::to_string(code);
    }
  }
  return result;
}

bool IsBelow(const std::string& path, const std::string& folder) {
  const std::string place = fs::path(path).lexically_normal().string();
  return place.empty() || place == folder || place.starts_with(folder + "/");
}

// Every place that was changed since the mark lies in the scene's folder.
void CheckPlaces(PluginSession& session, std::size_t mark, const std::string& what,
                 Findings& findings) {
  const auto& entries = session.Services().ledger.Entries();
  for (std::size_t i = mark; i < entries.size(); ++i) {
    const engine::LedgerEntry& entry = entries[i];
    const bool looks = entry.operation == engine::Operation::ReadFile ||
                       entry.operation == engine::Operation::ListFolder ||
                       entry.operation == engine::Operation::Note;
    if (looks || !entry.succeeded) continue;
    for (const std::string& place : {entry.path, entry.target})
      findings.Require(IsBelow(place, session.Folder()), what + "changed \"" + place + "\"");
  }
}

// Saved and opened again, all names are what they were.
void CheckSaved(PluginSession& session, const std::string& what, Findings& findings) {
  try {
    findings.Require(StatesIn(Bytes(session.Doc())) == NamesIn(session.Doc()),
                     what + "names were lost in the file");
  } catch (const std::runtime_error& error) {
    findings.Require(false, what + "the scene cannot be written: " + error.what());
  }
}

void ChangeOnce(PluginSession& session, std::mt19937_64& random, std::vector<std::string>& known,
                Findings& findings) {
  const std::string name = Name(random);
  const std::string some = known[random() % known.size()];
  const std::size_t mark = session.Services().ledger.Mark();
  std::string what = "\"" + Printable(name) + "\" after \"" + Printable(some) + "\": ";
  try {
    switch (random() % 4) {
      case 0:
        session.Record(name);
        known.push_back(name);
        break;
      case 1:
        session.Rename(some, name);
        known.push_back(name);
        break;
      case 2:
        session.Load(some);
        break;
      default:
        session.Delete(some);
        break;
    }
  } catch (const std::runtime_error&) {
    // The name was refused, or its row is gone already: there is nothing to press.
  }
  CheckPlaces(session, mark, what, findings);
  CheckSaved(session, what, findings);
  ++findings.executions;
}

}  // namespace

Findings HostileNames(std::uint64_t seed, const RoundBudget& more) {
  constexpr std::uint64_t kInOneScene = 200;
  std::mt19937_64 random(seed);
  Findings findings;
  while (more(findings.executions)) {
    PluginSession session;
    session.Person().AnswerOthers(true);
    session.SaveAs("s.c4d");
    std::vector<std::string> known{"Day"};
    const std::uint64_t end = findings.executions + kInOneScene;
    while (findings.executions < end && more(findings.executions))
      ChangeOnce(session, random, known, findings);
    (void)session.Person().TakeTranscript();
  }
  return findings;
}

}  // namespace tests
