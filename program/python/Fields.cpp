// The fields of elements for scripts: values as the attributes show them, checked before anything
// is changed.
#include <algorithm>
#include <cctype>

#include "engine/editing/FieldValue.h"
#include "engine/scene/NodeTypes.h"
#include "host/Parameters.h"
#include "program/python/Elements.h"

namespace scripting {

namespace {

using engine::Field;
using engine::FieldKind;
using host::BaseDocument;
using host::BaseList2D;
using host::GeData;

struct Row {
  host::LONG type;  // 0: effects and passes
  const char* section;
  const Field* field;
};

// The number of a field is its place in here, for the length of the process.
const std::vector<Row>& Rows() {
  static const auto* const rows = [] {
    auto* list = new std::vector<Row>;
    for (const engine::FieldSection& section : engine::FieldSections()) {
      for (const Field& field : section.fields)
        list->push_back({section.type, section.title, &field});
    }
    list->push_back({0, "Effect", &engine::InUseField()});
    return list;
  }();
  return *rows;
}

// Several kinds are one to a script: numbers are as the attributes show them, whatever is kept.
constexpr std::pair<FieldKind, const char*> kKindWords[] = {
    {FieldKind::Text, "text"},          {FieldKind::Whole, "whole"},
    {FieldKind::Real, "real"},          {FieldKind::Angle, "real"},
    {FieldKind::Percent, "real"},       {FieldKind::Frame, "whole"},
    {FieldKind::Switch, "switch"},      {FieldKind::Choice, "choice"},
    {FieldKind::Vector, "vector"},      {FieldKind::Angles, "vector"},
    {FieldKind::Pair, "pair"},          {FieldKind::Color, "vector"},
    {FieldKind::ScreenColor, "vector"}, {FieldKind::File, "file"},
    {FieldKind::Texture, "file"},       {FieldKind::Layer, "layer"},
    {FieldKind::Material, "material"},  {FieldKind::Camera, "camera"},
    {FieldKind::Settings, "settings"}};

const char* WordOf(FieldKind kind) {
  return std::ranges::find(kKindWords, kind, &std::pair<FieldKind, const char*>::first)->second;
}

bool IsEffect(const BaseList2D& element) {
  const engine::NodeKind kind = engine::KindOf(element);
  return kind == engine::NodeKind::VideoPost || kind == engine::NodeKind::Multipass;
}

bool Has(const BaseList2D& element, const Row& row) {
  return row.type == 0 ? IsEffect(element) : element.IsInstanceOf(row.type);
}

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

const Row& RowAt(std::size_t field) {
  if (field >= Rows().size()) throw Failure(Fault::Misused, "There is no such field.");
  return Rows()[field];
}

[[noreturn]] void Misuse(const Field& field, const std::string& why) {
  throw Failure(Fault::Misused, "\"" + std::string(field.label) + "\" " + why);
}

std::string Plain(double number) {
  char text[40];
  std::snprintf(text, sizeof text, "%.10g", number);
  return text;
}

// --- From what is kept to what is shown.

std::vector<double> PartsShown(const host::Vector& kept, FieldKind kind) {
  const double share = engine::ShownPerKept(kind);
  std::vector<double> parts{kept.x * share, kept.y * share, kept.z * share};
  parts.resize(static_cast<std::size_t>(engine::PartsOf(kind)));
  return parts;
}

std::string ChoiceShown(const Field& field, host::LONG value) {
  for (const engine::FieldChoice& choice : field.choices) {
    if (choice.value == value) return Lower(choice.label);
  }
  return std::to_string(value);
}

// In the units of the attributes: degrees, percent.
Value Shown(const BaseList2D& element, const Field& field) {
  const GeData kept = engine::ReadField(element, field);
  if (engine::IsOfParts(field.kind)) return PartsShown(kept.GetVector(), field.kind);
  switch (field.kind) {
    case FieldKind::Text:
      return kept.GetString().ToUtf8();
    case FieldKind::File:
    case FieldKind::Texture:
      return kept.GetFilename().GetString().ToUtf8();
    case FieldKind::Whole:
    case FieldKind::Frame:
      return static_cast<std::int64_t>(kept.GetLong());
    case FieldKind::Switch:
      return kept.GetBool() != 0;
    case FieldKind::Choice:
      return ChoiceShown(field, kept.GetLong());
    case FieldKind::Real:
    case FieldKind::Angle:
    case FieldKind::Percent:
      return kept.GetReal() * engine::ShownPerKept(field.kind);
    default:
      return engine::LinkOf(kept) == 0 ? Value() : Value(std::uint64_t{engine::LinkOf(kept)});
  }
}

// --- And back.

// Refuses what is no number, too: it compares with nothing.
double CheckNumber(const Field& field, double number) {
  if (!(number >= field.min && number <= field.max)) {
    Misuse(field, "must lie between " + Plain(field.min) + " and " + Plain(field.max) + field.unit +
                      "; " + Plain(number) + " does not.");
  }
  return number;
}

double NumberIn(const Field& field, const Value& value) {
  if (const auto* whole = std::get_if<std::int64_t>(&value))
    return CheckNumber(field, static_cast<double>(*whole));
  if (const auto* real = std::get_if<double>(&value)) return CheckNumber(field, *real);
  Misuse(field, "needs a number.");
}

host::Vector VectorIn(const Field& field, const Value& value) {
  const auto* parts = std::get_if<std::vector<double>>(&value);
  const auto count = static_cast<std::size_t>(engine::PartsOf(field.kind));
  if (!parts || parts->size() != count)
    Misuse(field, "needs " + std::to_string(count) + " numbers.");
  double kept[3] = {};
  for (std::size_t i = 0; i < count; ++i)
    kept[i] = CheckNumber(field, (*parts)[i]) / engine::ShownPerKept(field.kind);
  return {kept[0], kept[1], kept[2]};
}

std::string TextIn(const Field& field, const Value& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  Misuse(field, "needs a text.");
}

host::LONG ChoiceIn(const Field& field, const Value& value) {
  const std::string wanted = Lower(TextIn(field, value));
  std::string known;
  for (const engine::FieldChoice& choice : field.choices) {
    if (Lower(choice.label) == wanted) return choice.value;
    known += (known.empty() ? "" : ", ") + Lower(choice.label);
  }
  Misuse(field, "is one of these: " + known + ".");
}

bool IsOfKind(BaseList2D& target, FieldKind kind) {
  switch (kind) {
    case FieldKind::Layer:
      return engine::AsLayer(&target) != nullptr;
    case FieldKind::Material:
      return engine::AsMaterial(&target) != nullptr;
    case FieldKind::Camera:
      return target.GetType() == host::Ocamera;
    default:
      return engine::AsRenderData(&target) != nullptr;
  }
}

// Identities come signed or unsigned, as Python's numbers fit. There are always active render
// settings, so these cannot be nothing.
GeData LinkIn(BaseDocument& doc, const Field& field, const Value& value) {
  if (std::holds_alternative<std::monostate>(value)) {
    if (field.kind == FieldKind::Settings) Misuse(field, "cannot be nothing.");
    return engine::LinkValue(0);
  }
  const auto* small = std::get_if<std::int64_t>(&value);
  const auto* large = std::get_if<std::uint64_t>(&value);
  if (!small && !large) Misuse(field, "needs an element of the document, or None.");
  const ElementId id = small ? static_cast<ElementId>(*small) : *large;
  if (!IsOfKind(Session::Get().Element(doc, id), field.kind))
    Misuse(field, std::string("needs a ") + WordOf(field.kind) + ".");
  return engine::LinkValue(id);
}

GeData Kept(BaseDocument& doc, const Field& field, const Value& value) {
  if (engine::IsOfParts(field.kind)) return VectorIn(field, value);
  switch (field.kind) {
    case FieldKind::Text:
      return host::String(std::string_view(TextIn(field, value)));
    case FieldKind::File:
    case FieldKind::Texture:
      return host::Filename(host::String(std::string_view(TextIn(field, value))));
    case FieldKind::Whole:
    case FieldKind::Frame:
      if (!std::holds_alternative<std::int64_t>(value)) Misuse(field, "needs a whole number.");
      return static_cast<host::LONG>(NumberIn(field, value));
    case FieldKind::Switch:
      if (!std::holds_alternative<bool>(value)) Misuse(field, "is True or False.");
      return host::LONG(std::get<bool>(value) ? 1 : 0);
    case FieldKind::Choice:
      return ChoiceIn(field, value);
    case FieldKind::Real:
    case FieldKind::Angle:
    case FieldKind::Percent:
      return host::Real(NumberIn(field, value) / engine::ShownPerKept(field.kind));
    default:
      return LinkIn(doc, field, value);
  }
}

FieldFacts FactsOf(const Row& row) {
  const Field& field = *row.field;
  FieldFacts facts{row.type,   row.section, field.label, WordOf(field.kind), field.min, field.max,
                   field.unit, field.tip,   {}};
  for (const engine::FieldChoice& choice : field.choices)
    facts.choices.push_back(Lower(choice.label));
  return facts;
}

const Row& RowOf(const BaseList2D& element, std::size_t field) {
  const Row& row = RowAt(field);
  if (!Has(element, row)) {
    throw Failure(Fault::NotFound, "A " + element.GetTypeName().ToUtf8() + " has no field \"" +
                                       row.field->label + "\".");
  }
  return row;
}

}  // namespace

const std::vector<FieldFacts>& AllFields() {
  static const auto* const facts = [] {
    auto* list = new std::vector<FieldFacts>;
    for (const Row& row : Rows()) list->push_back(FactsOf(row));
    return list;
  }();
  return *facts;
}

std::vector<std::size_t> FieldsOfType(DocumentId document, ElementId element) {
  Session& session = Session::Get();
  const BaseList2D& found = session.Element(session.Document(document), element);
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < Rows().size(); ++i) {
    if (Has(found, Rows()[i])) places.push_back(i);
  }
  return places;
}

Value ReadValue(DocumentId document, ElementId element, std::size_t field) {
  Session& session = Session::Get();
  const BaseList2D& found = session.Element(session.Document(document), element);
  return Shown(found, *RowOf(found, field).field);
}

// Everything is checked before the first element is changed.
void WriteValue(DocumentId document, const std::vector<ElementId>& elements, std::size_t field,
                const Value& value) {
  Session& session = Session::Get();
  BaseDocument& doc = session.Document(document);
  const Field& meant = *RowAt(field).field;
  std::vector<BaseList2D*> found;
  for (const ElementId id : elements) {
    found.push_back(&session.Element(doc, id));
    RowOf(*found.back(), field);
  }
  const engine::FieldEdit edit{Kept(doc, meant, value)};
  RunEdit(doc, engine::SetField(doc, std::move(found), meant, edit));
}

}  // namespace scripting
