// Guarded: the border of engine/scenefile: what is thrown inside becomes a Status with its message.
// Any thread.
#pragma once

#include <exception>
#include <new>

#include "engine/core/Result.h"
#include "engine/scenefile/Damage.h"

namespace engine::scenefile {

template <class T, class Work>
Result<T> Guarded(const Work& work) {
  try {
    return Result<T>(work());
  } catch (const Damage& damage) {
    return Result<T>::Failure(damage.message);
  } catch (const std::bad_alloc&) {
    return Result<T>::Failure(
        "There is not enough memory for this scene. Close other documents and try again.");
  } catch (const std::exception& error) {
    return Result<T>::Failure(std::string("The scene cannot be handled: ") + error.what() + ".");
  }
}

}  // namespace engine::scenefile
