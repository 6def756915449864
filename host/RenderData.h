// RenderData, BaseVideoPost, MultipassObject: render settings with their post effects and passes.
// The document owns the settings, the settings own posts and passes. Main thread.
#pragma once

#include "host/BaseList2D.h"

namespace host {

inline constexpr LONG Rbase = 110050;
inline constexpr LONG VPbase = 110048;
inline constexpr LONG Zmultipass = 300001048;
// The global illumination post effect.
inline constexpr LONG VPglobalillumination = 1021096;

// Parameters of render settings that the stand-in reads. They are stored in scene files.
inline constexpr LONG RDATA_XRES = 5008;           // LONG, pixels
inline constexpr LONG RDATA_YRES = 5009;           // LONG, pixels
inline constexpr LONG RDATA_FRAMESEQUENCE = 5016;  // LONG: 0 from-to, 1 current frame, 2 all frames
inline constexpr LONG RDATA_FRAMEFROM = 5017;      // time
inline constexpr LONG RDATA_FRAMETO = 5018;        // time
inline constexpr LONG RDATA_FRAMERATE = 5020;      // LONG, frames per second

class BaseVideoPost : public BaseList2D {
 public:
  // Owned by the caller until inserted. BIT_DISABLED switches it off.
  static BaseVideoPost* Alloc(LONG type);
  static void Free(BaseVideoPost*& post);
  BaseVideoPost* GetNext() const { return static_cast<BaseVideoPost*>(GeListNode::GetNext()); }

 protected:
  using BaseList2D::BaseList2D;
  ~BaseVideoPost() = default;

 private:
  friend struct engine::NodeAccess;
};

class MultipassObject : public BaseList2D {
 public:
  static MultipassObject* Alloc(LONG type);
  static void Free(MultipassObject*& pass);
  MultipassObject* GetNext() const { return static_cast<MultipassObject*>(GeListNode::GetNext()); }

 protected:
  using BaseList2D::BaseList2D;
  ~MultipassObject() = default;

 private:
  friend struct engine::NodeAccess;
};

class RenderData : public BaseList2D {
 public:
  // New settings with the host's defaults (1280 x 720, frames 0 to 90 at 30), owned by the caller
  // until inserted.
  static RenderData* Alloc();
  // As BaseObject::Free. Freeing the active ones makes the first remaining ones active; the last
  // remaining ones of a document are replaced by fresh ones, because a document always has render
  // settings.
  static void Free(RenderData*& settings);

  RenderData* GetNext() const { return static_cast<RenderData*>(GeListNode::GetNext()); }
  RenderData* GetPred() const { return static_cast<RenderData*>(GeListNode::GetPred()); }
  RenderData* GetUp() const { return static_cast<RenderData*>(GeListNode::GetUp()); }
  RenderData* GetDown() const { return static_cast<RenderData*>(GeListNode::GetDown()); }

  // Null where there is none; the others follow by GetNext.
  BaseVideoPost* GetFirstVideoPost() const;
  MultipassObject* GetFirstMultipass() const;
  // Appends, or puts after `pred`. Takes ownership.
  void InsertVideoPost(BaseVideoPost* post, BaseVideoPost* pred = nullptr);
  void InsertMultipass(MultipassObject* pass, MultipassObject* pred = nullptr);

 protected:
  using BaseList2D::BaseList2D;
  ~RenderData() = default;

 private:
  friend struct engine::NodeAccess;
  GeListHead posts_;
  GeListHead passes_;
};

}  // namespace host
