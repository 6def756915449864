#include "program/desktop/recovery/RecoveryQuestion.h"

#include <QApplication>
#include <QLabel>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>

namespace desktop {

namespace {

constexpr std::size_t kMostNamed = 8;
constexpr int kLongestLine = 60;
constexpr int kWidthOfText = 440;

enum class Answer { Recover, Discard, Later };

QString Listed(const std::vector<LostDocument>& documents) {
  QStringList lines;
  for (const LostDocument& document : documents) {
    if (static_cast<std::size_t>(lines.size()) == kMostNamed) {
      lines.append(QString("and %1 more").arg(documents.size() - kMostNamed));
      break;
    }
    QString title = document.title;
    if (title.size() > kLongestLine) title = title.left(kLongestLine - 1) + QChar(0x2026);
    lines.append(QString::fromUtf8("\xe2\x80\xa2 %1, kept %2")
                     .arg(title, QLocale().toString(document.kept, "d MMM yyyy, HH:mm")));
  }
  return lines.join('\n');
}

Answer Ask(const std::vector<LostDocument>& documents, QWidget* window) {
  QMessageBox box(QMessageBox::Question, QApplication::applicationDisplayName(),
                  "Work that was not saved was found.", QMessageBox::NoButton, window);
  box.setTextFormat(Qt::PlainText);
  box.setInformativeText(
      Listed(documents) +
      "\n\nRecovered scenes open as changed ones; your own files stay as they are until you save.");
  if (auto* text = box.findChild<QLabel*>("qt_msgbox_informativelabel"))
    text->setMinimumWidth(kWidthOfText);
  QPushButton* recover = box.addButton("&Recover", QMessageBox::AcceptRole);
  QPushButton* discard = box.addButton("&Discard", QMessageBox::DestructiveRole);
  box.setEscapeButton(box.addButton("&Later", QMessageBox::RejectRole));
  box.setDefaultButton(recover);
  box.exec();
  if (box.clickedButton() == recover) return Answer::Recover;
  return box.clickedButton() == discard ? Answer::Discard : Answer::Later;
}

void Recover(LostWork& lost, DocumentCommands& commands, Autosave& autosave) {
  for (const LostDocument& document : lost.Documents()) {
    const auto opened = commands.OpenRecovered(document.files.scene, document.path);
    if (opened) {
      autosave.Adopt(document, *opened.Value());
    } else {
      commands.Person().Warn("\"" + document.title.toStdString() + "\" could not be recovered. " +
                             opened.Message() + "\n\nThe file stays at \"" +
                             lost.KeepAside(document) + "\".");
    }
  }
  lost.Tidy();
}

}  // namespace

void OfferLostWork(const engine::Services& services, DocumentCommands& commands, Autosave& autosave,
                   QWidget* window) {
  LostWork lost(services);
  if (lost.Documents().empty()) return;
  const Answer answer = Ask(lost.Documents(), window);
  if (answer == Answer::Recover) Recover(lost, commands, autosave);
  if (answer == Answer::Discard) lost.Discard();
}

}  // namespace desktop
