#include "program/lookup/SceneLookup.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <numeric>
#include <tuple>
#include <unordered_set>

#include "engine/scene/TreeWalk.h"
#include "program/outcome/Words.h"

namespace lookup {

using engine::NextInTree;
using engine::Result;
using host::BaseDocument;
using host::BaseObject;
using outcome::Shown;

namespace {

constexpr std::size_t kCandidatesShown = 8;

// Where the letter after the one at `at` begins.
std::size_t NextLetter(std::string_view text, std::size_t at) {
  do {
    ++at;
  } while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U);
  return at;
}

// Something typed: a name or a path, plain or with * and ?.
class Wanted {
 public:
  explicit Wanted(const std::string& typed) : typed_(typed), isPattern_(IsPattern(typed)) {}

  bool Matches(std::string_view text) const {
    return isPattern_ ? MatchesPattern(text, typed_) : text == typed_;
  }

 private:
  const std::string& typed_;
  bool isPattern_;
};

bool IsPosition(const std::string& typed) {
  return typed.size() > 1 && typed[0] == '#' &&
         typed.find_first_not_of("0123456789", 1) == std::string::npos;
}

Result<std::vector<BaseObject*>> ByPosition(const BaseDocument& doc, const std::string& typed) {
  std::size_t wanted = 0;
  const auto read = std::from_chars(typed.data() + 1, typed.data() + typed.size(), wanted);
  std::size_t position = 0;
  for (BaseObject* object = doc.GetFirstObject(); object; object = NextInTree(object), ++position) {
    if (position == wanted && read.ec == std::errc()) return std::vector<BaseObject*>{object};
  }
  return Result<std::vector<BaseObject*>>::Failure("There is no object " + typed +
                                                   "; the scene has " + std::to_string(position) +
                                                   ", the first is #0.");
}

// A pattern is compared only where a path has as many slashes, so that a deep tree does not cost
// its depth at each step; for the same reason no * stands for a slash.
std::vector<BaseObject*> ByPath(const BaseDocument& doc, const std::string& typed) {
  const Wanted wanted(typed);
  const auto slashes = static_cast<std::size_t>(std::count(typed.begin(), typed.end(), '/'));
  std::vector<BaseObject*> found;
  ObjectPaths paths;
  for (BaseObject* object = doc.GetFirstObject(); object; object = NextInTree(object)) {
    const std::string& path = paths.StepTo(*object);
    if (paths.Slashes() == slashes && wanted.Matches(path)) found.push_back(object);
  }
  return found;
}

std::vector<BaseObject*> ByName(const BaseDocument& doc, const std::string& typed) {
  const Wanted wanted(typed);
  std::vector<BaseObject*> found;
  for (BaseObject* object = doc.GetFirstObject(); object; object = NextInTree(object)) {
    if (wanted.Matches(object->GetName().ToUtf8())) found.push_back(object);
  }
  return found;
}

std::string Ambiguity(const std::string& typed, const std::vector<BaseObject*>& found,
                      const BaseDocument& doc) {
  std::string text = "\"" + typed + "\" names " + std::to_string(found.size()) + " objects:";
  std::size_t position = 0;
  std::size_t shown = 0;
  for (BaseObject* object = doc.GetFirstObject();
       object && shown < std::min(found.size(), kCandidatesShown); object = NextInTree(object)) {
    if (object == found[shown]) {
      text += "\n  #" + std::to_string(position) + "  " + PathOf(*object);
      ++shown;
    }
    ++position;
  }
  if (found.size() > shown) text += "\n  ...";
  return text + "\nGive the path, the position, or a pattern with * for all of them.";
}

template <class T>
Result<T*> FindNamed(T* first, const std::string& name, const std::string& kind) {
  T* found = nullptr;
  std::string known;
  for (T* item = first; item; item = NextInTree(item)) {
    if (item->GetName().View() == name) {
      if (found)
        return Result<T*>::Failure("There are several " + kind + "s \"" + name +
                                   "\". Rename one first.");
      found = item;
    }
    if (known.size() < 400) known += (known.empty() ? "" : ", ") + item->GetName().ToUtf8();
  }
  if (found) return found;
  return Result<T*>::Failure("There is no " + kind + " \"" + name + "\"." +
                             (known.empty() ? "" : " There are: " + known + "."));
}

constexpr std::size_t kLongestCompared = 200;  // longer names are not compared
constexpr std::size_t kMostMeant = 3;

// Number of single-character edits between two names (Wagner and Fischer, 1974), over bytes.
std::size_t EditDistance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t change =
          diagonal + (std::tolower(a[i - 1]) != std::tolower(b[j - 1]) ? 1 : 0);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, change});
    }
  }
  return row[b.size()];
}

// How far apart two names are, more than anything where they are not close.
std::size_t Distance(const std::string& name, const std::string& known) {
  constexpr std::size_t kFar = 1000;
  if (name.empty() || name.size() > kLongestCompared || known.size() > kLongestCompared)
    return kFar;
  const std::size_t edits = EditDistance(name, known);
  const bool close = edits <= std::max<std::size_t>(2, name.size() / 3) && edits < name.size();
  return close || known.find(name) != std::string::npos ? edits : kFar;
}

}  // namespace

std::string PathOf(const BaseObject& object) {
  std::vector<std::string> names;
  for (const BaseObject* at = &object; at; at = at->GetUp())
    names.push_back(at->GetName().ToUtf8());
  std::string path;
  for (auto name = names.rbegin(); name != names.rend(); ++name) path += "/" + *name;
  return path;
}

const std::string& ObjectPaths::StepTo(const BaseObject& object) {
  while (!levels_.empty() && levels_.back().object != object.GetUp()) levels_.pop_back();
  path_.resize(levels_.empty() ? 0 : levels_.back().length);
  const std::string name = object.GetName().ToUtf8();
  const std::size_t slashes =
      Slashes() + 1 + static_cast<std::size_t>(std::count(name.begin(), name.end(), '/'));
  path_ += "/" + name;
  levels_.push_back({&object, path_.size(), slashes});
  return path_;
}

Result<std::vector<BaseObject*>> FindObjects(const BaseDocument& doc, const std::string& typed) {
  if (IsPosition(typed)) return ByPosition(doc, typed);
  const bool isPath = !typed.empty() && typed[0] == '/';
  std::vector<BaseObject*> found = isPath ? ByPath(doc, typed) : ByName(doc, typed);
  if (found.empty()) {
    return Result<std::vector<BaseObject*>>::Failure(
        "There is no object \"" + typed + "\". `stagemarks info SCENE --tree` shows them.");
  }
  if (found.size() > 1 && !IsPattern(typed))
    return Result<std::vector<BaseObject*>>::Failure(Ambiguity(typed, found, doc));
  return found;
}

Result<BaseObject*> FindObject(const BaseDocument& doc, const std::string& typed) {
  auto found = FindObjects(doc, typed);
  if (!found) return found.GetStatus();
  if (found.Value().size() != 1)
    return Result<BaseObject*>::Failure(Ambiguity(typed, found.Value(), doc));
  return found.Value().front();
}

Result<host::BaseMaterial*> FindMaterial(const BaseDocument& doc, const std::string& name) {
  return FindNamed(doc.GetFirstMaterial(), name, "material");
}

Result<host::LayerObject*> FindLayer(const BaseDocument& doc, const std::string& name) {
  return FindNamed(static_cast<host::LayerObject*>(doc.GetLayerObjectRoot()->GetFirst()), name,
                   "layer");
}

Result<std::vector<host::LayerObject*>> FindLayers(const BaseDocument& doc,
                                                   const std::string& typed) {
  std::vector<host::LayerObject*> found;
  const Wanted wanted(typed);
  auto* first = static_cast<host::LayerObject*>(doc.GetLayerObjectRoot()->GetFirst());
  for (host::LayerObject* layer = first; layer; layer = NextInTree(layer)) {
    if (wanted.Matches(layer->GetName().ToUtf8())) found.push_back(layer);
  }
  if (found.empty() || !IsPattern(typed)) {
    const auto one = FindLayer(doc, typed);
    if (!one) return one.GetStatus();
  }
  return found;
}

bool IsPattern(const std::string& typed) { return typed.find_first_of("*?") != std::string::npos; }

// Where it goes wrong behind a *, that one takes a letter more; no earlier one has to.
bool MatchesPattern(std::string_view text, std::string_view pattern) {
  std::size_t at = 0;
  std::size_t typed = 0;
  std::size_t star = std::string_view::npos;
  std::size_t begin = 0;
  while (at < text.size()) {
    if (typed < pattern.size() && pattern[typed] == '*') {
      star = typed++;
      begin = at;
    } else if (typed < pattern.size() && pattern[typed] == '?') {
      ++typed;
      at = NextLetter(text, at);
    } else if (typed < pattern.size() && pattern[typed] == text[at]) {
      ++typed;
      ++at;
    } else if (star != std::string_view::npos) {
      typed = star + 1;
      at = begin = NextLetter(text, begin);
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', typed) == std::string_view::npos;
}

Result<std::vector<std::string>> FindMarks(const std::vector<std::string>& typed,
                                           const std::vector<std::string>& known) {
  const std::unordered_set<std::string> there(known.begin(), known.end());
  std::unordered_set<std::string> met;
  std::vector<std::string> found;
  const auto add = [&](const std::string& name) {
    if (met.insert(name).second) found.push_back(name);
  };
  for (const std::string& name : typed) {
    if (there.count(name) > 0) {
      add(name);
      continue;
    }
    bool isMeant = false;
    for (const std::string& other : known) {
      if (!IsPattern(name) || !MatchesPattern(other, name)) continue;
      isMeant = true;
      add(other);
    }
    if (isMeant) continue;
    const std::string near = DidYouMean(name, known);
    return Result<std::vector<std::string>>::Failure(
        (IsPattern(name) ? "No Stagemark of this scene matches \"" + Shown(name) + "\"."
                         : "There is no Stagemark \"" + Shown(name) + "\" in this scene.") +
        (near.empty() ? " `stagemarks list SCENE` shows those there are." : near));
  }
  return found;
}

std::vector<std::string> NamesLike(const std::string& name, const std::vector<std::string>& known) {
  // The beginning of a name counts most
  std::vector<std::tuple<bool, std::size_t, std::string>> near;
  for (const std::string& other : known) {
    if (const std::size_t distance = Distance(name, other); distance < kLongestCompared) {
      near.emplace_back(!other.starts_with(name), distance, other);
    }
  }
  std::sort(near.begin(), near.end());
  std::vector<std::string> names;
  for (std::size_t i = 0; i < near.size() && i < kMostMeant; ++i)
    names.push_back(std::get<2>(near[i]));
  return names;
}

std::string DidYouMean(const std::string& name, const std::vector<std::string>& known) {
  std::string text;
  for (const std::string& near : NamesLike(name, known)) {
    text += (text.empty() ? " Did you mean \"" : "\" or \"") + Shown(near);
  }
  return text.empty() ? text : text + "\"?";
}

}  // namespace lookup
