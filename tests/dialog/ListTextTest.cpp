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
    i == 4 ? row.SetReal(2, 4.5) : row.SetLong(2, i);
    dialog.list.SetItem(i, row);
  }
  EXPECT_EQ(
      engine::ListAsText(dialog, sample::kList),
      "  pl\xc2\xa0in   0\n  日本    1\n  e\xcc\x81t\xc3\xa9     2\n  esc�[2J 3\n  cut��   4.5\n");
  for (const host::LONG none : {sample::kButton, sample::kNoSuchGadget})
    EXPECT_EQ(engine::ListAsText(dialog, none), "");
}

TEST(TerminalText, ShortenByTheColumnsOfATerminal) {
  EXPECT_EQ(engine::Shortened("abcdef", 6), "abcdef");
  EXPECT_EQ(engine::Shortened("abcdef", 4), "abc…");
  EXPECT_EQ(engine::Shortened("日本語", 4), "日…");
  EXPECT_EQ(engine::Shortened("abcdef", 1), "…");
  EXPECT_EQ(engine::DisplayWidth("日本語"), 6U);
  EXPECT_EQ(engine::PadRight("日", 4) + "|", "日  |");
  EXPECT_EQ(engine::PadRight("日本", 3), "日本");
  EXPECT_EQ(engine::LinedUp({"a ", "b", "ccc"}, 2), "a   b\nccc\n");
  EXPECT_EQ(engine::LinedUp({}, 2), "");
}

// The letters at the ends of what is replaced: control characters, and those that turn lines round.
TEST(TerminalText, ReplacesWhatATerminalWouldObey) {
  const std::pair<const char*, bool> rows[] = {{"\x1f", false},
                                               {" ", true},
                                               {"~", true},
                                               {"\x7f", false},
                                               {"\xc2\x80", false},
                                               {"\xc2\x9f", false},
                                               {"\xc2\xa0", true},
                                               {"\xcb\xbf", true},
                                               {"\xe2\x80\xa7", true},
                                               {"\xe2\x80\xa8", false},
                                               {"\xe2\x80\xa9", false},
                                               {"\xe2\x80\xaa", false},
                                               {"\xe2\x80\xae", false},
                                               {"\xe2\x80\xaf", true},
                                               {"\xe2\x81\xa5", true},
                                               {"\xe2\x81\xa6", false},
                                               {"\xe2\x81\xa9", false},
                                               {"\xe2\x81\xaa", true},
                                               {"\xff", false}};
  for (const auto& [letter, stays] : rows) {
    EXPECT_EQ(engine::Printable(std::string("<") + letter + ">"),
              std::string("<") + (stays ? letter : "\xef\xbf\xbd") + ">");
  }
  EXPECT_EQ(engine::Printable(std::string_view("a\0b", 3)),
            "a\xef\xbf\xbd"
            "b");
  EXPECT_EQ(engine::DisplayWidth("\xcb\xbf"), 1U);
  EXPECT_EQ(engine::DisplayWidth("\xcc\x80"), 0U);
}

}  // namespace
