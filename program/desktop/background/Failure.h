// Failure: what a person is told of an exception that ended work of the program. Any thread.
#pragma once

#include <exception>
#include <new>
#include <string>

namespace desktop {

// Within a catch block. `work`: what was done, as in "There is not enough memory for WORK."
inline std::string FailureOf(const std::string& work) {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return "There is not enough memory for " + work + ".";
  } catch (const std::exception& error) {
    return "An error ended " + work + ": " + error.what();
  } catch (...) {
    return "An unknown error ended " + work + ".";
  }
}

}  // namespace desktop
