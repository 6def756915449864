#include "engine/outside/PathRules.h"

#include <algorithm>

namespace engine {
namespace {

std::string Quoted(const std::string& path) { return "\"" + path + "\""; }

// The components of an absolute path, joined again by single separators.
std::string Cleaned(const std::string& path) {
  std::string clean;
  for (std::size_t start = 0; start < path.size();) {
    const std::size_t end = std::min(path.find('/', start), path.size());
    const std::string part = path.substr(start, end - start);
    if (!part.empty() && part != ".") clean += "/" + part;
    start = end + 1;
  }
  return clean.empty() ? "/" : clean;
}

// Asked of the path as given: a backslash is a letter here and a separator on the machine that the
// scene comes from.
bool ClimbsUp(const std::string& path) {
  for (std::size_t start = 0; start <= path.size();) {
    const std::size_t end = std::min(path.find_first_of("/\\", start), path.size());
    if (path.compare(start, end - start, "..") == 0) return true;
    start = end + 1;
  }
  return false;
}

}  // namespace

Result<std::string> PathForReading(const std::string& path) {
  if (path.empty()) return Status::Failure("The path is empty.");
  if (path.find('\0') != std::string::npos)
    return Status::Failure("The path " + Quoted(path.c_str()) + "... holds a NUL byte.");
  if (path.front() != '/')
    return Status::Failure("The path " + Quoted(path) + " is relative; an absolute one is needed.");
  return Cleaned(path);
}

Result<std::string> PathForWriting(const std::string& path) {
  Result<std::string> clean = PathForReading(path);
  if (!clean) return clean;
  if (ClimbsUp(path))
    return Status::Failure("The path " + Quoted(path) + " holds a \"..\" component.");
  if (clean.Value() == "/") return Status::Failure("The root folder cannot be changed.");
  return clean;
}

}  // namespace engine
