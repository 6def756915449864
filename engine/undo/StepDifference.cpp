#include "engine/undo/StepDifference.h"

#include <algorithm>

#include "engine/core/Progress.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/ValueText.h"
#include "engine/undo/UndoHistory.h"

namespace engine {

using host::BaseList2D;

namespace {

void Count(const BaseList2D& node, StepDifference& difference) {
  switch (KindOf(node)) {
    case NodeKind::Object:
      ++difference.objects;
      break;
    case NodeKind::Tag:
    case NodeKind::TextureTag:
    case NodeKind::XPressoTag:
      ++difference.tags;
      break;
    case NodeKind::Layer:
      ++difference.layers;
      break;
    case NodeKind::RenderSettings:
      ++difference.renderSettings;
      break;
    default:
      ++difference.others;
  }
}

std::string NameText(const host::BaseDocument& doc, NodeId id) {
  const BaseList2D* node = FindNode(&doc, id);
  return node ? Quoted(node->GetName()) : "none";
}

}  // namespace

// A later entry of an element keeps a state in between.
std::vector<std::size_t> UndoHistory::FirstEntries(std::size_t from) const {
  std::vector<std::pair<NodeId, std::size_t>> entries;
  for (std::size_t i = from; i < open_->entries.Size(); ++i)
    entries.emplace_back(std::as_const(open_->entries)[i].Node(), i);
  std::sort(entries.begin(), entries.end());
  const auto sameNode = [](const auto& a, const auto& b) { return a.first == b.first; };
  entries.erase(std::unique(entries.begin(), entries.end(), sameNode), entries.end());
  std::vector<std::size_t> positions;
  positions.reserve(entries.size());
  for (const auto& entry : entries) positions.push_back(entry.second);
  std::sort(positions.begin(), positions.end());
  return positions;
}

std::optional<StepDifference> UndoHistory::Difference(std::size_t from, std::size_t most,
                                                      const ProgressCallback& progress) const {
  constexpr std::size_t kAskEvery = 4096;
  StepDifference difference;
  if (!open_) return difference;
  const std::vector<std::size_t> positions = FirstEntries(from);
  std::size_t described = 0;
  for (std::size_t i = 0; i < positions.size(); ++i) {
    if (i % kAskEvery == 0 && progress &&
        !progress(static_cast<double>(i) / static_cast<double>(positions.size())))
      return std::nullopt;
    const UndoEntry& entry = std::as_const(open_->entries)[positions[i]];
    const BaseList2D* node = FindNode(&doc_, entry.Node());
    if (entry.KeepsPlace()) ++difference.others;
    if (!node || entry.KeepsPlace() || !entry.Differs(*node)) continue;
    Count(*node, difference);
    if (described++ < most) entry.AppendDifference(doc_, *node, difference.lines);
  }
  const Remembered present = Present();
  const Remembered& opening = open_->remembered;
  difference.sceneCamera = opening.camera != present.camera;
  difference.activeSettings = opening.settings != present.settings;
  const auto fact = [&](const char* what, NodeId was, NodeId is) {
    if (was != is)
      difference.lines.push_back(what + NameText(doc_, was) + " -> " + NameText(doc_, is));
  };
  fact("active render settings ", opening.settings, present.settings);
  fact("scene camera ", opening.camera, present.camera);
  return difference;
}

}  // namespace engine
