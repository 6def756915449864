// EditorCamera: the camera that a person moves in the viewport: it looks at a target from a
// distance under two angles, so that it can go around it, slide and come nearer. A value; any
// thread.
#pragma once

#include <optional>

#include "engine/render/ScenePicture.h"

namespace desktop {

class EditorCamera {
 public:
  // How to take over a camera that leans to a side, is scaled or mirrored: it stands upright from
  // now on, or stays so.
  enum class Lean { Straighten, Keep };

  EditorCamera() = default;
  // Looks as `camera` does; `interest` is what it goes around, taken at its depth in the middle of
  // the picture.
  EditorCamera(const engine::PictureCamera& camera, const engine::Box& interest,
               Lean lean = Lean::Straighten);

  // By radians: around a point, the target where none is given, and up and down as far as straight
  // above and below.
  void Orbit(double heading, double pitch, const std::optional<host::Vector>& around = {});
  // By shares of the picture's width: positive moves what is seen to the right and down.
  void Slide(double right, double down);
  // Below 1 comes nearer, to the point where one is given: what is seen there stays where it is in
  // the picture.
  void Zoom(double factor, const std::optional<host::Vector>& toward = {});
  // The point at the target's depth that is seen at a place of the picture, given by shares of its
  // width and height from the middle, right and down.
  host::Vector PointAt(double right, double down, double aspect) const;

  engine::PictureCamera Camera() const;

 private:
  // Width of what is seen at the depth of the target, in units of the scene.
  double SeenWidth() const;
  // Axes of the camera, at the origin.
  host::Matrix Frame() const;

  // Angle or width, near and far; its frame is not used.
  engine::PictureCamera lens_;
  host::Matrix lean_;  // the frame within the upright one
  host::Vector target_;
  // Distance to the target, in units of the scene; the angles are radians.
  double distance_ = 1000;
  double heading_ = 0;
  double pitch_ = 0;
};

}  // namespace desktop
