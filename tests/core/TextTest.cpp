#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "engine/core/Utf8.h"
#include "host/Filename.h"
#include "host/Math.h"
#include "host/String.h"

namespace {

using host::BaseTime;
using host::Filename;
using host::LONG;
using host::Real;
using host::String;

TEST(Text, CountsCharactersAndKeepsInvalidBytes) {
  struct Case {
    const char* utf8;
    LONG characters;
  };
  const std::vector<Case> cases = {{"", 0},
                                   {"abc", 3},
                                   {"\xC3\xA9", 1},
                                   {"\xE2\x82\xAC uro", 5},
                                   {"\xF0\x9F\x98\x80", 1},
                                   {"\xC3", 1},
                                   {"\xA9\xC3", 2},
                                   {"\xC0\x80", 2},
                                   {"\xED\xA0\x80", 3},
                                   {"\xE2\x82", 2},
                                   {"\xE2\x82x", 3},
                                   {"\xF4\x90\x80", 3},
                                   {"\xF4\x8F\xBF\xBF", 1},
                                   {"\xF4\x90\x80\x80", 4},
                                   {"\xFFz", 2},
                                   {"\xE0\x9F\xBF", 3}};
  for (const auto& [utf8, characters] : cases) {
    EXPECT_EQ(String(utf8).GetLength(), characters) << utf8;
    EXPECT_EQ(String(utf8).ToUtf8(), utf8);
  }
  EXPECT_EQ(String(std::string_view("a\0b", 3)).GetLength(), 3);
  EXPECT_EQ(String(static_cast<const char*>(nullptr)).GetLength(), 0);
}

TEST(Text, CountsAnewWhenPartsJoinToOneCharacter) {
  String text("\xC3");
  EXPECT_EQ(text.GetLength(), 1);
  text += String("\xA9");
  EXPECT_EQ(text.GetLength(), 1);
}

TEST(Text, ComparesByCodePoint) {
  EXPECT_EQ(String("a").Compare("a"), 0);
  EXPECT_LT(String("B").Compare("a"), 0);
  EXPECT_LT(String("a").Compare("ab"), 0);
  EXPECT_LT(String("\xEF\xBF\xBD").Compare("\xF0\x9F\x98\x80"), 0);
  EXPECT_GT(String("\xC3\xA9").Compare("z"), 0);
}

TEST(Text, CutsAndJoinsByCharacters) {
  const String text("d\xC3\xA9j\xC3\xA0 vu");
  EXPECT_EQ(text.SubStr(1, 3).ToUtf8(), "\xC3\xA9j\xC3\xA0");
  EXPECT_EQ(text.SubStr(-2, 3).ToUtf8(), "d");
  EXPECT_EQ(text.SubStr(5, std::numeric_limits<LONG>::max()).ToUtf8(), "vu");
  EXPECT_EQ(text.SubStr(2, -1).ToUtf8(), "");
  String edited = text;
  edited.Delete(1, 1);
  edited.Insert(1, "e");
  edited.Insert(99, "!");
  edited.Insert(-5, ">");
  EXPECT_EQ(edited.ToUtf8(), ">dej\xC3\xA0 vu!");
  edited.Delete(3, 100);
  EXPECT_EQ(edited.ToUtf8(), ">de");
  EXPECT_EQ(text.ToUtf8(), "d\xC3\xA9j\xC3\xA0 vu");
}

TEST(Text, IsCutToBytesBeforeACharacterThatWouldBeCutApart) {
  const char* const cut[] = {"", "a", "a", "a", "a\xe6\x97\xa5", "a\xe6\x97\xa5z"};
  for (std::size_t bytes = 0; bytes < std::size(cut); ++bytes) {
    std::string text = "a\xe6\x97\xa5z";
    engine::CutTo(text, bytes);
    EXPECT_EQ(text, cut[bytes]) << bytes;
  }
}

TEST(Text, FindsWholeCharactersOnly) {
  const String text("\xC3\xA9 ab ab");
  LONG at = 77;
  EXPECT_TRUE(text.FindFirst("ab", &at));
  EXPECT_EQ(at, 2);
  EXPECT_TRUE(text.FindFirst("ab", &at, 3));
  EXPECT_EQ(at, 5);
  EXPECT_TRUE(text.FindLast("ab", &at));
  EXPECT_EQ(at, 5);
  for (const char* missing : {"\xA9", "\xC3", "abc"}) {
    EXPECT_FALSE(text.FindFirst(missing, &at)) << missing;
    EXPECT_FALSE(text.FindLast(missing, &at)) << missing;
  }
  EXPECT_FALSE(text.FindFirst("ab", &at, 50));
  EXPECT_EQ(at, 5);
}

TEST(Text, CopiesSplitOnWrite) {
  String text("abc");
  const String copy = text;
  text += text;
  text += text;
  EXPECT_EQ(text.ToUtf8(), "abcabcabcabc");
  EXPECT_EQ(copy.ToUtf8(), "abc");
  EXPECT_EQ((copy + "d").ToUtf8(), "abcd");
}

TEST(Text, WritesRealsWithTheFewestDigitsThatReadBack) {
  const std::vector<std::pair<Real, const char*>> cases = {{0.713, "0.713"},
                                                           {2, "2"},
                                                           {-0.5, "-0.5"},
                                                           {1e6, "1000000"},
                                                           {0.1 + 0.2, "0.30000000000000004"},
                                                           {0, "0"},
                                                           {1e-7, "0.0000001"},
                                                           {1e21, "1e+21"},
                                                           {1e22, "1e+22"},
                                                           {1e-9, "1e-09"},
                                                           {123456789.125, "123456789.125"}};
  for (const auto& [value, text] : cases) EXPECT_EQ(host::RealToString(value).ToUtf8(), text);
}

TEST(Text, WritesRealsInAForm) {
  EXPECT_EQ(host::RealToString(3.14159, -1, 2).ToUtf8(), "3.14");
  EXPECT_EQ(host::RealToString(-3.5, 4, 1).ToUtf8(), "-0003.5");
  EXPECT_EQ(host::RealToString(-3.5, 4, 1, false, ' ').ToUtf8(), "   -3.5");
  EXPECT_EQ(host::RealToString(12, 2, 0).ToUtf8(), "12");
  EXPECT_EQ(host::RealToString(-3.5, 4, 1, false, '\0').ToUtf8(), "-3.5");
  EXPECT_EQ(host::RealToString(1e22, -1, 0).ToUtf8(), "10000000000000000000000");
  EXPECT_EQ(host::RealToString(1500, -1, 1, true).ToUtf8(), "1.5e+03");
  EXPECT_EQ(host::RealToString(-std::numeric_limits<Real>::infinity(), 9, 2).ToUtf8(), "-inf");
  EXPECT_EQ(host::RealToString(1e308, 1000000, 1000000).GetLength(), 340 + 1 + 340);
}

TEST(Text, RealsReadBackTheSame) {
  std::mt19937_64 random(7);
  for (int i = 0; i < 20000; ++i) {
    const Real value = std::bit_cast<Real>(random());
    if (!std::isfinite(value)) continue;
    ASSERT_EQ(host::RealToString(value).ToReal(), value);
  }
}

TEST(Text, NeverFollowsTheLocale) {
  const char* comma = std::setlocale(LC_ALL, "de_DE.UTF-8");
  EXPECT_EQ(host::RealToString(1.5).ToUtf8(), "1.5");
  EXPECT_EQ(String("1.5").ToReal(), 1.5);
  if (comma) std::setlocale(LC_ALL, "C");
}

TEST(Text, ReadsTheLeadingNumber) {
  struct Case {
    const char* text;
    LONG whole;
    Real real;
  };
  constexpr Real kInfinity = std::numeric_limits<Real>::infinity();
  constexpr LONG kMost = std::numeric_limits<LONG>::max();
  constexpr LONG kLeast = std::numeric_limits<LONG>::min();
  const std::vector<Case> cases = {{"12", 12, 12},
                                   {" -7 km", -7, -7},
                                   {"+3.5", 3, 3.5},
                                   {".5", 0, 0.5},
                                   {"-.5", 0, -0.5},
                                   {"", 0, 0},
                                   {"-", 0, 0},
                                   {"+-1", 0, 0},
                                   {"abc", 0, 0},
                                   {"inf", 0, 0},
                                   {"nan", 0, 0},
                                   {"1e3", 1, 1000},
                                   {"99999999999", kMost, 99999999999.0},
                                   {"-99999999999", kLeast, -99999999999.0},
                                   {"1e400", 1, kInfinity},
                                   {"-1e400", -1, -kInfinity},
                                   {"1e-400", 1, 0},
                                   {"0.001e-99999999999999999999", 0, 0},
                                   {"1e99999999999999999999", 1, kInfinity},
                                   {"1E+400", 1, kInfinity},
                                   {"0.5e+400", 0, kInfinity},
                                   {"1E-400 km", 1, 0}};
  for (const auto& [text, whole, real] : cases) {
    EXPECT_EQ(String(text).ToLong(), whole) << text;
    EXPECT_EQ(String(text).ToReal(), real) << text;
  }
  // Digits and exponent together say how far away a number is.
  const std::string zeros(400, '0');
  const std::pair<std::string, Real> faraway[] = {{"1" + zeros, kInfinity},
                                                  {"-1" + zeros + ".5", -kInfinity},
                                                  {"1" + zeros + "e-50", kInfinity},
                                                  {"1" + zeros + "e-800", 0},
                                                  {"0." + zeros + "1", 0},
                                                  {"0." + zeros + "1e+50", 0},
                                                  {"0." + zeros + "1e800", kInfinity}};
  for (const auto& [text, real] : faraway)
    EXPECT_EQ(String(std::string_view(text)).ToReal(), real) << text;
  EXPECT_EQ(host::LongToString(kLeast).ToUtf8(), "-2147483648");
}

TEST(FileName, JoinsWithOneSeparator) {
  const std::vector<std::vector<const char*>> cases = {
      {"/a", "b", "/a/b"},    {"/a", "/b", "/a/b"},  {"/a/", "b", "/a/b"},
      {"/a/", "/b", "/a/b"},  {"", "/b", "/b"},      {"/", "b", "/b"},
      {"C:\\", "b", "C:\\b"}, {"a", "b/c", "a/b/c"}, {"", "", ""}};
  for (const auto& names : cases) {
    EXPECT_EQ((Filename(names[0]) + Filename(names[1])).GetString().ToUtf8(), names[2])
        << names[0] << " + " << names[1];
  }
}

TEST(FileName, SplitsAtTheLastSeparatorAndTheLastDot) {
  struct Case {
    const char *path, *folder, *file, *suffix, *withoutSuffix, *withTif;
  };
  const std::vector<Case> cases = {
      {"/a/b.c4d", "/a", "b.c4d", "c4d", "/a/b", "/a/b.tif"},
      {"/a.b/c", "/a.b", "c", "", "/a.b/c", "/a.b/c.tif"},
      {"C:\\x\\y.z.tif", "C:\\x", "y.z.tif", "tif", "C:\\x\\y.z", "C:\\x\\y.z.tif"},
      {"name", "", "name", "", "name", "name.tif"},
      {"/a/", "/a", "", "", "/a/", "/a/.tif"},
      {"/a", "/", "a", "", "/a", "/a.tif"},
      {"a.", "", "a.", "", "a", "a.tif"},
      {".hidden", "", ".hidden", "hidden", "", ".tif"},
      {"", "", "", "", "", ".tif"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.path);
    const Filename name(c.path);
    EXPECT_EQ(name.GetDirectory().GetString().ToUtf8(), c.folder);
    EXPECT_EQ(name.GetFile().GetString().ToUtf8(), c.file);
    EXPECT_EQ(name.GetSuffix().ToUtf8(), c.suffix);
    Filename changed = name;
    changed.ClearSuffix();
    EXPECT_EQ(changed.GetString().ToUtf8(), c.withoutSuffix);
    changed = name;
    changed.SetSuffix("tif");
    EXPECT_EQ(changed.GetString().ToUtf8(), c.withTif);
  }
}

TEST(FileName, ReplacesItsParts) {
  Filename name("/a/b.TIF");
  EXPECT_TRUE(name.CheckSuffix("tif"));
  EXPECT_FALSE(name.CheckSuffix("ti"));
  EXPECT_TRUE(Filename("b.AZaz").CheckSuffix("azAZ"));
  EXPECT_FALSE(Filename("b.@[").CheckSuffix("`{"));
  name.SetFile("c.png");
  EXPECT_EQ(name.GetString().ToUtf8(), "/a/c.png");
  name.SetDirectory("/d/e");
  EXPECT_EQ(name.GetString().ToUtf8(), "/d/e/c.png");
}

TEST(FileName, ComparesAfterCollapsingDoubledSeparators) {
  const std::vector<std::pair<const char*, const char*>> same = {
      {"/a//b", "/a/b"}, {"/a/b", "/a///b"}, {"//", "/"}, {"a\\\\b", "a\\b"}, {"", ""}};
  const std::vector<std::pair<const char*, const char*>> different = {
      {"/a/b", "/A/b"}, {"/a", "/a/"}, {"a/b", "a\\b"}, {"", "/"}};
  for (const auto& [a, b] : same) EXPECT_EQ(Filename(a), Filename(b)) << a << " " << b;
  for (const auto& [a, b] : different) EXPECT_NE(Filename(a), Filename(b)) << a << " " << b;
}

TEST(Time, KeepsThePairAndFindsTheFrame) {
  EXPECT_EQ(BaseTime(5, 0).Get(), 0);
  EXPECT_NE(BaseTime(5, 25), BaseTime(10, 50));
  EXPECT_EQ(BaseTime(5, 25).GetFrame(25), 5);
  EXPECT_EQ(BaseTime(5, 25).GetFrame(30), 6);
  EXPECT_EQ(BaseTime(0.1).GetFrame(25), 3);
  EXPECT_EQ(BaseTime(5, 0).GetFrame(0), 0);
  for (LONG frame = 0; frame < 1000; ++frame)
    ASSERT_EQ(BaseTime(frame, 29.97).GetFrame(29.97), frame);
}

}  // namespace
