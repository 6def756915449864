#include "program/desktop/MainWindow.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QStatusBar>

#include "engine/scene/Nodes.h"
#include "engine/undo/Undo.h"
#include "program/desktop/FileChooser.h"
#include "program/desktop/Text.h"

namespace desktop {

namespace {

constexpr const char* kGeometry = "window/geometry";
constexpr const char* kState = "window/state";
constexpr QSize kFirstSize(1480, 860);

// "Undo" or "Undo Load".
QString NamedStep(const QString& verb, const std::string& name) {
  return name.empty() ? verb : verb + " " + Label(host::String(name));
}

}  // namespace

MainWindow::MainWindow(engine::Application& application, DesktopPerson& person, const QString& settingsFile)
    : application_(application),
      settings_(settingsFile, QSettings::IniFormat),
      person_(person),
      commands_(application, person, settings_, this),
      docks_(*this),
      view_(new Viewport(this)),
      objects_(new ObjectTree(this)),
      objectsDock_(new QDockWidget("Objects", this)) {
  setDockOptions(AnimatedDocks | AllowNestedDocks | AllowTabbedDocks);
  setAcceptDrops(true);
  resize(kFirstSize);
  setCentralWidget(view_);
  objectsDock_->setObjectName("objects");
  objectsDock_->setWidget(objects_);
  addDockWidget(Qt::LeftDockWidgetArea, objectsDock_);
  view_->picked = [this](engine::NodeId object) { Choose(object); };
  BuildFileMenu();
  BuildEditMenu();
  BuildViewMenu();
  BuildPluginMenu();
  BuildWindowMenu();
  BuildHelpMenu();
  person_.SitAt(this);
  person_.status = [this](const QString& text) { statusBar()->showMessage(text); };
  statusBar();
  connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this, [this] { Beat(); });
}

MainWindow::~MainWindow() {
  person_.status = {};
  disconnect(QAbstractEventDispatcher::instance(), nullptr, this, nullptr);
}

QAction* MainWindow::Add(QMenu& menu, const QString& text, const QKeySequence& keys, std::function<void()> work) {
  QAction* action = menu.addAction(text);
  action->setShortcut(keys);
  connect(action, &QAction::triggered, this, std::move(work));
  return action;
}

void MainWindow::BuildFileMenu() {
  QMenu& menu = *menuBar()->addMenu("&File");
  Add(menu, "&New", QKeySequence::New, [this] { commands_.New(); });
  Add(menu, "&Open...", QKeySequence::Open, [this] { commands_.AskAndOpen(kAllScenes); });
  Add(menu, "&Import...", {}, [this] { commands_.AskAndOpen(kForeignScenes); });
  QMenu* recent = menu.addMenu("Open &Recent");
  connect(recent, &QMenu::aboutToShow, this, [this, recent] { FillRecentMenu(*recent); });
  menu.addSeparator();
  Add(menu, "&Save", QKeySequence::Save, [this] { commands_.Save(*host::GetActiveDocument()); });
  Add(menu, "Save &As...", QKeySequence("Ctrl+Shift+S"), [this] { commands_.SaveAs(*host::GetActiveDocument()); });
  Add(menu, "&Close", QKeySequence("Ctrl+W"), [this] { commands_.Close(*host::GetActiveDocument()); });
  menu.addSeparator();
  Add(menu, "&Quit", QKeySequence("Ctrl+Q"), [this] { close(); });
}

void MainWindow::FillRecentMenu(QMenu& menu) {
  menu.clear();
  for (const QString& path : commands_.RecentFiles()) {
    Add(menu, Label(ToHost(path)), {}, [this, path] { commands_.Open(path.toStdString()); });
  }
  if (menu.isEmpty()) menu.addAction("No files yet")->setEnabled(false);
}

void MainWindow::BuildEditMenu() {
  QMenu& menu = *menuBar()->addMenu("&Edit");
  undo_ = Add(menu, "Undo", QKeySequence::Undo, [this] { application_.Undo(); });
  redo_ = Add(menu, "Redo", QKeySequence("Ctrl+Shift+Z"), [this] { application_.Redo(); });
}

void MainWindow::BuildViewMenu() {
  QMenu& menu = *menuBar()->addMenu("&View");
  Add(menu, "Frame &All", QKeySequence("Ctrl+F"), [this] { view_->FrameAll(); });
  Add(menu, "Look Through &Scene Camera", QKeySequence("Ctrl+K"), [this] { view_->LookThroughSceneCamera(); });
}

void MainWindow::Choose(engine::NodeId object) {
  host::BaseDocument* doc = host::GetActiveDocument();
  doc->SetActiveObject(engine::AsObject(engine::FindNode(doc, object)));
  host::EventAdd();
}

void MainWindow::BuildPluginMenu() {
  QMenu* menu = menuBar()->addMenu("&Plug-ins");
  connect(menu, &QMenu::aboutToShow, this, [this, menu] {
    menu->clear();
    for (const engine::CommandPlugin& command : application_.Commands()) {
      QAction* action =
          Add(*menu, Label(host::String(command.name)), {}, [this, id = command.id] { application_.ExecuteCommand(id); });
      action->setStatusTip(ToQt(command.help));
    }
    if (menu->isEmpty()) menu->addAction("No plug-ins loaded")->setEnabled(false);
  });
}

void MainWindow::BuildWindowMenu() {
  QMenu* menu = menuBar()->addMenu("&Window");
  connect(menu, &QMenu::aboutToShow, this, [this, menu] {
    menu->clear();
    FillDocumentList(*menu);
    menu->addSeparator();
    menu->addAction(objectsDock_->toggleViewAction());
    Add(*menu, "&Reset Layout", {}, [this] { ResetLayout(); });
  });
}

void MainWindow::FillDocumentList(QMenu& menu) {
  for (host::BaseDocument* doc : application_.Documents()) {
    QAction* action = Add(menu, Label(ToHost(DocumentTitle(*doc))), {}, [doc] {
      host::SetActiveDocument(doc);
      host::EventAdd();
    });
    action->setCheckable(true);
    action->setChecked(doc == host::GetActiveDocument());
  }
}

void MainWindow::BuildHelpMenu() {
  QMenu& menu = *menuBar()->addMenu("&Help");
  Add(menu, "&About", {}, [this] { ShowAbout(); });
}

void MainWindow::ShowAbout() {
  QMessageBox::about(
      this, "About " + QApplication::applicationDisplayName(),
      QString("<b>%1 %2</b><p>Records the states of a 3D scene under names, recalls, compares and exports them.</p>")
          .arg(QApplication::applicationDisplayName(), QApplication::applicationVersion()));
}

void MainWindow::Beat() {
  if (engine::InsideDialogCall()) return;
  if (application_.HasPendingEvents()) application_.DeliverEvents();
  ShowState();
  view_->Follow(host::GetActiveDocument());
  objects_->Follow(host::GetActiveDocument());
}

void MainWindow::ShowState() {
  const host::BaseDocument* doc = host::GetActiveDocument();
  const QString title = doc ? DocumentTitle(*doc) + "[*]" : QString();
  if (windowTitle() != title) setWindowTitle(title);
  const bool changed = doc && doc->GetChanged();
  if (isWindowModified() != changed) setWindowModified(changed);
  undo_->setEnabled(doc && engine::CanUndo(*doc));
  redo_->setEnabled(doc && engine::CanRedo(*doc));
  undo_->setText(NamedStep("&Undo", doc ? engine::UndoName(*doc) : ""));
  redo_->setText(NamedStep("&Redo", doc ? engine::RedoName(*doc) : ""));
}

void MainWindow::RestoreLayout() {
  application_.RestoreLayouts();
  firstLayout_ = saveState();
  restoreGeometry(settings_.value(kGeometry).toByteArray());
  restoreState(settings_.value(kState).toByteArray());
}

void MainWindow::ResetLayout() {
  application_.RestoreLayouts();
  docks_.ResetPlaces();
  if (!firstLayout_.isEmpty()) restoreState(firstLayout_);
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (!commands_.MayCloseAll()) {
    event->ignore();
    return;
  }
  settings_.setValue(kGeometry, saveGeometry());
  settings_.setValue(kState, saveState());
  event->accept();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
  for (const QUrl& url : event->mimeData()->urls()) commands_.Open(url.toLocalFile().toStdString());
}

}  // namespace desktop
