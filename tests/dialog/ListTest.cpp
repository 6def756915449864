// The rows of a list gadget.
#include <gtest/gtest.h>

#include "tests/dialog/SampleDialog.h"

namespace {

using sample::SampleDialog;

struct ChangeCounter : engine::DialogObserver {
  int changes = 0;
  ChangeCounter() { engine::AddDialogObserver(*this); }
  ~ChangeCounter() override { engine::RemoveDialogObserver(*this); }
  void DialogOpened(host::GeDialog&) override {}
  void DialogClosed(host::GeDialog&) override {}
  void DialogChanged(host::GeDialog&, const engine::Gadget*) override { ++changes; }
};

class List : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(dialog_.OpenIt()); }
  void Add(host::LONG id, const char* name) {
    EXPECT_TRUE(list_.SetItem(id, SampleDialog::NamedRow(name, false)));
  }
  std::string Text() const { return engine::ListAsText(dialog_, sample::kList); }
  host::LONG Selected() const {
    host::BaseSelect selection;
    list_.GetSelection(&selection);
    return selection.GetCount();
  }
  SampleDialog dialog_;
  host::SimpleListView& list_ = dialog_.list;
};

TEST_F(List, ShowsRowsInTheOrderOfInsertion) {
  Add(9, "nine");
  Add(2, "two");
  Add(9, "changed");
  EXPECT_EQ(Text(), "  [ ] changed\n  [ ] two\n");
  host::LONG id = 0;
  host::BaseContainer row;
  EXPECT_TRUE(list_.GetItemLine(1, &id, &row));
  EXPECT_EQ(id, 2);
  EXPECT_EQ(row.GetString(sample::kNameColumn).ToUtf8(), "two");
  EXPECT_FALSE(list_.GetItemLine(2, &id, &row));
  EXPECT_FALSE(list_.GetItemLine(-1, &id, &row));
  EXPECT_FALSE(list_.SetItem(-1, row));
}

TEST_F(List, HoldsRowsAsValues) {
  Add(0, "one");
  host::BaseContainer row;
  ASSERT_TRUE(list_.GetItem(0, &row));
  row.SetBool(sample::kCheckedColumn, host::TRUE);
  EXPECT_EQ(Text(), "  [ ] one\n");
  EXPECT_TRUE(list_.SetItem(0, row));
  EXPECT_EQ(Text(), "  [x] one\n");
}

TEST_F(List, RemovingRowsClearsTheSelection) {
  for (int i = 0; i < 4; ++i) Add(i, "row");
  engine::SelectLines(dialog_, sample::kList, {3});
  EXPECT_FALSE(list_.RemoveItem(77));
  EXPECT_EQ(Selected(), 1);
  EXPECT_TRUE(list_.RemoveItem(1));
  EXPECT_EQ(Selected(), 0);
  host::BaseContainer row;
  EXPECT_FALSE(list_.GetItem(1, &row));
  EXPECT_TRUE(list_.SetItem(3, SampleDialog::NamedRow("last", false)));
  EXPECT_EQ(Text(), "  [ ] row\n  [ ] row\n  [ ] last\n")
      << "row numbers still lead to their lines";
  list_.DataChanged();
  EXPECT_EQ(Text(), "▸ [ ] row\n  [ ] row\n  [ ] last\n") << "one of that name was, before";
  engine::SelectLines(dialog_, sample::kList, {0});
  list_.RemoveAll();
  EXPECT_EQ(Selected(), 0);
  EXPECT_EQ(list_.GetItemCount(), 0);
}

// A rebuilt list does not forget where a person was, but nobody hears of it.
TEST_F(List, ARebuiltListSelectsTheRowsOfTheSameNamesAgain) {
  struct Case {
    const char* what;
    std::vector<host::LONG> selected;
    std::vector<const char*> rebuilt;
    const char* text;
  };
  for (const Case& each : {Case{"moved", {1}, {"a", "b2", "b"}, "  [ ] a\n  [ ] b2\n▸ [ ] b\n"},
                           {"gone", {1}, {"a", "c"}, "  [ ] a\n  [ ] c\n"},
                           {"several", {0, 2}, {"c", "b", "a"}, "▸ [ ] c\n  [ ] b\n▸ [ ] a\n"},
                           {"of one name", {1}, {"b", "b"}, "▸ [ ] b\n  [ ] b\n"},
                           {"none", {}, {"a", "b"}, "  [ ] a\n  [ ] b\n"}}) {
    list_.RemoveAll();
    host::LONG id = 0;
    for (const char* name : {"a", "b", "c"}) Add(id++, name);
    engine::SelectLines(dialog_, sample::kList, each.selected);
    dialog_.Heard();
    list_.RemoveAll();
    EXPECT_EQ(Selected(), 0) << each.what;
    id = 0;
    for (const char* name : each.rebuilt) Add(id++, name);
    list_.DataChanged();
    EXPECT_EQ(Text(), each.text) << each.what;
    EXPECT_EQ(dialog_.Heard(), "") << each.what;
    list_.DataChanged();
    EXPECT_EQ(Text(), each.text) << each.what << ", told again";
  }
}

TEST_F(List, WhatIsSelectedMeanwhileComesFirst) {
  for (const bool byThePlugin : {true, false}) {
    list_.RemoveAll();
    Add(0, "a");
    Add(1, "b");
    engine::SelectLines(dialog_, sample::kList, {0});
    list_.RemoveAll();
    Add(0, "a");
    Add(1, "b");
    host::BaseSelect second;
    second.Select(1);
    if (byThePlugin) list_.SetSelection(second);
    if (!byThePlugin) engine::SelectLines(dialog_, sample::kList, {1});
    list_.DataChanged();
    EXPECT_EQ(Text(), "  [ ] a\n▸ [ ] b\n");
  }
  EXPECT_TRUE(list_.RemoveItem(1));
  Add(2, "b");
  list_.DataChanged();
  EXPECT_EQ(Text(), "  [ ] a\n  [ ] b\n") << "a row that is gone is not selected again";
}

// Among the rows of a rebuilt list, that text alone says which was selected.
TEST_F(List, ARowIsNamedByTheTextBesideItsBox) {
  constexpr host::LONG kBox = host::LV_COLUMN_CHECKBOX;
  constexpr host::LONG kText = host::LV_COLUMN_TEXT;
  const std::pair<std::vector<host::LONG>, host::LONG> rows[] = {{{kText, kBox, kText, kText}, 2},
                                                                 {{kBox, kText, kText}, 1},
                                                                 {{kBox, kText, kBox, kText}, 1},
                                                                 {{kText, kText}, 0},
                                                                 {{kText, kBox}, 0}};
  for (const auto& [kinds, named] : rows) {
    host::BaseContainer columns;
    for (const host::LONG kind : kinds) columns.SetLong(columns.GetCount(), kind);
    ASSERT_TRUE(list_.SetLayout(columns.GetCount(), columns));
    const auto add = [&, at = named](host::LONG id, const char* name, const char* others) {
      host::BaseContainer row;
      for (host::LONG i = 0; i < columns.GetCount(); ++i) row.SetString(i, i == at ? name : others);
      list_.SetItem(id, row);
    };
    list_.RemoveAll();
    add(0, "a", "one");
    add(1, "b", "two");
    engine::SelectLines(dialog_, sample::kList, {0});
    list_.RemoveAll();
    add(0, "b", "one");
    add(1, "a", "two");
    list_.DataChanged();
    host::BaseSelect selection;
    EXPECT_TRUE(list_.GetSelection(&selection));
    EXPECT_TRUE(!selection.IsSelected(0) && selection.IsSelected(1)) << kinds.size();
  }
}

TEST_F(List, OnlyExistingLinesCanBeSelected) {
  Add(0, "row");
  Add(1, "row");
  host::BaseSelect all;
  all.SelectAll(-5, 2000000000);
  EXPECT_TRUE(list_.SetSelection(all));
  EXPECT_EQ(Selected(), 2);
}

TEST_F(List, OnlyExistingLinesAreFound) {
  Add(7, "first");
  Add(3, "second");
  std::string found;
  for (host::LONG line = -1; line <= 2; ++line) {
    host::LONG id = 0;
    found += list_.GetItemLine(line, &id, nullptr) ? std::to_string(id) + " " : "- ";
  }
  EXPECT_EQ(found, "- 7 3 - ");
}

TEST_F(List, TellsOncePerDataChanged) {
  ChangeCounter counter;
  list_.RemoveAll();
  for (int i = 0; i < 10000; ++i) Add(i, "row");
  EXPECT_EQ(counter.changes, 0);
  list_.DataChanged();
  EXPECT_EQ(counter.changes, 1);
}

TEST_F(List, RefusesALayoutItCannotShow) {
  host::BaseContainer columns;
  columns.SetLong(1, host::LV_COLUMN_TEXT);
  EXPECT_FALSE(list_.SetLayout(2, columns));
  columns.SetLong(2, 12345);
  EXPECT_FALSE(list_.SetLayout(2, columns));
  EXPECT_TRUE(list_.SetLayout(1, columns));
  EXPECT_TRUE(list_.SetLayout(0, columns));
}

void ExpectUnattached(host::SimpleListView& list) {
  host::BaseSelect selection;
  host::BaseContainer row;
  EXPECT_FALSE(list.SetItem(0, row));
  EXPECT_FALSE(list.GetItem(0, &row));
  EXPECT_FALSE(list.GetItemLine(0, nullptr, nullptr));
  EXPECT_FALSE(list.RemoveItem(0));
  EXPECT_FALSE(list.GetSelection(&selection));
  EXPECT_FALSE(list.SetSelection(selection));
  EXPECT_FALSE(list.SetLayout(0, row));
  EXPECT_EQ(list.GetItemCount(), 0);
  list.RemoveAll();
  list.DataChanged();
}

TEST(UnattachedList, DoesNothing) {
  host::SimpleListView list;
  ExpectUnattached(list);
  {
    SampleDialog dialog;
    dialog.OpenIt();
    EXPECT_FALSE(list.AttachListView(nullptr, sample::kList));
    EXPECT_FALSE(list.AttachListView(&dialog, sample::kButton));
    EXPECT_TRUE(list.AttachListView(&dialog, sample::kList));
  }
  ExpectUnattached(list);
}

}  // namespace
