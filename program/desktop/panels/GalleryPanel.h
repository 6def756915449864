// GalleryPanel: every Stagemark of the active document as a large picture with its name, its date
// and in how many things it differs from the scene. What is chosen here is chosen in the Stagemarks
// dialog, and the reverse. It shows what is stored and changes nothing itself. Main thread.
#pragma once

#include <QLineEdit>
#include <QSlider>
#include <QTimer>
#include <QWidget>
#include <optional>

#include "engine/dialog/Dialogs.h"
#include "engine/states/Difference.h"
#include "program/desktop/Settings.h"
#include "program/desktop/background/Slices.h"
#include "program/desktop/dialog/StatesDialog.h"
#include "program/desktop/panels/DocumentView.h"
#include "program/desktop/panels/GalleryGrid.h"
#include "program/desktop/panels/PanelCommands.h"

namespace desktop {

// The grid below its search field and buttons.
class GalleryPanel : public QWidget, public DocumentView, private engine::DialogObserver {
 public:
  // The references outlive the panel. `settings`: where the size of the pictures is kept.
  GalleryPanel(const engine::Services& services, Settings& settings, const StatesDialog& dialog,
               QWidget* parent);
  ~GalleryPanel() override;

  void Follow(host::BaseDocument* doc) override;
  GalleryGrid& Grid() { return *grid_; }
  StatePictures& Pictures() { return pictures_; }
  QSize sizeHint() const override { return {420, 220}; }
  // Loads the Stagemark of that name.
  std::function<void(const std::string& name)> load;

 protected:
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  void DialogOpened(host::GeDialog&) override { dialogChanged_ = true; }
  void DialogClosed(host::GeDialog&) override { dialogChanged_ = true; }
  void DialogChanged(host::GeDialog&, const engine::Gadget*) override { dialogChanged_ = true; }

  void BuildBar();
  void BuildSize();
  // The size of the pictures as it is kept between runs.
  int KeptSize() const;
  void KeepSize();
  void BuildActions();
  void Connect();
  void ShowMenu(const QPoint& place);
  void Load();
  void Delete();
  // The chosen ones, without any all.
  void RenderAgain();
  // The two that are chosen, in a window.
  void CompareTwo();
  bool CanBeSeen() const;
  // Nobody renders or counts for a panel that nobody sees.
  void Rest();
  // Goes on with pictures and counting as soon as a person rests.
  void WorkSoon() { rest_.start(); }
  // Switches off what cannot be done now.
  void ShowActions();
  // Takes over what is chosen in the dialog. Nothing chosen there leaves it as it is here.
  void FollowDialog();
  // Counts a few elements of one Stagemark that is not counted yet, the visible ones first; false
  // when none is left.
  bool CountOn();
  // Begins with the next one; false when none is left.
  bool CountNext(const host::BaseDocument& doc);
  // The visible ones first.
  void StartCounting();
  void ForgetCounting();

  Settings& settings_;
  const StatesDialog& dialog_;
  StatePictures pictures_;
  PanelBar* bar_;
  QLineEdit* search_;
  QSlider* size_;
  GalleryGrid* grid_;
  QAction* load_ = nullptr;
  QAction* wipe_ = nullptr;
  QAction* render_ = nullptr;
  QAction* stop_ = nullptr;
  QAction* delete_ = nullptr;
  QWidget* dock_ = nullptr;  // that it is in
  host::ULLONG doc_ = 0;
  host::ULLONG seen_ = 0;
  QString file_;          // of the scene
  bool isSaved_ = false;  // the scene, as it is
  engine::Parts parts_;
  bool dialogChanged_ = true;
  QTimer rest_;                        // until a person has rested
  std::vector<host::LONG> uncounted_;  // the last one is the next
  host::LONG counted_ = kNoState;      // the Stagemark that is being counted
  std::optional<engine::StepwiseComparison> comparison_;
  Slices counting_;
};

}  // namespace desktop
