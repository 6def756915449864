// BaseList2D: a named element with a parameter container, bits, an assigned layer and attached
// shaders. It owns its data, its shaders and what hangs below it. Main thread.
#pragma once

#include "host/BaseContainer.h"
#include "host/GeListNode.h"

namespace host {

class BaseShader;
class LayerObject;
struct LayerData;

// Bits of GetAllBits.
inline constexpr LONG BIT_ACTIVE = 2;    // selected: objects, tags, layers, materials alike
inline constexpr LONG BIT_DISABLED = 4;  // video posts and multi-passes: switched off

class BaseList2D : public GeListNode {
 public:
  String GetName() const { return name_; }
  // Any text, empty and repeated ones included: names identify nothing.
  void SetName(const String& name);
  // The host's name for this kind of element: "Bitmap", "Camera", ...; "Unknown" for a type the
  // host does not know.
  String GetTypeName() const;

  // A copy of the parameters; the live ones in place (owned by this element); replacing or, with
  // `add`, merging into them. A write through the live ones is not seen as a change of the document
  // by itself: post Message(MSG_UPDATE) or SetChanged. SetData counts as a change always.
  BaseContainer GetData() const { return data_; }
  BaseContainer* GetDataInstance() { return &data_; }
  const BaseContainer* GetDataInstance() const { return &data_; }
  void SetData(const BaseContainer& data, Bool add = TRUE);

  // GetBit is true when all bits of `mask` are set. Selecting alone does not count as an unsaved
  // change.
  LONG GetAllBits() const { return bits_; }
  void SetAllBits(LONG bits);
  Bool GetBit(LONG mask) const { return (bits_ & mask) == mask; }
  void SetBit(LONG mask);
  void DelBit(LONG mask);

  // Of a layer: its own flags and color. Of any other element: those of its layer, all on when it
  // has none. Null-safe: without a layer SetLayerData answers false and changes nothing. `rawdata`
  // is there for the host's signature. Writing to an element that is no layer changes its layer,
  // and with it all that are on that layer.
  LayerData GetLayerData(const BaseDocument* doc, Bool rawdata = FALSE) const;
  Bool SetLayerData(BaseDocument* doc, const LayerData& data);
  // The layer this element is assigned to in `doc`, or null; assigning null takes it off its layer.
  LayerObject* GetLayerObject(const BaseDocument* doc) const;
  // False for a layer of another document.
  Bool SetLayerObject(LayerObject* layer);

  // First attached shader, or null; the others follow by GetNext. The element owns its shaders.
  BaseShader* GetFirstShader() const;
  // Attaches a shader after `pred`, last where `pred` is null. Takes ownership.
  void InsertShader(BaseShader* shader, BaseShader* pred = nullptr);

 protected:
  using GeListNode::GeListNode;
  ~BaseList2D() = default;

 private:
  friend struct engine::NodeAccess;
  String name_;
  BaseContainer data_;
  LONG bits_ = 0;
  ULLONG layer_ = 0;  // identity of the assigned layer, 0 for none
  GeListHead shaders_;
};

}  // namespace host
