// CameraNotice: the notice in the corner of the picture: through which camera one looks, and which
// one recordings hold where that is another, with buttons for what one wants then. It belongs to
// the widget that it lies on. Main thread.
#pragma once

#include <QAction>
#include <QLabel>
#include <QToolButton>

namespace desktop {

class CameraNotice : public QWidget {
 public:
  struct State {
    QString seen;      // empty: nothing is shown
    QString recorded;  // empty: what is seen
    bool throughCamera = false;

    bool operator==(const State&) const = default;
  };

  explicit CameraNotice(QWidget* parent);

  // The actions that its buttons trigger; they outlive it.
  void SetActions(QAction& fly, QAction& makeSceneCamera, QAction& newCamera);
  void Show(const State& state);
  // Keeps to the top left corner of a picture of that size.
  void FitInto(QSize size);
  // The two lines as they are shown, the second one empty where there is none.
  const State& Shown() const { return state_; }
  QToolButton& Fly() { return *fly_; }
  QToolButton& MakeSceneCamera() { return *makeSceneCamera_; }
  QToolButton& NewCamera() { return *newCamera_; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  // A button that gives the keyboard focus back to the picture.
  QToolButton* AddButton();
  // Shows lines and buttons for the state, cut to the width of the picture.
  void Arrange();

  State state_;
  // Size of the picture, in pixels.
  QSize room_;
  QLabel* seen_;
  QLabel* recorded_;
  QToolButton* fly_;
  QToolButton* makeSceneCamera_;
  QToolButton* newCamera_;
};

}  // namespace desktop
