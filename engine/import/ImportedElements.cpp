#include "engine/import/ImportedElements.h"

#include <bit>
#include <cstdint>
#include <string_view>

#include "engine/scene/ElementState.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/ShaderWalk.h"
#include "engine/scene/TreeWalk.h"
#include "engine/scenefile/FileAsRead.h"
#include "host/BaseMaterial.h"

namespace engine {
namespace {

using host::BaseContainer;
using host::LONG;

// Key in the document's data.
constexpr LONG kImportedElements = 1059402;
// Keys in that container: the file, then links and fingerprints of objects and materials.
constexpr LONG kFile = 0;
constexpr LONG kAllObjects = 1;
constexpr LONG kAllMaterials = 2;
// Keys in the containers of objects and of materials.
constexpr LONG kLinks = 0;
constexpr LONG kPlaces = 1;
constexpr LONG kSettings = 2;
constexpr LONG kLooks = 3;
constexpr LONG kAbove = 4;

// A number for what was added, in this order; the same on every machine and in every version.
class Fingerprint {
 public:
  void Add(std::uint64_t number) {
    sum_ = (sum_ ^ number) * 0x9E3779B97F4A7C15ull;
    sum_ ^= sum_ >> 29;
  }
  // Zero added: -0 and 0 are the same place.
  void Add(double number) { Add(std::bit_cast<std::uint64_t>(number + 0.0)); }
  void Add(const host::Vector& v) {
    for (const double number : {v.x, v.y, v.z}) Add(number);
  }
  void Add(std::string_view text) {
    Add(std::uint64_t{text.size()});
    for (const char c : text) Add(std::uint64_t{static_cast<unsigned char>(c)});
  }
  // Links are for whoever knows what they lead to.
  void Add(const BaseContainer& data) {
    ForEachEntry(data, [&](LONG key, const host::GeData& value) {
      Add(static_cast<std::uint64_t>(key));
      AddValue(value);
    });
  }
  LONG Value() const { return static_cast<LONG>(sum_ ^ (sum_ >> 32)); }

 private:
  void AddValue(const host::GeData& value) {
    switch (value.GetType()) {
      case host::DA_LONG:
        return Add(static_cast<std::uint64_t>(value.GetLong()));
      case host::DA_REAL:
        return Add(value.GetReal());
      case host::DA_VECTOR:
        return Add(value.GetVector());
      case host::DA_STRING:
        return Add(std::string_view(value.GetString().ToUtf8()));
      case host::DA_CONTAINER:
        return Add(value.GetContainer());
      default:
        return;
    }
  }

  std::uint64_t sum_ = 0;
};

LONG PlaceFingerprint(const host::BaseObject& object) {
  const host::Matrix frame = object.GetMl();
  Fingerprint print;
  for (const host::Vector* v : {&frame.off, &frame.v1, &frame.v2, &frame.v3}) print.Add(*v);
  return print.Value();
}

LONG SettingsFingerprint(const host::BaseObject& object) {
  Fingerprint print;
  print.Add(*object.GetDataInstance());
  return print.Value();
}

// By names: the materials of another import have other identities.
LONG LookFingerprint(const host::BaseObject& object, const host::BaseDocument& doc) {
  Fingerprint print;
  for (const host::BaseTag* tag = object.GetFirstTag(); tag != nullptr; tag = tag->GetNext()) {
    if (KindOf(*tag) != NodeKind::TextureTag) continue;
    const NodeId id = MaterialIdOf(static_cast<const host::TextureTag&>(*tag));
    const host::BaseList2D* material = FindNode(&doc, id);
    print.Add(material ? std::string_view(material->GetName().ToUtf8()) : std::string_view());
  }
  return print.Value();
}

LONG AboveFingerprint(const host::BaseObject& object) {
  Fingerprint print;
  if (object.GetUp()) print.Add(std::string_view(object.GetUp()->GetName().ToUtf8()));
  return print.Value();
}

template <class Number>
BaseContainer Column(const std::vector<ImportedElement>& elements, Number number) {
  BaseContainer column;
  LONG key = 0;
  for (const ImportedElement& element : elements) column.SetLong(key++, element.*number);
  return column;
}

// Columns and not a container for each element: they are stored in a few bytes an element, and a
// scene of a million objects has no million small blocks more.
BaseContainer AsContainer(const std::vector<ImportedElement>& elements, bool areObjects) {
  BaseContainer links;
  LONG key = 0;
  for (const ImportedElement& element : elements) SetLinkId(links, key++, element.id);
  BaseContainer result;
  result.SetContainer(kLinks, links);
  result.SetContainer(kSettings, Column(elements, &ImportedElement::settings));
  if (!areObjects) return result;
  result.SetContainer(kPlaces, Column(elements, &ImportedElement::place));
  result.SetContainer(kLooks, Column(elements, &ImportedElement::look));
  result.SetContainer(kAbove, Column(elements, &ImportedElement::above));
  return result;
}

std::vector<ImportedElement> FromContainer(const BaseContainer& from,
                                           const host::BaseDocument& doc) {
  std::vector<ImportedElement> elements;
  const BaseContainer links = from.GetContainer(kLinks);
  const BaseContainer places = from.GetContainer(kPlaces);
  const BaseContainer settings = from.GetContainer(kSettings);
  const BaseContainer looks = from.GetContainer(kLooks);
  const BaseContainer above = from.GetContainer(kAbove);
  const LONG count = links.GetCount();
  for (LONG i = 0; i < count; ++i) {
    const NodeId id = LinkOf(links.GetIndexData(i));
    if (FindNode(&doc, id) == nullptr) continue;
    elements.push_back({id, places.GetIndexData(i).GetLong(), settings.GetIndexData(i).GetLong(),
                        looks.GetIndexData(i).GetLong(), above.GetIndexData(i).GetLong()});
  }
  return elements;
}

}  // namespace

host::LONG FingerprintOf(const host::BaseMaterial& material, const host::BaseDocument& doc) {
  Fingerprint print;
  print.Add(*material.GetDataInstance());
  auto addFile = [&](const host::BaseShader& shader) {
    const std::string file = BitmapFileOf(shader);
    print.Add(std::string_view(file));
    print.Add(*shader.GetDataInstance());
    const std::string* bytes = FindEmbeddedFile(doc, file);
    const std::string_view whole = bytes ? std::string_view(*bytes) : std::string_view();
    if (bytes) print.Add(std::uint64_t{HashOfContent({&whole, 1})});
  };
  ForEachBitmapShaderOf(material, addFile);
  return print.Value();
}

ImportedElements DescribeElements(const host::BaseDocument& doc, const std::string& file) {
  ImportedElements elements{file, {}, {}};
  for (const host::BaseObject* object = doc.GetFirstObject(); object; object = NextInTree(object)) {
    elements.objects.push_back({IdOf(*object), PlaceFingerprint(*object),
                                SettingsFingerprint(*object), LookFingerprint(*object, doc),
                                AboveFingerprint(*object)});
  }
  for (const host::BaseMaterial* material = doc.GetFirstMaterial(); material;
       material = material->GetNext()) {
    elements.materials.push_back({IdOf(*material), 0, FingerprintOf(*material, doc), 0, 0});
  }
  return elements;
}

ImportedElements ImportedElementsOf(const host::BaseDocument& doc) {
  const BaseContainer kept = doc.GetDataInstance()->GetContainer(kImportedElements);
  return {kept.GetString(kFile).ToUtf8(), FromContainer(kept.GetContainer(kAllObjects), doc),
          FromContainer(kept.GetContainer(kAllMaterials), doc)};
}

void KeepImportedElements(host::BaseDocument& doc, const ImportedElements& elements) {
  BaseContainer kept;
  kept.SetString(kFile, host::String(std::string_view(elements.file)));
  kept.SetContainer(kAllObjects, AsContainer(elements.objects, true));
  kept.SetContainer(kAllMaterials, AsContainer(elements.materials, false));
  doc.GetDataInstance()->SetContainer(kImportedElements, kept);
}

}  // namespace engine
