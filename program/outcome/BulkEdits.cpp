#include "program/outcome/BulkEdits.h"

#include "program/outcome/Words.h"
#include "program/pictures/DialogLabels.h"

namespace outcome {

namespace {

// In the sentences & stands for the checked Stagemarks and % for what is selected in the scene. The
// last column is the kind of thing that must be selected, empty where nothing or a camera is.
constexpr BulkEdit kBulkEdits[] = {
    {pictures::kUpdateChecked, "Brought & up to date.", "Nothing in the scene was new to &.", ""},
    {pictures::kSetObjects, "Wrote the switches of % into &.",
     "Nothing changed: & had the switches of % already.", "object"},
    {pictures::kSetTags, "Wrote the settings of % into &.",
     "Nothing changed in &: the same was there, or tags of such types are not recorded.", "tag"},
    {pictures::kSetLayers, "Wrote the switches of % into &.",
     "Nothing changed: & had the switches of % already.", "layer"},
    {pictures::kSetCamera, "Made % the render camera of &.",
     "Nothing changed: % was the render camera of & already.", ""},
};

}  // namespace

const BulkEdit* FindBulkEdit(const std::string& entry) {
  for (const BulkEdit& edit : kBulkEdits) {
    if (entry == edit.entry) return &edit;
  }
  return nullptr;
}

std::string Sentence(const BulkEdit& edit, bool changed, const std::string& selected,
                     const std::vector<std::string>& names) {
  std::string text;
  for (const char c : std::string(changed ? edit.changed : edit.same)) {
    text += c == '%' ? selected : c == '&' ? Listed(names) : std::string(1, c);
  }
  return text;
}

}  // namespace outcome
