// The heart of the desktop is Refresh: the event loop calls it each time before it waits, and
// everything that shows a document compares its change count and follows. So there are no signals
// about single changes, and a burst of them is shown once.
#include "program/desktop/MainWindow.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QStatusBar>
#include <QVBoxLayout>
#include <algorithm>

#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "program/desktop/ScreenFit.h"
#include "program/desktop/Text.h"
#include "program/desktop/attributes/AttributesView.h"
#include "program/desktop/background/DocumentBusy.h"
#include "program/desktop/background/SlicedEdit.h"
#include "program/desktop/menus/Menus.h"
#include "program/desktop/menus/StatesMenu.h"
#include "program/desktop/panels/ComparePanel.h"
#include "program/desktop/panels/GalleryPanel.h"
#include "program/desktop/panels/HistoryPanel.h"
#include "program/desktop/panels/LayersPanel.h"
#include "program/desktop/panels/MaterialsPanel.h"
#include "program/desktop/panels/MatrixPanel.h"
#include "program/desktop/panels/RenderSettingsPanel.h"
#include "program/desktop/panels/TrashPanel.h"
#include "program/desktop/recovery/LostWork.h"

namespace desktop {

namespace {

constexpr const char* kGeometry = "window/geometry";
constexpr const char* kState = "window/state";
// Of a first start. On a smaller screen the window begins maximized instead.
constexpr QSize kFirstSize(1480, 860);

// While a menu is open, keys are its own: the toolkit would carry out the commands of the panel
// that keeps the focus behind it.
class OpenMenuFilter : public QObject {
 public:
  using QObject::QObject;

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() != QEvent::ShortcutOverride || !qobject_cast<QMenu*>(watched)) return false;
    event->accept();
    return true;
  }
};

}  // namespace

// Members are made in the order of the header, parts before those that use them. The callbacks are
// set when everything is there: none of them fires before the event loop runs.
MainWindow::MainWindow(engine::Application& application, DesktopPerson& person,
                       const std::string& settingsFile)
    : application_(application),
      settings_(application.GetServices(), settingsFile),
      person_(person),
      commands_(application, person, settings_, this),
      autosave_(application),
      reports_(application.GetServices(), person, this),
      docks_(*this, application.GetServices().files),
      panels_(*this),
      thumbnails_(std::make_shared<MaterialThumbnails>(application.GetServices(),
                                                       engine::RenderCaches::Shared())),
      tabs_(new DocumentTabs(application, commands_, this)),
      view_(new Viewport(application.GetServices().files, this)),
      objects_(new ObjectsPanel(this)) {
  // Without AnimatedDocks: a dock on its way is lost when the layout changes meanwhile, and with it
  // the program.
  setDockOptions(AllowNestedDocks | AllowTabbedDocks);
  setAcceptDrops(true);
  resize(FittingSize(*this, kFirstSize));
  if (size() != kFirstSize) setWindowState(Qt::WindowMaximized);
  BuildCenter();
  view_->picked = [this](engine::NodeId object, Viewport::Picking how) { Choose(object, how); };
  BuildPanels();
  BuildMenus();
  person_.SetWindow(this);
  person_.files = &application.GetServices().files;
  person_.status = [this](const QString& text) {
    statusBar()->showMessage(text);
    // A plug-in that works for long lets no event loop run.
    statusBar()->repaint();
  };
  statusBar();
  look_.setSingleShot(true);
  connect(&look_, &QTimer::timeout, this, [this] {
    host::BaseDocument* doc = FindOpenDocument(lookedAtFile_);
    if (doc && doc == host::GetActiveDocument() && !IsDocumentBusy()) commands_.LookAtFile(*doc);
  });
  docks_.around = [this](host::GeDialog& dialog, const std::string& label,
                         const std::function<bool()>& act) { reports_.Run(dialog, label, act); };
  commands_.recordStates = [this] { return RecordWhatCameIn(*this); };
  commands_.told = [this](const outcome::Outcome& outcome) { reports_.Show(outcome); };
  autosave_.failed = [this](const std::string& message) { person_.ShowStatus(message); };
  connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
          [this] { Refresh(); });
}

// An edit in slices holds the document that is going. The person outlives the window and must not
// call into it; the dispatcher would call Refresh on half of it.
MainWindow::~MainWindow() {
  StopEdit();
  person_.status = {};
  person_.files = nullptr;
  disconnect(QAbstractEventDispatcher::instance(), nullptr, this, nullptr);
}

void MainWindow::BuildCenter() {
  auto* center = new QWidget(this);
  auto* layout = new QVBoxLayout(center);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(tabs_);
  layout->addWidget(view_, 1);
  setCentralWidget(center);
}

// The order of adding is the order of the tabs; the gallery stands behind the plug-in's dialog
// (decision 51).
void MainWindow::BuildPanels() {
  objects_->Tree().ShowMaterialsAs(thumbnails_);
  panels_.Add("objects", "Objects", Qt::LeftDockWidgetArea, objects_);
  panels_.Add("attributes", "Attributes", Qt::LeftDockWidgetArea,
              new AttributesPanel(inspected_, this));
  auto* materials = panels_.Add("materials", "Materials", Qt::BottomDockWidgetArea,
                                new MaterialsPanel(thumbnails_, this));
  materials->opened = [this] { panels_.Raise("attributes"); };
  auto* layers = panels_.Add("layers", "Layers", Qt::BottomDockWidgetArea, new LayersPanel(this));
  panels_.Add("render-settings", "Render Settings", Qt::BottomDockWidgetArea,
              new RenderSettingsPanel(this));
  panels_.Add("history", "History", Qt::BottomDockWidgetArea,
              new HistoryPanel(application_, reports_, this));
  panels_.Add("trash", "Trash", Qt::BottomDockWidgetArea,
              new TrashPanel(application_.GetServices(), reports_, this));
  console_ = panels_.Add("console", "Console", Qt::BottomDockWidgetArea,
                         new ScriptConsole(scripts_, this));
  auto* gallery =
      panels_.Add("gallery", "Gallery", Qt::RightDockWidgetArea,
                  new GalleryPanel(application_.GetServices(), settings_, states_, this));
  gallery->load = [this](const std::string& name) { LoadStagemark(*this, name); };
  panels_.AddBelow("gallery", "compare", "Compare", new ComparePanel(states_, inspected_, this));
  panels_.AddBelow("gallery", "matrix", "Matrix", new MatrixPanel(states_, inspected_, this));
  panels_.ShowFirst();
  InspectWhatIsPressed(objects_->Tree(), engine::InspectedElements::kObjects);
  InspectWhatIsPressed(materials->Grid(), engine::InspectedElements::kMaterials);
  InspectWhatIsPressed(layers->Tree(), engine::InspectedElements::kLayers);
}

void MainWindow::InspectWhatIsPressed(QAbstractItemView& view,
                                      engine::InspectedElements::Kind kind) {
  connect(&view, &QAbstractItemView::pressed, this, [this, kind] {
    if (const host::BaseDocument* doc = host::GetActiveDocument()) inspected_.Return(*doc, kind);
  });
}

void MainWindow::BuildMenus() {
  // For all menus, also the context menus that come later.
  QApplication::instance()->installEventFilter(new OpenMenuFilter(this));
  BuildFileMenu(*menuBar()->addMenu("&File"), *this);
  editMenu_ = new EditMenu(*menuBar()->addMenu("&Edit"), *this);
  cameraCommands_ = new CameraCommands(*this);
  QMenu& create = *menuBar()->addMenu("&Create");
  BuildCreateMenu(create, *this);
  QMenu* view = menuBar()->addMenu("&View");
  BuildViewMenu(*view, create, *this);
  view->addSeparator();
  appearanceMenu_ = new AppearanceMenu(*view, settings_, this);
  BuildRenderMenu(*menuBar()->addMenu("&Render"), *this);
  BuildPluginMenu(*menuBar()->addMenu("&Plug-ins"), *this);
  BuildScriptMenu(*menuBar()->addMenu("&Script"), *this);
  BuildWindowMenu(*menuBar()->addMenu("&Window"), *this);
  BuildHelpMenu(*menuBar()->addMenu("&Help"), *this);
  PutIcons(*menuBar());
}

// A click beside everything selects nothing, but with Shift or Ctrl it is a slip and keeps what is
// selected.
void MainWindow::Choose(engine::NodeId object, Viewport::Picking how) {
  host::BaseDocument* doc = host::GetActiveDocument();
  host::BaseObject* chosen = engine::AsObject(engine::FindNode(doc, object));
  if (!chosen && how != Viewport::Picking::Replace) return;
  const bool takesOff = how == Viewport::Picking::Toggle && chosen->GetBit(host::BIT_ACTIVE);
  const bool adds = how != Viewport::Picking::Replace;
  doc->SetActiveObject(chosen, takesOff ? host::SELECTION_SUB
                               : adds   ? host::SELECTION_ADD
                                        : host::SELECTION_NEW);
  inspected_.Return(*doc, engine::InspectedElements::kObjects);
  host::EventAdd();
}

// Events first, because a plug-in that hears of them may change what is shown. Nothing is asked of
// a document in the middle of an edit or of a plug-in's call: the next turn of the loop comes back
// here.
void MainWindow::Refresh() {
  if (IsDocumentBusy()) return;
  if (application_.HasPendingEvents()) application_.DeliverEvents();
  host::BaseDocument* doc = host::GetActiveDocument();
  autosave_.Follow();
  ShowTitle();
  editMenu_->Follow(doc);
  CheckFileSoon(doc);
  tabs_->Follow(doc);
  view_->Follow(doc);
  cameraCommands_->Follow(doc);
  currentState_.Follow(doc);
  panels_.Follow(doc);
}

// Not in here, because the question is a box with an event loop of its own, and this runs before
// the loop waits. Not while another box or a menu is open.
void MainWindow::CheckFileSoon(const host::BaseDocument* doc) {
  if (IdentityOf(doc) == lookedAtFile_ || look_.isActive() || QApplication::activeModalWidget() ||
      QApplication::activePopupWidget())
    return;
  lookedAtFile_ = IdentityOf(doc);
  if (doc) look_.start(0);
}

void MainWindow::ShowTitle() {
  const host::BaseDocument* doc = host::GetActiveDocument();
  const QString title = doc ? ShortTitle(*doc) + "[*]" : QString();
  if (windowTitle() != title) setWindowTitle(title);
  const bool changed = doc && doc->GetChanged();
  if (isWindowModified() != changed) setWindowModified(changed);
}

void MainWindow::OfferLostWork() {
  desktop::OfferLostWork(application_.GetServices(), commands_, autosave_, this);
}

// Dialogs come first: a layout can only place docks that are there. The layout as it is then,
// before that of the last run, is the one to come back to.
void MainWindow::RestoreLayout() {
  application_.RestoreLayouts();
  firstLayout_ = saveState();
  restoreGeometry(settings_.Bytes(kGeometry));
  FitToScreen(*this);
  restoreState(settings_.Bytes(kState));
}

void MainWindow::ResetLayout() {
  application_.RestoreLayouts();
  docks_.ResetPlaces();
  if (!firstLayout_.isEmpty()) restoreState(firstLayout_);
}

// Questions first, one for each changed document; Cancel in one of them keeps all.
void MainWindow::closeEvent(QCloseEvent* event) {
  StopEdit();
  // A plug-in that asks or works would come back to a window that is gone.
  if (IsDocumentBusy() || !commands_.MayCloseAll()) {
    event->ignore();
    return;
  }
  // Nobody sees a message any more; what fails here is in the ledger.
  (void)settings_.Set(kGeometry, saveGeometry());
  (void)settings_.Set(kState, saveState());
  autosave_.End();
  event->accept();
}

// Whoever comes back may have painted a texture meanwhile, or changed the scene with another
// program.
void MainWindow::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() != QEvent::ActivationChange || !isActiveWindow()) return;
  lookedAtFile_ = 0;
  if (!engine::RenderCaches::Shared().ForgetChangedFiles(application_.GetServices().files)) return;
  view_->ReadAgain();
  thumbnails_->MakeAgain();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  const QList<QUrl> urls = event->mimeData()->urls();
  if (std::any_of(urls.begin(), urls.end(), [](const QUrl& url) { return url.isLocalFile(); }))
    event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
  std::vector<std::string> paths;
  for (const QUrl& url : event->mimeData()->urls()) {
    if (url.isLocalFile()) paths.push_back(url.toLocalFile().toStdString());
  }
  commands_.OpenAll(paths);
}

}  // namespace desktop
