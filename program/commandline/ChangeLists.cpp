#include "program/commandline/ChangeLists.h"

#include <algorithm>
#include <array>
#include <limits>

#include "engine/dialog/TerminalText.h"
#include "engine/scene/NodeIds.h"
#include "engine/states/FieldText.h"
#include "program/commandline/Terminal.h"

namespace commandline {

using engine::ChangeKind;
using engine::Difference;
using engine::ElementChange;
using engine::FieldChange;

namespace {

// Columns of a terminal.
constexpr std::size_t kLabel = 26;
constexpr std::size_t kWidestField = 22;
constexpr std::size_t kWidestWhole = 60;  // column of elements where nothing is shortened
// Halved, so that a sum with it does not overflow.
constexpr std::size_t kUnlimited = std::numeric_limits<std::size_t>::max() / 2;

// The document that the element lives in: of two, it need not be in the other.
const host::BaseDocument& DocOf(const Sides& sides, const ElementChange& change) {
  return change.kind == ChangeKind::OnlyRight ? sides.rightDoc : sides.leftDoc;
}

const char* WordOf(ChangeKind kind) {
  return kind == ChangeKind::Changed    ? "changed"
         : kind == ChangeKind::OnlyLeft ? "onlyLeft"
                                        : "onlyRight";
}

std::string ShortValue(const std::string& value, std::size_t width) {
  return width == kUnlimited
             ? engine::Printable(value)
             : engine::Shortened(engine::Printable(value), std::max(width, kMostListed));
}

std::string LabelOf(const Sides& sides, const ElementChange& change, const FieldChange& field) {
  if (change.part == engine::Part::Camera) return "";
  return engine::FieldLabel(engine::TypeForFields(DocOf(sides, change), change), field.field);
}

// "only in "Day" (Camera)".
std::string OnlyText(const Sides& sides, const ElementChange& change) {
  const std::string kind = engine::ElementKind(DocOf(sides, change), change.element);
  return "only in " + (change.kind == ChangeKind::OnlyLeft ? sides.left : sides.right) +
         (kind.empty() ? "" : " (" + engine::Printable(kind) + ")");
}

// So many values as are listed of an element, each by `text`. The element's name stands in the
// first of its rows only; AddRows leaves it out of the others.
template <class Text>
void AppendValues(const Sides& sides, const ElementChange& change, const Text& text,
                  std::vector<FactRow>& rows) {
  const std::string place = PlaceOf(sides, change);
  const std::size_t most = sides.whole ? kUnlimited : kMostValues;
  for (std::size_t i = 0; i < change.fields.size(); ++i) {
    if (i == most) {
      rows.push_back({place, "", "and " + Counted(change.fields.size() - most, "more value")});
      return;
    }
    rows.push_back({place, LabelOf(sides, change, change.fields[i]), text(change.fields[i])});
  }
}

std::size_t ValueWidth(const Sides& sides) {
  return sides.whole ? kUnlimited : Terminal::Columns() / 5;
}

// The values of an element that only one side has are told where everything is.
void AppendRows(const Sides& sides, const ElementChange& change, std::vector<FactRow>& rows) {
  if (change.kind != ChangeKind::Changed)
    rows.push_back({PlaceOf(sides, change), "", OnlyText(sides, change)});
  if (change.kind != ChangeKind::Changed && !sides.whole) return;
  const auto text = [&](const FieldChange& field) {
    return ValuesText(sides, change, field, ValueWidth(sides));
  };
  AppendValues(sides, change, text, rows);
}

// The changes of one part, in the order of the difference. Changes come sorted by part. Each part
// tells so many of each kind and counts the others; a list that left nothing out needs no word
// about --verbose.
class PartLists {
 public:
  PartLists(const Sides& sides, const Difference& difference, Report& report)
      : sides_(sides), difference_(difference), report_(report) {}

  bool Add() {
    for (std::size_t begin = 0; begin < difference_.changes.size();) {
      std::size_t end = begin;
      const engine::Part part = difference_.changes[begin].part;
      while (end < difference_.changes.size() && difference_.changes[end].part == part) ++end;
      AddPart(part, begin, end);
      begin = end;
    }
    return isWhole_;
  }

 private:
  void AddPart(engine::Part part, std::size_t begin, std::size_t end) {
    std::vector<FactRow> rows;
    std::size_t more = 0;
    for (const ChangeKind kind :
         {ChangeKind::Changed, ChangeKind::OnlyLeft, ChangeKind::OnlyRight}) {
      std::size_t listed = 0;
      for (std::size_t i = begin; i < end; ++i) {
        const ElementChange& change = difference_.changes[i];
        if (change.kind != kind) continue;
        // Only some of very many changes are told with their fields.
        const bool isTold = kind != ChangeKind::Changed || !change.fields.empty();
        if (sides_.whole || (isTold && listed < kMostListed)) {
          ++listed;
          AppendRows(sides_, change, rows);
        } else {
          ++more;
        }
      }
    }
    report_.Line("");
    report_.Line(Colored(Color::Bold, engine::RowOf(part).label));
    AddRows(rows, sides_.whole, report_);
    if (more > 0) report_.Line("  and " + std::to_string(more) + " more");
    isWhole_ = isWhole_ && more == 0;
  }

  const Sides& sides_;
  const Difference& difference_;
  Report& report_;
  bool isWhole_ = true;
};

// "8 changed, 1 only in "Day", which holds nothing else of it".
std::string CountText(const Sides& sides, const Difference& difference, engine::Part part) {
  const engine::PartCount& count = difference.Of(part);
  std::string text;
  const auto add = [&](std::size_t number, const std::string& what) {
    if (number > 0) text += (text.empty() ? "" : ", ") + std::to_string(number) + " " + what;
  };
  add(count.changed, "changed");
  add(count.onlyLeft, "only in " + sides.left);
  add(count.onlyRight, "only in " + sides.right);
  const std::size_t index = engine::IndexOf(part);
  if (!difference.heldLeft[index]) text += " (" + sides.left + " holds none)";
  if (!difference.heldRight[index]) text += " (" + sides.right + " holds none)";
  return text;
}

}  // namespace

// The end of a path tells more than its beginning. A character has at most four bytes, so the
// search begins there and goes on to a character's first byte.
std::string WithoutBeginning(const std::string& path, std::size_t width) {
  if (engine::DisplayWidth(path) <= width) return path;
  std::size_t begin = path.size() - std::min(path.size(), 4 * width);
  const auto isInside = [&] { return (static_cast<unsigned char>(path[begin]) & 0xC0U) == 0x80U; };
  while (begin < path.size() &&
         (isInside() || engine::DisplayWidth(std::string_view(path).substr(begin)) >= width))
    ++begin;
  // Begins with a whole name where at least half of the text is left then.
  const std::size_t slash = path.find('/', begin);
  const bool isNear = slash != std::string::npos && slash - begin <= (path.size() - begin) / 2;
  return "…" + path.substr(isNear ? slash : begin);
}

// Two passes: the widths first. An element's name is printed once for its rows.
void AddRows(const std::vector<FactRow>& rows, bool whole, Report& report, std::size_t indent) {
  const std::size_t widest = whole ? kWidestWhole : Terminal::Columns() * 2 / 5;
  std::vector<std::string> names;
  std::size_t elements = 0;
  std::size_t fields = 0;
  for (const FactRow& row : rows) {
    const std::string name = engine::Printable(row.element);
    names.push_back(whole ? name : WithoutBeginning(name, widest));
    elements = std::max(elements, std::min(engine::DisplayWidth(names.back()), widest));
    fields = std::max(fields, std::min(engine::DisplayWidth(row.field), kWidestField));
  }
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const bool again = i > 0 && rows[i - 1].element == rows[i].element;
    std::string line = engine::PadRight(again ? "" : names[i], elements);
    if (fields > 0) line += "  " + engine::PadRight(rows[i].field, fields);
    line += "  " + rows[i].value;
    line.erase(line.find_last_not_of(' ') + 1);
    report.Line(std::string(indent, ' ') + line);
  }
}

void AddLabeled(Report& report, const std::string& label, const std::string& text) {
  std::string head = "  " + label;
  for (const std::string& line : Wrapped(Readable(text), Terminal::Columns() - kLabel)) {
    report.Line(engine::PadRight(head, kLabel) + line);
    head.clear();
  }
}

std::string PlaceOf(const Sides& sides, const ElementChange& change) {
  if (change.part == engine::Part::Camera) return "Scene camera";
  return engine::ElementPath(DocOf(sides, change), change.element);
}

std::string ValuesText(const Sides& sides, const ElementChange& change, const FieldChange& field,
                       std::size_t width) {
  const host::LONG type = engine::TypeForFields(DocOf(sides, change), change);
  const auto value = [&](const host::BaseDocument& doc, const std::optional<host::GeData>& of) {
    return ShortValue(engine::FieldValueText(doc, type, field.field, of), width);
  };
  if (change.kind == ChangeKind::OnlyLeft) return value(sides.leftDoc, field.left);
  if (change.kind == ChangeKind::OnlyRight) return value(sides.rightDoc, field.right);
  return value(sides.leftDoc, field.left) + " -> " + value(sides.rightDoc, field.right);
}

void AppendValuesLeft(const Sides& sides, const ElementChange& change, std::vector<FactRow>& rows) {
  const host::LONG type = engine::TypeForFields(sides.leftDoc, change);
  const auto text = [&](const FieldChange& field) {
    return ShortValue(engine::FieldValueText(sides.leftDoc, type, field.field, field.left),
                      2 * ValueWidth(sides));
  };
  AppendValues(sides, change, text, rows);
}

// The comparison told no fields: only those that are going to be printed are read, in one more
// pass.
void TellListed(const host::BaseDocument& doc, const host::BaseContainer& record,
                const engine::CompareOptions& options, const std::vector<std::size_t>& others,
                Difference& toScene) {
  std::vector<std::size_t> listed(others.begin(),
                                  others.begin() + std::min(others.size(), kMostListed));
  std::array<std::size_t, engine::kParts> counts{};
  for (std::size_t i = 0; i < toScene.changes.size(); ++i) {
    const ElementChange& change = toScene.changes[i];
    if (change.kind == ChangeKind::Changed && counts[engine::IndexOf(change.part)]++ < kMostListed)
      listed.push_back(i);
  }
  engine::TellFields(doc, record, options, toScene, listed);
}

void AddCounts(const Sides& sides, const Difference& difference, Report& report) {
  for (const engine::PartRow& row : engine::kPartRows) {
    if (difference.Of(row.part).Sum() > 0)
      AddLabeled(report, row.label, CountText(sides, difference, row.part));
  }
}

bool AddChanges(const Sides& sides, const Difference& difference, Report& report) {
  return PartLists(sides, difference, report).Add();
}

// Links are told by path, since identities mean nothing outside of the program; null where the
// target is gone.
JsonValue RawValue(const host::BaseDocument& doc, const host::GeData& value) {
  switch (value.GetType()) {
    case host::DA_LONG:
      return value.GetLong();
    case host::DA_REAL:
      return value.GetReal();
    case host::DA_TIME:
      return value.GetTime().Get();
    case host::DA_VECTOR: {
      const host::Vector vector = value.GetVector();
      return JsonValue::List({vector.x, vector.y, vector.z});
    }
    case host::DA_STRING:
      return value.GetString().ToUtf8();
    case host::DA_FILENAME:
      return value.GetFilename().GetString().ToUtf8();
    case host::DA_ALIASLINK: {
      const engine::NodeId id = engine::LinkOf(value);
      return engine::FindNode(&doc, id) ? JsonValue(engine::ElementPath(doc, id)) : JsonValue();
    }
    default:
      return {};
  }
}

// Each value twice: as a person reads it and raw.
JsonMembers MembersOf(const Sides& sides, const ElementChange& change) {
  const host::LONG type = engine::TypeForFields(DocOf(sides, change), change);
  std::vector<JsonValue> fields;
  for (const FieldChange& field : change.fields) {
    JsonMembers members = {{"name", engine::FieldLabel(type, field.field)},
                           {"number", field.field}};
    const auto add = [&](const char* key, const char* raw, const host::BaseDocument& doc,
                         const std::optional<host::GeData>& value) {
      members.emplace_back(
          key,
          value ? JsonValue(engine::FieldValueText(doc, type, field.field, value)) : JsonValue());
      members.emplace_back(raw, value ? RawValue(doc, *value) : JsonValue());
    };
    add("left", "leftRaw", sides.leftDoc, field.left);
    add("right", "rightRaw", sides.rightDoc, field.right);
    fields.push_back(JsonValue::Object(members));
  }
  return {{"part", engine::RowOf(change.part).word},
          {"change", WordOf(change.kind)},
          {"element", PlaceOf(sides, change)},
          {"kind", engine::ElementKind(DocOf(sides, change), change.element)},
          {"fields", JsonValue::List(fields)}};
}

JsonMembers CountsOf(const Difference& difference) {
  JsonMembers counts;
  for (const engine::PartRow& row : engine::kPartRows) {
    const engine::PartCount& count = difference.Of(row.part);
    if (count.Sum() == 0) continue;
    counts.emplace_back(row.word, JsonValue::Object({{"changed", count.changed},
                                                     {"onlyLeft", count.onlyLeft},
                                                     {"onlyRight", count.onlyRight}}));
  }
  return counts;
}

// Streamed while it is printed: a scene may differ in a million elements.
void PutChanges(const Sides& sides, const Difference& difference, Report& report) {
  report.PutObject("counts", CountsOf(difference));
  report.PutStream("differences", [&sides, &difference](const auto& append) {
    for (const ElementChange& change : difference.changes) append(MembersOf(sides, change));
  });
}

}  // namespace commandline
