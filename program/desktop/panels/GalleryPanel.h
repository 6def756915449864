// GalleryPanel: every Stagemark of the active document as a large picture with its name, its date
// and in how many things it differs from the scene. What is chosen here is chosen in the Stagemarks
// dialog, and the reverse. It shows what is stored and changes nothing itself. Main thread.
#pragma once

#include <QAbstractListModel>
#include <QLineEdit>
#include <QListView>
#include <QSlider>
#include <QTimer>
#include <QWidget>
#include <optional>
#include <unordered_map>

#include "engine/dialog/Dialogs.h"
#include "engine/states/Difference.h"
#include "program/desktop/background/Slices.h"
#include "program/desktop/dialog/StatesDialog.h"
#include "program/desktop/panels/DocumentView.h"
#include "program/desktop/panels/PanelCommands.h"
#include "program/desktop/render/StatePictures.h"

namespace desktop {

// The Stagemarks as a list model, in the order of the dialog's list. It keeps what was read at the
// last Update; records are shared with the document.
class GalleryModel : public QAbstractListModel {
 public:
  enum Role { kDate = Qt::UserRole, kThings, kCurrent };

  GalleryModel(const StatePictures& pictures, QObject* parent)
      : QAbstractListModel(parent), pictures_(pictures) {}

  // Takes over the Stagemarks of `doc`, null: none. What is counted is forgotten.
  void Update(const host::BaseDocument* doc);
  // Shows only those with the text in their names, small and capital letters alike.
  void SetFilter(const QString& text);
  const QString& Filter() const { return filter_; }
  // All of them, also those that are not shown.
  const std::vector<engine::StoredState>& States() const { return states_; }
  // Null for an index of none.
  const engine::StoredState* StateAt(const QModelIndex& index) const;
  QModelIndex IndexOf(const std::string& name) const;
  QModelIndex IndexOf(host::LONG id) const;
  // In how many things it differs from the scene; nothing until it is counted.
  void SetThings(host::LONG id, std::size_t things);
  std::optional<std::size_t> ThingsOf(host::LONG id) const;
  // The picture or its marks have changed; 0: of all.
  void PictureChanged(host::LONG id);

  int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : static_cast<int>(shown_.size());
  }
  QVariant data(const QModelIndex& index, int role) const override;
  const StatePicture& PictureAt(const QModelIndex& index) const;

 private:
  std::vector<std::size_t> Matching() const;
  QString Tip(const engine::StoredState& state) const;

  const StatePictures& pictures_;
  std::vector<engine::StoredState> states_;
  std::vector<std::size_t> shown_;  // indices of states_
  std::unordered_map<host::LONG, std::size_t> things_;
  QString filter_;
};

// The pictures in rows as wide as the panel. Owns its model.
class GalleryGrid : public QListView {
 public:
  static constexpr int kLeastWidth = 110;  // of a picture, in pixels of scale 1
  static constexpr int kMostWidth = 480;
  static constexpr int kFirstWidth = 220;

  GalleryGrid(const StatePictures& pictures, QWidget* parent);

  GalleryModel& Model() { return *model_; }
  int PictureWidth() const { return width_; }
  void SetPictureWidth(int width);
  // In pixels of the screen.
  QSize PictureBox() const;
  // In the order shown.
  std::vector<std::string> Chosen() const;
  // Selects the rows of these names, which is no act of a person.
  void ShowChosen(const std::vector<std::string>& names);
  // IDs of those that can be seen, from the top.
  std::vector<host::LONG> Visible() const;

  // A person has chosen others.
  std::function<void()> chosen;
  // A person turned the wheel with Ctrl; +1 larger, -1 smaller.
  std::function<void(int way)> zoomed;
  // What can be seen has changed.
  std::function<void()> scrolled;

 protected:
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  void wheelEvent(QWheelEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  GalleryModel* model_;
  int width_ = kFirstWidth;
  bool showing_ = true;  // what changes in here is no act of a person
};

// The grid below its search field and buttons.
class GalleryPanel : public QWidget, public DocumentView, private engine::DialogObserver {
 public:
  // What is given outlives the panel.
  GalleryPanel(const engine::Services& services, const StatesDialog& dialog, QWidget* parent);
  ~GalleryPanel() override;

  void Follow(host::BaseDocument* doc) override;
  GalleryGrid& Grid() { return *grid_; }
  StatePictures& Pictures() { return pictures_; }
  QSize sizeHint() const override { return {420, 220}; }
  // Loads the Stagemark of that name.
  std::function<void(const std::string& name)> load;

 private:
  void DialogOpened(host::GeDialog&) override { dialogChanged_ = true; }
  void DialogClosed(host::GeDialog&) override { dialogChanged_ = true; }
  void DialogChanged(host::GeDialog&, const engine::Gadget*) override { dialogChanged_ = true; }

  void BuildBar();
  void BuildActions();
  void Connect();
  void ShowMenu(const QPoint& place);
  void Load();
  void Delete();
  // Switches off what cannot be done now.
  void ShowActions();
  // Takes over what is chosen in the dialog. Nothing chosen there leaves it as it is here.
  void FollowDialog();
  // Counts a few elements of one Stagemark that is not counted yet, the visible ones first; false
  // when none is left.
  bool CountOn();
  // Begins with the next one; false when none is left.
  bool CountNext(const host::BaseDocument& doc);
  void ForgetCounting();

  const StatesDialog& dialog_;
  StatePictures pictures_;
  PanelBar* bar_;
  QLineEdit* search_;
  QSlider* size_;
  GalleryGrid* grid_;
  QAction* load_ = nullptr;
  QAction* delete_ = nullptr;
  host::ULLONG doc_ = 0;
  host::ULLONG seen_ = 0;
  engine::Parts parts_;
  bool dialogChanged_ = true;
  QTimer rest_;             // until a person has rested
  host::LONG counted_ = 0;  // the Stagemark that is being counted
  std::optional<engine::StepwiseComparison> comparison_;
  Slices counting_;
};

}  // namespace desktop
