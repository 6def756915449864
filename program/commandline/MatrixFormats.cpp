// One matrix in four forms: lines for a terminal, CSV for spreadsheets (RFC 4180), a page, JSON.
// All but the lines are streamed row by row, as matrices of large scenes are larger than what one
// wants in memory twice; a reader that has had enough ends them.
#include "program/commandline/MatrixFormats.h"

#include <algorithm>
#include <iostream>

#include "engine/dialog/TerminalText.h"
#include "engine/states/FieldText.h"
#include "program/commandline/ChangeLists.h"
#include "program/commandline/Terminal.h"

namespace commandline {

using engine::StateMatrix;

namespace {

constexpr std::size_t kWidestCell = 24;
constexpr std::size_t kWidestElement = 35;  // in percent of the terminal
constexpr std::size_t kGap = 2;
constexpr const char* kUnknown = "no Stagemark knows it";

std::string NameOf(const host::BaseDocument& doc, const StateMatrix::Row& row) {
  if (row.part == engine::Part::Camera) return "Scene camera";
  if (row.part == engine::Part::RenderSettings) return "Render settings";
  return engine::ElementPath(doc, row.element);
}

// One field of a row, with what each state says of it.
struct TextLine {
  std::size_t row;
  std::string field;
  std::vector<std::string> cells;
  std::vector<bool> changed;  // from the nearest state before that holds the element
};

// The fields in which the states that hold the element of a row differ, a line each; one line where
// they agree. A field that one state does not mention counts as empty there. "Changed" compares
// with the nearest state before that holds the element, since a state that does not hold it changes
// nothing.
class RowLines {
 public:
  RowLines(const host::BaseDocument& doc, const StateMatrix& matrix, std::size_t row)
      : doc_(doc), matrix_(matrix), row_(row), facts_(matrix.Rows()[row]) {
    for (std::size_t state = 0; state < matrix.States().size(); ++state)
      fields_.push_back(facts_.differs ? matrix.CellFields(row, state) : engine::Fields());
  }

  void AppendTo(std::vector<TextLine>& lines) const {
    const std::size_t before = lines.size();
    std::vector<host::LONG> met;
    for (const engine::Fields& fields : fields_) {
      for (const engine::FieldNow& field : fields) {
        if (std::ranges::find(met, field.field) != met.end()) continue;
        met.push_back(field.field);
        TextLine line = Line(field.field);
        if (std::ranges::find(line.changed, true) != line.changed.end())
          lines.push_back(std::move(line));
      }
    }
    if (lines.size() == before) lines.push_back(Line());
  }

 private:
  const host::GeData* ValueIn(std::size_t state, host::LONG field) const {
    const auto found = std::ranges::find(fields_[state], field, &engine::FieldNow::field);
    return found == fields_[state].end() ? nullptr : &found->value;
  }

  TextLine Line(host::LONG field) const {
    const host::LONG type = engine::TypeForFields(
        doc_, {facts_.part, engine::ChangeKind::Changed, facts_.element, facts_.element, {}});
    const bool isCamera = facts_.part == engine::Part::Camera;
    TextLine line{row_, isCamera ? "" : engine::FieldLabel(type, field), {}, {}};
    const host::GeData nothing;
    const host::GeData* former = nullptr;
    for (std::size_t state = 0; state < fields_.size(); ++state) {
      const bool holds = matrix_.Holds(row_, state);
      const host::GeData* value = ValueIn(state, field);
      line.cells.push_back(!holds  ? "-"
                           : value ? engine::FieldValueText(doc_, type, field, *value)
                                   : "not there");
      const host::GeData* now = value ? value : &nothing;
      line.changed.push_back(holds && former && !(*former == *now));
      if (holds) former = now;
    }
    return line;
  }

  TextLine Line() const {
    TextLine line{row_, "", {}, {}};
    for (std::size_t state = 0; state < fields_.size(); ++state) {
      line.cells.push_back(matrix_.Holds(row_, state) ? matrix_.Text(row_, state) : "-");
      line.changed.push_back(matrix_.IsChanged(row_, state));
    }
    return line;
  }

  const host::BaseDocument& doc_;
  const StateMatrix& matrix_;
  std::size_t row_;
  const StateMatrix::Row& facts_;
  std::vector<engine::Fields> fields_;
};

// The matrix as lines: columns as wide as they have to be, side by side as many as have room.
// States that do not fit side by side follow in blocks below each other, each with the names of the
// elements. All lines are made first, because the widths depend on all of them.
class TextTable {
 public:
  TextTable(const host::BaseDocument& doc, const StateMatrix& matrix, bool whole, Report& report)
      : doc_(doc), matrix_(matrix), whole_(whole), report_(report) {}

  void Add() {
    for (std::size_t row = 0; row < matrix_.Rows().size(); ++row)
      RowLines(doc_, matrix_, row).AppendTo(lines_);
    Measure();
    const std::size_t count = matrix_.States().size();
    for (std::size_t begin = 0; begin < count;) {
      std::size_t end = begin;
      std::size_t used = Head("", "").size();
      while (end < count &&
             (end == begin || whole_ || used + kGap + widths_[end] <= Terminal::ColumnsForTable()))
        used += kGap + widths_[end++];
      if (begin > 0) report_.Line("");
      AddBlock(begin, end);
      begin = end;
    }
  }

 private:
  // A star stands before what changes; what is not held is a dash.
  std::string Cell(const TextLine& line, std::size_t state) const {
    return Short((line.changed[state] ? "*" : " ") + engine::Printable(line.cells[state]));
  }

  std::string Title(std::size_t state) const {
    return Short(" " + engine::Printable(matrix_.States()[state].name));
  }

  std::string Short(const std::string& text) const {
    return whole_ ? text : engine::Shortened(text, kWidestCell);
  }

  // An element that no state knows has no cells, only a remark.
  bool IsKnown(const TextLine& line) const { return matrix_.Rows()[line.row].knownBy > 0; }

  void Measure() {
    for (std::size_t state = 0; state < matrix_.States().size(); ++state)
      widths_.push_back(engine::DisplayWidth(Title(state)));
    for (const TextLine& line : lines_) {
      const std::string name = engine::Printable(NameOf(doc_, matrix_.Rows()[line.row]));
      elements_ = std::max(elements_, engine::DisplayWidth(name));
      fieldWidth_ = std::max(fieldWidth_, engine::DisplayWidth(line.field));
      if (!IsKnown(line)) continue;
      for (std::size_t state = 0; state < widths_.size(); ++state)
        widths_[state] = std::max(widths_[state], engine::DisplayWidth(Cell(line, state)));
    }
    if (!whole_) elements_ = std::min(elements_, Terminal::Columns() * kWidestElement / 100);
    if (!whole_) fieldWidth_ = std::min(fieldWidth_, kWidestCell);
  }

  std::string Head(const std::string& name, const std::string& field) const {
    std::string head =
        "  " + engine::PadRight(whole_ ? name : WithoutBeginning(name, elements_), elements_);
    if (fieldWidth_ > 0)
      head += std::string(kGap, ' ') + engine::PadRight(Short(field), fieldWidth_);
    return head;
  }

  void AddBlock(std::size_t begin, std::size_t end) {
    std::string titles = Head("", "");
    for (std::size_t state = begin; state < end; ++state)
      titles += std::string(kGap, ' ') + engine::PadRight(Title(state), widths_[state]);
    AddTrimmed(titles);
    const engine::PartRow* part = nullptr;
    std::size_t former = matrix_.Rows().size();
    for (const TextLine& line : lines_) {
      const engine::PartRow* own = &engine::RowOf(matrix_.Rows()[line.row].part);
      if (own != part) report_.Line(Colored(Color::Bold, own->label));
      part = own;
      AddLine(line, line.row == former, begin, end);
      former = line.row;
    }
  }

  void AddLine(const TextLine& line, bool again, std::size_t begin, std::size_t end) {
    const std::string name = engine::Printable(NameOf(doc_, matrix_.Rows()[line.row]));
    std::string text = Head(again ? "" : name, line.field);
    if (!IsKnown(line)) {
      report_.Line(text + std::string(kGap, ' ') + " " + Colored(Color::Dim, kUnknown));
      return;
    }
    for (std::size_t state = begin; state < end; ++state) {
      const std::string cell = engine::PadRight(Cell(line, state), widths_[state]);
      text += std::string(kGap, ' ') + (line.changed[state] ? Colored(Color::Yellow, cell) : cell);
    }
    AddTrimmed(text);
  }

  void AddTrimmed(std::string line) {
    line.erase(line.find_last_not_of(' ') + 1);
    report_.Line(line);
  }

  const host::BaseDocument& doc_;
  const StateMatrix& matrix_;
  bool whole_;
  Report& report_;
  std::vector<TextLine> lines_;
  std::size_t elements_ = 0;
  std::size_t fieldWidth_ = 0;
  std::vector<std::size_t> widths_;  // of the states
};

// RFC 4180, section 2: quotes around what holds a separator, doubled within.
std::string CsvField(const std::string& text) {
  if (text.find_first_of("\",\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char letter : text) quoted += letter == '"' ? "\"\"" : std::string(1, letter);
  return quoted + "\"";
}

// The states in which the row is other than in the one before.
std::string ChangedIn(const StateMatrix& matrix, std::size_t row) {
  std::string names;
  for (std::size_t state = 0; state < matrix.States().size(); ++state) {
    if (matrix.IsChanged(row, state))
      names += (names.empty() ? "" : "; ") + matrix.States()[state].name;
  }
  return names;
}

bool GoesOn() { return std::cout.good() && !Terminal::Interrupted(); }

constexpr const char* kTableStyle = R"css(
:root { color-scheme: light dark; --ground: #fbfbfa; --head: #efefec; --edge: #d8d8d4; --text: #1f1f1e; --dim: #6a6a66;
  --changed: #fbe3b4; }
@media (prefers-color-scheme: dark) { :root { --ground: #1e1e1e; --head: #282828; --edge: #3a3a3a; --text: #dcdcdc;
  --dim: #9a9a9a; --changed: #5a4415; } }
body { margin: 0; padding: 24px 32px; background: var(--ground); color: var(--text);
  font: 14px/1.45 system-ui, "DejaVu Sans", sans-serif; }
h1 { margin: 0 0 4px; font-size: 20px; overflow-wrap: anywhere; }
p { margin: 0 0 18px; color: var(--dim); }
.key { padding: 1px 6px; border-radius: 3px; color: var(--text); }
.changed { background: var(--changed); font-weight: 600; }
.none, .unknown td { color: var(--dim); }
table { border-collapse: separate; border-spacing: 0; }
th, td { padding: 4px 12px; border-bottom: 1px solid var(--edge); text-align: start; vertical-align: top; white-space: nowrap; }
thead th { position: sticky; top: 0; z-index: 2; background: var(--head); }
tbody th { position: sticky; left: 0; background: var(--ground); font-weight: 400; }
thead th:first-child { left: 0; z-index: 3; }
tr.part th { background: var(--head); font-weight: 600; }
)css";

void PrintPageRow(const host::BaseDocument& doc, const StateMatrix& matrix, std::size_t row) {
  const bool known = matrix.Rows()[row].knownBy > 0;
  std::cout << (known ? "<tr><th scope=\"row\"><bdi>"
                      : "<tr class=\"unknown\"><th scope=\"row\"><bdi>")
            << HtmlText(NameOf(doc, matrix.Rows()[row])) << "</bdi></th>";
  if (!known) {
    std::cout << "<td colspan=\"" << matrix.States().size() << "\">" << kUnknown << "</td></tr>\n";
    return;
  }
  for (std::size_t state = 0; state < matrix.States().size(); ++state) {
    const char* kind = !matrix.Holds(row, state)      ? "<td class=\"none\">"
                       : matrix.IsChanged(row, state) ? "<td class=\"changed\">"
                                                      : "<td>";
    std::cout << kind << (matrix.Holds(row, state) ? HtmlText(matrix.Text(row, state)) : "\u2013")
              << "</td>";
  }
  std::cout << "</tr>\n";
}

// Null where the state does not hold the element, which no value is equal to.
JsonValue CellValue(const host::BaseDocument& doc, const StateMatrix& matrix, std::size_t row,
                    std::size_t state, host::LONG type) {
  if (!matrix.Holds(row, state)) return {};
  std::vector<JsonValue> fields;
  for (const engine::FieldNow& field : matrix.CellFields(row, state)) {
    fields.push_back(
        JsonValue::Object({{"name", engine::FieldLabel(type, field.field)},
                           {"number", field.field},
                           {"value", engine::FieldValueText(doc, type, field.field, field.value)},
                           {"raw", RawValue(doc, field.value)}}));
  }
  return JsonValue::Object({{"changed", matrix.IsChanged(row, state)},
                            {"text", matrix.Text(row, state)},
                            {"fields", JsonValue::List(fields)}});
}

JsonMembers RowMembers(const host::BaseDocument& doc, const StateMatrix& matrix, std::size_t row) {
  const StateMatrix::Row& facts = matrix.Rows()[row];
  const host::LONG type = engine::TypeForFields(
      doc, {facts.part, engine::ChangeKind::Changed, facts.element, facts.element, {}});
  std::vector<JsonValue> cells;
  for (std::size_t state = 0; state < matrix.States().size(); ++state)
    cells.push_back(CellValue(doc, matrix, row, state, type));
  return {{"part", engine::RowOf(facts.part).word},
          {"element", NameOf(doc, facts)},
          {"kind", engine::ElementKind(doc, facts.element)},
          {"knownBy", facts.knownBy},
          {"differs", facts.differs},
          {"cells", JsonValue::List(cells)}};
}

}  // namespace

void AddMatrixText(const host::BaseDocument& doc, const StateMatrix& matrix, bool whole,
                   Report& report) {
  TextTable(doc, matrix, whole, report).Add();
}

void PrintMatrixCsv(const host::BaseDocument& doc, const StateMatrix& matrix) {
  std::cout << "part,element,kind,known by,changes in";
  for (const engine::StoredState& state : matrix.States())
    std::cout << ',' << CsvField(ValidUtf8(state.name));
  std::cout << "\r\n";
  for (std::size_t row = 0; row < matrix.Rows().size() && GoesOn(); ++row) {
    const StateMatrix::Row& facts = matrix.Rows()[row];
    std::cout << engine::RowOf(facts.part).word << ',' << CsvField(ValidUtf8(NameOf(doc, facts)))
              << ',' << CsvField(ValidUtf8(engine::ElementKind(doc, facts.element))) << ','
              << facts.knownBy << ',' << CsvField(ValidUtf8(ChangedIn(matrix, row)));
    for (std::size_t state = 0; state < matrix.States().size(); ++state)
      std::cout << ',' << CsvField(ValidUtf8(matrix.Text(row, state)));
    std::cout << "\r\n";
  }
}

void PrintMatrixPage(const host::BaseDocument& doc, const StateMatrix& matrix,
                     const std::string& title) {
  std::cout << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
            << "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>"
            << HtmlText(title) << "</title>\n<style>" << kTableStyle
            << "</style>\n</head>\n<body>\n<h1><bdi>" << HtmlText(title) << "</bdi></h1>\n<p>"
            << Counted(matrix.States().size(), "Stagemark") << ", "
            << Counted(matrix.Rows().size(), "row")
            << ". <span class=\"key changed\">Marked</span> is what changes from the Stagemark "
               "before, \u2013 what one does not hold.</p>\n<table>\n<thead><tr><th></th>";
  for (const engine::StoredState& state : matrix.States())
    std::cout << "<th scope=\"col\"><bdi>" << HtmlText(state.name) << "</bdi></th>";
  std::cout << "</tr></thead>\n<tbody>\n";
  const engine::PartRow* part = nullptr;
  for (std::size_t row = 0; row < matrix.Rows().size() && GoesOn(); ++row) {
    const engine::PartRow* own = &engine::RowOf(matrix.Rows()[row].part);
    if (own != part)
      std::cout << "<tr class=\"part\"><th scope=\"rowgroup\" colspan=\""
                << matrix.States().size() + 1 << "\">" << own->label << "</th></tr>\n";
    part = own;
    PrintPageRow(doc, matrix, row);
  }
  std::cout << "</tbody>\n</table>\n</body>\n</html>\n";
}

void PutMatrix(const host::BaseDocument& doc, const StateMatrix& matrix, Report& report) {
  std::vector<std::string> names;
  for (const engine::StoredState& state : matrix.States()) names.push_back(state.name);
  report.Put("stagemarks", names);
  report.PutStream("rows", [&doc, &matrix](const auto& append) {
    for (std::size_t row = 0; row < matrix.Rows().size() && GoesOn(); ++row)
      append(RowMembers(doc, matrix, row));
  });
}

}  // namespace commandline
