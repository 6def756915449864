// Two hashes, so that one state can be recorded anew without making the pictures of the others old:
// of all that is seen and not recorded, made once, and of all that is recorded, made with each
// state loaded. Decision 62 says why not the file or the stored state is hashed.
#include "program/pictures/PictureRecord.h"

#include <bit>
#include <cstdio>

#include "engine/core/ContainerBody.h"
#include "engine/render/TextureSearch.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/ElementState.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"
#include "engine/scenefile/FileAsRead.h"
#include "engine/states/RecordedParts.h"
#include "host/BaseObject.h"

namespace pictures {

using engine::NodeKind;

namespace {

constexpr std::string_view kBegin = "Stagemarks picture: ";
constexpr std::size_t kLongestRecord = 400;
// A link to what is no part of the picture, and a file that is not there.
constexpr std::uint64_t kElsewhere = ~std::uint64_t{0};

std::uint64_t HashOf(std::string_view bytes) { return engine::HashOfContent({&bytes, 1}); }

std::string Hexadecimal(std::uint64_t number) {
  char digits[17];
  std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(number));
  return digits;
}

}  // namespace

// Gathers bytes and hashes them, block after block. The length goes before each text and row:
// otherwise "ab", "c" and "a", "bc" would be equal.
class PictureHasher {
 public:
  void Number(std::uint64_t number) {
    Bytes({reinterpret_cast<const char*>(&number), sizeof number});
  }
  void Real(double number) { Number(std::bit_cast<std::uint64_t>(number)); }
  void Vector(const host::Vector& vector) {
    for (const host::Real number : {vector.x, vector.y, vector.z}) Real(number);
  }
  void Text(std::string_view text) {
    Number(text.size());
    Bytes(text);
  }
  template <class T>
  void Row(const std::vector<T>& row) {
    Number(row.size());
    Number(HashOf({reinterpret_cast<const char*>(row.data()), row.size() * sizeof(T)}));
  }
  std::string Value() const { return Hexadecimal(HashOf(block_)); }

 private:
  // Memory stays below a block and its last piece, however large the scene is.
  static constexpr std::size_t kBlock = std::size_t{1} << 20;

  void Bytes(std::string_view bytes) {
    block_ += bytes;
    if (block_.size() < kBlock) return;
    const std::uint64_t before = HashOf(block_);
    block_.assign(reinterpret_cast<const char*>(&before), sizeof before);
  }

  std::string block_;
};

namespace {

// Render settings give a picture its size and frame, which a record names.
bool IsSeen(const host::GeListNode& node) {
  const NodeKind kind = engine::KindOf(node);
  return kind != NodeKind::RenderSettings && kind != NodeKind::VideoPost &&
         kind != NodeKind::Multipass;
}

bool IsRecordedTag(const host::GeListNode& node) {
  const NodeKind kind = engine::KindOf(node);
  return (kind == NodeKind::Tag || kind == NodeKind::TextureTag) &&
         engine::FindPartOfTag(node.GetType()) != nullptr;
}

}  // namespace

class SceneHashes::Reader {
 public:
  explicit Reader(const SceneHashes& hashes) : hashes_(hashes) {}

  std::string Value() const { return hasher_.Value(); }

  // Hashes the properties of an element that no load changes.
  void Element(const host::GeListNode& node) {
    const host::BaseList2D* owner = engine::OwnerOf(node);
    const auto& element = static_cast<const host::BaseList2D&>(node);
    hasher_.Number(owner ? Place(engine::IdOf(*owner)) : 0);
    hasher_.Number(static_cast<std::uint64_t>(engine::KindOf(node)));
    hasher_.Number(static_cast<std::uint64_t>(node.GetType()));
    hasher_.Text(element.GetName().ToUtf8());
    hasher_.Number(Place(engine::LayerIdOf(element)));
    auto* atom = const_cast<host::GeListNode*>(&node);
    if (const auto* object = engine::AsObject(atom)) Shape(*object);
    if (!IsRecordedTag(node)) Container(*element.GetDataInstance());
  }

  // Hashes the properties of an element that Stagemarks record.
  void Switches(const host::GeListNode& node) {
    auto* atom = const_cast<host::GeListNode*>(&node);
    if (const auto* object = engine::AsObject(atom)) Modes(*object);
    if (const auto* tag = engine::AsTextureTag(atom))
      hasher_.Number(Place(engine::MaterialIdOf(*tag)));
    if (const auto* layer = engine::AsLayer(atom)) Layer(engine::OwnLayerData(*layer));
    if (IsRecordedTag(node))
      Container(*static_cast<const host::BaseList2D&>(node).GetDataInstance());
  }

  void Link(engine::NodeId id) { hasher_.Number(Place(id)); }

 private:
  // Without recursion, however deep containers stand in containers.
  void Container(const host::BaseContainer& container) {
    std::vector<const engine::ContainerBody*> left = {engine::ContainerAccess::Body(container)};
    while (!left.empty()) {
      const engine::ContainerBody* body = left.back();
      left.pop_back();
      hasher_.Number(engine::SizeOf(body));
      std::uint32_t next = 0;
      for (auto stretch = engine::NextEntries(body, next); !stretch.empty();
           stretch = engine::NextEntries(body, next)) {
        for (const engine::Entry& entry : stretch) {
          hasher_.Number(engine::KeyAndType(entry));
          if (entry.type == host::DA_CONTAINER) {
            left.push_back(engine::BlockOf<engine::ContainerBody>(entry.bits));
          } else {
            Entry(entry);
          }
        }
      }
    }
  }

  // Identities differ between two files of one scene; places in the walk do not.
  std::uint64_t Place(engine::NodeId id) const {
    if (id == 0) return 0;
    const auto found = hashes_.places_.find(id);
    return found == hashes_.places_.end() ? kElsewhere : found->second;
  }

  void Modes(const host::BaseObject& object) {
    hasher_.Number(static_cast<std::uint64_t>(object.GetRenderMode()));
    hasher_.Number(object.GetDeformMode() ? 1 : 0);
  }

  void Shape(const host::BaseObject& object) {
    const host::Matrix frame = object.GetMl();
    for (const host::Vector& vector : {frame.off, frame.v1, frame.v2, frame.v3})
      hasher_.Vector(vector);
    const auto& mesh = engine::MeshOf(object);
    hasher_.Number(mesh ? 1 : 0);
    if (mesh) Geometry(*mesh);
  }

  // Names every part, so that a new one does not compile before it is hashed, too.
  void Geometry(const engine::Mesh& mesh) {
    const auto& [points, polygons, normals, uvs, colors] = mesh;
    hasher_.Row(points);
    hasher_.Row(polygons);
    hasher_.Row(normals);
    hasher_.Row(uvs);
    hasher_.Row(colors);
  }

  void Layer(const host::LayerData& flags) {
    for (const host::Bool flag :
         {flags.solo, flags.view, flags.render, flags.manager, flags.locked, flags.generators,
          flags.deformers, flags.expressions, flags.animation})
      hasher_.Number(flag ? 1 : 0);
  }

  // A file counts by its bytes: it may lie elsewhere, or be another one at the same place.
  void Entry(const engine::Entry& entry) {
    if (entry.type == host::DA_STRING) {
      hasher_.Text(engine::StringOf(entry.Get()).View());
    } else if (entry.type == host::DA_FILENAME) {
      const auto found =
          hashes_.textures_.find(engine::FilenameOf(entry.Get()).GetString().ToUtf8());
      hasher_.Number(found == hashes_.textures_.end() ? kElsewhere : found->second);
    } else if (entry.type == host::DA_ALIASLINK) {
      hasher_.Number(Place(entry.bits));
    } else if (engine::IsShared(entry.type)) {
      for (const host::Real number : engine::BlockOf<engine::NumberBlock>(entry.bits)->numbers)
        hasher_.Real(number);
    } else {
      hasher_.Number(entry.bits);
    }
  }

  const SceneHashes& hashes_;
  PictureHasher hasher_;
};

// Textures first, because elements name them; then places, because links may point forwards; then
// the elements themselves.
SceneHashes::SceneHashes(const host::BaseDocument& doc, engine::FileSystem& files) : doc_(doc) {
  const std::string folder = doc.GetDocumentPath().GetString().ToUtf8();
  for (const std::string& name : engine::TextureNames(doc)) {
    std::uint64_t hash = kElsewhere;
    if (const std::string* embedded = engine::FindEmbeddedFile(doc, name)) {
      hash = HashOf(*embedded);
    } else if (const std::string file = engine::FindTexture(files, name, folder); !file.empty()) {
      const auto bytes = files.ReadFile(file);
      if (bytes) hash = HashOf(bytes.Value());
    }
    textures_.emplace(name, hash);
  }
  for (const auto* node = engine::NextInside(doc, doc); node;
       node = engine::NextInside(*node, doc)) {
    if (IsSeen(*node)) places_.emplace(engine::IdOf(*node), places_.size() + 1);
  }
  Reader reader(*this);
  for (const auto* node = engine::NextInside(doc, doc); node;
       node = engine::NextInside(*node, doc)) {
    if (IsSeen(*node)) reader.Element(*node);
  }
  scene_ = reader.Value();
}

std::string SceneHashes::State() const {
  Reader reader(*this);
  for (const auto* node = engine::NextInside(doc_, doc_); node;
       node = engine::NextInside(*node, doc_)) {
    if (IsSeen(*node)) reader.Switches(*node);
  }
  reader.Link(engine::SceneCameraIdOf(doc_));
  return reader.Value();
}

bool PictureRecord::operator==(const PictureRecord& other) const {
  return RecordAsText(*this) == RecordAsText(other);
}

std::string RecordAsText(const PictureRecord& record) {
  return std::string(kBegin) + "scene " + record.scene + " state " + record.state + " settings " +
         record.settings + " size " + std::to_string(record.size.width) + "x" +
         std::to_string(record.size.height) + " frame " + std::to_string(record.frame) +
         " program " + record.program + ";";
}

// The widths in the format are those of the buffers, less one for the NUL. The text ends at its
// semicolon, since the file goes on behind it.
std::optional<PictureRecord> FindRecord(std::string_view bytes) {
  const std::size_t begin = bytes.find(kBegin);
  if (begin == std::string_view::npos) return std::nullopt;
  const std::string_view rest = bytes.substr(begin, kLongestRecord);
  const std::string text(rest.substr(0, rest.find(';')));
  PictureRecord record;
  char scene[17];
  char state[17];
  char settings[17];
  char program[100];
  const int read = std::sscanf(text.c_str() + kBegin.size(),
                               "scene %16[0-9a-f] state %16[0-9a-f] settings %16[0-9a-f] size "
                               "%9ux%9u frame %9d program %99s",
                               scene, state, settings, &record.size.width, &record.size.height,
                               &record.frame, program);
  if (read != 7) return std::nullopt;
  record.scene = scene;
  record.state = state;
  record.settings = settings;
  record.program = program;
  return record;
}

std::string HashOfTexts(const std::vector<std::string>& texts) {
  PictureHasher hasher;
  for (const std::string& text : texts) hasher.Text(text);
  return hasher.Value();
}

}  // namespace pictures
