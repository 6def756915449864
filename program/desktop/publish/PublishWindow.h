// PublishWindow: publishes Stagemarks of a document, as glTF files or as a web page: where to,
// which of them and how, then how far it is and what came of it. A child works on a copy of the
// scene as it was when the work began, while a person goes on; closing the window ends it. Main
// thread.
#pragma once

#include <QComboBox>
#include <QDialog>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <memory>

#include "engine/outside/Services.h"
#include "program/desktop/render/StateChoice.h"
#include "program/desktop/render/StateRenderer.h"
#include "program/publish/PublishOrder.h"

namespace desktop {

class MainWindow;

enum class PublishKind { Files, Page };

class PublishWindow : public QDialog {
 public:
  // `chosen`: names of the rows that are selected in the Stagemarks dialog. Stands in front of
  // `window`, which owns it.
  PublishWindow(QWidget* window, const engine::Services& services, const host::BaseDocument& doc,
                PublishKind kind, std::vector<std::string> chosen);

  // Publishes as the fields say. Asks before files are replaced.
  void Begin();
  void Stop();
  bool IsFinished() const { return !renderer_ || !renderer_->IsBusy(); }
  QString Said() const { return said_->text(); }

 private:
  void AddFields();
  void AddFileFields();
  void AddBottom();
  void AddButtons();
  void Enable(bool isRunning);
  bool MayReplace();
  void Start();
  StateRenderer::News Hearing();
  void End(const QString& text);
  void OpenResult(const std::string& path);
  publishing::PublishOrder Order() const;

  const engine::Services& services_;
  const PublishKind kind_;
  host::ULLONG doc_;
  std::string scene_;
  std::vector<std::string> written_;
  std::vector<std::string> notes_;
  QWidget* choices_;
  QFormLayout* form_;
  StateChoice* states_;
  QLineEdit* folder_ = nullptr;
  QLineEdit* title_ = nullptr;  // of a page
  QComboBox* files_ = nullptr;  // of files, and the next one
  QComboBox* hidden_ = nullptr;
  QProgressBar* progress_ = nullptr;
  QLabel* said_ = nullptr;
  QLabel* told_ = nullptr;
  QPushButton* begin_ = nullptr;
  QPushButton* stop_ = nullptr;
  QPushButton* openFolder_ = nullptr;
  QPushButton* openPage_ = nullptr;
  std::unique_ptr<StateRenderer> renderer_;  // last: it ends before what it tells
};

// Opens the window for the active document.
void AskToPublish(MainWindow& window, PublishKind kind);

}  // namespace desktop
