#include "engine/scene/SceneDump.h"

#include <algorithm>
#include <sstream>
#include <unordered_map>

#include "engine/scene/DocumentState.h"
#include "engine/scene/ElementState.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/NodeAccess.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"
#include "engine/scene/ValueText.h"

namespace engine {

using host::BaseDocument;
using host::BaseList2D;
using host::GeListNode;

namespace {

const char* KindName(NodeKind kind) {
  switch (kind) {
    case NodeKind::Document:
      return "document";
    case NodeKind::Object:
      return "object";
    case NodeKind::Tag:
    case NodeKind::TextureTag:
    case NodeKind::XPressoTag:
      return "tag";
    case NodeKind::Material:
      return "material";
    case NodeKind::Shader:
      return "shader";
    case NodeKind::Layer:
      return "layer";
    case NodeKind::RenderSettings:
      return "render settings";
    case NodeKind::VideoPost:
      return "video post";
    case NodeKind::Multipass:
      return "multi-pass";
    case NodeKind::NodeMaster:
      return "node master";
    case NodeKind::Node:
      return "node";
  }
  return "";
}

std::string FlagsText(const host::LayerData& data) {
  std::string text;
  for (const bool flag : {data.solo, data.view, data.render, data.manager, data.locked,
                          data.generators, data.deformers, data.expressions, data.animation}) {
    text += flag ? '1' : '0';
  }
  return text;
}

std::string MatrixText(const host::Matrix& m) {
  return VectorText(m.off) + " " + VectorText(m.v1) + " " + VectorText(m.v2) + " " +
         VectorText(m.v3);
}

// FNV-1a for 64 bits over the numbers: enough to see in a dump that two meshes differ.
template <class T>
std::uint64_t Digest(std::uint64_t seed, const std::vector<T>& values) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(values.data());
  for (std::size_t i = 0; i < values.size() * sizeof(T); ++i)
    seed = (seed ^ bytes[i]) * 1099511628211u;
  return seed;
}

std::string MeshText(const Mesh& mesh) {
  std::uint64_t digest = 14695981039346656037u;
  digest = Digest(Digest(digest, mesh.points), mesh.polygons);
  digest = Digest(Digest(digest, mesh.normals), mesh.uvs);
  const std::string colors =
      mesh.colors.empty() ? "" : " colors " + std::to_string(Digest(digest, mesh.colors));
  return std::to_string(mesh.points.size()) + " points " + std::to_string(mesh.polygons.size()) +
         " polygons " + std::to_string(mesh.normals.size()) + " normals " +
         std::to_string(mesh.uvs.size()) + " uvs digest " + std::to_string(digest) + colors;
}

// Writes everything, naming elements by running numbers in the order of the walk. Links may lead to
// what comes later, so the numbers are given before the first line.
class DocumentDump {
 public:
  DocumentDump(const BaseDocument& doc, const TextSink& sink) : doc_(doc), out_(sink) {
    for (const GeListNode* node = &doc; node; node = NextInside(*node, doc))
      numbers_.emplace(IdOf(*node), numbers_.size());
  }

  bool Write() {
    for (const GeListNode* node = &doc_; node && !out_.Stopped(); node = NextInside(*node, doc_)) {
      Element(static_cast<const BaseList2D&>(*node));
    }
    WriteActive();
    return out_.Flush();
  }

 private:
  std::string Number(NodeId id) const {
    if (id == 0) return "null";
    const auto found = numbers_.find(id);
    return found == numbers_.end() ? "dead" : "#" + std::to_string(found->second);
  }

  void Line(const std::string& text) { out_.Line(prefix_ + " " + text); }

  void Element(const BaseList2D& node) {
    prefix_ = Number(IdOf(node));
    Head(node);
    if (NBitsOf(node) != 0) Line("nbits " + std::to_string(NBitsOf(node)));
    if (LayerIdOf(node) != 0) Line("layer " + Number(LayerIdOf(node)));
    Special(node);
    const host::BaseContainer& data = *node.GetDataInstance();
    if (data.GetId() != 0) Line("data id " + std::to_string(data.GetId()));
    WriteContainer(
        data, prefix_ + " data", [this](NodeId id) { return Number(id); }, out_);
  }

  // Where a document is kept is not part of it.
  void Head(const BaseList2D& node) {
    const NodeKind kind = KindOf(node);
    const BaseList2D* owner = OwnerOf(node);
    std::string head = std::string(KindName(kind)) + " " + std::to_string(node.GetType());
    if (kind != NodeKind::Document) head += " " + Quoted(node.GetName());
    if (owner) head += " in " + Number(IdOf(*owner));
    Line(head + " bits " + std::to_string(node.GetAllBits()));
  }

  void Special(const BaseList2D& node) {
    switch (KindOf(node)) {
      case NodeKind::Object:
        return Object(static_cast<const host::BaseObject&>(node));
      case NodeKind::TextureTag:
        return Line("material " + Number(MaterialIdOf(static_cast<const host::TextureTag&>(node))));
      case NodeKind::Layer:
        return Flags(OwnLayerData(static_cast<const host::LayerObject&>(node)));
      case NodeKind::Document:
        return Line("fps " + std::to_string(doc_.GetFps()));
      default:
        return;
    }
  }

  void Object(const host::BaseObject& object) {
    Line("modes " + std::to_string(object.GetEditorMode()) + " " +
         std::to_string(object.GetRenderMode()) + " " + std::to_string(object.GetDeformMode()));
    if (object.GetMl() != host::Matrix()) Line("frame " + MatrixText(object.GetMl()));
    if (MeshOf(object)) Line("mesh " + MeshText(*MeshOf(object)));
  }

  void Flags(const host::LayerData& data) {
    Line("flags " + FlagsText(data) + " color " + VectorText(data.color));
  }

  void WriteActive() {
    prefix_ = "active";
    Line("render settings " + Number(ActiveRenderDataIdOf(doc_)));
    Line("scene camera " + Number(SceneCameraIdOf(doc_)));
    const host::BaseObject* object = doc_.GetActiveObject();
    Line("object " + Number(object ? IdOf(*object) : 0));
  }

  const BaseDocument& doc_;
  std::unordered_map<NodeId, std::size_t> numbers_;
  std::string prefix_;
  LineWriter out_;
};

// Tag types whose data can be part of a recorded state. The folder of states, which has them too,
// stands above this one.
constexpr host::LONG kStateTags[] = {
    host::Ttexture, host::Tcompositing, 1021738, 1020898, 1021891, 1025604, 1011012, 1011961};

// Writes what a recording can hold, naming elements by position and name.
class StateDump {
 public:
  StateDump(const BaseDocument& doc, const TextSink& sink) : doc_(doc), out_(sink) {}

  bool Write() {
    Settings();
    const host::BaseObject* camera = doc_.GetRenderBaseDraw()->GetSceneCamera(&doc_);
    out_.Line("scene camera " + (camera ? Quoted(camera->GetName()) : "none"));
    std::size_t index = 0;
    for (const host::BaseObject* object = doc_.GetFirstObject(); object;
         object = NextInTree(object))
      Object(*object, index++);
    index = 0;
    for (const GeListNode* node = doc_.GetLayerObjectRoot()->GetFirst(); node;
         node = NextInTree(node)) {
      const auto& layer = static_cast<const host::LayerObject&>(*node);
      out_.Line("layer " + std::to_string(index++) + " " + Quoted(layer.GetName()) + " flags " +
                FlagsText(OwnLayerData(layer)));
    }
    return out_.Flush();
  }

 private:
  std::string Target(NodeId id) const {
    const BaseList2D* node = FindNode(&doc_, id);
    return node ? Quoted(node->GetName()) : "none";
  }

  void Data(const std::string& prefix, const BaseList2D& node) {
    WriteContainer(
        *node.GetDataInstance(), prefix, [this](NodeId id) { return Target(id); }, out_);
  }

  void Settings() {
    const host::RenderData& settings = *doc_.GetActiveRenderData();
    out_.Line("render settings " + Quoted(settings.GetName()));
    Data("render settings data", settings);
    for (const GeListNode* node = NextInside(settings, settings); node;
         node = NextInside(*node, settings)) {
      if (KindOf(*node) != NodeKind::VideoPost && KindOf(*node) != NodeKind::Multipass) continue;
      const auto& effect = static_cast<const BaseList2D&>(*node);
      const std::string prefix =
          std::string(KindName(KindOf(effect))) + " " + std::to_string(effect.GetType());
      out_.Line(prefix + (effect.GetBit(host::BIT_DISABLED) ? " off" : " on"));
      Data(prefix, effect);
    }
  }

  void Object(const host::BaseObject& object, std::size_t index) {
    const std::string prefix = "object " + std::to_string(index) + " " + Quoted(object.GetName());
    out_.Line(prefix + " modes " + std::to_string(object.GetEditorMode()) + " " +
              std::to_string(object.GetRenderMode()) + " " +
              std::to_string(object.GetDeformMode()));
    std::size_t position = 0;
    for (host::BaseTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext(), ++position) {
      if (std::count(std::begin(kStateTags), std::end(kStateTags), tag->GetType()) == 0) continue;
      const std::string line =
          prefix + " tag " + std::to_string(position) + " type " + std::to_string(tag->GetType());
      const host::TextureTag* texture = AsTextureTag(tag);
      out_.Line(line + (texture ? " material " + Target(MaterialIdOf(*texture)) : ""));
      Data(line, *tag);
    }
  }

  const BaseDocument& doc_;
  LineWriter out_;
};

TextSink AppendTo(std::string& text) {
  return [&text](std::string_view piece) {
    text += piece;
    return true;
  };
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(std::move(line));
  return lines;
}

// Lines of `all` that `other` does not have as often, with `mark` in front. Counted and not
// aligned: linear in the lines, and a line that moved is no difference.
void AppendMissing(const std::vector<std::string>& all, const std::vector<std::string>& other,
                   const char* mark, std::size_t most, std::vector<std::string>& out) {
  std::unordered_map<std::string, std::ptrdiff_t> have;
  for (const std::string& line : other) ++have[line];
  std::size_t found = 0;
  for (const std::string& line : all) {
    if (--have[line] < 0 && found++ < most) out.push_back(mark + line);
  }
}

}  // namespace

bool DumpDocument(const BaseDocument& doc, const TextSink& sink) {
  return DocumentDump(doc, sink).Write();
}

std::string DumpDocument(const BaseDocument& doc) {
  std::string text;
  DumpDocument(doc, AppendTo(text));
  return text;
}

std::string DumpState(const BaseDocument& doc) {
  std::string text;
  StateDump(doc, AppendTo(text)).Write();
  return text;
}

std::vector<std::string> DumpDifference(const std::string& a, const std::string& b,
                                        std::size_t most) {
  if (a == b) return {};
  const std::vector<std::string> was = Lines(a);
  const std::vector<std::string> is = Lines(b);
  std::vector<std::string> difference;
  AppendMissing(was, is, "- ", most, difference);
  AppendMissing(is, was, "+ ", most, difference);
  if (difference.empty()) difference.push_back("+ the same lines in another order");
  return difference;
}

}  // namespace engine
