// Everything is done by calls of `stagemarks farm ... --json`, one at a time (decision 72): a
// command of the person, or a look at the job, which is dropped for a command. `doing_` tells them
// apart. The window looks again after each answer as long as something may still come of the job.
#include "program/desktop/render/FarmWindow.h"

#include <QEvent>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMessageBox>
#include <QStandardPaths>
#include <QVBoxLayout>
#include <chrono>

#include "engine/application/ProgramPlaces.h"
#include "program/desktop/DocumentCommands.h"
#include "program/desktop/FileDialogs.h"
#include "program/desktop/MainWindow.h"
#include "program/desktop/ScreenFit.h"
#include "program/desktop/Text.h"

namespace desktop {

namespace {

// A look reads the job folder and asks the scheduler, which is not to be asked all the time.
constexpr std::chrono::milliseconds kBetweenLooks{2000};
constexpr QSize kFarmSize(640, 520);
constexpr const char* kSubmitCommand = "sbatch";
constexpr int kCountWidth = 84;
constexpr int kMostInTask = 1000000;
// Members of a state in the status, in the order of the columns.
constexpr const char* kCounts[] = {"waiting", "running", "done", "failed"};
constexpr int kEachColumn = 5;

// The errors in the output of a command, a JSON object a line; all of the output where it has none.
QString ProblemOf(const QByteArray& said) {
  QStringList problems;
  for (const QByteArray& line : said.split('\n')) {
    const QJsonObject object = QJsonDocument::fromJson(line).object();
    if (object.value("level").toString() == "error")
      problems.append(object.value("text").toString());
  }
  if (!problems.isEmpty()) return problems.join('\n');
  return said.trimmed().isEmpty() ? QString("The command `stagemarks farm` said nothing.")
                                  : QString::fromUtf8(said.trimmed());
}

// Text of a status, without what may be done about it. Of the failures the first one: they mostly
// have one cause.
QString StatusText(const QJsonObject& status) {
  const int all = status.value("pictures").toInt();
  QStringList parts;
  for (const char* what : {"done", "running", "waiting", "failed"}) {
    const int count = status.value(what).toInt();
    if (count > 0) parts.append(QString("%1 %2").arg(count).arg(what));
  }
  QString text = QString(all == 1 ? "%1 picture: " : "%1 pictures: ").arg(all) + parts.join(", ");
  const QJsonValue left = status.value("secondsLeft");
  if (left.isDouble())
    text += "; about " + ToQt(rendering::DurationText(left.toDouble())) + " left";
  const QString stopped = status.value("stopped").toString();
  if (!stopped.isEmpty()) text += ". Stopped: " + stopped;
  for (const auto& task : status.value("tasks").toArray()) {
    const QString why = task.toObject().value("why").toString();
    if (why.isEmpty() || task.toObject().value("result").toString() != "failed") continue;
    return text + "\n" + task.toObject().value("state").toString() + ": " + why;
  }
  return text;
}

// Slurm's own account of the job; empty where there is none.
QString SchedulerText(const QJsonObject& status) {
  const QString unasked = status.value("unasked").toString();
  if (!unasked.isEmpty()) return "\n" + unasked;
  QStringList parts;
  for (const auto& value : status.value("scheduler").toArray()) {
    const int tasks = value.toObject().value("tasks").toInt();
    parts.append(QString(tasks == 1 ? "%1 task %2" : "%1 tasks %2")
                     .arg(tasks)
                     .arg(value.toObject().value("state").toString()));
  }
  return parts.isEmpty() ? QString() : "\nSlurm: " + parts.join(", ") + ".";
}

// Where its pictures lie. The folder of the job where that of the pictures is not there yet.
QString FolderOf(const QJsonObject& status) {
  const QString picture = status.value("tasks").toArray().at(0).toObject().value("file").toString();
  const QString folder = QFileInfo(picture).path();
  return !picture.isEmpty() && QFileInfo(folder).isDir() ? folder
                                                         : status.value("folder").toString();
}

// How many pictures somebody is at or will be; those that are abandoned count as waiting or failed.
int CountOpen(const QJsonObject& status) {
  const auto count = [&](const char* what) { return status.value(what).toInt(); };
  return count("waiting") + count("running") + count("failed") - count("abandoned");
}

}  // namespace

bool IsFarmThere() { return !QStandardPaths::findExecutable(kSubmitCommand).isEmpty(); }

FarmWindow::FarmWindow(QWidget* window, const engine::Services& services, const std::string& scene,
                       rendering::PictureOrder order, std::string program, const QString& plan)
    : QDialog(window),
      services_(services),
      scene_(scene),
      order_(std::move(order)),
      program_(std::move(program)),
      choices_(new QWidget(this)),
      form_(new QFormLayout(choices_)) {
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowTitle("On the Farm - " + QFileInfo(ToQt(scene)).fileName());
  form_->setContentsMargins(0, 0, 0, 0);
  form_->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
  AddFields();
  AddBottom(plan);
  next_.setSingleShot(true);
  connect(&next_, &QTimer::timeout, this, [this] { AskStatus(); });
  connect(&call_, &QProcess::finished, this, [this](int status) { TakeAnswer(status); });
  connect(&call_, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
    if (error == QProcess::FailedToStart) TakeProblem("\"" + call_.program() + "\" cannot be run.");
  });
  resize(FittingSize(*this, kFarmSize));
  Enable();
  submit_->setFocus();
}

// The call ends with the window, the job does not.
FarmWindow::~FarmWindow() {
  call_.disconnect(this);
  call_.terminate();
  call_.waitForFinished();
}

void FarmWindow::AddFields() {
  auto* row = new QHBoxLayout;
  farm_ = new QLineEdit(QFileInfo(ToQt(scene_)).path() + "/farm");
  farm_->setObjectName("farm");
  auto* label = new QLabel("&Farm folder");
  label->setBuddy(farm_);
  auto* browse = new QPushButton("&Browse...");
  browse->setAutoDefault(false);
  connect(browse, &QPushButton::clicked, this,
          [this] { BrowseForFolder(this, "Choose the farm's folder", *farm_, services_.files); });
  row->addWidget(farm_);
  row->addWidget(browse);
  form_->addRow(label, row);
  partition_ = new QLineEdit;
  partition_->setPlaceholderText("Slurm's usual one");
  form_->addRow("&Partition", partition_);
  chunk_ = new QSpinBox;
  chunk_->setRange(0, kMostInTask);
  chunk_->setSpecialValueText("As many as reading the scene is worth");
  form_->addRow("Pictures in a &task", chunk_);
}

void FarmWindow::AddTable() {
  table_ = new QTreeWidget;
  table_->setHeaderLabels({"Stagemark", "Waiting", "Running", "Done", "Failed", "Each"});
  table_->setRootIsDecorated(false);
  table_->setUniformRowHeights(true);
  table_->setAlternatingRowColors(true);
  table_->setAccessibleName("Pictures on the farm");
  table_->header()->setStretchLastSection(false);
  table_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
  for (int column = 1; column < table_->columnCount(); ++column) {
    table_->header()->resizeSection(column, kCountWidth);
    table_->headerItem()->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
  }
  table_->headerItem()->setToolTip(kEachColumn, "Time of one picture");
  connect(table_, &QTreeWidget::itemActivated, this, [this](const QTreeWidgetItem* item) {
    OpenPictureOf(table_->indexOfTopLevelItem(const_cast<QTreeWidgetItem*>(item)));
  });
}

void FarmWindow::AddBottom(const QString& plan) {
  auto* rows = new QVBoxLayout(this);
  heading_ = new QLabel;
  heading_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  said_ = new QLabel(plan + (plan.isEmpty() ? "" : "\n") +
                     "All machines must see this folder, and that of the pictures, " +
                     ToQt(order_.folder) +
                     ", by the same paths. The scene is copied once as it is saved now.");
  for (QLabel* label : {heading_, said_}) {
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
  }
  AddTable();
  progress_ = new QProgressBar;
  rows->addWidget(choices_);
  rows->addWidget(heading_);
  rows->addWidget(table_, 1);
  rows->addWidget(progress_);
  rows->addWidget(said_);
  rows->addStretch();
  AddButtons();
}

void FarmWindow::AddButtons() {
  auto* buttons = new QHBoxLayout;
  const auto add = [&](const QString& text, const QString& tip, std::function<void()> work) {
    auto* button = new QPushButton(text);
    button->setAutoDefault(false);
    button->setToolTip(tip);
    connect(button, &QPushButton::clicked, this, std::move(work));
    buttons->addWidget(button);
    return button;
  };
  openFolder_ =
      add("&Open Folder", "Show the folder of the pictures", [this] { Open(FolderOf(status_)); });
  collect_ = add("&Report", "Make the contact sheet and the report of what is there, and open it",
                 [this] { Collect(); });
  retry_ = add("Re&try", "Hand over again what failed or was lost", [this] { Retry(); });
  cancel_ = add("&Cancel Job", "Take the job out of Slurm; pictures that are done stay",
                [this] { Cancel(); });
  buttons->addStretch();
  latest_ = add("Show &Latest Job", "What became of the job that was handed over last",
                [this] { ShowLatest(); });
  submit_ = add("&Submit", "Hand these pictures to Slurm", [this] { Submit(); });
  submit_->setDefault(true);
  add("Clos&e", "The job goes on without this window", [this] { close(); });
  static_cast<QVBoxLayout*>(layout())->addLayout(buttons);
}

void FarmWindow::Enable() {
  const bool isWorking = !doing_.isEmpty();
  const auto count = [this](const char* what) { return status_.value(what).toInt(); };
  const bool hasJob = !job_.isEmpty();
  choices_->setEnabled(!isWorking && !hasJob);
  choices_->setVisible(!hasJob);
  heading_->setVisible(hasJob);
  submit_->setVisible(!hasJob);
  latest_->setVisible(!hasJob);
  for (QPushButton* button : {openFolder_, collect_, retry_, cancel_}) button->setVisible(hasJob);
  submit_->setEnabled(!isWorking);
  latest_->setEnabled(!isWorking);
  retry_->setEnabled(!isWorking && count("abandoned") + count("failed") > 0);
  cancel_->setEnabled(!isWorking && count("waiting") + count("running") > 0);
  collect_->setEnabled(!isWorking && count("done") > 0);
  progress_->setVisible(hasJob);
  table_->setVisible(hasJob);
}

// A command waits for no look, but no command interrupts another one.
void FarmWindow::Call(const QStringList& words, const QString& doing, Answer answer) {
  next_.stop();
  if (!IsIdle() && !doing_.isEmpty()) return;
  if (!IsIdle()) {
    const QSignalBlocker silent(call_);
    call_.terminate();
    call_.waitForFinished();
  }
  doing_ = doing;
  answer_ = std::move(answer);
  if (!doing.isEmpty()) problem_.clear();
  if (!doing.isEmpty()) said_->setText(doing);
  Enable();
  call_.start(ToQt(program_),
              QStringList{"farm"} + words + QStringList{"--farm=" + farm_->text(), "--json"});
}

void FarmWindow::TakeAnswer(int status) {
  const QByteArray printed = call_.readAllStandardOutput();
  const QByteArray said = call_.readAllStandardError();
  if (status != 0) return TakeProblem(ProblemOf(said));
  doing_.clear();
  answer_(QJsonDocument::fromJson(printed).object());
  Enable();
}

// The job that is shown goes on all the same. A look that failed is repeated: a shared disk comes
// back.
void FarmWindow::TakeProblem(const QString& problem) {
  const bool wasLooking = std::exchange(doing_, {}).isEmpty();
  said_->setText(problem);
  if (wasLooking) {
    next_.start(kBetweenLooks);
  } else {
    problem_ = "\n" + problem;
    if (!job_.isEmpty()) Watch();
  }
  Enable();
}

QStringList FarmWindow::OnJob(const QString& action) const { return {action, job_}; }

// The words that a person would type; what is printed is the folder of the job.
void FarmWindow::Submit() {
  QStringList words{"submit", ToQt(scene_)};
  for (const std::string& name : order_.states) words.append("--only=" + ToQt(name));
  for (const std::string& size : order_.sizes) words.append("--size=" + ToQt(size));
  const std::string names = order_.pattern.empty() ? "{scene} {state}" : order_.pattern;
  words.append("--output=" + ToQt(order_.folder + "/" + names));
  if (!order_.format.empty()) words.append("--format=" + ToQt(order_.format));
  if (!order_.frames.empty()) words.append("--frames=" + ToQt(order_.frames));
  words.append("--chunk=" + QString::number(chunk_->value()));
  if (!partition_->text().trimmed().isEmpty())
    words.append("--partition=" + partition_->text().trimmed());
  Call(words, "Copying the scene and handing its pictures over.", [this](const QJsonObject& made) {
    job_ = QFileInfo(made.value("folder").toString()).fileName();
    Watch();
  });
}

void FarmWindow::ShowLatest() {
  Call({"status"}, "Looking for the latest job.",
       [this](const QJsonObject& status) { TakeStatus(status); });
}

void FarmWindow::Retry() {
  Call(OnJob("retry"), "Handing over again what is missing.",
       [this](const QJsonObject&) { Watch(); });
}

void FarmWindow::Cancel() {
  const QString text =
      "Take the job out of Slurm? Pictures that are done stay, and Retry takes up the others.";
  if (QMessageBox::question(this, windowTitle(), text) != QMessageBox::Yes) return;
  Call(OnJob("cancel"), "Taking the job out of Slurm.", [this](const QJsonObject&) { Watch(); });
}

void FarmWindow::Collect() {
  Call(OnJob("collect"), "Making the contact sheet and the report.",
       [this](const QJsonObject& made) {
         Open(made.value("report").toString());
         Watch();
       });
}

void FarmWindow::Open(const QString& path) {
  const engine::Status opened = services_.viewer.Open(path.toStdString());
  if (!opened) QMessageBox::warning(this, windowTitle(), ToQt(opened.Message()));
}

// Rows are in the order of the states.
void FarmWindow::OpenPictureOf(int row) {
  const QJsonValue state = status_.value("states").toArray().at(row).toObject().value("state");
  for (const auto& task : status_.value("tasks").toArray()) {
    const QJsonObject picture = task.toObject();
    if (picture.value("state") == state && picture.value("result").toString() == "done")
      return Open(picture.value("file").toString());
  }
}

// Asks as soon as the present answer has been handled.
void FarmWindow::Watch() { next_.start(0); }

void FarmWindow::AskStatus() {
  if (!IsIdle()) return;
  Call(OnJob("status"), {}, [this](const QJsonObject& status) { TakeStatus(status); });
}

// Nothing open and nothing in the scheduler: nothing will change until a person does something.
void FarmWindow::TakeStatus(const QJsonObject& status) {
  status_ = status;
  job_ = status.value("job").toString();
  const QString number = status.value("slurmJob").toString();
  heading_->setText("Job " + job_ + (number.isEmpty() ? "" : ", in Slurm " + number));
  const int all = status.value("pictures").toInt();
  const int done = status.value("done").toInt();
  progress_->setRange(0, std::max(1, all));
  progress_->setValue(done);
  FillTable(status);
  QString text = StatusText(status) + SchedulerText(status);
  const int abandoned = status.value("abandoned").toInt();
  if (abandoned > 0)
    text += QString("\nNobody is going to do %1 of them any more. Retry hands them over again.")
                .arg(abandoned);
  const bool isOpen = CountOpen(status) > 0;
  if (isOpen) text += "\nClosing this window leaves the job alone.";
  const bool isInSlurm = !status.value("scheduler").toArray().isEmpty();
  if (isOpen || isInSlurm) next_.start(kBetweenLooks);
  said_->setText(text + problem_);
}

void FarmWindow::changeEvent(QEvent* event) {
  QDialog::changeEvent(event);
  const bool isBack = event->type() == QEvent::ActivationChange && isActiveWindow();
  if (isBack && !job_.isEmpty() && !IsWatching()) AskStatus();
}

// Rows are kept and filled anew, so that a selection and the scroll place survive each look.
void FarmWindow::FillTable(const QJsonObject& status) {
  const QJsonArray states = status.value("states").toArray();
  while (table_->topLevelItemCount() > states.size()) delete table_->takeTopLevelItem(0);
  while (table_->topLevelItemCount() < states.size()) table_->addTopLevelItem(new QTreeWidgetItem);
  for (int i = 0; i < states.size(); ++i) {
    const QJsonObject state = states[i].toObject();
    QTreeWidgetItem& item = *table_->topLevelItem(i);
    item.setText(0, state.value("state").toString());
    int column = 1;
    const QJsonValue each = state.value("milliseconds");
    item.setTextAlignment(kEachColumn, Qt::AlignRight | Qt::AlignVCenter);
    item.setText(kEachColumn,
                 each.isDouble() ? QString("%1 s").arg(each.toDouble() / 1000, 0, 'f', 1) : "-");
    for (const char* what : kCounts) {
      const int count = state.value(what).toInt();
      item.setText(column, count > 0 ? QString::number(count) : QString("-"));
      item.setTextAlignment(column++, Qt::AlignRight | Qt::AlignVCenter);
    }
  }
}

void AskForFarm(MainWindow& window, host::BaseDocument& doc, const rendering::PictureOrder& order,
                const QString& plan) {
  const bool isSaved = doc.GetDocumentPath().Content() && !doc.GetChanged();
  if (!isSaved) {
    const auto answer = QMessageBox::question(
        &window, "On the Farm", "The farm renders the scene as it is saved. Save it now?",
        QMessageBox::Save | QMessageBox::Cancel, QMessageBox::Save);
    if (answer != QMessageBox::Save || !window.Commands().Save(doc)) return;
  }
  const std::string scene = (doc.GetDocumentPath() + doc.GetDocumentName()).GetString().ToUtf8();
  (new FarmWindow(&window, window.App().GetServices(), scene, order, engine::ImportWorkerProgram(),
                  plan))
      ->show();
}

}  // namespace desktop
