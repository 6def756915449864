// The nine switches of a layer as a table: where each is kept, its icon and what it does. Any
// thread.
#pragma once

#include <array>

#include "host/LayerObject.h"

namespace desktop {

struct LayerSwitch {
  host::Bool host::LayerData::*flag;
  const char* icon;
  const char* name;
  const char* help;
};

inline constexpr std::array<LayerSwitch, 9> kLayerSwitches = {{
    {&host::LayerData::solo, "solo", "Solo", "show only the objects of solo layers"},
    {&host::LayerData::view, "eye", "View", "show its objects in the viewport"},
    {&host::LayerData::render, "render", "Render", "show its objects in renders"},
    {&host::LayerData::manager, "manager", "Manager", "list its objects"},
    {&host::LayerData::locked, "lock", "Locked", "protect its objects from changes"},
    {&host::LayerData::generators, "object-generator", "Generators",
     "let its generators make their shapes"},
    {&host::LayerData::deformers, "object-deformer", "Deformers", "let its deformers work"},
    {&host::LayerData::expressions, "expression", "Expressions", "let its expressions work"},
    {&host::LayerData::animation, "animation", "Animation", "let its objects move over time"},
}};

}  // namespace desktop
