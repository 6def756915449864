// A page is the viewer with data in it: whatever names hold, they stay data, and the scene comes
// out of it byte by byte.
#include "program/publish/StatePage.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/support/TextSearch.h"

namespace {

using nlohmann::json;

const publishing::PageViewer kViewer{"<head><body><!--DATA--><script>run</script>", "A license"};

std::string ContentsOf(const std::string& page) {
  const std::string begin = "<script type=\"application/json\" id=\"contents\">";
  const std::size_t at = page.find(begin) + begin.size();
  return page.substr(at, page.find("</script>", at) - at);
}

std::string Decoded(const std::string& text) {
  const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string bytes;
  unsigned buffer = 0;
  int bits = 0;
  for (const char letter : text.substr(0, text.find('='))) {
    buffer = buffer << 6U | static_cast<unsigned>(digits.find(letter));
    bits += 6;
    if (bits < 8) continue;
    bits -= 8;
    bytes += static_cast<char>(buffer >> static_cast<unsigned>(bits));
    buffer &= (1U << static_cast<unsigned>(bits)) - 1;
  }
  return bytes;
}

std::string Several(const std::string& text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

TEST(StatePage, NamesAreDataWhateverTheyHold) {
  const std::string names[] = {"</script><img src=x onerror=alert(1)>",
                               "<!--<script>",
                               "\"quotes\" 'and' \\ & &lt; `${1}`",
                               "\u202Eright to left",
                               Several("\U0001F3F0", 200),
                               "line\nend\u2028\x01",
                               ""};
  publishing::PageContents contents{names[0], {}, "glTF"};
  for (const std::string& name : names) contents.states.push_back({name, "2026-11-22", "x"});
  const std::string page = publishing::MakeStatePage(kViewer, contents);
  const std::string data = ContentsOf(page);
  EXPECT_EQ(data.find_first_of("<\n"), std::string::npos) << data;
  EXPECT_EQ(tests::Matches(page, "(<img|<!--)").size(), 0U);
  const json read = json::parse(data);
  EXPECT_EQ(read["title"], names[0]);
  for (std::size_t i = 0; i < std::size(names); ++i) EXPECT_EQ(read["states"][i]["name"], names[i]);
  contents.states = {{"damaged \xff", "", ""}};
  EXPECT_EQ(
      json::parse(ContentsOf(publishing::MakeStatePage(kViewer, contents)))["states"][0]["name"],
      "damaged \xEF\xBF\xBD");
}

// A large one stands in several elements, which begin where bytes do.
TEST(StatePage, TheSceneComesOutAsItWentIn) {
  for (const std::size_t size : {0U, 1U, 2U, 3U, 1000U, 12U << 20U, (12U << 20U) + 5}) {
    std::string scene(size, '\0');
    for (std::size_t i = 0; i < size; ++i) scene[i] = static_cast<char>(i * 7 + (i >> 8U));
    const std::string page = publishing::MakeStatePage(kViewer, {"", {}, scene});
    const std::string begin = "<script type=\"text/plain\" class=\"scene\">";
    std::string read;
    for (std::size_t at = page.find(begin); at != std::string::npos; at = page.find(begin, at)) {
      at += begin.size();
      read += Decoded(page.substr(at, page.find("</script>", at) - at));
    }
    EXPECT_TRUE(read == scene) << size;
    EXPECT_TRUE(page.ends_with("<script>run</script>"));
  }
}

}  // namespace
