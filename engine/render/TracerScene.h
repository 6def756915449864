// TracerScene: a scene of the ray tracer: what rays are sent into, an index over triangles or over
// other such scenes. Owned by whoever made it. Building: one thread; afterwards any may look.
#pragma once

#include <embree3/rtcore.h>

namespace engine {

class TracerScene {
 public:
  explicit TracerScene(RTCDevice device) : device_(device) {
    // Where it keeps a thread's errors is made when one is asked for, which must not be when memory
    // is short.
    (void)rtcGetDeviceError(device_);
    scene_ = rtcNewScene(device_);
  }
  TracerScene(const TracerScene&) = delete;
  TracerScene& operator=(const TracerScene&) = delete;
  // The library ends the process when a scene is released whose building has failed. Such a one is
  // left to the end of the process, which is near where memory is that short.
  ~TracerScene() {
    if (scene_ && !isBroken_) rtcReleaseScene(scene_);
  }

  // To be called once everything in it is attached.
  void Build() {
    if (scene_) rtcCommitScene(scene_);
    isBroken_ = !scene_ || rtcGetDeviceError(device_) != RTC_ERROR_NONE;
  }
  // Whether anything went wrong since it was made, for lack of memory. Nothing may be looked for in
  // it then.
  bool IsBroken() const { return isBroken_; }
  RTCScene Get() const { return scene_; }

 private:
  RTCDevice device_;
  RTCScene scene_ = nullptr;
  bool isBroken_ = false;
};

}  // namespace engine
