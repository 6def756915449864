// Results that cannot be printed, readers that have had enough, and signals.
#include "tests/commandline/CommandLine.h"

namespace {

using tests::ChildResult;
using tests::CommandLine;

TEST_F(CommandLine, WhatCannotBePrintedIsAFailure) {
  Staged();
  for (const char* call :
       {"list spider.c4d", "list spider.c4d --json", "list spider.c4d --names",
        "info spider.c4d --tree", "info spider.c4d --dump", "check spider.c4d",
        "options spider.c4d", "--help", "--version", "record spider.c4d New --json",
        "render spider.c4d --state Day --size 8x6 -o p.png"}) {
    const ChildResult result = Shell("stagemarks " + std::string(call) + " > /dev/full");
    EXPECT_EQ(result.status, 1) << call;
    EXPECT_NE(result.err.find("Not all results could be printed: No space left on device."),
              std::string::npos)
        << call << result.err;
  }
  const ChildResult closed = Shell("stagemarks record spider.c4d New --write >&-");
  EXPECT_EQ(closed.status, 1) << "and the scene is not taken for the output";
  EXPECT_EQ(Marks(Scene("spider.c4d")), "Day *New Night ");
}

TEST_F(CommandLine, AReaderMayStopReading) {
  Staged();
  const ChildResult result =
      Shell("{ stagemarks info spider.c4d --dump; echo $? >&2; } | head -n 1");
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(result.err == "141\n" || result.err == "0\n") << result.err;
  const ChildResult gone = Shell("{ stagemarks list spider.c4d; echo $? >&2; } | :");
  EXPECT_TRUE(gone.err == "141\n" || gone.err == "0\n")
      << "0 where the reader was still there: " << gone.err;
}

TEST_F(CommandLine, SignalsStopTheWorkAndLeaveNothing) {
  Staged();
  const struct {
    const char* signal;
    const char* status;
  } kRows[] = {{"INT", "130"}, {"TERM", "143"}, {"HUP", "129"}};
  for (const auto& row : kRows) {
    // A shell has what it starts in the background ignore Ctrl-C; `env` undoes that.
    const ChildResult result = Shell(std::string("mkfifo plan; env --default-signal=INT stagemarks "
                                                 "render spider.c4d --state Day --size 4000x4000 "
                                                 "-o p.png > plan & read line < plan; kill -") +
                                     row.signal + " $!; wait $!; echo $?; rm plan");
    EXPECT_EQ(result.out, std::string(row.status) + "\n") << result.err;
  }
  EXPECT_EQ(tests::Names(folder_.Path()), "spider.c4d");
  const ChildResult late = CallOnTerminal(
      {"render", Scene("spider.c4d"), "--state", "Day", "--size", "600x600", "-o", Scene("p.png")},
      {{"100 %", "\x03"}});
  const std::string left = tests::Names(folder_.Path());
  EXPECT_EQ(left, late.status == 130 ? "spider.c4d" : "p.png pictures.jsonl spider.c4d")
      << late.status << late.out;
}

}  // namespace
