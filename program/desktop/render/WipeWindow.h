// WipeWindow: two Stagemarks of a document, A and B, in one picture: A left of a line that follows
// the pointer, B right of it. It shows what pictures there are at once, and has both rendered at
// its own size beside a person's work. It goes when it is closed. Main thread.
#pragma once

#include <QImage>
#include <QLabel>
#include <QTimer>
#include <QWidget>
#include <array>
#include <memory>

#include "program/desktop/render/StateRenderer.h"

namespace desktop {

struct WipeSide {
  std::string name;
  QImage image;  // null: none yet
};

// The two pictures, at one size, with the line between them.
class WipeView : public QWidget {
 public:
  WipeView(WipeSide a, WipeSide b, QWidget* parent);

  // 0: A, 1: B.
  const WipeSide& Side(std::size_t side) const { return sides_[side]; }
  // Shows the image on the side of that name.
  void Show(const std::string& name, const QImage& image);
  void Swap();
  // The share of the width that A has.
  double Divider() const { return divider_; }
  void SetDivider(double share);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  // Tab swaps: there is nothing else to go to.
  bool focusNextPrevChild(bool next) override;

 private:
  // Where the pictures are, as large as they fit.
  QRect Place() const;
  void PaintName(QPainter& painter, const QRect& place, std::size_t side) const;

  std::array<WipeSide, 2> sides_;
  double divider_ = 0.5;
};

class WipeWindow : public QWidget {
 public:
  // Stands in front of `window`, which owns it.
  WipeWindow(QWidget* window, const host::BaseDocument& doc, WipeSide a, WipeSide b);

  WipeView& View() { return *view_; }
  QString Said() const { return text_->text(); }
  // How many pictures have arrived at the size of the window.
  int Rendered() const { return rendered_; }

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  // Has both rendered at the size that the window has now.
  void Render();
  void Take(const engine::Image& picture);

  host::ULLONG doc_;
  WipeView* view_;
  QLabel* text_;
  std::array<std::string, 2> wanted_;
  int rendered_ = 0;
  std::size_t arrived_ = 0;  // of this size
  QTimer rest_;
  std::unique_ptr<StateRenderer> renderer_;
};

}  // namespace desktop
