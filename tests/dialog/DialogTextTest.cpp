// Dialogs as text.
#include <gtest/gtest.h>

#include "engine/dialog/TextArea.h"
#include "tests/dialog/SampleDialog.h"

namespace {

using sample::SampleDialog;

constexpr const char* kSampleText = R"(┌─ Sample ───────────────────────────┐
│ [·Go·]                             │
│ [x] Fast                           │
│ Speed                              │
│ [ a name               ]           │
│ [ 24    ↕]                         │
│ [ first ▾]                         │
│ ┌────────────────────────────────┐ │
│ │   [x] Day                      │ │
│ │ ▸ [ ] Night                    │ │
│ │                                │ │
│ │                                │ │
│ │                                │ │
│ └────────────────────────────────┘ │
│ ┌──────────────┐                   │
│ │              │                   │
│ │              │                   │
│ │ (no picture) │                   │
│ │              │                   │
│ │              │                   │
│ └──────────────┘                   │
│ ────────────────────────────────── │
│   Edit                             │
│     Do it                          │
│     ───                            │
│     More                           │
│     ✓ Marked                       │
└────────────────────────────────────┘
)";

TEST(DialogText, ShowsWhatAPersonWouldSee) {
  SampleDialog dialog;
  ASSERT_TRUE(dialog.OpenIt());
  dialog.SetBool(sample::kCheckbox, host::TRUE);
  dialog.SetString(sample::kField, "a name");
  dialog.SetReal(sample::kNumber, 24, 0, 100, 1, host::FORMAT_LONG);
  dialog.Enable(sample::kButton, host::FALSE);
  dialog.MenuInitString(sample::kMarkedEntry, host::TRUE, host::TRUE);
  dialog.list.SetItem(0, SampleDialog::NamedRow("Day", true));
  dialog.list.SetItem(1, SampleDialog::NamedRow("Night", false));
  engine::SelectLines(dialog, sample::kList, {1});
  EXPECT_EQ(engine::DialogAsText(dialog), kSampleText);
}

struct Columns : host::GeDialog {
  host::Bool CreateLayout() override {
    GroupBegin(0, 0, 3, 0, "Three columns", 0);
    for (host::LONG i = 1; i <= 5; ++i) AddButton(i, 0, 0, 0, i == 2 ? "a longer one" : "b");
    GroupEnd();
    GroupBegin(0, 0, 0, 2, "", 0);
    GroupBorderSpace(16, 16, 0, 0);
    for (host::LONG i = 11; i <= 13; ++i) AddStaticText(i, 0, 0, 0, host::LongToString(i), 0);
    GroupEnd();
    return host::TRUE;
  }
};

TEST(DialogText, LinesUpColumnsAndRows) {
  Columns dialog;
  ASSERT_TRUE(dialog.Open(0, 0, 0, 0, 0, 0, 0));
  EXPECT_EQ(engine::DialogAsText(dialog), R"(┌────────────────────────────────────┐
│ ┌─ Three columns ────────────────┐ │
│ │ [ b ]  [ a longer one ]  [ b ] │ │
│ │ [ b ]  [ b ]                   │ │
│ └────────────────────────────────┘ │
│                                    │
│   11  12                           │
│   13                               │
└────────────────────────────────────┘
)");
}

TEST(DialogText, LinesUpCellsOfEveryWidth) {
  SampleDialog dialog;
  ASSERT_TRUE(dialog.OpenIt());
  host::BaseContainer columns;
  columns.SetLong(1, host::LV_COLUMN_TEXT);
  columns.SetLong(2, host::LV_COLUMN_TEXT);
  ASSERT_TRUE(dialog.list.SetLayout(2, columns));
  const char* names[] = {"plain", "日本", "e\xcc\x81t\xc3\xa9", "esc\x1b[2J", "cut\xe6\x97"};
  for (host::LONG i = 0; i < 5; ++i) {
    host::BaseContainer row;
    row.SetString(1, names[i]);
    row.SetLong(2, i);
    dialog.list.SetItem(i, row);
  }
  EXPECT_EQ(engine::ListAsText(dialog, sample::kList),
            "  plain   0\n  日本    1\n  e\xcc\x81t\xc3\xa9     2\n  esc�[2J 3\n  cut��   4\n");
  EXPECT_EQ(engine::ListAsText(dialog, sample::kButton), "");
}

TEST(TextAreas, ShortenByTheColumnsOfATerminal) {
  EXPECT_EQ(engine::Shortened("abcdef", 6), "abcdef");
  EXPECT_EQ(engine::Shortened("abcdef", 4), "abc…");
  EXPECT_EQ(engine::Shortened("日本語", 4), "日…");
  EXPECT_EQ(engine::DisplayWidth("日本語"), 6U);
}

}  // namespace
