// The main window with the built plug-in: files, undo, docks and questions, by clicks and menu
// entries.
#include "program/desktop/MainWindow.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QAbstractItemView>
#include <QDragEnterEvent>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QShortcut>
#include <QTreeWidget>
#include <QtTest/QTest>
#include <filesystem>
#include <fstream>
#include <set>
#include <typeinfo>

#include "engine/scene/SceneDump.h"
#include "host/BaseObject.h"
#include "tests/desktop/States.h"

namespace {

using desk::AnswerNext;
using desk::ChooseInNextBox;
using desk::CountStates;
using desk::Desk;
using desk::RecordState;

void PressInNextBox(QMessageBox::StandardButton button) {
  AnswerNext([button](QDialog& box) { dynamic_cast<QMessageBox&>(box).button(button)->click(); });
}

TEST(MainWindow, RecordsAndLoadsByClicksAndTakesItBack) {
  Desk desk;
  host::BaseObject* object = host::BaseObject::Alloc(host::Onull);
  host::GetActiveDocument()->AppendObject(object);
  EXPECT_FALSE(desk.Entry("Edit", "Undo").isEnabled());
  RecordState(desk, "Morning");
  ASSERT_EQ(CountStates(desk), 1);
  EXPECT_TRUE(desk.Window().isWindowModified());
  object->SetEditorMode(host::MODE_OFF);
  desk::LoadState(desk, 0);
  EXPECT_EQ(object->GetEditorMode(), host::MODE_UNDEF);
  desk.Entry("Edit", "Undo").trigger();
  EXPECT_EQ(object->GetEditorMode(), host::MODE_OFF);
  Desk::Rest();
  desk.Entry("Edit", "Redo").trigger();
  EXPECT_EQ(object->GetEditorMode(), host::MODE_UNDEF);
}

TEST(MainWindow, EnterAnswersNoWhereNothingBringsBack) {
  Desk desk;
  RecordState(desk, "Morning");
  desk::ChooseState(desk, 0);
  host::GetActiveDocument()->AppendObject(host::BaseObject::Alloc(host::Onull));
  const std::string before = engine::DumpDocument(*host::GetActiveDocument());
  for (const host::LONG button : {stagemarks::kDelete, stagemarks::kRecord}) {
    QString asked;
    AnswerNext<QMessageBox>([&](QMessageBox& box) {
      asked = box.text();
      EXPECT_EQ(box.icon(), QMessageBox::Question);
      QTest::keyClick(&box, Qt::Key_Return);
    });
    if (button == stagemarks::kRecord)
      desk.Gadget<QLineEdit>(stagemarks::kNameField).setText("Morning");
    QTest::mouseClick(&desk.Gadget<QPushButton>(button), Qt::LeftButton);
    Desk::Rest();
    EXPECT_NE(asked, "");
    EXPECT_EQ(engine::DumpDifference(before, engine::DumpDocument(*host::GetActiveDocument())),
              std::vector<std::string>());
  }
}

TEST(MainWindow, WarningsLookLikeWarnings) {
  Desk desk;
  const auto iconOf = [](const std::function<void()>& tell) {
    auto icon = QMessageBox::NoIcon;
    AnswerNext<QMessageBox>([&](QMessageBox& box) {
      icon = box.icon();
      box.accept();
    });
    tell();
    return icon;
  };
  const std::pair<const char*, QMessageBox::Icon> cases[] = {
      {"Warning! This will overwrite files.", QMessageBox::Warning},
      {"An error has occurred.", QMessageBox::Warning},
      {"Error! Nothing was made.", QMessageBox::Warning},
      {"You must enter a name.", QMessageBox::Information},
      {"Everything without an error or warning.", QMessageBox::Information}};
  for (const auto& [text, icon] : cases) {
    EXPECT_EQ(iconOf([&, told = std::string(text)] { desk.Person().Tell(told); }), icon) << text;
  }
  EXPECT_EQ(iconOf([&] { desk.Window().Commands().Open(desk.Folder() + "/none.c4d"); }),
            QMessageBox::Warning);
}

TEST(MainWindow, WhatNoViewerOpensIsTold) {
  Desk desk;
  const std::string program = desk.Folder() + "/xdg-open";
  std::ofstream(program) << "#!/bin/sh\nexit 3\n";
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  const QByteArray path = qgetenv("PATH");
  qputenv("PATH", QByteArray::fromStdString(desk.Folder() + ":") + path);
  for (const bool byPlugin : {false, true}) {
    QString told;
    AnswerNext<QMessageBox>([&](QMessageBox& box) {
      told = box.text();
      box.accept();
    });
    if (byPlugin) {
      engine::ChooseMenu(*desk.Dialog(), stagemarks::kHelp);
    } else {
      desk.Entry("Help", "Manual").trigger();
    }
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return told.contains("SM_Manual.pdf") && told.contains("no program"); }, 20000))
        << told.toStdString();
  }
  qputenv("PATH", path);
}

TEST(MainWindow, TheShortcutPageListsEveryKeyOfTheWindow) {
  Desk desk;
  QStringList listed;
  AnswerNext([&](QDialog& page) {
    const auto* list = page.findChild<QTreeWidget*>();
    for (int group = 0; group < list->topLevelItemCount(); ++group) {
      for (int row = 0; row < list->topLevelItem(group)->childCount(); ++row) {
        EXPECT_NE(list->topLevelItem(group)->child(row)->text(0), "");
        listed += list->topLevelItem(group)->child(row)->text(1).split(", ");
      }
    }
    EXPECT_TRUE(pictures::Write(page, "shortcuts"));
    page.reject();
  });
  desk.Entry("Help", "Keyboard Shortcuts").trigger();
  for (const QAction* action : desk.Window().findChildren<QAction*>()) {
    for (const QKeySequence& keys : action->shortcuts()) {
      EXPECT_TRUE(listed.contains(keys.toString(QKeySequence::NativeText)))
          << action->text().toStdString();
    }
  }
  for (const QShortcut* shortcut : desk.Window().findChildren<QShortcut*>()) {
    EXPECT_TRUE(listed.contains(shortcut->key().toString()))
        << shortcut->key().toString().toStdString();
  }
  EXPECT_TRUE(listed.contains("F2") && listed.contains("Ctrl+L") && listed.contains("F9") &&
              listed.contains("Space"));
}

TEST(MainWindow, TheWindowMenuListsDialogsOfPlugIns) {
  Desk desk;
  ASSERT_NE(desk.Dialog(), nullptr);
  for (const bool open : {true, false, true}) {
    EXPECT_EQ(desk.Dialog() != nullptr, open);
    QAction& entry = desk.Entry("Window", "Stagemarks");
    EXPECT_TRUE(entry.isCheckable());
    EXPECT_EQ(entry.isChecked(), open);
    entry.trigger();
    Desk::Rest();
  }
}

TEST(MainWindow, TheFolderChooserMakesWhatIsNew) {
  Desk desk;
  const engine::FileQuestion question{host::FILESELECTTYPE_ANYTHING, host::FILESELECT_DIRECTORY,
                                      "Choose a folder", desk.Folder()};
  for (const char* name : {"new", "new"}) {
    ChooseInNextBox(name);
    EXPECT_EQ(desk.Person().ChooseFile(question), desk.Folder() + "/new");
    EXPECT_TRUE(std::filesystem::is_directory(desk.Folder() + "/new"));
  }
}

TEST(MainWindow, ChangedDocumentsAskBeforeTheyGo) {
  Desk desk;
  RecordState(desk, "Morning");
  PressInNextBox(QMessageBox::Cancel);
  EXPECT_FALSE(desk.Window().close());
  PressInNextBox(QMessageBox::Cancel);
  desk.Entry("File", "Close").trigger();
  Desk::Rest();
  EXPECT_EQ(CountStates(desk), 1);
  PressInNextBox(QMessageBox::Discard);
  desk.Entry("File", "Close").trigger();
  Desk::Rest();
  EXPECT_EQ(CountStates(desk), 0);
  EXPECT_TRUE(desk.Window().close());
}

TEST(MainWindow, SavesAsReopensAndRemembers) {
  Desk desk;
  RecordState(desk, "Morning");
  const std::string path = desk.Folder() + "/room.c4d";
  ChooseInNextBox(desk.Folder() + "/room");
  desk.Entry("File", "Save").trigger();
  Desk::Rest();
  EXPECT_TRUE(std::filesystem::exists(path));
  EXPECT_FALSE(desk.Window().isWindowModified());
  EXPECT_EQ(desk.Window().windowTitle(), "room.c4d[*]");
  desk.Restart();
  EXPECT_EQ(CountStates(desk), 0);
  EXPECT_EQ(desk.Window().Commands().RecentFiles(), QStringList{QString::fromStdString(path)});
  ASSERT_TRUE(desk.Window().Commands().Open(path));
  Desk::Rest();
  EXPECT_EQ(CountStates(desk), 1);
  EXPECT_EQ(desk.App().Documents().size(), 1U) << "the empty document of the start stays";
}

// Among them: no place in a table is one, too. It is what Ctrl+C asks for before a row was chosen.
TEST(MainWindow, EachTableAnswersWhateverAViewMayAsk) {
  Desk desk;
  RecordState(desk, "Morning");
  desk.Entry("Render", "Render States").trigger();
  Desk::Rest();
  std::set<std::string> models;
  for (QWidget* widget : QApplication::allWidgets()) {
    auto* view = qobject_cast<QAbstractItemView*>(widget);
    if (!view || !view->model()) continue;
    QAbstractItemModel& model = *view->model();
    models.insert(typeid(model).name());
    const QAbstractItemModelTester tester(&model,
                                          QAbstractItemModelTester::FailureReportingMode::Fatal);
    QTest::keyClick(view, Qt::Key_C, Qt::ControlModifier);
  }
  EXPECT_GE(models.size(), 8U);
}

TEST(MainWindow, SwitchingDocumentsKeepsTheDialogInStep) {
  Desk desk;
  RecordState(desk, "Morning");
  desk.Entry("File", "New").trigger();
  Desk::Rest();
  EXPECT_EQ(CountStates(desk), 0);
  EXPECT_TRUE(desk.Entry("Window", "Untitled").isCheckable());
  host::SetActiveDocument(desk.App().Documents().front());
  host::EventAdd();
  Desk::Rest();
  EXPECT_EQ(CountStates(desk), 1);
}

TEST(MainWindow, KeysReachEveryPanelThatCanBeSeen) {
  Desk desk;
  desk.Raise("layers");
  desk.Window().View().setFocus();
  const auto reached = [&](Qt::KeyboardModifiers keys) {
    std::vector<std::string> names;
    for (int i = 0; i < 6; ++i) {
      QTest::keyClick(QApplication::focusWidget(), Qt::Key_F6, keys);
      Desk::Rest();
      const QWidget* at = QApplication::focusWidget();
      while (at && !dynamic_cast<const QDockWidget*>(at)) at = at->parentWidget();
      names.push_back(at ? at->windowTitle().toStdString() : "the picture");
    }
    return names;
  };
  EXPECT_EQ(reached({}), (std::vector<std::string>{"Objects", "Attributes", "Layers", "Stagemarks",
                                                   "Compare", "the picture"}));
  EXPECT_EQ(reached(Qt::ShiftModifier),
            (std::vector<std::string>{"Compare", "Stagemarks", "Layers", "Attributes", "Objects",
                                      "the picture"}));
}

TEST(MainWindow, TabsAndKeysTurnFromSceneToScene) {
  Desk desk;
  desktop::DocumentTabs& tabs = desk.Window().Tabs();
  EXPECT_FALSE(tabs.isVisible());
  RecordState(desk, "Morning");
  for (const std::string& name :
       {std::string(10000, 'W'), std::string("\xd7\xa9\xd7\x9c\n& more")}) {
    desk.Entry("File", "New").trigger();
    host::GetActiveDocument()->SetDocumentName(host::Filename(host::String(name)));
    Desk::Rest();
  }
  ASSERT_EQ(tabs.count(), 3);
  EXPECT_EQ(tabs.currentIndex(), 2);
  EXPECT_TRUE(tabs.tabText(0).endsWith('*'));
  EXPECT_LT(tabs.sizeHint().width(), 2000);
  EXPECT_TRUE(pictures::Write(desk.Window(), "scene-tabs"));
  QTest::keyClick(&desk.Window(), Qt::Key_Tab, Qt::ControlModifier);
  Desk::Rest();
  EXPECT_EQ(tabs.currentIndex(), 0);
  EXPECT_EQ(CountStates(desk), 1);
  QTest::mouseClick(&tabs, Qt::LeftButton, {}, tabs.tabRect(1).center());
  Desk::Rest();
  EXPECT_EQ(host::GetActiveDocument(), desk.App().Documents()[1]);
  EXPECT_EQ(CountStates(desk), 0);
  for (const auto answer : {QMessageBox::Cancel, QMessageBox::Discard}) {
    AnswerNext([answer](QDialog& box) {
      EXPECT_LT(box.width(), 1000);
      dynamic_cast<QMessageBox&>(box).button(answer)->click();
    });
    emit tabs.tabCloseRequested(1);
    Desk::Rest();
    EXPECT_EQ(tabs.count(), answer == QMessageBox::Cancel ? 3 : 2);
  }
}

TEST(MainWindow, OneFileOpenedTwiceIsTwoDocuments) {
  Desk desk;
  const std::string path = desk.Folder() + "/room.c4d";
  host::GetActiveDocument()->AppendObject(host::BaseObject::Alloc(host::Ocube));
  ASSERT_TRUE(desk.App().SaveDocumentAs(*host::GetActiveDocument(), path));
  ASSERT_TRUE(desk.Window().Commands().Open(path));
  host::BaseDocument* second = host::GetActiveDocument();
  second->AppendObject(host::BaseObject::Alloc(host::Onull));
  Desk::Rest();
  EXPECT_EQ(desk.Window().Objects().model()->rowCount(), 2);
  host::SetActiveDocument(desk.App().Documents().front());
  Desk::Rest();
  EXPECT_EQ(desk.Window().Objects().model()->rowCount(), 1);
  EXPECT_EQ(desktop::FindOpenDocument(desktop::IdentityOf(second)), second);
}

TEST(MainWindow, WhatIsNoSceneIsSaidAndChangesNothing) {
  Desk desk;
  RecordState(desk, "Morning");
  for (const char* name : {"/text.c4d", "/text.gltf", "/picture.png", "/missing.c4d"}) {
    const std::string path = desk.Folder() + name;
    if (path.find("missing") == std::string::npos) std::ofstream(path) << "no scene";
    std::string said;
    AnswerNext([&said](QDialog& box) {
      said = dynamic_cast<QMessageBox&>(box).text().toStdString();
      box.accept();
    });
    EXPECT_FALSE(desk.Window().Commands().Open(path));
    EXPECT_NE(said, "") << name;
    Desk::Rest();
    EXPECT_EQ(CountStates(desk), 1);
  }
  EXPECT_TRUE(desk.Window().Commands().RecentFiles().isEmpty());
}

TEST(MainWindow, DroppedFilesThatAreNoScenesAreToldInOneBox) {
  Desk desk;
  QMimeData dropped;
  QList<QUrl> urls = {QUrl("http://somewhere/room.c4d")};
  QDragEnterEvent foreign({}, Qt::CopyAction, &dropped, Qt::LeftButton, {});
  dropped.setUrls(urls);
  static_cast<QObject&>(desk.Window()).event(&foreign);
  EXPECT_FALSE(foreign.isAccepted()) << "nothing of this machine";
  const std::string path = desk.Folder() + "/room.c4d";
  ASSERT_TRUE(desk.App().SaveDocumentAs(*host::GetActiveDocument(), path));
  for (int i = 0; i < 20; ++i) {
    const std::string text = desk.Folder() + "/note " + std::to_string(i) + ".txt";
    std::ofstream(text) << "no scene";
    urls.append(QUrl::fromLocalFile(QString::fromStdString(text)));
  }
  urls.append(QUrl::fromLocalFile(QString::fromStdString(desk.Folder())));
  urls.append(QUrl::fromLocalFile(QString::fromStdString(path)));
  dropped.setUrls(urls);
  std::string told;
  AnswerNext([&told](QDialog& box) {
    told = dynamic_cast<QMessageBox&>(box).text().toStdString();
    box.accept();
  });
  QDropEvent drop({}, Qt::CopyAction, &dropped, Qt::LeftButton, {});
  static_cast<QObject&>(desk.Window()).event(&drop);
  EXPECT_NE(told.find("note 0.txt"), std::string::npos) << told;
  EXPECT_NE(told.find("and 16 more"), std::string::npos) << told;
  EXPECT_EQ(desk.App().Documents().size(), 2U) << "what is a scene is opened all the same";
}

TEST(MainWindow, ImportedScenesAskWhereToBeSaved) {
  Desk desk;
  std::filesystem::copy_file(TEST_SOURCE_DIR "/scenes/spider/spider.obj",
                             desk.Folder() + "/spider.obj");
  std::ofstream(desk.Folder() + "/spider.c4d") << "work of somebody";
  // Its materials stand in a file that is not there, which is told.
  AnswerNext<QMessageBox>([](QMessageBox& box) { box.accept(); });
  ASSERT_TRUE(desk.Window().Commands().Open(desk.Folder() + "/spider.obj"));
  QString proposed;
  AnswerNext<QFileDialog>([&](QFileDialog& chooser) {
    EXPECT_TRUE(pictures::WaitFor([&] { return !chooser.selectedFiles().isEmpty(); }));
    proposed = chooser.selectedFiles().value(0);
    chooser.reject();
  });
  EXPECT_FALSE(desk.Window().Commands().Save(*host::GetActiveDocument()));
  EXPECT_EQ(proposed.toStdString(), desk.Folder() + "/spider.c4d");
  EXPECT_EQ(std::filesystem::file_size(desk.Folder() + "/spider.c4d"),
            std::string("work of somebody").size());
}

TEST(MainWindow, ProgressThatIsOverDoesNotComeBack) {
  Desk desk;
  bool isThere = true;
  AnswerNext<QMessageBox>([&](QMessageBox& box) {
    Desk::Rest();
    isThere = QApplication::activeModalWidget() != &box;
    box.accept();
  });
  EXPECT_TRUE(desk.Person().Progress(0.5, "Importing"));
  EXPECT_TRUE(desk.Person().Progress(1, "Importing"));
  desk.Person().Tell("Not all of it came along.");
  EXPECT_FALSE(isThere);
}

TEST(MainWindow, ClosingWhilePicturesAreMadeEndsThem) {
  Desk desk;
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(desk.Window().Commands().Open(TEST_SOURCE_DIR "/scenes/spider/spider.obj"));
    while (desk.Window().View().Picture().isNull())
      QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    EXPECT_FALSE(desk.Window().View().IsFinished());
    EXPECT_TRUE(desk.Window().close());
    desk.Restart();
  }
}

TEST(MainWindow, WorksWithoutAPlugin) {
  Desk desk;
  desk.Window().close();
  const std::string folder = desk.Folder() + "/plugins/Stagemarks";
  std::filesystem::create_directories(folder);
  std::filesystem::copy_file(TEST_PLUGIN_DIR "/Stagemarks/Stagemarks.so",
                             folder + "/Stagemarks.so");
  desk.Restart(desk.Folder() + "/plugins");
  ASSERT_EQ(desk.Reports().size(), 1U);
  EXPECT_EQ(desk.Reports()[0].outcome, engine::LoadOutcome::ResourceRefused)
      << "its folder res is missing";
  EXPECT_NE(desk.Reports()[0].message, "");
  EXPECT_FALSE(desk.Entry("Plug-ins", "No plug-ins loaded").isEnabled());
  EXPECT_EQ(desk.Dialog(), nullptr);
  EXPECT_TRUE(desk.Window().Commands().Open(TEST_SOURCE_DIR "/scenes/spider/spider.obj"));
  Desk::Rest();
  EXPECT_TRUE(desk.Window().close());
}

TEST(MainWindow, ADockThatWasJustDroppedGoesBackWithTheLayout) {
  Desk desk;
  auto* dock = desk.Window().findChild<QDockWidget*>("objects");
  for (int i = 1; i <= 5; ++i) {
    const QPoint title(dock->width() / 2, 8);
    QTest::mousePress(dock, Qt::LeftButton, {}, title);
    for (int move = 1; move <= 3; ++move)
      QTest::mouseMove(dock, title + QPoint(100 * move * i, 60 * move * i));
    QTest::mouseRelease(dock, Qt::LeftButton, {}, title);
    desk.Entry("Window", "Reset Layout").trigger();
    EXPECT_FALSE(dock->isFloating()) << i;
    EXPECT_EQ(desk.Window().dockWidgetArea(dock), Qt::LeftDockWidgetArea) << i;
  }
}

TEST(MainWindow, ClosedDocksComeBackFromTheMenuAndTheLayout) {
  Desk desk;
  auto* dock = desk.PluginDock();
  ASSERT_NE(dock, nullptr);
  dock->close();
  Desk::Rest();
  EXPECT_EQ(desk.Dialog(), nullptr);
  desk.Entry("Plug-ins", "Stagemarks").trigger();
  Desk::Rest();
  ASSERT_NE(desk.Dialog(), nullptr);
  desk.Window().addDockWidget(Qt::LeftDockWidgetArea, desk.PluginDock());
  desk.Window().close();
  desk.Restart();
  EXPECT_EQ(desk.Window().dockWidgetArea(desk.PluginDock()), Qt::LeftDockWidgetArea);
  desk.Entry("Window", "Reset Layout").trigger();
  EXPECT_EQ(desk.Window().dockWidgetArea(desk.PluginDock()), Qt::RightDockWidgetArea);
}

TEST(MainWindowPicture, WithTheSampleScene) {
  Desk desk;
  ASSERT_TRUE(desk.Window().Commands().Open(TEST_SOURCE_DIR "/scenes/spider/spider.obj"));
  Desk::Rest();
  for (const char* name : {"All on", "Legs only", "Close"}) RecordState(desk, name);
  EXPECT_TRUE(QTest::qWaitFor([&] { return desk.Window().View().IsFinished(); }, 60000));
  EXPECT_TRUE(pictures::Write(desk.Window(), "main-window"));
}

}  // namespace
