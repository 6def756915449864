// GalleryGrid: the Stagemarks of a document as large pictures: the item model over what is stored,
// and the view. They show and select; what is done to the chosen ones is the panel's. Main thread.
#pragma once

#include <QAbstractListModel>
#include <QListView>
#include <optional>
#include <unordered_map>

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
  // Number of differences of a state from the scene; nothing until they are counted.
  void SetThings(host::LONG id, std::size_t things);
  std::optional<std::size_t> ThingsOf(host::LONG id) const;
  // The picture or its marks have changed; kNoState: of all.
  void PictureChanged(host::LONG id);

  int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : static_cast<int>(shown_.size());
  }
  QVariant data(const QModelIndex& index, int role) const override;
  const StatePicture& PictureAt(const QModelIndex& index) const;
  // The share of it that is rendered, nothing while it is not being rendered.
  std::optional<double> ProgressAt(const QModelIndex& index) const;

 private:
  std::vector<std::size_t> Matching() const;
  QString NotesOf(const engine::StoredState& state) const;
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
  // Called when other entries may have come into sight: scrolled, zoomed or resized.
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

}  // namespace desktop
