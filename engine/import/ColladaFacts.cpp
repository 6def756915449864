// Cameras of COLLADA files (COLLADA 1.4.1, "orthographic" and "perspective") that the library gets
// wrong: it reads the magnification of parallel ones as an angle, and has no angle for those that
// only give their vertical one. The file's text is searched for them; cameras are instanced in the
// order in which the library lists them.
#include <cmath>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "engine/import/SceneFacts.h"

namespace engine {
namespace {

// The text between `open` and `close` from `position` on, which moves behind it; empty at the
// end.
std::string_view NextBetween(std::string_view text, std::string_view open, std::string_view close,
                             std::size_t& position) {
  const std::size_t start =
      position < text.size() ? text.find(open, position) : std::string_view::npos;
  const std::size_t end =
      start == std::string_view::npos ? start : text.find(close, start + open.size());
  position = end == std::string_view::npos ? text.size() : end + close.size();
  return end == std::string_view::npos
             ? std::string_view()
             : text.substr(start + open.size(), end - start - open.size());
}

std::string_view FirstBetween(std::string_view text, std::string_view open,
                              std::string_view close) {
  std::size_t position = 0;
  return NextBetween(text, open, close, position);
}

// The number in the first element of that name, 0 where there is none.
double ElementNumber(std::string_view text, const std::string& name) {
  const std::string_view element = FirstBetween(text, "<" + name, "</" + name);
  const std::size_t start = element.find('>');
  if (start == std::string_view::npos) return 0;
  const double number = std::strtod(std::string(element.substr(start + 1)).c_str(), nullptr);
  return std::isfinite(number) ? number : 0;
}

// Whole width of the picture; the file gives half of the width or of the height.
double WidthOf(std::string_view orthographic) {
  const double half = ElementNumber(orthographic, "xmag");
  const double aspect = ElementNumber(orthographic, "aspect_ratio");
  return half > 0 ? 2 * half : 2 * ElementNumber(orthographic, "ymag") * (aspect > 0 ? aspect : 1);
}

// What the library has wrong; nothing for a camera that is right.
std::optional<SourceCamera> LensOf(std::string_view camera) {
  constexpr double kDegree = 3.14159265358979323846 / 180;
  SourceCamera lens;
  const std::string_view flat = FirstBetween(camera, "<orthographic>", "</orthographic>");
  lens.parallel = !flat.empty();
  if (lens.parallel) {
    lens.width = WidthOf(flat);
    return lens;
  }
  // The width follows the picture (SceneConversion).
  lens.vertical = ElementNumber(camera, "yfov") * kDegree;
  const bool hasWidth =
      ElementNumber(camera, "xfov") > 0 || ElementNumber(camera, "aspect_ratio") > 0;
  return lens.vertical > 0 && !hasWidth ? std::optional(lens) : std::nullopt;
}

std::unordered_map<std::string, SourceCamera> LensesToMend(std::string_view xml) {
  std::unordered_map<std::string, SourceCamera> lenses;
  std::size_t position = 0;
  while (position < xml.size()) {
    const std::string_view camera = NextBetween(xml, "<camera ", "</camera>", position);
    if (const std::optional<SourceCamera> lens = LensOf(camera))
      lenses[std::string(FirstBetween(camera, "id=\"", "\""))] = *lens;
  }
  return lenses;
}

std::vector<std::string> InstancedCameras(std::string_view xml) {
  std::vector<std::string> ids;
  std::size_t position = 0;
  while (position < xml.size()) {
    const std::string_view instance = NextBetween(xml, "<instance_camera", ">", position);
    if (!instance.empty()) ids.emplace_back(FirstBetween(instance, "url=\"#", "\""));
  }
  return ids;
}

}  // namespace

// By position, because the library keeps no id of a camera. Where the numbers of cameras differ the
// order says nothing either, and nothing is touched.
void MendColladaCameras(const std::string& xml, SceneFacts& facts, Notes& notes) {
  const std::unordered_map<std::string, SourceCamera> lenses = LensesToMend(xml);
  const std::vector<std::string> ids = InstancedCameras(xml);
  if (lenses.empty()) return;
  if (ids.size() != facts.cameras.size()) {
    notes.Add("Parallel cameras may have become perspective ones, or angles be others.");
    return;
  }
  for (std::size_t i = 0; i < ids.size(); ++i) {
    const auto found = lenses.find(ids[i]);
    if (found == lenses.end()) continue;
    facts.cameras[i].parallel = found->second.parallel;
    facts.cameras[i].width = found->second.width;
    facts.cameras[i].vertical = found->second.vertical;
    facts.cameras[i].horizontal = 0;
  }
}

}  // namespace engine
