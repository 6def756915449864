#include "program/desktop/Reports.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include "host/Application.h"
#include "program/desktop/Text.h"
#include "program/pictures/UndoableCommand.h"

namespace desktop {

namespace {

// Pixels; room for about ten lines.
constexpr QSize kReportSize(560, 260);
constexpr const char* kNotAllWell = "Not everything came about.";

// Paths as they stand below the folder that the heading names.
QString Below(const std::string& folder, const std::string& path) {
  return ToQt(path.starts_with(folder + "/") ? path.substr(folder.size() + 1) : path);
}

QString Details(const outcome::Outcome& outcome) {
  QStringList lines;
  for (const std::string& problem : outcome.problems) lines += ToQt(problem);
  if (!outcome.problems.empty() && !outcome.files.empty()) lines += QStringList{"", "Written:"};
  for (const std::string& file : outcome.files) lines += Below(outcome.folder, file);
  return lines.join('\n');
}

// Not modal: work goes on beside it (decision 26).
class ReportWindow : public QDialog {
 public:
  ReportWindow(engine::Viewer& viewer, const outcome::Outcome& outcome, QWidget* parent)
      : QDialog(parent), viewer_(viewer), folder_(outcome.folder) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle("Report");
    auto* rows = new QVBoxLayout(this);
    rows->addLayout(Heading(outcome));
    auto* details = new QPlainTextEdit(Details(outcome), this);
    details->setReadOnly(true);
    details->setTabChangesFocus(true);
    rows->addWidget(details, 1);
    rows->addWidget(Buttons());
    resize(kReportSize);
  }

 private:
  QHBoxLayout* Heading(const outcome::Outcome& outcome) {
    auto* heading = new QHBoxLayout;
    const auto icon =
        outcome.problems.empty() ? QStyle::SP_MessageBoxInformation : QStyle::SP_MessageBoxWarning;
    auto* picture = new QLabel(this);
    const int size = style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
    picture->setPixmap(style()->standardIcon(icon).pixmap(size, size));
    auto* text =
        new QLabel(outcome.summary.empty() ? QString(kNotAllWell) : ToQt(outcome.summary), this);
    text->setTextFormat(Qt::PlainText);
    text->setWordWrap(true);
    text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    heading->addWidget(picture, 0, Qt::AlignTop);
    heading->addWidget(text, 1);
    return heading;
  }

  QDialogButtonBox* Buttons() {
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    buttons->button(QDialogButtonBox::Close)->setDefault(true);
    if (folder_.empty()) return buttons;
    QPushButton* open = buttons->addButton("Open Folder", QDialogButtonBox::ActionRole);
    connect(open, &QPushButton::clicked, this, [this] {
      const engine::Status opened = viewer_.Open(folder_);
      if (!opened) QMessageBox::warning(this, windowTitle(), ToQt(opened.Message()));
    });
    return buttons;
  }

  engine::Viewer& viewer_;
  std::string folder_;
};

}  // namespace

// The watch looks before the undo step begins and after it has closed, when the plug-in is done in
// every respect. `choosing` only holds while it runs, because it refers to what stands here.
void Reports::Run(host::GeDialog& dialog, const std::string& label,
                  const std::function<bool()>& act) {
  outcome::CommandWatch watch(services_, dialog, label);
  person_.choosing = [&](const engine::FileQuestion& question, const std::string& path) {
    return !(question.flags & host::FILESELECT_DIRECTORY) || MayWriteInto(path, dialog, watch);
  };
  bool answered = false;
  {
    const pictures::UndoableCommand step(services_, dialog, label);
    answered = act();
  }
  person_.choosing = {};
  Show(watch.Finish(answered));
}

// Asked by the folder chooser in the middle of the plug-in's export, the last moment before it
// writes. True where nothing is known about this dialog: the plug-in decides alone.
bool Reports::MayWriteInto(const std::string& folder, host::GeDialog& dialog,
                           outcome::CommandWatch& watch) {
  const pictures::StagemarksDialog shown(dialog);
  const auto layout = shown.Fits() ? exporting::LayoutOfEntry(shown.ChosenLayout()) : std::nullopt;
  const host::BaseDocument* doc = host::GetActiveDocument();
  if (!doc || !layout) return true;
  const exporting::ExportPlan plan =
      exporting::PlanExport(services_.files, *doc, {*layout, folder, shown.CheckedNames()});
  if (!MayExport(plan, folder)) return false;
  watch.ChoseFolder(folder);
  watch.Lacks(plan.missing);
  return true;
}

// One question for everything that is in the way, not one each.
bool Reports::MayExport(const exporting::ExportPlan& plan, const std::string& folder) {
  std::string text;
  for (const std::string& obstacle : plan.obstacles) text += "\n\n" + obstacle;
  if (!text.empty())
    text = "Not everything can be written." + text +
           "\n\nThe export stops where the first of it comes.";
  if (!exporting::Fits(plan)) {
    text += (text.empty() ? "" : "\n\n") + std::string("The disk may be too small: ") +
            exporting::Summary(plan) + " go to \"" + folder + "\", where " +
            exporting::BytesText(*plan.free) + " are free.";
  }
  if (!text.empty() && !person_.Ask(text + "\n\nExport all the same?")) return false;
  const std::string room = plan.free ? "; " + exporting::BytesText(*plan.free) + " are free" : "";
  person_.ShowStatus("Exporting " + exporting::Summary(plan) + room);
  return true;
}

// Undo moves previews on the disk, which may fail without the step failing.
bool Reports::Step(engine::Application& application, bool (engine::Application::*go)()) {
  const std::size_t mark = services_.ledger.Mark();
  if (!(application.*go)()) return false;
  outcome::Outcome outcome;
  outcome.problems = outcome::Sentences(outcome::FailuresThatMatter(services_, mark));
  Show(outcome);
  return true;
}

// Without problems and without files to look at, the line is enough.
void Reports::Show(const outcome::Outcome& outcome) {
  if (!outcome.summary.empty()) person_.ShowStatus(outcome.summary);
  if (outcome.problems.empty() && outcome.folder.empty()) return;
  if (open_) open_->close();
  open_ = new ReportWindow(services_.viewer, outcome, window_);
  QObject::connect(open_, &QDialog::finished, open_, [this] { open_.clear(); });
  open_->show();
}

}  // namespace desktop
