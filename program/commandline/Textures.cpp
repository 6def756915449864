#include "program/commandline/Textures.h"

#include <algorithm>
#include <unordered_set>

#include "engine/outside/Outside.h"
#include "engine/render/LookReading.h"

namespace commandline {

using host::Filename;

namespace {

constexpr host::LONG kGlobalTexturePaths = 10;

Filename NameOf(const std::string& text) { return Filename(host::String(std::string_view(text))); }

}  // namespace

std::vector<std::string> TexturesOf(const host::BaseDocument& doc) {
  const host::BaseContainer all = doc.GetAllTextures(nullptr);
  std::unordered_set<std::string> seen;
  std::vector<std::string> names;
  for (host::LONG i = 0; i < all.GetCount(); ++i) {
    std::string name = all.GetIndexData(i).GetFilename().GetString().ToUtf8();
    if (seen.insert(name).second) names.push_back(std::move(name));
  }
  return names;
}

bool IsTextureFound(const host::BaseDocument& doc, const std::string& texture) {
  const auto places = engine::TexturePlaces(texture, doc.GetDocumentPath().GetString().ToUtf8());
  return std::any_of(places.begin(), places.end(),
                     [](const std::string& place) { return engine::Outside::Current().Kind(place) == engine::FileKind::File; });
}

bool IsTextureGathered(const host::BaseDocument& doc, const std::string& texture) {
  const Filename name = NameOf(texture);
  if (host::GeFExist(name)) return true;
  if (host::GeFExist(doc.GetDocumentPath() + Filename("tex") + name)) return true;
  for (host::LONG i = 0; i < kGlobalTexturePaths; ++i) {
    if (host::GeFExist(host::GetGlobalTexturePath(i) + name)) return true;
  }
  return false;
}

}  // namespace commandline
