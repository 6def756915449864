#include "program/desktop/publish/PublishWindow.h"

#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QMessageBox>
#include <QVBoxLayout>

#include "program/desktop/DocumentCommands.h"
#include "program/desktop/FileDialogs.h"
#include "program/desktop/MainWindow.h"
#include "program/desktop/Text.h"
#include "program/pictures/PictureNames.h"
#include "program/publish/StatePage.h"

namespace desktop {

namespace {

constexpr int kPublishWidth = 560;
constexpr int kPublishSteps = 1000;

// Entries of the list of file kinds, in its order. The numbers are those of the rows.
enum FileForm { kBinary, kText, kAllInOne };

// Beside the scene, or in the home folder where that has no file.
QString ProposedFolder(const host::BaseDocument& doc, const std::string& scene, PublishKind kind) {
  const std::string folder = doc.GetDocumentPath().GetString().ToUtf8();
  const std::string name = pictures::SafeFileName((scene.empty() ? "Scene" : scene) +
                                                  (kind == PublishKind::Page ? " page" : " glTF"));
  return (folder.empty() ? QDir::homePath() : ToQt(folder)) + "/" + ToQt(name);
}

QString CountedFiles(std::size_t count) {
  return QString::number(count) + (count == 1 ? " file" : " files");
}

}  // namespace

// The document is held by its identity: it may be closed while the window stands there.
PublishWindow::PublishWindow(QWidget* window, const engine::Services& services,
                             const host::BaseDocument& doc, PublishKind kind,
                             std::vector<std::string> chosen)
    : QDialog(window),
      services_(services),
      kind_(kind),
      doc_(IdentityOf(&doc)),
      scene_(pictures::SceneName(doc)),
      choices_(new QWidget(this)),
      form_(new QFormLayout(choices_)),
      states_(new StateChoice(doc, std::move(chosen))) {
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowTitle((kind == PublishKind::Page ? "Web Page - " : "Publish - ") + ShortTitle(doc));
  setMinimumWidth(kPublishWidth);
  form_->setContentsMargins(0, 0, 0, 0);
  form_->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
  form_->addRow("Stagemarks", states_);
  AddFields();
  folder_->setText(ProposedFolder(doc, scene_, kind));
  AddBottom();
  Enable(false);
  begin_->setFocus();
}

void PublishWindow::AddFields() {
  auto* row = new QHBoxLayout;
  folder_ = new QLineEdit;
  folder_->setObjectName("folder");
  auto* label = new QLabel("&Folder");
  label->setBuddy(folder_);
  auto* browse = new QPushButton("&Browse...");
  browse->setAutoDefault(false);
  connect(browse, &QPushButton::clicked, this,
          [this] { BrowseForFolder(this, "Choose the folder", *folder_, services_.files); });
  row->addWidget(folder_);
  row->addWidget(browse);
  form_->addRow(label, row);
  if (kind_ == PublishKind::Files) return AddFileFields();
  title_ = new QLineEdit(ToQt(scene_));
  form_->addRow("&Title", title_);
}

void PublishWindow::AddFileFields() {
  files_ = new QComboBox;
  files_->addItems({"A binary glTF file for each (.glb)",
                    "A glTF file for each, textures beside it (.gltf)",
                    "One binary glTF file for all, each a material variant"});
  form_->addRow("F&iles", files_);
  hidden_ = new QComboBox;
  hidden_->addItems({"Is left out", "Is there, marked as not visible"});
  form_->addRow("&What does not render", hidden_);
}

void PublishWindow::AddBottom() {
  auto* rows = new QVBoxLayout(this);
  rows->addWidget(choices_);
  said_ = new QLabel(kind_ == PublishKind::Page
                         ? "A folder with one page that any browser opens, without a network."
                         : "Browsers, engines and modellers read these files.");
  told_ = new QLabel;
  for (QLabel* label : {said_, told_}) {
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    rows->addWidget(label);
  }
  told_->hide();
  progress_ = new QProgressBar;
  progress_->setRange(0, kPublishSteps);
  rows->addWidget(progress_);
  rows->addStretch();
  AddButtons();
}

void PublishWindow::AddButtons() {
  auto* buttons = new QHBoxLayout;
  const auto add = [&](const QString& text, std::function<void()> work) {
    auto* button = new QPushButton(text);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, std::move(work));
    buttons->addWidget(button);
    return button;
  };
  openFolder_ = add("&Open Folder", [this] { OpenResult(Order().folder); });
  openPage_ = add("Open Pa&ge", [this] { OpenResult(written_.back()); });
  openPage_->setVisible(kind_ == PublishKind::Page);
  buttons->addStretch();
  stop_ = add("Sto&p", [this] { Stop(); });
  begin_ = add("P&ublish", [this] { Begin(); });
  begin_->setDefault(true);
  add("&Close", [this] { close(); });
  static_cast<QVBoxLayout*>(layout())->addLayout(buttons);
}

// While the child works, only stopping and closing are left.
void PublishWindow::Enable(bool isRunning) {
  choices_->setEnabled(!isRunning);
  begin_->setEnabled(!isRunning);
  stop_->setEnabled(isRunning);
  progress_->setVisible(isRunning);
  openFolder_->setEnabled(!isRunning && !written_.empty());
  openPage_->setEnabled(!isRunning && !written_.empty());
}

publishing::PublishOrder PublishWindow::Order() const {
  publishing::PublishOrder order;
  order.asPage = kind_ == PublishKind::Page;
  order.folder = QDir::cleanPath(folder_->text().trimmed()).toStdString();
  order.names = states_->Names().value_or(std::vector<std::string>());
  if (title_) order.title = title_->text().trimmed().toStdString();
  if (order.title.empty()) order.title = scene_.empty() ? "Scene" : scene_;
  if (!files_) return order;
  order.asText = files_->currentIndex() == kText;
  order.allInOne = files_->currentIndex() == kAllInOne;
  order.omitHidden = hidden_->currentIndex() == 0;
  return order;
}

// Whether what is there already may go.
bool PublishWindow::MayReplace() {
  const auto files = publishing::FilesOf(Order(), scene_);
  if (!files) {
    said_->setText(ToQt(files.Message()));
    return false;
  }
  QStringList there;
  for (const publishing::OrderedFile& file : files.Value()) {
    if (services_.files.Kind(file.path) != engine::FileKind::Missing)
      there.append(QFileInfo(ToQt(file.path)).fileName());
  }
  if (there.isEmpty()) return true;
  const QString text =
      there.size() == 1
          ? "\"" + there[0] + "\" is in this folder already. Replace it?"
          : QString(
                "%1 of these files are in this folder already, \"%2\" among them. Replace them?")
                .arg(QString::number(there.size()), there[0]);
  return QMessageBox::question(this, windowTitle(), text) == QMessageBox::Yes;
}

// Everything that can be known beforehand is asked before the scene is copied.
void PublishWindow::Begin() {
  if (!QDir::isAbsolutePath(folder_->text().trimmed())) return said_->setText(kNoWholePath);
  if (kind_ == PublishKind::Page) {
    if (const auto viewer = publishing::ReadPageViewer(services_.files); !viewer)
      return said_->setText(ToQt(viewer.Message()));
  }
  if (!states_->Names()) return said_->setText(kNoSuchState);
  if (MayReplace()) Start();
}

// A new child each time, with the scene as it is now (decision 55).
void PublishWindow::Start() {
  const host::BaseDocument* doc = FindOpenDocument(doc_);
  if (!doc) return said_->setText("The document was closed. Open it again to publish it.");
  written_.clear();
  notes_.clear();
  told_->hide();
  progress_->setValue(0);
  said_->setText("Publishing. You can go on working meanwhile.");
  renderer_ = std::make_unique<StateRenderer>(*doc, Hearing());
  renderer_->Publish(Order());
  Enable(true);
  stop_->setFocus();
}

// Each note once: every state would tell of the same missing texture.
StateRenderer::News PublishWindow::Hearing() {
  StateRenderer::News news;
  news.progress = [this](double done) {
    progress_->setValue(static_cast<int>(done * kPublishSteps));
  };
  news.noted = [this](const std::string& note) {
    if (std::find(notes_.begin(), notes_.end(), note) == notes_.end()) notes_.push_back(note);
  };
  news.written = [this](const std::string& path) { written_.push_back(path); };
  news.published = [this] {
    End(kind_ == PublishKind::Page
            ? "Written: " + ToQt(written_.back())
            : "Written: " + CountedFiles(written_.size()) + " in " + ToQt(Order().folder));
  };
  news.failed = [this](const std::string& problem) {
    End((written_.empty() ? QString("Nothing was published. ")
                          : "Only " + CountedFiles(written_.size()) + " published. ") +
        ToQt(problem));
  };
  return news;
}

// Files that stand are whole, so they stay and are told.
void PublishWindow::Stop() {
  if (IsFinished()) return;
  renderer_->Stop();
  End(written_.empty() ? QString("Stopped; nothing was published.")
                       : "Stopped; " + CountedFiles(written_.size()) + " published before.");
}

// Ends the child also after a failure; stopping twice does nothing.
void PublishWindow::End(const QString& text) {
  renderer_->Stop();
  said_->setText(text);
  QStringList lines;
  for (const std::string& note : notes_) lines.append(ToQt(note));
  told_->setText(lines.join('\n'));
  told_->setVisible(!lines.isEmpty());
  Enable(false);
  (written_.empty() ? begin_ : openFolder_)->setFocus();
}

void PublishWindow::OpenResult(const std::string& path) {
  const engine::Status opened = services_.viewer.Open(path);
  if (!opened) QMessageBox::warning(this, windowTitle(), ToQt(opened.Message()));
}

void AskToPublish(MainWindow& window, PublishKind kind) {
  const host::BaseDocument* doc = host::GetActiveDocument();
  if (!doc) return;
  (new PublishWindow(&window, window.App().GetServices(), *doc, kind, window.States().Chosen()))
      ->show();
}

}  // namespace desktop
