// PictureWindow: a window with one picture, the buttons that every such window has (fit, 100 %,
// zoom, save as) and room for more, and a line at the bottom with progress and text. It goes when
// it is closed. Main thread.
#pragma once

#include <QAbstractScrollArea>
#include <QHBoxLayout>
#include <QImage>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QWidget>
#include <functional>
#include <memory>
#include <set>

#include "engine/outside/Services.h"
#include "engine/render/Image.h"
#include "program/desktop/OpenDocument.h"

namespace desktop {

// A picture at any size: it fits into the widget or stands at a zoom of its own, where it can be
// dragged about. The wheel zooms at the cursor. At 100 % one pixel of the picture is one of the
// screen.
class PictureView : public QAbstractScrollArea {
 public:
  explicit PictureView(QWidget* parent);

  void Show(const QImage& picture);
  const QImage& Picture() const { return picture_; }
  void Fit();
  bool Fits() const { return fits_; }
  // 1 is 100 %; the middle of what is shown stays.
  void SetZoom(double zoom) { ZoomAt(zoom, QRectF(viewport()->rect()).center()); }
  double Zoom() const;
  // Told when the zoom changes.
  std::function<void()> zoomed;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  // Sides of the whole picture in the widget's units.
  QSizeF ShownSize() const;
  QRectF Place() const;
  void ZoomAt(double zoom, QPointF place);
  void SetRanges();

  QImage picture_;
  bool fits_ = true;
  double zoom_ = 1;
  QPoint draggedTo_;
};

class PictureWindow : public QWidget {
 public:
  // A picture of `doc`, which may be closed meanwhile. Stands in front of `window`, which owns it;
  // the title is `kind` and the document.
  PictureWindow(QWidget* window, const engine::Services& services, const QString& kind,
                const host::BaseDocument& doc);

  PictureView& View() { return *view_; }
  QProgressBar& Progress() { return *progress_; }
  // Sets the text of the line at the bottom.
  void Say(const QString& text);
  // Asks where to and writes the picture; nothing before there is one to keep.
  void SaveAs();
  QString Said() const { return text_->text(); }
  // Lines below the picture for what was left out, one a note. What is wrong with objects is said
  // by the first window of the document only, what else is missing by each.
  void SayNotes(const std::vector<std::string>& notes);
  QString SaidNotes() const { return notes_->text(); }

 protected:
  const engine::Services& GetServices() const { return services_; }
  // The picture that can be saved from now on, null for none.
  void Keep(std::shared_ptr<const engine::Image> picture);
  // Writes it, says how that went, and calls `done`.
  void Write(const std::string& file, std::function<void(bool written)> done = {});
  // The file that saving as proposes, a path or a name.
  void Propose(std::string file) { file_ = std::move(file); }
  const std::string& File() const { return file_; }
  // A button at the right end of the row.
  QPushButton* AddButton(const QString& text, const QString& tip, std::function<void()> work);
  void keyPressEvent(QKeyEvent* event) override;

 private:
  QWidget* MakeButtons();
  QWidget* MakeBottom();
  void ShowZoom();
  bool IsToBeSaid(const std::string& note);

  const engine::Services& services_;
  PictureView* view_;
  QHBoxLayout* buttons_ = nullptr;
  QPushButton* fit_ = nullptr;
  QPushButton* save_ = nullptr;
  QLabel* zoom_;
  QLabel* notes_;
  host::ULLONG doc_;
  std::set<std::string> heard_;  // of the notes
  QStringList told_;
  QProgressBar* progress_;
  QLabel* text_;
  std::string file_;
  std::shared_ptr<const engine::Image> picture_;
};

}  // namespace desktop
