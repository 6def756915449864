// KeptRays: every call into the ray tracing library passes through here, so that the rays of a
// picture can be counted, kept and traced once more, one by one, with nothing around them: that is
// the least a picture of these rays can cost that does not trace several together. Included once by
// a program that links the engine. One thread, time of the processor.
#pragma once

#include <dlfcn.h>
#include <embree3/rtcore.h>

#include <ctime>
#include <vector>

namespace {

inline double Now() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

template <class Work>
double Seconds(const Work& work) {
  const double begin = Now();
  work();
  return Now() - begin;
}

struct KeptRay {
  RTCScene scene;
  RTCRayHit ray;
  bool isShadow;
  float far;  // as it was before it was traced
};

// Rays kept while `keeps` is set, and the time spent on building scenes.
struct Tracing {
  bool keeps = false;
  std::vector<KeptRay> rays;
  double building = 0;  // seconds
} tracing;

template <class Function>
Function* Real(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void KeepPacket(RTCScene scene, const int* valid, RTCRay8& packet, bool isShadow) {
  for (unsigned i = 0; i < 8; ++i) {
    if (valid[i] == 0) continue;
    RTCRayHit one{};
    one.ray = rtcGetRayFromRayN(reinterpret_cast<RTCRayN*>(&packet), 8, i);
    tracing.rays.push_back({scene, one, isShadow, one.ray.tfar});
  }
}

}  // namespace

extern "C" {

void rtcIntersect1(RTCScene scene, RTCIntersectContext* context, RTCRayHit* hit) {
  static auto* const real = Real<void(RTCScene, RTCIntersectContext*, RTCRayHit*)>("rtcIntersect1");
  if (tracing.keeps) tracing.rays.push_back({scene, *hit, false, hit->ray.tfar});
  real(scene, context, hit);
}

void rtcOccluded1(RTCScene scene, RTCIntersectContext* context, RTCRay* ray) {
  static auto* const real = Real<void(RTCScene, RTCIntersectContext*, RTCRay*)>("rtcOccluded1");
  if (tracing.keeps) tracing.rays.push_back({scene, {*ray, {}}, true, ray->tfar});
  real(scene, context, ray);
}

// Those of a packet are kept one by one: how a picture groups its rays is its own affair.
void rtcIntersect8(const int* valid, RTCScene scene, RTCIntersectContext* context,
                   RTCRayHit8* packet) {
  static auto* const real =
      Real<void(const int*, RTCScene, RTCIntersectContext*, RTCRayHit8*)>("rtcIntersect8");
  if (tracing.keeps) KeepPacket(scene, valid, packet->ray, false);
  real(valid, scene, context, packet);
}

void rtcOccluded8(const int* valid, RTCScene scene, RTCIntersectContext* context, RTCRay8* packet) {
  static auto* const real =
      Real<void(const int*, RTCScene, RTCIntersectContext*, RTCRay8*)>("rtcOccluded8");
  if (tracing.keeps) KeepPacket(scene, valid, *packet, true);
  real(valid, scene, context, packet);
}

void rtcCommitScene(RTCScene scene) {
  static auto* const real = Real<void(RTCScene)>("rtcCommitScene");
  tracing.building += Seconds([&] { real(scene); });
}
}

namespace {

// Traces what was kept once more, ray by ray, and throws the answers away. As often as wanted.
double TraceAgain() {
  static auto* const intersect =
      Real<void(RTCScene, RTCIntersectContext*, RTCRayHit*)>("rtcIntersect1");
  static auto* const occluded = Real<void(RTCScene, RTCIntersectContext*, RTCRay*)>("rtcOccluded1");
  RTCIntersectContext context;
  rtcInitIntersectContext(&context);
  for (KeptRay& kept : tracing.rays) {
    kept.ray.ray.tfar = kept.far;
    kept.ray.hit.geomID = RTC_INVALID_GEOMETRY_ID;
    kept.ray.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
  }
  return Seconds([&] {
    for (KeptRay& kept : tracing.rays) {
      if (kept.isShadow) {
        occluded(kept.scene, &context, &kept.ray.ray);
      } else {
        intersect(kept.scene, &context, &kept.ray);
      }
    }
  });
}

}  // namespace
