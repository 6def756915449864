#include "program/pictures/SceneFingerprint.h"

#include <algorithm>
#include <bit>
#include <vector>

#include "engine/core/ContainerBody.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"
#include "engine/states/RecordedParts.h"
#include "host/BaseObject.h"

namespace pictures {

using engine::NodeKind;

namespace {

// Reading all points of a large scene each time would be felt; an edit that moves few of them and
// adds none is missed.
constexpr std::size_t kSampledPoints = 32;

// Whether Stagemarks record the element as a whole, or nobody sees it.
bool IsLeftOut(const host::GeListNode& node) {
  switch (engine::KindOf(node)) {
    case NodeKind::RenderSettings:
    case NodeKind::VideoPost:
    case NodeKind::Multipass:
    case NodeKind::Layer:
      return true;
    case NodeKind::Tag:
      return engine::FindPartOfTag(node.GetType()) != nullptr;
    default:
      return false;
  }
}

}  // namespace

SceneFingerprint::SceneFingerprint(const host::BaseDocument& doc)
    : doc_(doc), next_(engine::NextInside(doc, doc)) {}

bool SceneFingerprint::Advance(std::size_t elements) {
  for (; next_ && elements > 0; --elements) {
    if (!IsLeftOut(*next_)) MixNode(*next_);
    next_ = engine::NextInside(*next_, doc_);
  }
  return next_ != nullptr;
}

// With the owner, so that an object that moves to another parent counts as a change.
void SceneFingerprint::MixNode(const host::GeListNode& node) {
  const host::BaseList2D* owner = engine::OwnerOf(node);
  Mix(engine::IdOf(node));
  Mix(owner && owner != &doc_ ? engine::IdOf(*owner) : 0);
  Mix(static_cast<std::uint64_t>(node.GetType()));
  if (const auto* object = engine::AsObject(const_cast<host::GeListNode*>(&node)))
    MixObject(*object);
  MixParameters(*static_cast<const host::BaseList2D&>(node).GetDataInstance());
}

void SceneFingerprint::MixObject(const host::BaseObject& object) {
  const auto mixVector = [this](const host::Vector& vector) {
    for (const host::Real number : {vector.x, vector.y, vector.z})
      Mix(std::bit_cast<std::uint64_t>(number));
  };
  const host::Matrix frame = object.GetMl();
  for (const host::Vector& vector : {frame.off, frame.v1, frame.v2, frame.v3}) mixVector(vector);
  const auto& mesh = engine::MeshOf(object);
  if (!mesh) return;
  Mix(mesh->points.size());
  Mix(mesh->polygons.size());
  const std::size_t step = std::max<std::size_t>(1, mesh->points.size() / kSampledPoints);
  for (std::size_t i = 0; i < mesh->points.size(); i += step) {
    for (const float number : mesh->points[i]) Mix(std::bit_cast<std::uint32_t>(number));
  }
}

void SceneFingerprint::MixText(std::string_view text) {
  Mix(text.size());
  for (const char letter : text) Mix(static_cast<unsigned char>(letter));
}

// Without recursion, however deep containers stand in containers.
void SceneFingerprint::MixParameters(const host::BaseContainer& parameters) {
  std::vector<const engine::ContainerBody*> left = {engine::ContainerAccess::Body(parameters)};
  while (!left.empty()) {
    const engine::ContainerBody* body = left.back();
    left.pop_back();
    std::uint32_t next = 0;
    for (auto stretch = engine::NextEntries(body, next); !stretch.empty();
         stretch = engine::NextEntries(body, next)) {
      for (const engine::Entry& entry : stretch) {
        Mix(engine::KeyAndType(entry));
        if (entry.type == host::DA_CONTAINER) {
          left.push_back(engine::BlockOf<engine::ContainerBody>(entry.bits));
        } else if (entry.type == host::DA_STRING) {
          MixText(engine::StringOf(entry.Get()).View());
        } else if (entry.type == host::DA_FILENAME) {
          MixText(engine::FilenameOf(entry.Get()).GetString().View());
        } else if (engine::IsShared(entry.type)) {
          for (const host::Real number : engine::BlockOf<engine::NumberBlock>(entry.bits)->numbers)
            Mix(std::bit_cast<std::uint64_t>(number));
        } else {
          Mix(entry.bits);
        }
      }
    }
  }
}

std::uint64_t FingerprintOf(const host::BaseDocument& doc) {
  SceneFingerprint fingerprint(doc);
  while (fingerprint.Advance(1000)) {
  }
  return fingerprint.Value();
}

}  // namespace pictures
