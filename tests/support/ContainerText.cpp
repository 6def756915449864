#include "tests/support/ContainerText.h"

#include "engine/core/ContainerContents.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/ValueText.h"

namespace tests {

namespace {

std::string LinkText(const host::GeData& value, const host::BaseDocument* doc) {
  if (engine::LinkOf(value) == 0) return "->nothing";
  host::BaseList2D* target = value.GetLink(doc);
  if (!target) return "->gone";
  const host::BaseTag* tag = engine::AsTag(target);
  if (!tag) return "->" + target->GetName().ToUtf8();
  return "->tag " + std::to_string(tag->GetType()) + " of " + tag->GetObject()->GetName().ToUtf8();
}

std::string ValueText(const host::GeData& value, const host::BaseDocument* doc) {
  switch (value.GetType()) {
    case host::DA_NIL:
      return "nil";
    case host::DA_LONG:
      return std::to_string(value.GetLong());
    case host::DA_REAL:
      return "real " + host::RealToString(value.GetReal()).ToUtf8();
    case host::DA_STRING:
      return "\"" + value.GetString().ToUtf8() + "\"";
    case host::DA_FILENAME:
      return "<" + value.GetFilename().GetString().ToUtf8() + ">";
    case host::DA_CONTAINER:
      return ContainerText(value.GetContainer(), doc);
    case host::DA_ALIASLINK:
      return LinkText(value, doc);
    case host::DA_VECTOR:
      return engine::VectorText(value.GetVector());
    case host::DA_TIME:
      return "time " + host::RealToString(value.GetTime().Get()).ToUtf8();
    default:
      return "type " + std::to_string(value.GetType());
  }
}

std::string EntryText(const host::BaseContainer& container, host::LONG position,
                      const host::BaseDocument* doc) {
  return std::to_string(container.GetIndexId(position)) + " " +
         ValueText(container.GetIndexData(position), doc);
}

}  // namespace

std::string ContainerText(const host::BaseContainer& container, const host::BaseDocument* doc) {
  std::string text = container.GetId() == 0 ? "{" : "#" + std::to_string(container.GetId()) + "{";
  for (host::LONG i = 0; i < container.GetCount(); ++i)
    text += (i > 0 ? ", " : "") + EntryText(container, i, doc);
  return text + "}";
}

std::string ContainerLines(const host::BaseContainer& container, const host::BaseDocument* doc) {
  std::string text;
  for (host::LONG i = 0; i < container.GetCount(); ++i) text += EntryText(container, i, doc) + "\n";
  return text;
}

}  // namespace tests
