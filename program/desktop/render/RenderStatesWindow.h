// RenderStatesWindow: pictures of Stagemarks as files: which, how large, where to and under which
// names; each in a table before anything is rendered, with what came of it. A child works on a copy
// of the scene as it was when the work began, while a person goes on; closing the window ends it.
// Where there is a farm of machines, the order can go there instead. Main thread.
#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTreeView>
#include <memory>

#include "engine/outside/Services.h"
#include "program/desktop/render/PictureRows.h"
#include "program/desktop/render/StateChoice.h"
#include "program/desktop/render/StateRenderer.h"

namespace desktop {

class MainWindow;

class RenderStatesWindow : public QDialog {
 public:
  // `chosen`: names of the rows that are selected in the Stagemarks dialog. Stands in front of
  // `window`, which owns it.
  RenderStatesWindow(MainWindow& window, const host::BaseDocument& doc,
                     std::vector<std::string> chosen);
  ~RenderStatesWindow() override;

  // Has the table filled as the fields say; nothing where it shows that already.
  void Plan();
  // Asks before files of others are replaced.
  void Begin();
  void Stop();
  // Neither planning nor rendering.
  bool IsFinished() const { return !renderer_ || !renderer_->IsBusy(); }
  QString Said() const { return said_->text(); }
  const PictureRows& Rows() const { return rows_; }
  void done(int result) override;

 private:
  void AddFields(std::vector<std::string> chosen, const host::BaseDocument& doc);
  void AddPlaces(const host::BaseDocument& doc);
  QPushButton* MakePlaceholders();
  void AddTable();
  void AddBottom();
  void AddButtons();
  void Enable(bool isRendering);
  // The order in the fields; nothing where a field is wrong, and the window says so.
  std::optional<worker::PicturesOrder> Order();
  // Whether the child has the document as it is.
  bool IsCopied() const;
  // False where the document is gone.
  bool Ask(const worker::PicturesOrder& order);
  bool MayReplace();
  void BeginPlanned();
  StateRenderer::News Hearing();
  void Take(const worker::PictureNews& news, const engine::Image& thumbnail);
  void TakeEnd();
  void SayPlan();
  void End(const QString& text);
  void ShowNotes();
  void OpenFile(const std::string& path);
  void SendToFarm();

  MainWindow& window_;
  const engine::Services& services_;
  host::ULLONG doc_;
  // The child's copy: change count of the document, options of the dialog; nothing without a child.
  std::optional<std::pair<host::ULLONG, std::vector<std::string>>> copied_;
  std::string asked_;  // the order that the table shows or will show, as text
  worker::PictureNews cost_;
  std::string refused_;
  bool rendersNext_ = false;  // as soon as the plan is there
  bool isRendering_ = false;
  bool isClosing_ = false;
  std::vector<std::string> notes_;
  PictureRows rows_;
  QWidget* choices_;
  QFormLayout* form_;
  StateChoice* states_ = nullptr;
  QLineEdit* sizes_ = nullptr;
  QLineEdit* frames_ = nullptr;
  QLineEdit* folder_ = nullptr;
  QLineEdit* names_ = nullptr;
  QComboBox* format_ = nullptr;
  QCheckBox* keep_ = nullptr;
  QTreeView* table_ = nullptr;
  QProgressBar* progress_ = nullptr;
  QLabel* said_ = nullptr;
  QLabel* told_ = nullptr;
  QPushButton* begin_ = nullptr;
  QPushButton* stop_ = nullptr;
  QPushButton* openFolder_ = nullptr;
  QPushButton* farm_ = nullptr;
  std::unique_ptr<StateRenderer> renderer_;  // last: it ends before what it tells
};

// Opens the window for the active document.
void AskToRenderStates(MainWindow& window);

}  // namespace desktop
