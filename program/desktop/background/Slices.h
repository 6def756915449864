// Slices: work on a document itself, done in the normal event loop: one slice of a fixed time with
// each turn, so that the window lives on. It waits while the documents are in the middle of
// something. An exception ends the work with a message. Main thread.
#pragma once

#include <QTimer>
#include <chrono>
#include <functional>
#include <string>

namespace desktop {

// How long one slice takes: little enough that nobody notices a delay of the window.
constexpr std::chrono::milliseconds kSliceTime{20};
// Elements that a walk over a whole scene visits before it asks whether the slice is over.
constexpr std::size_t kElementsAtOnce = 500;
// A scene of more nodes is looked at when it has not been changed for a moment.
constexpr std::size_t kLargeScene = 20'000;
constexpr std::chrono::milliseconds kMomentAfterChange{250};

class Slices {
 public:
  // `work`: what is done, for messages. `advance`: does a little, much shorter than a slice; true
  // when more is left. `failed`: after an exception, once that was told; may be empty.
  Slices(std::string work, std::function<bool()> advance, std::function<void()> failed = {});
  Slices(const Slices&) = delete;
  Slices& operator=(const Slices&) = delete;

  // Begins, or begins with the rest anew: with the next turn of the event loop, or with a first
  // slice here and now.
  void Start();
  void StartHere();
  void Stop();
  // How long a slice goes on.
  std::chrono::milliseconds time = kSliceTime;
  // Not for what makes the documents busy itself.
  bool waits = true;
  // Hears of each slice that leaves something to do; may be empty.
  std::function<void()> paused;

 private:
  void Slice();
  void Advance();

  std::string work_;
  std::function<bool()> advance_;
  std::function<void()> failed_;
  bool isWanted_ = false;   // between Start and Stop
  bool isWaiting_ = false;  // until the documents are free
  QTimer next_;
};

}  // namespace desktop
