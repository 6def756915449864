// CameraFlight: moves a camera of the scene as a person moves the picture that is seen through it:
// all that belongs to one gesture is one undo step. It keeps identities, never addresses. Main
// thread.
#pragma once

#include "engine/scene/EditorView.h"
#include "program/desktop/OpenDocument.h"

namespace desktop {

// Why a camera stays where it is, a sentence for a person; empty where it may be moved.
std::string WhyFixed(const host::BaseObject& camera);

class CameraFlight {
 public:
  // The next move is a step of its own.
  void Land() { camera_ = 0; }
  // Whether nothing but this gesture has changed the document since its last move.
  bool GoesOn(const host::BaseDocument& doc, const host::BaseObject& camera) const;
  // Puts a camera that may be moved to where `view` looks from, and gives it the width of a
  // parallel one. Posts the change. False, changing nothing, where the place is no place.
  bool Move(host::BaseDocument& doc, host::BaseObject& camera, const engine::PictureCamera& view);

 private:
  host::ULLONG doc_ = 0;
  engine::NodeId camera_ = 0;
  host::ULLONG after_ = 0;  // change count of the document right after the last move
};

}  // namespace desktop
