// Commands on layers: making, deleting, switching them and putting objects on them. Each is one
// undo step and posts the change, but for those that say that they are a part of the open undo
// group. Layers that are not of the document are left alone. New elements belong to the document.
// Main thread.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/editing/Selection.h"
#include "engine/editing/StepwiseEdit.h"
#include "host/LayerObject.h"

namespace engine {

// The nine switches of a layer as a table: where each is kept, the word for it where it is typed,
// how it is called and what it does.
struct LayerSwitch {
  host::Bool host::LayerData::*flag;
  const char* key;
  const char* name;
  const char* help;
};

inline constexpr std::array<LayerSwitch, 9> kLayerSwitchTable = {{
    {&host::LayerData::solo, "solo", "Solo", "show only the objects of solo layers"},
    {&host::LayerData::view, "view", "View", "show its objects in the viewport"},
    {&host::LayerData::render, "render", "Render", "show its objects in renders"},
    {&host::LayerData::manager, "manager", "Manager", "list its objects"},
    {&host::LayerData::locked, "locked", "Locked", "protect its objects from changes"},
    {&host::LayerData::generators, "generators", "Generators",
     "let its generators make their shapes"},
    {&host::LayerData::deformers, "deformers", "Deformers", "let its deformers work"},
    {&host::LayerData::expressions, "expressions", "Expressions", "let its expressions work"},
    {&host::LayerData::animation, "animation", "Animation", "let its objects move over time"},
}};

// The number of the switch with that key in the table.
std::optional<std::size_t> FindLayerSwitch(std::string_view key);

// A new one below all others, with a name and, by turns, a color of its own.
host::LayerObject* AddLayer(host::BaseDocument& doc);
// One of that name, as a part of the open undo group; nothing is selected or posted.
host::LayerObject* MakeLayer(host::BaseDocument& doc, const std::string& name,
                             const host::LayerData& data = {});
// The color that a new layer has by turns. O(layers).
host::Vector NextLayerColor(const host::BaseDocument& doc);
// With the layers below them.
void DeleteLayers(host::BaseDocument& doc, const LayerList& layers);
void RenameLayer(host::BaseDocument& doc, host::LayerObject& layer, const host::String& name);
void SetLayerColor(host::BaseDocument& doc, const LayerList& layers, const host::Vector& color);
void SetLayerSwitch(host::BaseDocument& doc, const LayerList& layers, std::size_t number, bool on);
// Puts an object on a layer, null: off its layer, as a part of the open undo group; nothing is
// posted.
void PutOnLayer(host::BaseDocument& doc, host::BaseObject& object, host::LayerObject* layer);
// Puts objects there as a step of its own.
StepwiseEdit AssignLayer(host::BaseDocument& doc, std::vector<host::BaseObject*> objects,
                         host::LayerObject* layer);

}  // namespace engine
