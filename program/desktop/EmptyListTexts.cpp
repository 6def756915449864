#include "program/desktop/EmptyListTexts.h"

namespace desktop {

namespace {

struct Row {
  host::LONG pluginId;
  const char* text;
};

constexpr Row kRows[] = {
    {1021477, "No Stagemarks yet: name this state and press Record Element"},
};

}  // namespace

QString EmptyListText(host::LONG pluginId) {
  for (const Row& row : kRows) {
    if (row.pluginId == pluginId) return row.text;
  }
  return {};
}

}  // namespace desktop
