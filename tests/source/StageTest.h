// StageTest: the fixture of the plug-in's tests: a session with the dialog open, and short words
// for building the active document's scene. The document owns what they make.
#pragma once

#include <gtest/gtest.h>

#include "host/BaseMaterial.h"
#include "host/BaseTag.h"
#include "host/LayerObject.h"
#include "host/RenderData.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/keys/Gadgets.h"
#include "source/Stagemarks/keys/Options.h"
#include "source/Stagemarks/keys/PluginIds.h"
#include "tests/support/ContainerText.h"
#include "tests/support/PluginSession.h"

namespace stagemarks {

constexpr LONG kVRayTag = 1021738;  // of a plug-in: stored value by value

class StageTest : public testing::Test, protected tests::PluginSession {
 protected:
  BaseObject* Object(const CHAR* name, BaseObject* parent = nullptr, LONG type = Onull) {
    BaseObject* object = BaseObject::Alloc(type);
    object->SetName(name);
    Doc().AppendObject(object, parent);
    return object;
  }

  BaseTag* Tag(BaseObject* object, LONG type) {
    BaseTag* last = object->GetFirstTag();
    while (last && last->GetNext()) last = last->GetNext();
    return object->MakeTag(type, last);
  }

  TextureTag* Texture(BaseObject* object, BaseMaterial* material) {
    TextureTag* tag = static_cast<TextureTag*>(Tag(object, Ttexture));
    tag->SetMaterial(material);
    return tag;
  }

  BaseMaterial* Material(const CHAR* name) {
    BaseMaterial* material = BaseMaterial::Alloc(Mmaterial);
    material->SetName(name);
    Doc().AppendMaterial(material);
    return material;
  }

  LayerObject* Layer(const CHAR* name, LayerObject* parent = nullptr) {
    LayerObject* layer = LayerObject::Alloc();
    layer->SetName(name);
    Doc().AppendLayer(layer, parent);
    return layer;
  }

  // One line per render settings of the document: the active one with a star, its name and its
  // width.
  std::string SettingsText() const {
    std::string text;
    for (const RenderData* one = Doc().GetFirstRenderData(); one; one = one->GetNext()) {
      text += (one == Doc().GetActiveRenderData() ? "* " : "  ") + one->GetName().ToUtf8() + " " +
              std::to_string(one->GetDataInstance()->GetLong(RDATA_XRES)) + "\n";
    }
    return text;
  }

  // "editor render deform" of one object.
  static std::string Switches(const BaseObject* object) {
    return std::to_string(object->GetEditorMode()) + " " + std::to_string(object->GetRenderMode()) +
           " " + std::to_string(object->GetDeformMode() ? 1 : 0);
  }

  static void SetSwitches(BaseObject* object, LONG editor, LONG render, Bool deform) {
    object->SetEditorMode(editor);
    object->SetRenderMode(render);
    object->SetDeformMode(deform);
  }

  // Switches all options off but these.
  void OnlyOptions(std::initializer_list<Option> wanted) {
    for (const OptionRow& row : kOptions) {
      bool on = false;
      for (const Option option : wanted) on = on || option == row.option;
      if (Marked(row.id) != on) Menu(row.id);
    }
  }
};

}  // namespace stagemarks
