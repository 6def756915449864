// Scripts at the desktop: files and the console, one undo step each; what fails leaves no trace.
#include <QFile>
#include <QMessageBox>
#include <fstream>

#include "engine/scene/SceneDump.h"
#include "engine/undo/Undo.h"
#include "program/desktop/background/DocumentBusy.h"
#include "tests/desktop/States.h"
#include "tests/desktop/WithCube.h"

namespace {

class Scripts : public desk::WithCube {
 public:
  desktop::ScriptConsole& Console() { return Window().Console(); }
  // Types the lines, each with Enter, and answers what was printed since.
  QString Type(const std::vector<const char*>& lines) {
    const qsizetype before = Console().Printed().size();
    for (const char* line : lines) {
      Console().Line().setText(line);
      QTest::keyClick(&Console().Line(), Qt::Key_Return);
    }
    Rest();
    return Console().Printed().mid(before);
  }
  scripting::ScriptEnd Run(const std::string& text) {
    const std::string path = Folder() + "/script.py";
    std::ofstream(path) << text;
    return Console().RunFile(path);
  }
  std::vector<std::string> Steps() { return engine::DoneNames(desk::Scene()); }
};

TEST(Scripts, AFileIsOneStep) {
  Scripts desk;
  const auto end = desk.Run(
      "import stagemarks\n"
      "doc = stagemarks.active()\n"
      "for one in doc.objects:\n"
      "    one.render_mode = 'off'\n"
      "    one.name = 'Box'\n"
      "doc.states.record('Dark')\n"
      "print('recorded', doc.states.names)\n");
  EXPECT_TRUE(end.succeeded) << end.problem;
  desk::Desk::Rest();
  EXPECT_TRUE(desk.Console().Printed().contains("recorded ['Dark']"));
  EXPECT_EQ(desk.cube->GetRenderMode(), host::MODE_OFF);
  EXPECT_EQ(desk::CountStates(desk), 1);
  EXPECT_EQ(desk.Steps(), std::vector<std::string>{"Script script.py"});
  desk.Entry("Edit", "Undo").trigger();
  EXPECT_EQ(desk.cube->GetRenderMode(), host::MODE_UNDEF);
  EXPECT_EQ(desk.cube->GetName().ToUtf8(), "Cube");
  desk::Desk::Rest();
  EXPECT_EQ(desk::CountStates(desk), 0);
}

TEST(Scripts, WhatFailsLeavesTheScenesAsTheyWere) {
  Scripts desk;
  desk::RecordState(desk, "Day");
  const std::string before = engine::DumpState(desk::Scene());
  const auto steps = desk.Steps();
  const std::string change =
      "import os, sys, stagemarks\n"
      "doc = stagemarks.active()\n"
      "doc.objects[0].name = 'changed'\n"
      "doc.states.record('Wrong')\n"
      "doc.states.delete('Day')\n"
      "stagemarks.new()\n";
  const std::pair<const char*, const char*> kEnds[] = {
      {"1 / 0", "ZeroDivisionError"},
      {"sys.exit(3)", "It ended with 3."},
      {"sys.exit('not today')", "not today"},
      {"os._exit(1)", "It ended with 1."},
      {"os.fork()", "cannot be forked"},
      {"doc.states.load('Nothing')", "There is no Stagemark"},
      {"doc.close(discard=True)", "a person closes it"},
      {"def", "SyntaxError"},
  };
  for (const auto& [last, why] : kEnds) {
    const auto end = desk.Run(change + last + "\n");
    EXPECT_FALSE(end.succeeded) << last;
    EXPECT_NE((desk.Console().Printed().toStdString() + end.problem).find(why), std::string::npos)
        << last << ": " << end.problem;
    EXPECT_EQ(engine::DumpState(desk::Scene()), before) << last;
    EXPECT_EQ(desk.Steps(), steps) << last;
    EXPECT_EQ(desk.App().Documents().size(), 1U) << last;
  }
  EXPECT_TRUE(desk.Run("import sys\nsys.exit()").succeeded);
}

// The button of the box that shows that something runs.
void StopNext() {
  desk::AnswerNext<QProgressDialog>([](QProgressDialog& box) { box.cancel(); });
}

TEST(Scripts, WhatLoopsIsStopped) {
  Scripts desk;
  for (const char* loop : {"while True: pass", "import time\ntime.sleep(3600)",
                           "while True:\n    try:\n        x = 1\n    except BaseException:\n"
                           "        pass"}) {
    StopNext();
    const auto end = desk.Run(std::string("import stagemarks\n"
                                          "stagemarks.active().objects[0].name = 'changed'\n") +
                              loop + "\n");
    EXPECT_EQ(end.problem, "It was stopped.") << loop;
    EXPECT_EQ(desk.cube->GetName().ToUtf8(), "Cube");
    EXPECT_FALSE(desktop::IsDocumentBusy());
    desk::Desk::Rest();
  }
}

TEST(Scripts, TheConsoleKeepsNamesAndPrintsValues) {
  Scripts desk;
  EXPECT_TRUE(desk.Type({"1 + 1"}).endsWith("2\n"));
  EXPECT_TRUE(desk.Type({"cube = doc.objects[0]", "cube.type"}).endsWith("'Cube'\n"));
  desk.Type({"for name in ('A', 'B'):", "    cube.name = name", ""});
  EXPECT_EQ(desk.cube->GetName().ToUtf8(), "B");
  EXPECT_EQ(desk.Steps(), std::vector<std::string>{"Console"});
  EXPECT_TRUE(desk.Type({"1 / 0"}).contains("ZeroDivisionError"));
  EXPECT_TRUE(desk.Type({"x ="}).contains("SyntaxError"));
  EXPECT_TRUE(desk.Type({"cube.name"}).endsWith("'B'\n"));
}

TEST(Scripts, LinesThatAreTypedAheadRunWhenTheirTurnComes) {
  Scripts desk;
  {
    const desktop::DocumentBusy busy;
    EXPECT_EQ(desk.Type({"for name in ('A', 'B'):", "    doc.objects[0].name = name", "", "1 + 1"}),
              "");
    EXPECT_EQ(desk.cube->GetName().ToUtf8(), "Cube");
  }
  desk::Desk::Rest();
  EXPECT_EQ(desk.cube->GetName().ToUtf8(), "B");
  EXPECT_TRUE(desk.Console().Printed().endsWith("2\n"));
}

TEST(Scripts, TheConsoleRemembersAndCompletes) {
  Scripts desk;
  QLineEdit& line = desk.Console().Line();
  desk.Type({"first = 1", "second = 2"});
  line.setText("typing");
  const std::pair<Qt::Key, const char*> kKeys[] = {
      {Qt::Key_Up, "second = 2"},   {Qt::Key_Up, "first = 1"}, {Qt::Key_Up, "first = 1"},
      {Qt::Key_Down, "second = 2"}, {Qt::Key_Down, "typing"},  {Qt::Key_Down, "typing"}};
  for (const auto& [key, shown] : kKeys) {
    QTest::keyClick(&line, key);
    EXPECT_EQ(line.text(), shown);
  }
  line.setText("sec");
  QTest::keyClick(&line, Qt::Key_Tab);
  EXPECT_EQ(line.text(), "second");
  line.setText("doc.mat");
  QTest::keyClick(&line, Qt::Key_Tab);
  EXPECT_EQ(line.text(), "doc.materials");
  line.setText("doc.un");
  QTest::keyClick(&line, Qt::Key_Tab);
  EXPECT_EQ(line.text(), "doc.undo");
  QTest::keyClick(&line, Qt::Key_Tab);
  EXPECT_TRUE(desk.Console().Printed().contains("doc.undo_names"));
}

TEST(ScriptsPicture, OfTheConsole) {
  Scripts desk;
  desk.Window().Panels().Raise("console");
  desk.Type({"cube = doc.objects[0]", "cube.name = 'Box'", "doc.states.record('Day')",
             "doc.states.load('Nite')", "doc.states"});
  pictures::Write(desk.Window(), "console");
}

}  // namespace
