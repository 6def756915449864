#include <algorithm>

#include "engine/dialog/TerminalText.h"
#include "engine/render/TextureSearch.h"
#include "engine/states/Findings.h"
#include "host/Host.h"
#include "program/commandline/Arguments.h"
#include "program/commandline/ChangeLists.h"
#include "program/commandline/Session.h"

namespace commandline {

namespace {

using engine::Finding;
using engine::FindingKind;
using engine::Severity;

// Nothing wrong is kDone.
constexpr int kFindings = 1;
struct CheckOptions {
  std::vector<std::string> fixes;
  std::vector<std::string> only;  // of earlier versions
  bool codes = false;
  bool strict = false;
};

struct SeverityWords {
  Severity severity;
  const char* word;
  const char* key;  // for a program
  Color color;
};
// In the order of gravity, in which they are summed up.
constexpr SeverityWords kSeverities[] = {{Severity::Error, "error", "errors", Color::Red},
                                         {Severity::Warning, "warning", "warnings", Color::Yellow},
                                         {Severity::Note, "note", "notes", Color::Bold}};

const SeverityWords& WordsOf(Severity severity) {
  return *std::ranges::find(kSeverities, severity, &SeverityWords::severity);
}

std::vector<std::string> FixableCodes() {
  std::vector<std::string> codes;
  for (const FindingKind& kind : engine::FindingKinds()) {
    if (kind.fixable) codes.emplace_back(kind.code);
  }
  return codes;
}

void AddWrapped(const std::string& text, std::size_t indent, Report& report) {
  for (const std::string& line : Wrapped(Readable(text), Terminal::Columns() - indent))
    report.Line(std::string(indent, ' ') + line);
}

// The remedy for a kind of finding; --fix in it becomes the words to type.
std::string RemedyOf(const FindingKind& kind) {
  std::string remedy = kind.remedy;
  const std::size_t fix = remedy.find("--fix");
  if (kind.fixable && fix != std::string::npos)
    remedy.replace(fix, 5, "`--fix " + std::string(kind.code) + "`");
  return remedy;
}

int PrintCodes(const Program& program) {
  Report report;
  report.PutList("codes");
  for (const FindingKind& kind : engine::FindingKinds()) {
    const SeverityWords& words = WordsOf(kind.severity);
    report.Append("codes", {{"code", kind.code},
                            {"severity", words.word},
                            {"meaning", kind.meaning},
                            {"remedy", kind.remedy},
                            {"fixable", kind.fixable}});
    report.Line(engine::PadRight(words.word, 8) + Colored(Color::Bold, kind.code));
    AddWrapped(kind.meaning, 4, report);
    AddWrapped(RemedyOf(kind), 4, report);
  }
  report.Print(program);
  return kDone;
}

// Looking changes nothing. --fix mends first and looks afterwards, so that the answer is about what
// is left.
class CheckVerb {
 public:
  CheckVerb(Program& program, const CheckOptions& options)
      : program_(program), options_(options), session_(program) {}

  int Run() {
    if (options_.codes) return PrintCodes(program_);
    int status = CheckArguments();
    if (status == kDone) status = session_.StartWithScene();
    if (status == kDone) status = Fix();
    if (status == kDone) status = Answer();
    // Not to be mistaken for findings.
    return status == kFailed ? kTrouble : status != kDone ? status : Verdict();
  }

 private:
  int Refuse(const std::string& why) {
    program_.terminal.Error(why);
    return kUsage;
  }

  // Before the scene is opened, which may take long.
  int CheckArguments() {
    if (!options_.only.empty()) {
      return Refuse(
          "What a list of names means is shown by `stagemarks list SCENE --only NAMES`. `check` "
          "looks for what is wrong with the Stagemarks of the whole scene.");
    }
    if (program_.scene.empty())
      return Refuse("SCENE is required\n`stagemarks check --help` explains it.");
    if (options_.fixes.empty() && (program_.write || !program_.output.empty()))
      return Refuse("There is nothing to write without --fix: looking changes nothing.");
    for (const std::string& code : options_.fixes) {
      const FindingKind* kind = engine::FindFindingKind(code);
      if (!kind) {
        return Refuse("There is no code " + Listed({code}) +
                      ". `stagemarks check --codes` lists all; these can be fixed: " +
                      Joined(FixableCodes()) + ".");
      }
      if (!kind->fixable)
        return Refuse(Listed({code}) + " has no answer that is safe without a person: " +
                      kind->remedy + " These can be fixed: " + Joined(FixableCodes()) + ".");
    }
    return kDone;
  }

  int Fix() {
    report_.PutList("fixed");
    for (const std::string& code : options_.fixes) {
      const auto fixed = engine::FixFindings(session_.Document(), *engine::FindFindingKind(code));
      if (!fixed) {
        program_.terminal.Error(fixed.Message());
        return kFailed;
      }
      report_.Append("fixed", {{"code", code}, {"places", fixed.Value()}});
      report_.Line(fixed.Value() == 0
                       ? "Nothing was fixed of " + code + "."
                       : "Fixed " + code + " in " + Counted(fixed.Value(), "place") + ".");
    }
    if (options_.fixes.empty()) return kDone;
    host::EventAdd();
    session_.App().DeliverEvents();
    return kDone;
  }

  // For a person of each kind only as many as are shown; the others are counted in Finding::count.
  int Answer() {
    const host::BaseDocument& doc = session_.Document();
    const std::size_t most = program_.verbose || program_.json ? SIZE_MAX : kMostListed;
    findings_ = engine::FindFindings(doc, &session_.Files(),
                                     engine::MissingTextures(session_.Files(), doc), most);
    report_.PutStream("findings", [this](const auto& append) {
      for (const Finding& finding : findings_) append(Members(finding));
    });
    AddSummary();
    for (std::size_t i = 0; i < findings_.size();) i = AddKind(i);
    if (!options_.fixes.empty()) return session_.Keep(report_);
    report_.Print(program_);
    return session_.CheckLedger();
  }

  static JsonMembers Members(const Finding& finding) {
    return {{"code", finding.kind->code},
            {"severity", WordsOf(finding.kind->severity).word},
            {"stagemark", JsonValue::OrNothing(finding.state)},
            {"place", JsonValue::OrNothing(finding.place)},
            {"text", finding.text},
            {"remedy", finding.kind->remedy},
            {"fixable", finding.kind->fixable}};
  }

  std::size_t Count(Severity severity) const {
    std::size_t count = 0;
    for (const Finding& finding : findings_)
      count += finding.kind->severity == severity ? finding.count : 0;
    return count;
  }

  void AddSummary() {
    std::vector<std::string> counts;
    for (const SeverityWords& words : kSeverities) {
      const std::size_t count = Count(words.severity);
      report_.Put(words.key, count);
      if (count > 0) counts.push_back(Counted(count, words.word));
    }
    report_.Line(counts.empty() ? "Nothing is wrong with the Stagemarks of this scene."
                                : Joined(counts) + ".");
  }

  // The findings of one kind, from this one on; answers where the next kind begins.
  std::size_t AddKind(std::size_t begin) {
    const FindingKind& kind = *findings_[begin].kind;
    const SeverityWords& words = WordsOf(kind.severity);
    std::vector<FactRow> rows;
    std::size_t end = begin;
    for (; end < findings_.size() && findings_[end].kind == &kind; ++end) {
      const Finding& finding = findings_[end];
      rows.push_back({finding.state.empty() ? "the scene" : Shown(finding.state),
                      Readable(finding.place), Readable(finding.text)});
    }
    report_.Line("");
    report_.Line(Colored(words.color, words.word) + " " + Colored(Color::Bold, kind.code));
    AddWrapped(kind.meaning, 2, report_);
    AddRows(rows, program_.verbose, report_, 6);
    AddWrapped("What to do: " + RemedyOf(kind), 2, report_);
    return end;
  }

  // Notes never fail.
  int Verdict() const {
    const bool fails =
        Count(Severity::Error) > 0 || (options_.strict && Count(Severity::Warning) > 0);
    return fails ? kFindings : kDone;
  }

  Program& program_;
  const CheckOptions& options_;
  Session session_;
  Report report_;
  std::vector<Finding> findings_;
};

}  // namespace

void AddCheck(Arguments& arguments, Program& program) {
  Verb verb =
      arguments.AddVerb("check", "Look for what is wrong or odd about the Stagemarks of a scene");
  verb.Add("SCENE", program.scene, kAnyScene);
  verb.AddFlag("--json", program.json, "Print the result as JSON");
  auto options = std::make_shared<CheckOptions>();
  verb.AddFlag("--strict", options->strict, "Let warnings count, too");
  verb.Add("--fix", options->fixes,
           "Mend what has this code, as far as there is one safe answer; may be given several "
           "times")
      .OneWord()
      .Offers("CODE", FixableCodes());
  verb.AddFlag("--codes", options->codes, "List all codes with their meaning and remedy");
  verb.Add("--only", options->only, "").Word("STAGEMARK...").Hidden();
  AddKeeping(verb, program);
  verb.Footer(
      "Exit status: 0 nothing wrong, or notes only; 1 errors, with --strict warnings, too; 2 "
      "trouble. With --fix it is about what is left.\n\n"
      "Examples:\n"
      "  stagemarks check room.c4d\n"
      "  stagemarks check room.c4d --strict --json\n"
      "  stagemarks check --codes\n"
      "  stagemarks check room.c4d --fix link-gone --write");
  verb.Does([&program, options] { return CheckVerb(program, *options).Run(); });
}

}  // namespace commandline
