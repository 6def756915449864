// Lists of dialogs as text.
#include <gtest/gtest.h>

#include "engine/dialog/TerminalText.h"
#include "tests/dialog/SampleDialog.h"

namespace {

using sample::SampleDialog;

TEST(ListText, LinesUpCellsOfEveryWidth) {
  SampleDialog dialog;
  ASSERT_TRUE(dialog.OpenIt());
  host::BaseContainer columns;
  columns.SetLong(1, host::LV_COLUMN_TEXT);
  columns.SetLong(2, host::LV_COLUMN_TEXT);
  ASSERT_TRUE(dialog.list.SetLayout(2, columns));
  const char* names[] = {"pl\xc2\xa0in", "日本", "e\xcc\x81t\xc3\xa9", "esc\x1b[2J", "cut\xe6\x97"};
  for (host::LONG i = 0; i < 5; ++i) {
    host::BaseContainer row;
    row.SetString(1, names[i]);
    row.SetLong(2, i);
    dialog.list.SetItem(i, row);
  }
  EXPECT_EQ(
      engine::ListAsText(dialog, sample::kList),
      "  pl\xc2\xa0in   0\n  日本    1\n  e\xcc\x81t\xc3\xa9     2\n  esc�[2J 3\n  cut��   4\n");
  EXPECT_EQ(engine::ListAsText(dialog, sample::kButton), "");
}

TEST(TerminalText, ShortenByTheColumnsOfATerminal) {
  EXPECT_EQ(engine::Shortened("abcdef", 6), "abcdef");
  EXPECT_EQ(engine::Shortened("abcdef", 4), "abc…");
  EXPECT_EQ(engine::Shortened("日本語", 4), "日…");
  EXPECT_EQ(engine::DisplayWidth("日本語"), 6U);
}

}  // namespace
