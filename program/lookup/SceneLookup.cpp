#include "program/lookup/SceneLookup.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <filesystem>
#include <limits>
#include <numeric>
#include <tuple>
#include <unordered_set>

#include "engine/dialog/TerminalText.h"
#include "engine/scene/TreeWalk.h"
#include "program/outcome/Words.h"

namespace lookup {

using engine::NextInTree;
using engine::Result;
using host::BaseDocument;
using host::BaseObject;
using host::LONG;
using outcome::Shown;

namespace {

// Rows of an answer that still fit on a screen with the question.
constexpr std::size_t kCandidatesShown = 8;
constexpr std::string_view kMark = "\uFFFD";

// Where the letter after the one at `at` begins. UTF-8: continuation bytes begin with the bits 10.
std::size_t NextLetter(std::string_view text, std::size_t at) {
  do {
    ++at;
  } while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U);
  return at;
}

// The largest number for one that is larger.
std::size_t NumberIn(std::string_view digits) {
  std::size_t number = 0;
  const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return read.ec == std::errc() ? number : std::numeric_limits<std::size_t>::max();
}

// Whether something typed may be what was printed in place of a name, with the letters that stand
// for those that cannot be printed or were left out.
bool IsAsPrinted(const std::string& typed) {
  return typed.find(kMark) != std::string::npos || typed.find("\u2026") != std::string::npos;
}

// The text as printed, with one mark for several letters in a row that cannot be: how many marks
// these get differs between lines and JSON.
std::string WithOneMark(const std::string& text) {
  const std::string printed = engine::Printable(text);
  std::string marked;
  for (std::size_t at = 0; at < printed.size();) {
    const bool isMark = printed.compare(at, kMark.size(), kMark) == 0;
    if (!isMark || !marked.ends_with(kMark))
      marked += printed.substr(at, isMark ? kMark.size() : 1);
    at += isMark ? kMark.size() : 1;
  }
  return marked;
}

// Something typed: a name or a path, plain or with * and ?.
class Wanted {
 public:
  // `asPrinted`: compares names as a person reads them.
  explicit Wanted(const std::string& typed, bool asPrinted = false)
      : typed_(typed), isPattern_(IsPattern(typed)), asPrinted_(asPrinted) {}

  bool Matches(std::string_view text) const {
    return isPattern_   ? MatchesPattern(text, typed_)
           : asPrinted_ ? MeansPrinted(std::string(text), typed_)
                        : text == typed_;
  }

 private:
  const std::string& typed_;
  bool isPattern_;
  bool asPrinted_;
};

// The results of `find` for the typed text as it stands or, if there are none, read as printed.
template <class Find>
auto FoundByName(const std::string& typed, const Find& find) {
  auto found = find(Wanted(typed));
  if (found.empty() && IsAsPrinted(typed)) found = find(Wanted(typed, true));
  return found;
}

bool IsPosition(const std::string& typed) { return PositionIn(typed).has_value(); }

std::string NounOf(LONG type) {
  return type == host::Ocamera ? "camera" : type == host::Olight ? "light" : "object";
}

// The element at the position typed, in a tree of things called `noun`. The number counts a
// pre-order walk from 0; O(position).
template <class T>
Result<std::vector<T*>> ByPosition(T* first, const std::string& typed, const std::string& noun) {
  const std::optional<std::size_t> wanted = PositionIn(typed);
  std::size_t position = 0;
  for (T* item = first; item; item = NextInTree(item), ++position) {
    if (position == wanted) return std::vector<T*>{item};
  }
  return Result<std::vector<T*>>::Failure("There is no " + noun + " " + typed + "; the scene has " +
                                          std::to_string(position) +
                                          (position > 0 ? ", the first is #0." : "."));
}

bool IsOfType(const BaseObject& object, LONG type) { return type == 0 || object.GetType() == type; }

// A pattern is compared only where a path has as many slashes, so that a deep tree does not cost
// its depth at each step; for the same reason no * stands for a slash.
std::vector<BaseObject*> ByPath(const BaseDocument& doc, const std::string& typed, LONG type) {
  const auto slashes = static_cast<std::size_t>(std::count(typed.begin(), typed.end(), '/'));
  return FoundByName(typed, [&](const Wanted& wanted) {
    std::vector<BaseObject*> found;
    ObjectPaths paths;
    for (BaseObject* object = doc.GetFirstObject(); object; object = NextInTree(object)) {
      const std::string& path = paths.StepTo(*object);
      if (paths.Slashes() == slashes && IsOfType(*object, type) && wanted.Matches(path))
        found.push_back(object);
    }
    return found;
  });
}

std::vector<BaseObject*> ByName(const BaseDocument& doc, const std::string& typed, LONG type) {
  return FoundByName(typed, [&](const Wanted& wanted) {
    std::vector<BaseObject*> found;
    for (BaseObject* object = doc.GetFirstObject(); object; object = NextInTree(object)) {
      if (IsOfType(*object, type) && wanted.Matches(object->GetName().ToUtf8()))
        found.push_back(object);
    }
    return found;
  });
}

// The first of `found` with their positions in the tree, a line each with what `called` says.
// `found` is in the order of the walk, so one pass tells the position of each.
template <class T, class Called>
std::string Candidates(T* first, const std::vector<T*>& found, const Called& called) {
  std::string text;
  std::size_t position = 0;
  std::size_t shown = 0;
  for (T* item = first; item && shown < std::min(found.size(), kCandidatesShown);
       item = NextInTree(item), ++position) {
    if (item != found[shown]) continue;
    text += "\n  #" + std::to_string(position) + "  " + called(*item);
    ++shown;
  }
  return found.size() > shown ? text + "\n  ..." : text;
}

std::string Ambiguity(const std::string& typed, const std::vector<BaseObject*>& found,
                      const BaseDocument& doc, LONG type) {
  return "\"" + Shown(typed) + "\" names " + std::to_string(found.size()) + " " + NounOf(type) +
         "s:" + Candidates(doc.GetFirstObject(), found, PathOf) +
         "\nGive the path, the position, or a pattern with * for all of them.";
}

std::string NoneNamed(const std::string& typed, const std::string& noun, const std::string& known) {
  return "There is no " + noun + " \"" + Shown(typed) + "\"." +
         (known.empty() ? "" : " There are: " + known + ".");
}

// Names win over positions: a material may well be called "#1". Of the known names a message shows
// as many as fit into a few lines.
template <class T>
Result<std::vector<T*>> FindNamed(T* first, const std::string& typed, const std::string& noun,
                                  bool severalOk) {
  std::string known;
  std::vector<T*> found = FoundByName(typed, [&](const Wanted& wanted) {
    std::vector<T*> some;
    for (T* item = first; item; item = NextInTree(item)) {
      if (wanted.Matches(item->GetName().View())) some.push_back(item);
    }
    return some;
  });
  if (found.empty() && IsPosition(typed)) return ByPosition(first, typed, noun);
  for (T* item = found.empty() ? first : nullptr; item && known.size() < 400;
       item = NextInTree(item))
    known += (known.empty() ? "" : ", ") + item->GetName().ToUtf8();
  if (found.empty()) return Result<std::vector<T*>>::Failure(NoneNamed(typed, noun, known));
  if (found.size() == 1 || severalOk || IsPattern(typed)) return found;
  const auto called = [](const T& item) { return item.GetName().ToUtf8(); };
  return Result<std::vector<T*>>::Failure(
      "There are " + std::to_string(found.size()) + " " + noun + "s \"" + Shown(typed) +
      "\":" + Candidates(first, found, called) + "\nGive the position.");
}

template <class T>
Result<T*> TheOne(const Result<std::vector<T*>>& found, const std::string& typed,
                  const std::string& noun) {
  if (!found) return found.GetStatus();
  if (found.Value().size() == 1) return found.Value().front();
  return Result<T*>::Failure("\"" + Shown(typed) + "\" means " +
                             std::to_string(found.Value().size()) + " " + noun +
                             "s, and here one is needed.");
}

// The names that a pattern means, or that are printed like the typed one; each once.
std::vector<std::string> MarksMeant(const std::string& typed,
                                    const std::vector<std::string>& known) {
  if (!IsPattern(typed) && !IsAsPrinted(typed)) return {};
  const Wanted wanted(typed, true);
  std::vector<std::string> meant;
  std::unordered_set<std::string> met;
  for (const std::string& name : known) {
    if (wanted.Matches(name) && met.insert(name).second) meant.push_back(name);
  }
  return meant;
}

// The comparison takes time by the product of both lengths, for each name of the scene.
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

// How far apart two names are, more than anything where they are not close. Close means a third of
// the letters mistyped, two in a short name, but not all of them; a part of a longer name is close
// however long that is.
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

// In a pre-order walk the parent of the next object is on the stack already; what is deeper is
// done. Slashes inside of names count, too: a path that was typed has them as well.
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

// A position is what was meant where it looks like one: a name that begins so can be given as a
// pattern or a path.
Result<std::vector<BaseObject*>> FindObjects(const BaseDocument& doc, const std::string& typed,
                                             const WantedObjects& wanted) {
  using Found = Result<std::vector<BaseObject*>>;
  if (IsPosition(typed)) {
    auto found = ByPosition(doc.GetFirstObject(), typed, "object");
    if (!found || IsOfType(*found.Value().front(), wanted.type)) return found;
    return Found::Failure(typed + " is no " + NounOf(wanted.type) + ", it is " +
                          PathOf(*found.Value().front()) + ".");
  }
  const bool isPath = !typed.empty() && typed[0] == '/';
  std::vector<BaseObject*> found =
      isPath ? ByPath(doc, typed, wanted.type) : ByName(doc, typed, wanted.type);
  if (found.empty()) {
    return Found::Failure("There is no " + NounOf(wanted.type) + " \"" + Shown(typed) +
                          "\". `stagemarks info SCENE --tree` shows them.");
  }
  if (found.size() > 1 && !IsPattern(typed) && !wanted.severalOk)
    return Found::Failure(Ambiguity(typed, found, doc, wanted.type));
  return found;
}

Result<BaseObject*> FindObject(const BaseDocument& doc, const std::string& typed,
                               const WantedObjects& wanted) {
  auto found = FindObjects(doc, typed, wanted);
  if (!found) return found.GetStatus();
  if (found.Value().size() != 1)
    return Result<BaseObject*>::Failure(Ambiguity(typed, found.Value(), doc, wanted.type));
  return found.Value().front();
}

Result<std::vector<host::BaseMaterial*>> FindMaterials(const BaseDocument& doc,
                                                       const std::string& typed, bool severalOk) {
  return FindNamed(doc.GetFirstMaterial(), typed, "material", severalOk);
}

Result<std::vector<host::LayerObject*>> FindLayers(const BaseDocument& doc,
                                                   const std::string& typed, bool severalOk) {
  return FindNamed(FirstLayerOf(doc), typed, "layer", severalOk);
}

Result<host::BaseMaterial*> FindMaterial(const BaseDocument& doc, const std::string& typed) {
  return TheOne(FindMaterials(doc, typed), typed, "material");
}

Result<host::LayerObject*> FindLayer(const BaseDocument& doc, const std::string& typed) {
  return TheOne(FindLayers(doc, typed), typed, "layer");
}

host::LayerObject* FirstLayerOf(const BaseDocument& doc) {
  return static_cast<host::LayerObject*>(doc.GetLayerObjectRoot()->GetFirst());
}

bool MeansPrinted(const std::string& name, const std::string& typed) {
  return typed == Shown(name) || WithOneMark(name) == WithOneMark(typed);
}

std::string AbsolutePath(const std::string& typed) {
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(typed, error);
  return error ? typed : absolute.lexically_normal().string();
}

std::optional<std::size_t> PositionIn(const std::string& typed) {
  const bool isPosition = typed.size() > 1 && typed[0] == '#' &&
                          typed.find_first_not_of("0123456789", 1) == std::string::npos;
  if (!isPosition) return std::nullopt;
  return NumberIn(std::string_view(typed).substr(1));
}

bool IsPattern(const std::string& typed) { return typed.find_first_of("*?") != std::string::npos; }

// Goes back to the last * at a mismatch, which then takes a letter more; no earlier one has to. At
// worst the product of both lengths, without recursion.
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

// A set of the known names makes a list of a thousand plain ones cheap; only patterns and misprints
// walk over all. The first one that means nothing ends it: half of a choice is worse than none.
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
    const std::vector<std::string> meant = MarksMeant(name, known);
    if (meant.size() > 1 && !IsPattern(name)) {
      return Result<std::vector<std::string>>::Failure(
          "Several Stagemarks are shown as \"" + Shown(name) +
          "\". A pattern with ? or * for what cannot be shown means them.");
    }
    std::ranges::for_each(meant, add);
    if (!meant.empty()) continue;
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
