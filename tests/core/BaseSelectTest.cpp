#include "host/BaseSelect.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <sstream>

namespace {

std::string Ranges(const host::BaseSelect& select) {
  std::ostringstream out;
  for (host::LONG i = 0, first = 0, last = 0; select.GetRange(i, &first, &last); ++i)
    out << first << "-" << last << " ";
  return out.str();
}

TEST(BaseSelect, JoinsTouchingRanges) {
  host::BaseSelect select;
  select.SelectAll(5, 7);
  select.SelectAll(1, 2);
  EXPECT_EQ(Ranges(select), "1-2 5-7 ");
  select.SelectAll(3, 4);
  EXPECT_EQ(Ranges(select), "1-7 ");
  select.Deselect(4);
  EXPECT_EQ(Ranges(select), "1-3 5-7 ");
  EXPECT_EQ(select.GetCount(), 6);
  EXPECT_FALSE(select.IsSelected(4));
}

TEST(BaseSelect, AgreesWithASet) {
  host::BaseSelect select;
  std::set<host::LONG> model;
  unsigned seed = 1;
  for (int step = 0; step < 2000; ++step) {
    seed = seed * 1664525U + 1013904223U;
    const host::LONG number = static_cast<host::LONG>((seed >> 16) % 40);
    if ((seed >> 9) & 1U) {
      select.Select(number);
      model.insert(number);
    } else {
      select.Deselect(number);
      model.erase(number);
    }
    host::LONG runs = 0;
    for (host::LONG i = -1; i < 41; ++i) {
      ASSERT_EQ(select.IsSelected(i), model.count(i) == 1) << step;
      if (model.count(i) == 1 && model.count(i - 1) == 0) ++runs;
    }
    ASSERT_EQ(select.GetSegments(), runs) << step;
    ASSERT_EQ(select.GetCount(), static_cast<host::LONG>(model.size()));
  }
}

TEST(BaseSelect, HoldsTheEndsOfItsNumbers) {
  host::BaseSelect select;
  select.Select(std::numeric_limits<host::LONG>::max());
  select.Select(std::numeric_limits<host::LONG>::min());
  EXPECT_EQ(select.GetSegments(), 2);
  EXPECT_EQ(select.GetCount(), 2);
  host::LONG first = 0;
  host::LONG last = 0;
  for (const host::LONG none : {-1, 2}) EXPECT_FALSE(select.GetRange(none, &first, &last));
  select.SelectAll(5, 4);
  EXPECT_EQ(select.GetSegments(), 2);
  select.Deselect(std::numeric_limits<host::LONG>::max());
  EXPECT_EQ(select.GetSegments(), 1);
}

}  // namespace
