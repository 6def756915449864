// Stage: a document with a little of everything that Stagemarks record, the plug-in's dialog over
// it, and ways to change single things of it at random. The session owns the document.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <map>
#include <random>
#include <set>

#include "engine/scene/NodeIds.h"
#include "engine/scene/TreeWalk.h"
#include "engine/states/Difference.h"
#include "tests/support/PluginSession.h"
#include "tests/support/SceneBuilder.h"

namespace tests {

// An element under the part by which it is recorded.
using Key = std::pair<engine::Part, engine::NodeId>;

class Stage : public PluginSession {
 public:
  static constexpr host::LONG kStyle = 1011012;

  explicit Stage(unsigned seed = 0, int objects = 12) : random_(seed), build_(Doc()) {
    build_.Material("Red").Material("Blue").Layer("Front").Layer("Front/Left").Layer("Back");
    for (int i = 0; i < objects; ++i) AddObject("Object " + std::to_string(i));
    build_.Camera("Wide").Camera("Near");
    for (const engine::PartRow& row : engine::kPartRows) Switch(row.part, true);
  }

  SceneBuilder& Build() { return build_; }
  host::LONG Pick(std::size_t count) {
    return std::uniform_int_distribution<host::LONG>(0,
                                                     static_cast<host::LONG>(count) - 1)(random_);
  }

  void AddObject(const std::string& path) {
    host::BaseContainer compositing;
    compositing.SetBool(host::COMPOSITINGTAG_CASTSHADOW, host::TRUE);
    host::BaseContainer style;
    style.SetLong(1, 0);
    style.SetString(2, "plain");
    build_.Cube(path).Texture(path, "Red").Tag(path, host::Tcompositing, compositing);
    build_.Tag(path, kStyle, style);
  }

  // An option of the dialog's menu.
  void Switch(engine::Part part, bool on) {
    const host::LONG entry = engine::RowOf(part).option;
    if (Marked(entry) != on) Menu(entry);
  }
  engine::Parts SwitchAtRandom() {
    engine::Parts parts;
    for (const engine::PartRow& row : engine::kPartRows) {
      parts.set(engine::IndexOf(row.part), Pick(2) == 1);
      Switch(row.part, parts[engine::IndexOf(row.part)]);
    }
    return parts;
  }

  engine::StoredState State(const std::string& name) const {
    const std::vector<engine::StoredState> states = engine::ReadStates(Doc());
    const engine::StoredState* state = engine::FindState(Doc(), states, name);
    return state ? *state : engine::StoredState();
  }

  // Everything that is recorded by element, camera and render settings under 0.
  std::map<Key, host::BaseList2D*> Elements() const {
    std::map<Key, host::BaseList2D*> elements = {
        {{engine::Part::Camera, 0}, nullptr},
        {{engine::Part::RenderSettings, engine::IdOf(*Doc().GetFirstRenderData())},
         Doc().GetFirstRenderData()}};
    for (host::BaseObject* object = Doc().GetFirstObject(); object;
         object = engine::NextInTree(object)) {
      elements[{engine::Part::Objects, engine::IdOf(*object)}] = object;
      for (host::BaseTag* tag = object->GetFirstTag(); tag; tag = tag->GetNext()) {
        if (const engine::PartRow* row = engine::FindPartOfTag(tag->GetType()))
          elements[{row->part, engine::IdOf(*tag)}] = tag;
      }
    }
    for (host::GeListNode* node = Doc().GetLayerObjectRoot()->GetFirst(); node;
         node = engine::NextInTree(node))
      elements[{engine::Part::Layers, engine::IdOf(*node)}] = static_cast<host::BaseList2D*>(node);
    return elements;
  }

  // Changes one value of an element to another one.
  void Change(const Key& key, host::BaseList2D* element) {
    switch (key.first) {
      case engine::Part::Camera: {
        host::BaseDraw* view = Doc().GetRenderBaseDraw();
        host::BaseObject* wide = build_.GetObject("Wide");
        view->SetSceneCamera(view->GetSceneCamera(&Doc()) == wide ? build_.GetObject("Near") : wide,
                             host::FALSE);
        return;
      }
      case engine::Part::Objects: {
        auto* object = static_cast<host::BaseObject*>(element);
        object->SetRenderMode((object->GetRenderMode() + 1 + Pick(2)) % 3);
        return;
      }
      case engine::Part::Layers: {
        host::LayerData data = element->GetLayerData(&Doc(), host::TRUE);
        data.locked = !data.locked;
        element->SetLayerData(&Doc(), data);
        return;
      }
      case engine::Part::Materials: {
        auto* tag = static_cast<host::TextureTag*>(element);
        host::BaseMaterial* red = build_.GetMaterial("Red");
        tag->SetMaterial(tag->GetMaterial() == red ? build_.GetMaterial("Blue") : red);
        return;
      }
      case engine::Part::CompositingTags:
        return Count(*element, host::COMPOSITINGTAG_CASTSHADOW, 2);
      case engine::Part::RenderSettings:
        return Count(*element, host::RDATA_XRES, 100000);
      default:
        return Count(*element, 1, 1000);
    }
  }

 private:
  static void Count(host::BaseList2D& element, host::LONG key, host::LONG turn) {
    host::BaseContainer* data = element.GetDataInstance();
    data->SetLong(key, (data->GetLong(key) + 1) % turn);
  }

  std::mt19937 random_;
  SceneBuilder build_;
};

// A zone of this machine while it lives: an hour before Greenwich, two in summer.
class CentralEurope {
 public:
  CentralEurope() : was_(std::getenv("TZ") ? std::getenv("TZ") : "") {
    Set("CET-1CEST,M3.5.0,M10.5.0/3");
  }
  ~CentralEurope() { Set(was_); }

 private:
  static void Set(const std::string& zone) {
    zone.empty() ? unsetenv("TZ") : setenv("TZ", zone.c_str(), 1);
    tzset();
  }
  std::string was_;
};

// The elements of the changes of that kind.
inline std::set<Key> ElementsOf(const engine::Difference& difference, engine::ChangeKind kind) {
  std::set<Key> keys;
  for (const engine::ElementChange& change : difference.changes) {
    if (change.kind == kind) keys.insert({change.part, change.element});
  }
  return keys;
}

}  // namespace tests
