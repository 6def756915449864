// Pictures of states and contact sheets, as a person calls for them: names, refusals, what is
// written and what is left alone.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "engine/render/Image.h"
#include "tests/support/ChildProgram.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/TextSearch.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using tests::ChildResult;
using tests::Matches;
using tests::WithReplaced;

constexpr const char* kProgram = TEST_BINARY_DIR "/bin/stagemarks";

class Pictures : public testing::Test {
 protected:
  ChildResult Call(const std::vector<std::string>& arguments,
                   const std::string& program = kProgram) {
    return tests::RunChild(
        program, arguments,
        {{"XDG_CONFIG_HOME", folder_ / "config"}, {"XDG_STATE_HOME", folder_ / "state"}});
  }
  std::string Out(const std::vector<std::string>& arguments) {
    const ChildResult result = Call(arguments);
    EXPECT_EQ(result.status, 0) << testing::PrintToString(arguments) << "\n"
                                << result.out << result.err;
    return result.out;
  }
  // The spider with these states, every second one with all objects hidden; the first name is the
  // current one.
  std::string Scene(std::vector<std::string> states) {
    const std::string scene = folder_ / "shot.c4d";
    Out({"import", TEST_SOURCE_DIR "/scenes/spider/spider.fbx", scene, "--force"});
    Out({"set", scene, "--size", "64x40", "--write"});
    std::reverse(states.begin(), states.end());
    for (std::size_t i = 0; i < states.size(); ++i) {
      Out({"set", scene, "--object", "*", "--render", i % 2 == 0 ? "off" : "default", "--write"});
      Out({"record", scene, states[i], "--write"});
    }
    return scene;
  }
  std::string Place(const std::string& name) { return folder_ / ("out/" + name); }
  std::string Written() {
    std::string names;
    if (!fs::exists(Place(""))) return names;
    std::vector<std::string> all;
    for (const auto& entry : fs::recursive_directory_iterator(Place(""))) {
      const std::string name = fs::relative(entry.path(), Place(""));
      if (!entry.is_directory() && entry.path().filename() != "pictures.jsonl") all.push_back(name);
    }
    std::sort(all.begin(), all.end());
    for (const std::string& name : all) names += (names.empty() ? "" : " | ") + name;
    return names;
  }
  engine::Image Picture(const std::string& path) {
    auto image = engine::DecodeImage(tests::ReadText(path));
    EXPECT_TRUE(image) << path << ": " << image.Message();
    return image ? image.Take() : engine::Image();
  }

  tests::ScratchFolder folder_;
};

std::size_t CountPixels(const engine::Image& image, int red, int green, int blue) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < image.PixelCount(); ++i) {
    const std::uint8_t* p = &image.bytes[i * 4];
    count += p[0] == red && p[1] == green && p[2] == blue;
  }
  return count;
}

TEST_F(Pictures, NamesFollowThePatternAndStayInTheFolder) {
  const std::string scene = Scene({"Day", "../../up"});
  const struct {
    const char* pattern;
    const char* written;
  } kRows[] = {
      {"{state}.png", "Day.png | _._.._up.png"},
      {"{scene} {state}.tif", "shot Day.tif | shot _._.._up.tif"},
      {"{state}/{frame}.PNG", "Day/0000.PNG | _._.._up/0000.PNG"},
      {"{camera}-{state}{state}.tiff", "Camera-DayDay.tiff | Camera-_._.._up_._.._up.tiff"},
      {"{state} {{{size}}}.png", "Day {8x6}.png | _._.._up {8x6}.png"},
      {"{index:03} {frame:02}{state:safe}.exr", "001 00_._.._up.exr | 002 00Day.exr"},
  };
  for (const auto& row : kRows) {
    Out({"render", scene, "-o", Place(row.pattern), "--size", "8x6"});
    EXPECT_EQ(Written(), row.written);
    fs::remove_all(Place(""));
  }
}

TEST_F(Pictures, ShowTheStatesInTheSizeAskedFor) {
  const std::string scene = Scene({"Bare", "Full"});
  const std::string before = tests::ReadText(scene);
  const std::string out =
      Out({"render", scene, "--all", "-o", Place("{state}.png"), "--jobs", "1"});
  EXPECT_EQ(out.substr(0, 11), "2 pictures:");
  EXPECT_NE(out.find(Place("Bare.png") + "  64 x 40"), std::string::npos) << out;
  EXPECT_EQ(tests::ReadText(scene), before);
  const engine::Image full = Picture(Place("Full.png"));
  EXPECT_EQ(full.width, 64U);
  EXPECT_EQ(full.height, 40U);
  EXPECT_NE(full.bytes, Picture(Place("Bare.png")).bytes);

  const json one = json::parse(Out(
      {"render", scene, "--state", "Full", "--size", "64x40", "-o", Place("again.tif"), "--json"}));
  EXPECT_EQ(one["pictures"].size(), 1U);
  EXPECT_EQ(one["pictures"][0]["result"], "rendered");
  EXPECT_EQ(Picture(Place("again.tif")).bytes, full.bytes)
      << "the same picture whatever the threads and the format";
}

// Another state shows a part of the same flat triangles.
TEST_F(Pictures, WhatIsWrongWithTheObjectsIsSaidOnce) {
  const std::string scene = Scene({"All", "Nothing"});
  Out({"set", scene, "--object", "Zahn", "--render", "off", "--write"});
  Out({"record", scene, "Less", "--write"});
  const std::string kNote = " triangles without an area";
  for (const std::vector<std::string>& verb :
       {std::vector<std::string>{"render", scene, "-o", Place("{state}.png")},
        {"sheet", scene, "-o", Place("sheet.png")}}) {
    const ChildResult result = Call(verb);
    EXPECT_EQ(result.status, 0) << result.err;
    const std::size_t first = result.err.find(kNote);
    ASSERT_NE(first, std::string::npos) << verb[0] << "\n" << result.err;
    EXPECT_EQ(result.err.find(kNote, first + 1), std::string::npos) << verb[0] << "\n"
                                                                    << result.err;
  }
}

TEST_F(Pictures, TwoOfOneNameAreRefusedBeforeAnyIsRendered) {
  const std::string scene = Scene({"Night", "night", "n/t", "n:t", "\u00C4rger", "\u00E4rger"});
  const struct {
    std::vector<std::string> states;
    const char* pattern;
    const char* says;
  } kRows[] = {
      {{"Night", "night"}, "{state}.png", "differ in upper and lower case only"},
      {{"n/t", "n:t"}, "{state}.png", "because what a file's name cannot hold is replaced in it"},
      {{"Night", "nigh?"}, "{state}.png", "differ in upper and lower case only"},
      {{"Night", "n/t"}, "{scene}.png", "Put {state} into the pattern"},
      {{"Night", "n/t"}, "same.tif", "Put {state} into the pattern"},
      {{}, "{state}.png", "is replaced in it"},
      {{"\u00C4rger", "\u00E4rger"}, "{state}.png", "differ in upper and lower case only"},
  };
  for (const auto& row : kRows) {
    std::vector<std::string> call{"render", scene, "-o", Place(row.pattern)};
    for (const std::string& state : row.states) call.insert(call.end(), {"--state", state});
    const ChildResult result = Call(call);
    EXPECT_EQ(result.status, 2) << row.pattern;
    EXPECT_NE(result.err.find(row.says), std::string::npos) << result.err;
    EXPECT_FALSE(fs::exists(Place("")));
  }
}

TEST_F(Pictures, ImpossibleCallsAreRefused) {
  const std::string scene = Scene({"Evening"});
  tests::WriteText(folder_ / "file", "a file");
  fs::create_directories(folder_ / "taken.png");
  const struct {
    std::vector<std::string> arguments;
    int status;
    const char* says;
  } kCalls[] = {
      {{"--size", "0x10"}, 2, "no picture size"},
      {{"--size", "10x-3"}, 2, "no picture size"},
      {{"--size", "10"}, 2, "no picture size"},
      {{"--size", "10x10x"}, 2, "no picture size"},
      {{"--size", "100000x100000"}, 2, "too large"},
      {{"--size", "16384x16384"}, 2, "too large"},
      {{"--size", "99999999999999999999x1"}, 2, "no picture size"},
      {{"--jobs", "-1"}, 2, "--jobs"},
      {{"--state", "Evenin"}, 2, "Did you mean \"Evening\"?"},
      {{"--state", "Evening", "--all"}, 2, "--all"},
      {{"-o", "{mood}.png"}, 2, "{mood} is no placeholder"},
      {{"-o", "{ {state}.png"}, 2, "{ {state} is no placeholder"},
      {{"-o", "{state} }.png"}, 2, "has a } without its {"},
      {{"-o", "{state:big}.png"}, 2, "{state:big} is no placeholder"},
      {{"-o", "{index:3}.png"}, 2, "{index:3} is no placeholder"},
      {{"-o", "{frame:}.png"}, 2, "{frame:} is no placeholder"},
      {{"-o", "{state}.png", "--format", "exr"}, 2, "another format"},
      {{"--format", "gif"}, 2, "--format"},
      {{"--frames", "9:3"}, 2, "no frame range"},
      {{"--frames", "0:9", "-o", "{state}.png"}, 2, "Put {frame} into the pattern"},
      {{"--size", "8x6", "9x6", "-o", "{state}.png"}, 2, "Put {size} into the pattern"},
      {{"-o", "{state.png"}, 2, "has a { without its }"},
      {{"-o", "{scene} {state.png"}, 2, "\"{state.png\" has a { without its }"},
      {{"-o", "{state}"}, 2, "must end in .png or .tif"},
      {{"-o", folder_ / "x.jpg"}, 2, "must end in .png or .tif"},
      {{"-o", folder_ / "file/{state}.png"}, 1, "file"},
      {{"-o", folder_ / "taken.png"}, 1, "taken.png"},
  };
  for (const auto& call : kCalls) {
    std::vector<std::string> arguments{"render", scene};
    arguments.insert(arguments.end(), call.arguments.begin(), call.arguments.end());
    const ChildResult result = Call(arguments);
    EXPECT_EQ(result.status, call.status) << testing::PrintToString(call.arguments) << result.err;
    EXPECT_NE(result.err.find(call.says), std::string::npos) << result.err;
    EXPECT_EQ(tests::ReadText(folder_ / "file"), "a file");
  }
}

TEST_F(Pictures, ASceneWithNothingInItHasAPicture) {
  const std::string scene = folder_ / "empty.c4d";
  Out({"new", scene});
  Out({"render", scene, "-o", Place("{scene} {state} {camera}.png"), "--size", "12x9"});
  EXPECT_EQ(Written(), "empty as it is Editor camera.png");
  EXPECT_EQ(Picture(Place("empty as it is Editor camera.png")).width, 12U);
}

TEST_F(Pictures, APreviewThatCannotBeWrittenIsNamed) {
  const std::string scene = Scene({"Bare", "Full"});
  const std::string previews = folder_ / "shot_SM";
  Out({"record", scene, "Full", "--preview", "--write", "--yes"});
  EXPECT_EQ(Picture(previews + "/Full.tif").width, 160U);
  EXPECT_EQ(Picture(previews + "/Full.tif").height, 120U);
  fs::remove_all(previews);
  tests::WriteText(previews, "a file");
  const ChildResult result = Call({"record", scene, "Late", "--preview", "--write"});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.err.find("shot_SM"), std::string::npos) << result.err;
  EXPECT_EQ(tests::ReadText(previews), "a file");
  EXPECT_NE(Out({"list", scene}).find("Late"), std::string::npos) << "the state itself is recorded";
}

// A limit on the size of files stands for a disk that is full.
TEST_F(Pictures, AFullDiskLeavesWhatWasThere) {
  const std::string scene = Scene({"Bare", "Full"});
  Out({"render", scene, "--state", "Bare", "-o", Place("Bare.png"), "--size", "8x6"});
  const std::string before = tests::ReadText(Place("Bare.png"));
  for (const char* call :
       {"render '{scene}' -o '{out}/{state}.png' --size 640x480",
        "sheet '{scene}' -o '{out}/sheet.png'", "sheet '{scene}' --html '{out}' --force"}) {
    std::string line = std::string("ulimit -f 1; exec \"$0\" ") + call;
    line = WithReplaced(WithReplaced(line, "{scene}", scene), "{out}", folder_ / "out");
    const ChildResult result = Call({"-c", line, kProgram}, "/bin/sh");
    EXPECT_EQ(result.status, 1) << call << result.err;
    EXPECT_NE(result.err.find("Cannot write"), std::string::npos) << result.err;
    EXPECT_EQ(Written(), "Bare.png");
    EXPECT_EQ(tests::ReadText(Place("Bare.png")), before);
  }
}

TEST_F(Pictures, AnInterruptionLeavesNothingHalfDone) {
  const std::string scene = Scene({"A"});
  const ChildResult result =
      Call({"--preserve-status", "-s", "INT", "3", kProgram, "render", scene, "--size",
            "16384x4000", "--jobs", "1", "-o", Place("{state}.png")},
           "/usr/bin/timeout");
  EXPECT_EQ(result.status, 130) << result.err;
  EXPECT_EQ(Written(), "");
}

// Nothing of the spider touches the edges of the picture, and it fills more than a little of it.
TEST_F(Pictures, ANewCameraShowsEverything) {
  const std::string scene = Scene({});
  Out({"set", scene, "--add-camera", "Front", "--camera", "Front", "--write"});
  Out({"render", scene, "-o", Place("spider.png")});
  Out({"set", scene, "--object", "*", "--render", "off", "--write"});
  Out({"render", scene, "-o", Place("nothing.png")});
  const engine::Image spider = Picture(Place("spider.png"));
  const engine::Image nothing = Picture(Place("nothing.png"));
  std::size_t edge = 0;
  std::size_t inside = 0;
  for (std::size_t i = 0; i < spider.PixelCount(); ++i) {
    const std::size_t x = i % spider.width;
    const std::size_t y = i / spider.width;
    const bool atEdge = x == 0 || y == 0 || x + 1 == spider.width || y + 1 == spider.height;
    (atEdge ? edge : inside) += spider.bytes[i * 4 + 2] != nothing.bytes[i * 4 + 2];
  }
  EXPECT_EQ(edge, 0U);
  EXPECT_GT(inside, spider.PixelCount() / 10);
}

TEST_F(Pictures, SheetsGrowWithTheNumberOfStates) {
  const std::string longName(300, 'M');
  const std::vector<std::string> names{
      longName, "\u05E2\u05E8\u05D1", "\u0634\u062A\u0627\u0621", "D", "E", "F", "G"};
  std::uint64_t area = 0;
  for (const std::size_t count : {0, 1, 7}) {
    const std::string scene =
        Scene({names.begin(), names.begin() + static_cast<std::ptrdiff_t>(count)});
    const json answer = json::parse(Out({"sheet", scene, "-o", Place("sheet.png"), "--json"}));
    EXPECT_EQ(answer["states"], count);
    const engine::Image sheet = Picture(Place("sheet.png"));
    EXPECT_TRUE(count == 1 ? sheet.PixelCount() == area : sheet.PixelCount() > 3 * area) << count;
    area = sheet.PixelCount();
    EXPECT_EQ(CountPixels(sheet, 232, 170, 66) > 1000, count > 0) << "the current one is marked";
    EXPECT_GT(CountPixels(sheet, 214, 214, 214), 50U) << "there are captions";
  }
  EXPECT_EQ(Written(), "sheet.png");
}

TEST_F(Pictures, ThePageNeedsNothingButWhatLiesBesideIt) {
  const std::string scene = Scene({"<script>alert(1)</script> & \"x'", "a/b", "A:B", "50% #1?"});
  Out({"sheet", scene, "--html", Place("")});
  const std::string page = tests::ReadText(Place("index.html"));
  EXPECT_EQ(page.find("alert(1)</script>"), std::string::npos);
  EXPECT_NE(page.find("&lt;script&gt;alert(1)&lt;/script&gt; &amp; &quot;x&#39;"),
            std::string::npos);
  EXPECT_EQ(page.find("http"), std::string::npos);
  EXPECT_EQ(Written(),
            "index.html | pictures/50% #1_.png | pictures/A_B.png | "
            "pictures/_script_alert(1)__script_ & _x'.png | pictures/a_b (2).png");
  const std::vector<std::string> pictures = Matches(page, "src=\"([^\"]*)\"");
  for (const std::string& address : pictures) {
    std::string file;
    for (std::size_t i = 0; i < address.size(); ++i) {
      if (address[i] == '%')
        file += static_cast<char>(std::stoi(address.substr(i + 1, 2), nullptr, 16));
      if (address[i] != '%') file += address[i];
      if (address[i] == '%') i += 2;
    }
    EXPECT_TRUE(fs::exists(Place(file))) << file;
  }
  EXPECT_EQ(pictures.size(), 4U);
}

}  // namespace
