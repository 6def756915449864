// Two kinds of questions go to one child: what would be written and what it costs (a plan, shown in
// the table), and to write it. Each change of a field asks for a plan unless it is the one that is
// shown; a press of Render waits for the plan that is being made (`rendersNext_`). The child keeps
// its copy of the scene until the document or an option of the dialog has changed.
#include "program/desktop/render/RenderStatesWindow.h"

#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QMenu>
#include <QMessageBox>
#include <QVBoxLayout>
#include <algorithm>

#include "program/desktop/DocumentCommands.h"
#include "program/desktop/FileDialogs.h"
#include "program/desktop/MainWindow.h"
#include "program/desktop/ScreenFit.h"
#include "program/desktop/Text.h"
#include "program/desktop/render/FarmWindow.h"
#include "program/export/ExportPlan.h"

namespace desktop {

namespace {

using Kind = worker::PictureNews::Kind;

constexpr int kRenderSteps = 1000;
constexpr QSize kRenderStatesSize(860, 700);
constexpr const char* kUsualNames = "{scene} {state}";

struct Placeholder {
  const char* text;
  const char* meaning;
};
constexpr Placeholder kPlaceholders[] = {{"{scene}", "name of the scene"},
                                         {"{state}", "name of the Stagemark"},
                                         {"{camera}", "name of the camera"},
                                         {"{size}", "as 1920x1080"},
                                         {"{date}", "day of recording"},
                                         {"{index:03}", "number in this list, 3 digits"},
                                         {"{frame}", "number of the frame, 4 digits"},
                                         {"{state:safe}", "plain letters only"}};

QString CountedPictures(std::size_t count) {
  return QString::number(count) + (count == 1 ? " picture" : " pictures");
}

// An order as text, without whether it is carried out. Two orders with one such text have one plan.
std::string PlanText(worker::PicturesOrder order) {
  order.renders = order.replaces = false;
  return worker::PicturesAsText(order);
}

}  // namespace

RenderStatesWindow::RenderStatesWindow(MainWindow& window, const host::BaseDocument& doc,
                                       std::vector<std::string> chosen)
    : QDialog(&window),
      window_(window),
      services_(window.App().GetServices()),
      doc_(IdentityOf(&doc)),
      choices_(new QWidget(this)),
      form_(new QFormLayout(choices_)) {
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowTitle("Render States - " + ShortTitle(doc));
  setWindowFlag(Qt::WindowMaximizeButtonHint);
  form_->setContentsMargins(0, 0, 0, 0);
  form_->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
  AddFields(std::move(chosen), doc);
  AddPlaces(doc);
  AddTable();
  AddBottom();
  Enable(false);
  resize(FittingSize(*this, kRenderStatesSize));
  begin_->setFocus();
  Plan();
}

// A field that loses the focus as the window goes would plan once more.
RenderStatesWindow::~RenderStatesWindow() {
  isClosing_ = true;
  hide();
}

void RenderStatesWindow::done(int result) {
  isClosing_ = true;
  QDialog::done(result);
}

void RenderStatesWindow::AddFields(std::vector<std::string> chosen, const host::BaseDocument& doc) {
  states_ = new StateChoice(doc, std::move(chosen), [this] { Plan(); });
  form_->addRow("Stagemarks", states_);
  sizes_ = new QLineEdit;
  sizes_->setObjectName("sizes");
  sizes_->setPlaceholderText("As each state's render settings say; or 1920x1080 960x540");
  sizes_->setToolTip("Several sizes, with blanks between them, give a picture each");
  form_->addRow("S&izes", sizes_);
  frames_ = new QLineEdit;
  frames_->setObjectName("frames");
  frames_->setPlaceholderText(
      "The first one of each state's render settings; or from and to, 0:99");
  frames_->setToolTip("Each of them gives a picture; {frame} in the names tells them apart");
  form_->addRow("Fram&es", frames_);
}

// Fields plan when they are left or confirmed, not with each letter.
void RenderStatesWindow::AddPlaces(const host::BaseDocument& doc) {
  const QString beside = ToQt(doc.GetDocumentPath().GetString());
  folder_ = new QLineEdit((beside.isEmpty() ? QDir::homePath() : beside) + "/pictures");
  folder_->setObjectName("folder");
  auto* browse = new QPushButton("&Browse...");
  browse->setAutoDefault(false);
  connect(browse, &QPushButton::clicked, this, [this] {
    BrowseForFolder(this, "Choose the folder", *folder_, services_.files);
    Plan();
  });
  names_ = new QLineEdit(kUsualNames);
  names_->setObjectName("names");
  format_ = new QComboBox;
  format_->addItem("PNG", "png");
  format_->addItem("TIFF", "tif");
  format_->addItem("OpenEXR, all the light", "exr");
  for (const auto& [text, field, last] :
       {std::tuple{"&Folder", folder_, browse}, std::tuple{"&Names", names_, MakePlaceholders()}}) {
    auto* row = new QHBoxLayout;
    auto* label = new QLabel(text);
    label->setBuddy(field);
    row->addWidget(field);
    row->addWidget(last);
    if (field == names_) row->addWidget(format_);
    form_->addRow(label, row);
  }
  keep_ = new QCheckBox("&Keep pictures that are there and were made from the same");
  keep_->setChecked(true);
  form_->addRow("", keep_);
  for (QLineEdit* field : {sizes_, frames_, folder_, names_})
    connect(field, &QLineEdit::editingFinished, this, [this] { Plan(); });
  connect(format_, &QComboBox::activated, this, [this] { Plan(); });
  connect(keep_, &QCheckBox::clicked, this, [this] { Plan(); });
}

QPushButton* RenderStatesWindow::MakePlaceholders() {
  auto* button = new QPushButton("Inser&t");
  button->setAutoDefault(false);
  auto* menu = new QMenu(button);
  for (const Placeholder& placeholder : kPlaceholders) {
    const QString text = placeholder.text;
    connect(menu->addAction(text + "  " + placeholder.meaning), &QAction::triggered, this,
            [this, text] {
              names_->insert(text);
              names_->setFocus();
              Plan();
            });
  }
  button->setMenu(menu);
  return button;
}

void RenderStatesWindow::AddTable() {
  table_ = new QTreeView;
  table_->setModel(&rows_);
  table_->setRootIsDecorated(false);
  table_->setUniformRowHeights(true);
  table_->setAlternatingRowColors(true);
  table_->setIconSize({80, 50});
  table_->setAccessibleName("Pictures");
  QHeaderView& header = *table_->header();
  header.setStretchLastSection(true);
  header.resizeSection(PictureRows::kFile, 330);
  header.resizeSection(PictureRows::kState, 190);
  header.resizeSection(PictureRows::kSize, 110);
  header.resizeSection(PictureRows::kFrame, 60);
  connect(table_, &QTreeView::activated, this, [this](const QModelIndex& index) {
    OpenFile(rows_.Rows()[static_cast<std::size_t>(index.row())].planned.text);
  });
}

void RenderStatesWindow::AddBottom() {
  auto* rows = new QVBoxLayout(this);
  rows->addWidget(choices_);
  rows->addWidget(table_, 1);
  said_ = new QLabel;
  told_ = new QLabel;
  for (QLabel* label : {said_, told_}) {
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    rows->addWidget(label);
  }
  told_->hide();
  progress_ = new QProgressBar;
  progress_->setRange(0, kRenderSteps);
  rows->addWidget(progress_);
  AddButtons();
}

void RenderStatesWindow::AddButtons() {
  auto* buttons = new QHBoxLayout;
  const auto add = [&](const QString& text, std::function<void()> work) {
    auto* button = new QPushButton(text);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, std::move(work));
    buttons->addWidget(button);
    return button;
  };
  openFolder_ = add("&Open Folder", [this] { OpenFile(folder_->text().toStdString()); });
  farm_ = add("On the Far&m...", [this] { SendToFarm(); });
  if (!IsFarmThere())
    farm_->setToolTip("Slurm is not installed here: its command sbatch was not found.");
  buttons->addStretch();
  stop_ = add("Sto&p", [this] { Stop(); });
  begin_ = add("&Render", [this] { Begin(); });
  begin_->setDefault(true);
  add("&Close", [this] { close(); });
  static_cast<QVBoxLayout*>(layout())->addLayout(buttons);
}

void RenderStatesWindow::Enable(bool isRendering) {
  isRendering_ = isRendering;
  choices_->setEnabled(!isRendering);
  begin_->setEnabled(!isRendering);
  stop_->setEnabled(isRendering);
  farm_->setEnabled(!isRendering && IsFarmThere());
  progress_->setVisible(isRendering);
  openFolder_->setEnabled(QFileInfo(folder_->text()).isDir());
}

// Nothing where a field cannot be right, which was said then.
std::optional<worker::PicturesOrder> RenderStatesWindow::Order() {
  worker::PicturesOrder order;
  const auto names = states_->Names();
  if (!names) {
    said_->setText(kNoSuchState);
    return std::nullopt;
  }
  if (!QDir::isAbsolutePath(folder_->text().trimmed())) {
    said_->setText(kNoWholePath);
    return std::nullopt;
  }
  order.keepsFinished = keep_->isChecked();
  order.pictures.states = *names;
  for (const QString& size : sizes_->text().split(' ', Qt::SkipEmptyParts))
    order.pictures.sizes.push_back(size.toStdString());
  order.pictures.frames = frames_->text().trimmed().toStdString();
  order.pictures.folder = QDir::cleanPath(folder_->text().trimmed()).toStdString();
  order.pictures.pattern = names_->text().trimmed().toStdString();
  order.pictures.format = format_->currentData().toString().toStdString();
  return order;
}

// One question at a time; the end of an answer looks at the fields again.
void RenderStatesWindow::Plan() {
  if (isClosing_ || isRendering_ || !IsFinished()) return;
  const auto order = Order();
  if (!order) {
    rendersNext_ = false;
    asked_.clear();
    return;
  }
  if (IsCopied() && asked_ == PlanText(*order) && !rendersNext_) return;
  if (!Ask(*order)) return;
  asked_ = PlanText(*order);
  table_->setColumnHidden(PictureRows::kFrame, order->pictures.frames.empty());
  said_->setText("Looking at the states.");
}

// The options of the dialog count because not all of them are kept in the scene.
bool RenderStatesWindow::IsCopied() const {
  const host::BaseDocument* doc = FindOpenDocument(doc_);
  return doc && copied_ && copied_->first == engine::ChangeCount(*doc) &&
         copied_->second == StateRenderer::OptionsOfDialog();
}

bool RenderStatesWindow::Ask(const worker::PicturesOrder& order) {
  const host::BaseDocument* doc = FindOpenDocument(doc_);
  if (!doc) {
    said_->setText("The document was closed. Open it again to render it.");
    return false;
  }
  if (!IsCopied()) {
    notes_.clear();
    renderer_ = std::make_unique<StateRenderer>(*doc, Hearing());
    copied_ = std::pair(engine::ChangeCount(*doc), StateRenderer::OptionsOfDialog());
  }
  refused_.clear();
  cost_ = {};
  renderer_->WritePictures(order);
  return true;
}

StateRenderer::News RenderStatesWindow::Hearing() {
  StateRenderer::News news;
  news.progress = [this](double done) {
    progress_->setValue(static_cast<int>(done * kRenderSteps));
  };
  news.noted = [this](const std::string& note) {
    if (std::ranges::find(notes_, note) == notes_.end()) notes_.push_back(note);
  };
  news.pictured = [this](const worker::PictureNews& told, const engine::Image& thumbnail) {
    Take(told, thumbnail);
  };
  news.pictureFilesDone = [this] { TakeEnd(); };
  news.failed = [this](const std::string& problem) {
    rendersNext_ = false;
    copied_.reset();
    End(ToQt(problem));
  };
  return news;
}

// The row that is being rendered is kept in sight.
void RenderStatesWindow::Take(const worker::PictureNews& news, const engine::Image& thumbnail) {
  rows_.Take(news, thumbnail);
  if (news.kind == Kind::Cost) cost_ = news;
  if (news.kind == Kind::Refused) refused_ = news.text;
  if (news.kind == Kind::Begun && news.index < rows_.Rows().size()) {
    const auto counts = rows_.Count();
    said_->setText(QString("Rendering %1 of %2: %3. You can go on working meanwhile.")
                       .arg(counts.rendered + counts.failed + 1)
                       .arg(rows_.Rows().size() - counts.there)
                       .arg(ToQt(rows_.Rows()[news.index].planned.state)));
    table_->scrollTo(rows_.index(static_cast<int>(news.index), 0));
  }
}

void RenderStatesWindow::TakeEnd() {
  rows_.EndPlan();
  const bool wasRendering = isRendering_;
  if (!refused_.empty()) {
    rendersNext_ = false;
    End(ToQt(refused_));
  } else if (wasRendering) {
    const auto counts = rows_.Count();
    End(QString("%1 rendered").arg(CountedPictures(counts.rendered)) +
        (counts.there > 0 ? QString(", %1 there already").arg(counts.there) : "") +
        (counts.failed > 0 ? QString(", %1 failed").arg(counts.failed) : "") + ": " +
        folder_->text());
  } else {
    SayPlan();
  }
  // The result stays to be read.
  if (wasRendering) return;
  // Takes up changes made meanwhile; queued, since a message of the child is being handled here.
  QMetaObject::invokeMethod(
      this, [this] { rendersNext_ ? BeginPlanned() : Plan(); }, Qt::QueuedConnection);
}

void RenderStatesWindow::SayPlan() {
  const auto counts = rows_.Count();
  QString text = CountedPictures(rows_.Rows().size());
  if (counts.there > 0) text += QString(", %1 there already").arg(counts.there);
  if (counts.there < rows_.Rows().size())
    text += "; " + ToQt(rendering::PixelsText(cost_.pixels)) + " to render";
  if (cost_.bytes > 0)
    text += ", about " + ToQt(rendering::DurationText(static_cast<double>(cost_.seconds))) +
            " and " + ToQt(exporting::BytesText(cost_.bytes));
  said_->setText(text + ".");
  ShowNotes();
}

// Nothing is rendered that the person has not had the chance to see in the table.
void RenderStatesWindow::Begin() {
  if (isRendering_) return;
  const auto order = Order();
  if (!order) return;
  rendersNext_ = true;
  if (!IsFinished()) return;
  const bool isPlanned =
      IsCopied() && refused_.empty() && asked_ == PlanText(*order) && rows_.rowCount() > 0;
  isPlanned ? BeginPlanned() : Plan();
}

// Whether what is there already may go.
bool RenderStatesWindow::MayReplace() {
  const std::size_t foreign = rows_.Count().foreign;
  if (foreign == 0) return true;
  const auto first = std::ranges::find_if(
      rows_.Rows(), [](const PictureRows::Row& row) { return row.planned.isForeign; });
  const QString name = QFileInfo(ToQt(first->planned.text)).fileName();
  const QString text =
      foreign == 1
          ? "\"" + name + "\" is in this folder already and was not made here. Replace it?"
          : QString(
                "%1 files are in this folder already, \"%2\" among them, that were not made "
                "here. Replace them?")
                .arg(foreign)
                .arg(name);
  return QMessageBox::question(this, windowTitle(), text) == QMessageBox::Yes;
}

void RenderStatesWindow::BeginPlanned() {
  rendersNext_ = false;
  auto order = Order();
  if (!order || isRendering_) return;
  if (asked_ != PlanText(*order)) {
    rendersNext_ = true;
    return Plan();
  }
  if (!MayReplace()) return;
  order->renders = order->replaces = true;
  if (!Ask(*order)) return;
  progress_->setValue(0);
  said_->setText("Rendering. You can go on working meanwhile.");
  Enable(true);
  stop_->setFocus();
}

// The child is gone, so the next plan takes a new copy.
void RenderStatesWindow::Stop() {
  if (!isRendering_) return;
  renderer_->Stop();
  copied_.reset();
  const std::size_t rendered = rows_.Count().rendered;
  End(rendered == 0 ? QString("Stopped; nothing was rendered.")
                    : "Stopped; " + CountedPictures(rendered) + " rendered before.");
}

void RenderStatesWindow::End(const QString& text) {
  rows_.EndWork();
  said_->setText(text);
  ShowNotes();
  const bool wasRendering = isRendering_;
  Enable(false);
  // The pictures that are there now make another plan.
  if (wasRendering) asked_.clear();
  if (wasRendering) (openFolder_->isEnabled() ? openFolder_ : begin_)->setFocus();
}

void RenderStatesWindow::ShowNotes() {
  constexpr qsizetype kMostNotes = 6;
  QStringList lines;
  for (const std::string& note : notes_) lines.append(ToQt(note));
  const qsizetype more = lines.size() - kMostNotes;
  if (more > 0) lines = lines.mid(0, kMostNotes) + QStringList(QString("and %1 more").arg(more));
  told_->setText(lines.join('\n'));
  told_->setVisible(!lines.isEmpty());
}

void RenderStatesWindow::OpenFile(const std::string& path) {
  if (services_.files.Kind(path) == engine::FileKind::Missing) return;
  const engine::Status opened = services_.viewer.Open(path);
  if (!opened) QMessageBox::warning(this, windowTitle(), ToQt(opened.Message()));
}

void RenderStatesWindow::SendToFarm() {
  host::BaseDocument* doc = FindOpenDocument(doc_);
  const auto order = Order();
  if (!doc || !order) return;
  const bool isPlanned = IsFinished() && refused_.empty() && asked_ == PlanText(*order);
  AskForFarm(window_, *doc, order->pictures,
             isPlanned ? CountedPictures(rows_.Rows().size()) + " will be handed over." : "");
}

void AskToRenderStates(MainWindow& window) {
  const host::BaseDocument* doc = host::GetActiveDocument();
  if (!doc) return;
  (new RenderStatesWindow(window, *doc, window.States().Chosen()))->show();
}

}  // namespace desktop
