// One whole story, with mouse and keys only, on the sample scene: import, move objects and layers,
// hide, record, change materials, record again, recall, undo, compare, make a camera and fly it,
// export, contact sheet, delete, save under another name, close and start again. Each chapter looks
// at what came of it.
#include <gtest/gtest.h>

#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>
#include <QToolBar>
#include <QtTest/QTest>
#include <filesystem>
#include <fstream>

#include "engine/editing/Selection.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/SceneDump.h"
#include "engine/scene/TreeWalk.h"
#include "engine/undo/Undo.h"
#include "host/BaseMaterial.h"
#include "host/BaseObject.h"
#include "host/LayerObject.h"
#include "host/RenderData.h"
#include "program/desktop/dialog/ListView.h"
#include "program/desktop/panels/ComparePanel.h"
#include "program/desktop/panels/GalleryPanel.h"
#include "program/desktop/panels/LayersPanel.h"
#include "program/desktop/panels/MaterialsPanel.h"
#include "program/desktop/panels/MatrixPanel.h"
#include "program/desktop/render/SheetWindow.h"
#include "program/desktop/render/WipeWindow.h"
#include "source/Stagemarks/keys/Gadgets.h"
#include "tests/desktop/Desk.h"
#include "tests/desktop/Fields.h"
#include "tests/story/Hands.h"

namespace {

namespace fs = std::filesystem;
using desk::AnswerNext;
using desk::Desk;
using stagemarks::kDelete;
using stagemarks::kGenerateFiles;
using stagemarks::kGeneratePreview;
using stagemarks::kList;
using stagemarks::kLoad;
using stagemarks::kNameField;
using stagemarks::kRecord;

constexpr int kChecked = 1;
constexpr int kName = 2;

using Nothing = std::vector<std::string>;

class Story : public testing::Test {
 public:
  host::BaseDocument& Doc() { return *host::GetActiveDocument(); }
  desktop::MainWindow& Window() { return desk_.Window(); }
  desktop::ListView& List() { return desk_.Gadget<desktop::ListView>(kList); }
  std::string State() { return engine::DumpState(Doc()); }
  // The rows of the list: "[x] name", a line each.
  std::string Rows() {
    std::string rows;
    for (int line = 0; line < List().model()->rowCount(); ++line) {
      const bool checked =
          List().model()->index(line, kChecked).data(Qt::CheckStateRole).toInt() == Qt::Checked;
      rows += std::string(checked ? "[x] " : "[ ] ") +
              List().model()->index(line, kName).data().toString().toStdString() + "\n";
    }
    return rows;
  }
  void Record(const QString& name) {
    hands::Type(desk_.Gadget<QLineEdit>(kNameField), name);
    const int rows = List().model()->rowCount();
    hands::Click(desk_.Gadget<QPushButton>(kRecord));
    // Until the progress of the preview has gone, too.
    EXPECT_TRUE(pictures::WaitFor([&] {
      return List().model()->rowCount() > rows && !QApplication::activeModalWidget();
    })) << name.toStdString();
    pictures::Settle();
  }
  void Press(host::LONG button) { hands::Click(desk_.Gadget<QPushButton>(button)); }
  desktop::ObjectTree& Tree() { return Window().Objects(); }
  // The row of the object whose name begins so.
  QModelIndex RowOf(const QString& name, int column = 0) {
    const auto found = Tree().model()->match(Tree().model()->index(0, 0), Qt::DisplayRole, name, 1,
                                             Qt::MatchStartsWith | Qt::MatchRecursive);
    return found.isEmpty() ? QModelIndex() : found.first().siblingAtColumn(column);
  }
  void Undo() { hands::Press("ctrl+z"); }

  // --- What is done to the next box, and to the one after it.
  static void TypeIntoChooser(QFileDialog& chooser, const std::string& path) {
    EXPECT_TRUE(QTest::qWaitForWindowActive(&chooser, 20000));
    hands::Type(*chooser.findChild<QLineEdit*>("fileNameEdit"), QString::fromStdString(path));
    hands::Press("Return");
  }
  void ChooseNext(const std::string& path, std::function<void()> then = {}) {
    AnswerNext<QFileDialog>([path, then](QFileDialog& box) {
      if (then) then();
      TypeIntoChooser(box, path);
    });
  }
  // Clicks a button of the next message or question and keeps its text in told_.
  void ClickNext(QMessageBox::StandardButton button, const char* picture = nullptr,
                 std::function<void()> then = {}) {
    AnswerNext<QMessageBox>([this, button, picture, then](QMessageBox& box) {
      EXPECT_TRUE(QTest::qWaitForWindowActive(&box, 20000));
      told_ += box.text().toStdString() + "\n";
      if (picture) {
        EXPECT_TRUE(pictures::Write(box, picture));
      }
      if (then) then();
      hands::Click(*box.button(button));
    });
  }
  std::string TakeTold() { return std::exchange(told_, {}); }

  // Opens a list of the attributes and clicks a row of it.
  void ChooseInAttributes(const char* label, const QString& text) {
    QComboBox& list = fields::ListOf(desk_.Panel<QWidget>("attributes"), label);
    hands::Click(list);
    ASSERT_TRUE(list.view()->isVisible()) << label;
    const QModelIndex row = list.model()->index(list.findText(text), 0);
    // A click so soon after the one that opened the list may be its second half and chooses
    // nothing.
    for (int clicks = 0; list.view()->isVisible() && clicks < 50; ++clicks)
      hands::Click(*list.view(), row);
    EXPECT_EQ(list.currentText(), text) << label;
  }

  // --- Chapters.
  void OpenTheSample();
  void MoveObjects();
  void SortLayers();
  void ChooseFromLists();
  void HideTwoAndRecord();
  void ChangeAMaterialAndRecord();
  void RecallAndUndo();
  void Compare();
  void RecordACamera();
  void Export();
  void MakeASheet();
  void LookAtTheGallery();
  void DeleteOne();
  void SaveAsOther();
  void CloseAndComeBack();

  Desk desk_;
  std::string told_;
};

void Story::OpenTheSample() {
  ChooseNext(TEST_SOURCE_DIR "/scenes/dungeon/dungeon.gltf",
             [this] { ClickNext(QMessageBox::Ok); });
  hands::Press("ctrl+o");
  EXPECT_NE(TakeTold().find("Animations are left out"), std::string::npos);
  EXPECT_EQ(engine::CountScene(Doc()).objects, 85U);
  ChooseNext(desk_.Folder() + "/dungeon.c4d");
  hands::Press("ctrl+s");
  EXPECT_TRUE(fs::exists(desk_.Folder() + "/dungeon.c4d"));
  EXPECT_FALSE(Doc().GetChanged());
}

// Onto rows, those at the edges of a tree that could scroll too, and between two.
void Story::MoveObjects() {
  Tree().scrollTo(RowOf("edge-column-3"));
  Desk::Rest();
  std::vector<engine::NodeId> shown;
  for (QModelIndex row = Tree().indexAt({4, 2}); row.isValid(); row = Tree().indexBelow(row)) {
    if (Tree().visualRect(row).bottom() < Tree().viewport()->height())
      shown.push_back(Tree().Model().IdAt(row));
  }
  ASSERT_GE(shown.size(), 8U);
  const auto row = [this](engine::NodeId id) { return Tree().Model().IndexOf(id); };
  const auto object = [&](engine::NodeId id) { return Tree().Model().ObjectAt(row(id)); };
  using enum hands::Cell::Where;
  const engine::NodeId carried = shown[4];
  hands::Click(Tree(), row(carried));
  const std::string before = engine::DumpDocument(Doc());
  for (const auto& [target, where] :
       {std::pair{shown.front(), On}, {shown.back(), On}, {shown[2], Above}, {shown[1], Below}}) {
    hands::Drag({Tree(), row(carried)}, {Tree(), row(target), where});
    const host::BaseObject* moved = object(carried);
    EXPECT_EQ(where == On      ? moved->GetUp()
              : where == Above ? moved->GetNext()
                               : moved->GetPred(),
              object(target))
        << object(target)->GetName().ToUtf8();
    Undo();
    EXPECT_EQ(engine::DumpDifference(before, engine::DumpDocument(Doc())), Nothing());
  }
}

void Story::SortLayers() {
  desk_.Raise("layers");
  auto& panel = desk_.Panel<desktop::LayersPanel>("layers");
  desktop::LayerTree& layers = panel.Tree();
  const auto& bar = *panel.findChild<QToolBar*>();
  for (int i = 0; i < 2; ++i) {
    hands::Click(*bar.widgetForAction(bar.actions().front()));
    hands::Press("Return");
  }
  const auto row = [&](const char* name) {
    return layers.model()
        ->match(layers.model()->index(0, 0), Qt::DisplayRole, name, 1, Qt::MatchRecursive)
        .value(0);
  };
  hands::Drag({layers, row("Layer.1")}, {layers, row("Layer"), hands::Cell::Where::Above});
  EXPECT_EQ(layers.model()->index(0, 0).data(), "Layer.1");
  hands::Drag({layers, row("Layer")}, {layers, row("Layer.1")});
  EXPECT_EQ(row("Layer").parent(), row("Layer.1"));
  hands::Drag({Tree(), RowOf("edge-column-3")}, {layers, row("Layer")});
  EXPECT_EQ(Tree().Model().ObjectAt(RowOf("edge-column-3"))->GetLayerObject(&Doc()),
            layers.Model().LayerAt(row("Layer")));
  EXPECT_TRUE(pictures::Write(Window(), "layers-story"));
  for (int i = 0; i < 3; ++i) Undo();
  EXPECT_EQ(row("Layer").row(), 0);
  EXPECT_FALSE(row("Layer.1").parent().isValid());
  for (int i = 0; i < 2; ++i) Undo();
  desk_.Raise("materials");
}

// Whose entries come from the scene: a layer, a material, the scene's camera and render settings.
void Story::ChooseFromLists() {
  host::BaseObject* camera = host::BaseObject::Alloc(host::Ocamera);
  camera->SetName("Front");
  Doc().InsertObject(camera, nullptr, nullptr);
  host::LayerObject* layer = host::LayerObject::Alloc();
  layer->SetName("Back");
  Doc().AppendLayer(layer);
  host::RenderData* draft = host::RenderData::Alloc();
  draft->SetName("Draft");
  Doc().InsertRenderData(draft, nullptr, Doc().GetFirstRenderData());
  hands::Press("ctrl+shift+a");
  host::RenderData* settings = Doc().GetActiveRenderData();
  ChooseInAttributes("Camera", "Front");
  EXPECT_EQ(Doc().GetRenderBaseDraw()->GetSceneCamera(&Doc()), camera);
  ChooseInAttributes("Render settings", "Draft");
  EXPECT_EQ(Doc().GetActiveRenderData(), draft);
  hands::Click(Tree(), RowOf("edge-column-3"));
  host::BaseObject* column = Tree().Model().ObjectAt(RowOf("edge-column-3"));
  ChooseInAttributes("Layer", "Back");
  EXPECT_EQ(column->GetLayerObject(&Doc()), layer);
  host::BaseObject* painted = Doc().GetFirstObject();
  while (!painted->GetTag(host::Ttexture)) painted = engine::NextInTree(painted);
  engine::SelectTag(*painted->GetTag(host::Ttexture), false);
  Desk::Rest();
  ChooseInAttributes("Material", "torch");
  EXPECT_EQ(engine::AsTextureTag(painted->GetTag(host::Ttexture))->GetMaterial()->GetName(),
            host::String("torch"));
  for (int i = 0; i < 4; ++i) Undo();
  EXPECT_EQ(Doc().GetActiveRenderData(), settings);
  EXPECT_EQ(column->GetLayerObject(&Doc()), nullptr);
  host::BaseObject::Free(camera);
  host::LayerObject::Free(layer);
  host::RenderData::Free(draft);
  engine::ClearUndo(Doc());
  host::EventAdd();
  Desk::Rest();
}

void Story::HideTwoAndRecord() {
  const QStringList names = {"edge-column-3.001", "switch.001"};
  for (const QString& name : names) {
    for (const int column : {desktop::ObjectModel::kEditor, desktop::ObjectModel::kRender}) {
      ASSERT_TRUE(RowOf(name).isValid());
      while (RowOf(name, column).data(desktop::ObjectModel::kMode).toInt() != host::MODE_OFF) {
        hands::Click(Tree(), RowOf(name, column));
        if (HasFailure()) return;
      }
    }
  }
  hands::Click(desk_.Gadget<QWidget>(kGeneratePreview),
               QPoint(8, desk_.Gadget<QWidget>(kGeneratePreview).height() / 2));
  Record("Two hidden");
  EXPECT_EQ(Rows(), "[ ] Two hidden\n");
  EXPECT_TRUE(fs::exists(desk_.Folder() + "/dungeon_SM/Two hidden.tif"));
}

void Story::ChangeAMaterialAndRecord() {
  const std::string before = State();
  auto* panel = Window().findChild<QDockWidget*>("materials");
  ASSERT_NE(panel, nullptr);
  panel->raise();
  Desk::Rest();
  auto* grid = panel->findChild<QAbstractItemView*>();
  const QModelIndex torch =
      grid->model()->match(grid->model()->index(0, 0), Qt::DisplayRole, "torch").value(0);
  ASSERT_TRUE(torch.isValid());
  const QModelIndex object = RowOf("ground-tile.008");
  Tree().scrollTo(object);
  Desk::Rest();
  hands::Drag({*grid, torch}, {Tree(), object});
  const auto changed = engine::DumpDifference(before, State());
  ASSERT_EQ(changed.size(), 2U) << "one line as it was and as it is";
  EXPECT_NE(changed.back().find("\"ground-tile.008"), std::string::npos) << changed.back();
  EXPECT_NE(changed.back().find("material \"torch\""), std::string::npos) << changed.back();
  Record("Other ground");
  EXPECT_EQ(Rows(), "[ ] Other ground\n[ ] Two hidden\n");
}

void Story::RecallAndUndo() {
  const std::string changed = State();
  hands::Click(List(), List().model()->index(1, kName));
  EXPECT_TRUE(List().selectionModel()->isRowSelected(1));
  Press(kLoad);
  const std::string recalled = State();
  EXPECT_FALSE(engine::DumpDifference(changed, recalled).empty());
  Undo();
  EXPECT_EQ(engine::DumpDifference(changed, State()), Nothing());
  hands::Press("ctrl+shift+z");
  EXPECT_EQ(engine::DumpDifference(recalled, State()), Nothing());
  Undo();
  // The row is chosen still, and a double click or Enter opens it as well.
  EXPECT_TRUE(List().selectionModel()->isRowSelected(1));
  const QPoint place = List().visualRect(List().model()->index(1, kName)).center();
  for (const bool byKey : {false, true}) {
    byKey ? hands::Press("Return") : hands::Click(*List().viewport(), place, 2);
    EXPECT_EQ(engine::DumpDifference(recalled, State()), Nothing())
        << (byKey ? "Enter" : "double click");
    Undo();
    EXPECT_EQ(engine::DumpDifference(changed, State()), Nothing());
  }
}

// The changes that loading the chosen row would make, and the way from there to the scene and back.
void Story::Compare() {
  desk_.Raise("compare");
  auto& panel = desk_.Panel<desktop::ComparePanel>("compare");
  EXPECT_EQ(panel.Verdict(), "differs in 1 thing");
  EXPECT_EQ(panel.Warning(), "") << "the other state holds it";
  const QAbstractItemModel& rows = *panel.Tree().model();
  const host::BaseObject* ground = Tree().Model().ObjectAt(RowOf("ground-tile.008"));
  hands::Click(Tree(), RowOf("edge-column-3"));
  EXPECT_NE(engine::SelectedObjects(Doc()).front(), ground);
  hands::Click(panel.Tree(), rows.index(0, 0, rows.index(0, 0)));
  ASSERT_EQ(engine::SelectedObjects(Doc()).size(), 1U);
  EXPECT_EQ(engine::SelectedObjects(Doc()).front(), ground);
  EXPECT_TRUE(pictures::Write(Window(), "compare-story"));
  desk_.Raise("matrix");
  auto& table = desk_.Panel<desktop::MatrixPanel>("matrix").Table();
  hands::Click(Tree(), RowOf("edge-column-3"));
  hands::Click(table, table.model()->index(0, 1));
  EXPECT_EQ(Window().States().Chosen(), std::vector<std::string>{"Other ground"});
  EXPECT_EQ(engine::SelectedObjects(Doc()).front(), ground);
  EXPECT_TRUE(pictures::Write(Window(), "matrix-story"));
}

// From a view to a camera that a state holds: what one looks at meanwhile is nothing to it.
void Story::RecordACamera() {
  desktop::Viewport& view = Window().View();
  const auto finished = [&view] {
    return QTest::qWaitFor([&view] { return view.IsFinished(); }, 60000);
  };
  const auto turn = [&] {
    hands::Click(view, {5, view.height() - 5});
    for (int i = 0; i < 6; ++i) hands::Press("Right");
    ASSERT_TRUE(finished());
  };
  turn();
  const host::Matrix wanted = view.Camera().frame;
  hands::Choose(*Window().menuBar(), "Create", "New Camera from View");
  EXPECT_EQ(view.Notice().Shown().recorded, "no camera");
  EXPECT_TRUE(pictures::Write(view, "viewport-new-camera"));
  hands::Click(view.Notice().MakeSceneCamera());
  EXPECT_EQ(view.CameraName(), "Scene camera: Camera");
  EXPECT_EQ(view.Notice().Shown().recorded, "");
  Record("From aside");
  turn();
  EXPECT_EQ(view.Notice().Shown().recorded, "Camera");
  EXPECT_NE(view.Camera().frame, wanted);
  const QModelIndex row = List()
                              .model()
                              ->match(List().model()->index(0, kName), Qt::DisplayRole,
                                      "From aside", 1, Qt::MatchExactly)
                              .value(0);
  hands::Click(List(), row);
  Press(kLoad);
  ASSERT_TRUE(finished());
  EXPECT_EQ(view.CameraName(), "Scene camera: Camera");
  EXPECT_EQ(view.Camera().frame, wanted);
  // Who flies it moves the camera, and takes it back.
  hands::Click(view.Notice().Fly());
  hands::Press("Right");
  ASSERT_TRUE(finished());
  EXPECT_EQ(view.CameraName(), "Scene camera: Camera");
  EXPECT_NE(view.Camera().frame, wanted);
  hands::Press("ctrl+z");
  ASSERT_TRUE(finished());
  EXPECT_EQ(view.Camera().frame, wanted);
  hands::Click(List(), row);
  ClickNext(QMessageBox::Yes);
  Press(kDelete);
  (void)TakeTold();
  EXPECT_EQ(Rows(), "[ ] Other ground\n[ ] Two hidden\n");
}

void Story::Export() {
  hands::Choose(Window().Docks().ViewOf(*desk_.Dialog())->Menus(), "Edit", "Check All Elements");
  EXPECT_EQ(Rows(), "[x] Other ground\n[x] Two hidden\n");
  const std::string to = desk_.Folder() + "/export";
  fs::create_directory(to);
  ClickNext(QMessageBox::Ok, nullptr, [this, to] { ChooseNext(to); });
  Press(kGenerateFiles);
  EXPECT_NE(TakeTold().find("overwrite"), std::string::npos);
  for (const char* name : {"dungeon Other ground", "dungeon Two hidden"}) {
    EXPECT_TRUE(fs::exists(to + "/" + name + "/" + name + ".c4d")) << name;
  }
  EXPECT_EQ(desk_.App().Documents().size(), 1U);
}

void Story::MakeASheet() {
  const std::string file = desk_.Folder() + "/sheet.png";
  ChooseNext(file);
  hands::Choose(*Window().menuBar(), "Render", "Contact Sheet");
  QPointer<desktop::SheetWindow> sheet;
  ASSERT_TRUE(pictures::WaitFor(
      [&] { return sheet = dynamic_cast<desktop::SheetWindow*>(QApplication::activeWindow()); }));
  EXPECT_TRUE(QTest::qWaitFor([&] { return sheet->IsFinished(); }, 120000));
  EXPECT_TRUE(sheet->Said().startsWith("Written")) << sheet->Said().toStdString();
  EXPECT_TRUE(fs::exists(file));
  EXPECT_TRUE(pictures::Write(*sheet, "contact-sheet-story"));
  hands::Press("Escape");
  EXPECT_EQ(sheet, nullptr);
  EXPECT_EQ(Rows(), "[x] Other ground\n[x] Two hidden\n");
}

// Pictures come, keys and mouse choose and load, two are compared, and the next one is loaded from
// anywhere.
void Story::LookAtTheGallery() {
  desk_.Raise("gallery");
  auto& panel = desk_.Panel<desktop::GalleryPanel>("gallery");
  desktop::GalleryGrid& grid = panel.Grid();
  ASSERT_EQ(grid.model()->rowCount(), 2);
  EXPECT_TRUE(pictures::WaitFor([&] {
    const auto& model = grid.Model();
    return panel.Pictures().Made() >= 2 && model.ThingsOf(model.States()[0].id) &&
           model.ThingsOf(model.States()[1].id);
  }));
  EXPECT_TRUE(pictures::Write(Window(), "gallery-story"));
  const auto current = [&] { return Window().States().Rows()[0].current; };
  hands::Click(grid, grid.model()->index(1, 0));
  EXPECT_EQ(Window().States().Chosen(), std::vector<std::string>{"Two hidden"});
  hands::Press("Return");
  EXPECT_FALSE(current());
  hands::Press("Left");
  EXPECT_EQ(Window().States().Chosen(), std::vector<std::string>{"Other ground"});
  hands::Press("Return");
  EXPECT_TRUE(current());
  hands::Press("ctrl+Next");
  EXPECT_FALSE(current());
  hands::Press("ctrl+Next");
  EXPECT_TRUE(Window().statusBar()->currentMessage().contains("is the last Stagemark"));
  hands::Press("ctrl+Prior");
  EXPECT_TRUE(current());
  hands::Click(grid, grid.model()->index(0, 0));
  hands::Press("ctrl+a");
  hands::Press("ctrl+b");
  QPointer<desktop::WipeWindow> both;
  ASSERT_TRUE(pictures::WaitFor(
      [&] { return both = dynamic_cast<desktop::WipeWindow*>(QApplication::activeWindow()); }));
  EXPECT_TRUE(pictures::WaitFor([&] { return both->Rendered() >= 2; }));
  hands::Click(both->View(), QPoint(both->View().width() / 4, both->View().height() / 2));
  EXPECT_NEAR(both->View().Divider(), 0.25, 0.02);
  hands::Press("Tab");
  EXPECT_EQ(both->View().Side(0).name, "Two hidden");
  EXPECT_TRUE(pictures::Write(*both, "wipe-story"));
  hands::Press("Escape");
  EXPECT_EQ(both, nullptr);
  desk_.PluginDock()->raise();
  Desk::Rest();
}

void Story::DeleteOne() {
  hands::Click(List(), List().model()->index(0, kName));
  ClickNext(QMessageBox::Yes, "question");
  Press(kDelete);
  EXPECT_NE(TakeTold(), "");
  EXPECT_EQ(Rows(), "[x] Two hidden\n");
  EXPECT_FALSE(fs::exists(desk_.Folder() + "/dungeon_SM/Other ground.tif"));
}

void Story::SaveAsOther() {
  fs::create_directory(desk_.Folder() + "/other_SM");
  ChooseNext(desk_.Folder() + "/other.c4d",
             [this] { ClickNext(QMessageBox::Yes, "question-side-folder"); });
  hands::Press("ctrl+shift+s");
  EXPECT_NE(TakeTold().find("Stagemark directory"), std::string::npos);
  EXPECT_TRUE(fs::exists(desk_.Folder() + "/other_SM/Two hidden.tif"));
  EXPECT_TRUE(fs::exists(desk_.Folder() + "/dungeon_SM/Two hidden.tif"));
  EXPECT_FALSE(fs::exists(desk_.Folder() + "/other_SM/Other ground.tif"));
  EXPECT_EQ(Window().windowTitle(), "other.c4d[*]");
  EXPECT_FALSE(Window().isWindowModified());
}

void Story::CloseAndComeBack() {
  auto* panel = Window().findChild<QDockWidget*>("layers");
  const bool wasShown = panel->toggleViewAction()->isChecked();
  hands::Choose(*Window().menuBar(), "Window", panel->windowTitle());
  EXPECT_NE(panel->toggleViewAction()->isChecked(), wasShown);
  const int width = desk_.PluginDock()->width();
  hands::Press("ctrl+q");
  EXPECT_FALSE(Window().isVisible());
  desk_.Restart();
  EXPECT_EQ(Window().findChild<QDockWidget*>("layers")->toggleViewAction()->isChecked(), !wasShown);
  ASSERT_NE(desk_.PluginDock(), nullptr);
  EXPECT_NEAR(desk_.PluginDock()->width(), width, 2);
  EXPECT_EQ(Window().Commands().RecentFiles().value(0).toStdString(),
            desk_.Folder() + "/other.c4d");
  const std::string kept = desktop::AutosaveRoot(desk_.Services().folders);
  EXPECT_TRUE(!fs::exists(kept) || fs::is_empty(kept));
}

TEST_F(Story, FromTheSampleToTheNextStart) {
  ASSERT_TRUE(QTest::qWaitForWindowActive(&Window(), 20000));
  const auto live = [this](std::initializer_list<void (Story::*)()> chapters) {
    for (const auto chapter : chapters) {
      if (!HasFailure()) (this->*chapter)();
    }
    if (HasFailure()) pictures::Write(Window(), "story-stopped");
    return !HasFailure();
  };
  if (!live({&Story::OpenTheSample, &Story::MoveObjects, &Story::SortLayers,
             &Story::ChooseFromLists, &Story::HideTwoAndRecord, &Story::ChangeAMaterialAndRecord,
             &Story::RecallAndUndo, &Story::Compare}))
    return;
  EXPECT_TRUE(QTest::qWaitFor([this] { return Window().View().IsFinished(); }, 60000));
  EXPECT_TRUE(pictures::Write(Window(), "main-window-story"));
  EXPECT_TRUE(pictures::Write(*desk_.PluginDock(), "dialog-story"));
  live({&Story::RecordACamera, &Story::Export, &Story::MakeASheet, &Story::LookAtTheGallery,
        &Story::DeleteOne, &Story::SaveAsOther, &Story::CloseAndComeBack});
}

}  // namespace
