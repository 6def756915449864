#include "program/publish/StatePage.h"

#include <nlohmann/json.hpp>

#include "engine/application/ProgramPlaces.h"
#include "engine/render/Codecs.h"
#include "program/publish/FileOrigin.h"

namespace publishing {

using engine::Result;

namespace {

constexpr std::string_view kPlace = "<!--DATA-->";
// Of JPEG, 1 to 100: a page holds one for each state, and they are small.
constexpr int kThumbnailQuality = 82;
// Bytes of the scene in one element: browsers have a bound for the length of a text.
constexpr std::size_t kPiece = std::size_t{3} << 22U;

// RFC 4648, section 4, with padding. Pieces are multiples of 3 bytes, so that only the last one has
// any.
void AppendBase64(std::string& text, std::string_view bytes) {
  constexpr char kBase64Digits[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const auto at = [&](std::size_t i) {
    return i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U;
  };
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const unsigned three = at(i) << 16U | at(i + 1) << 8U | at(i + 2);
    text += kBase64Digits[three >> 18U];
    text += kBase64Digits[three >> 12U & 63U];
    text += i + 1 < bytes.size() ? kBase64Digits[three >> 6U & 63U] : '=';
    text += i + 2 < bytes.size() ? kBase64Digits[three & 63U] : '=';
  }
}

// Plain ASCII without "<", so that nothing in a name ends the element that it stands in.
std::string AsScriptData(const nlohmann::json& json) {
  const std::string text = json.dump(-1, ' ', true, nlohmann::json::error_handler_t::replace);
  std::string safe;
  for (const char letter : text) {
    if (letter == '<') {
      safe += "\\u003c";
    } else {
      safe += letter;
    }
  }
  return safe;
}

nlohmann::json ListOf(const std::vector<PageState>& states) {
  nlohmann::json list = nlohmann::json::array();
  for (const PageState& state : states) {
    std::string thumbnail;
    if (!state.thumbnail.empty()) {
      thumbnail = "data:image/jpeg;base64,";
      AppendBase64(thumbnail, state.thumbnail);
    }
    list.push_back({{"name", state.name}, {"date", state.date}, {"thumbnail", thumbnail}});
  }
  return list;
}

}  // namespace

Result<PageViewer> ReadPageViewer(engine::FileSystem& files) {
  const std::string folder = engine::SharedFolder() + "/page/";
  if (files.Kind(folder + "page.html") != engine::FileKind::File) {
    return Result<PageViewer>::Failure(
        "This program was built without the viewer of web pages (" + folder +
        "page.html is missing). Install node and npm, and build it again with the network at hand; "
        "`stagemarks publish` and `stagemarks sheet --html` work without it.");
  }
  const auto page = files.ReadFile(folder + "page.html");
  if (!page) return page.GetStatus();
  const auto license = files.ReadFile(folder + kPageLicense);
  if (!license) return license.GetStatus();
  if (page.Value().find(kPlace) == std::string::npos) {
    return Result<PageViewer>::Failure("\"" + folder +
                                       "page.html\" is damaged. Install the program again.");
  }
  return PageViewer{page.Value(), license.Value()};
}

Result<std::string> EncodeThumbnail(const engine::Image& picture) {
  return engine::EncodeJpeg(picture, kThumbnailQuality);
}

// The scene stands in several elements of text, which the viewer joins: browsers read one long one
// badly. The size is reserved first, since a page may have hundreds of megabytes.
std::string MakeStatePage(const PageViewer& viewer, const PageContents& contents) {
  const std::size_t place = viewer.page.find(kPlace);
  const std::string list =
      AsScriptData({{"title", contents.title}, {"states", ListOf(contents.states)}});
  std::string page;
  page.reserve(viewer.page.size() + list.size() + contents.scene.size() / 3 * 4 + 200);
  page += std::string_view(viewer.page).substr(0, place);
  page += "<script type=\"application/json\" id=\"contents\">" + list + "</script>\n";
  for (std::size_t at = 0; at < contents.scene.size(); at += kPiece) {
    page += "<script type=\"text/plain\" class=\"scene\">";
    AppendBase64(page, std::string_view(contents.scene).substr(at, kPiece));
    page += "</script>\n";
  }
  page += std::string_view(viewer.page).substr(place + kPlace.size());
  return page;
}

bool HasLicense(engine::FileSystem& files, const std::string& folder, const PageViewer& viewer) {
  const std::string path = folder + "/" + kPageLicense;
  if (files.Kind(path) != engine::FileKind::File) return false;
  const auto there = files.ReadFile(path);
  return there && there.Value() == viewer.license;
}

engine::Status WritePage(engine::FileSystem& files, const std::string& folder,
                         const std::string& page, const PageViewer& viewer) {
  engine::Status written;
  if (!HasLicense(files, folder, viewer))
    written = files.ReplaceFile(folder + "/" + kPageLicense, viewer.license);
  return written ? files.ReplaceFile(folder + "/" + kPageFile, WithMaker(page, kPageMaker))
                 : written;
}

}  // namespace publishing
