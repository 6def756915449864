// FarmWindow: pictures of Stagemarks on a farm of machines, by Slurm: handed over from the saved
// scene, then watched for as long as the window is open. The job goes on without it. All of it is
// done by the command line's `farm`, run beside a person's work; what it prints for programs is
// shown. Main thread.
#pragma once

#include <QDialog>
#include <QFormLayout>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QSpinBox>
#include <QTimer>
#include <QTreeWidget>

#include "engine/outside/Services.h"
#include "program/rendering/PicturePlan.h"

namespace desktop {

class MainWindow;

// Whether jobs can be handed to Slurm from this machine.
bool IsFarmThere();

class FarmWindow : public QDialog {
 public:
  // `scene`: absolute, the saved file; `program`: of the command line, absolute; `plan`: what is
  // known of these pictures already, a sentence. Stands in front of `window`, which owns it.
  FarmWindow(QWidget* window, const engine::Services& services, const std::string& scene,
             rendering::PictureOrder order, std::string program, const QString& plan = {});
  ~FarmWindow() override;

  void Submit();
  // Shows the job that was handed to this farm last.
  void ShowLatest();
  void Retry();
  void Cancel();
  // Makes sheet and report of what is there and opens it.
  void Collect();
  bool IsIdle() const { return call_.state() == QProcess::NotRunning; }
  QString Said() const { return said_->text(); }
  // The job that is shown, by its name; empty for none.
  const QString& Job() const { return job_; }
  // Whether it is going to look after the job again; it is not when nothing more will come of it.
  bool IsWatching() const { return next_.isActive(); }

 protected:
  // Looks after a job that is not watched any more when a person comes back to the window.
  void changeEvent(QEvent* event) override;

 private:
  using Answer = std::function<void(const QJsonObject&)>;

  void AddFields();
  void AddTable();
  void AddBottom(const QString& plan);
  void AddButtons();
  void Enable();
  // Runs `stagemarks farm` with these words; one call at a time, a status is dropped for another.
  void Call(const QStringList& words, const QString& doing, Answer answer);
  void TakeAnswer(int status);
  void TakeProblem(const QString& problem);
  QStringList OnJob(const QString& action) const;
  void Watch();
  void AskStatus();
  void TakeStatus(const QJsonObject& status);
  void FillTable(const QJsonObject& status);
  void Open(const QString& path);
  // The first picture of the state in this row that is done.
  void OpenPictureOf(int row);

  const engine::Services& services_;
  std::string scene_;
  rendering::PictureOrder order_;
  std::string program_;
  QString job_;
  QJsonObject status_;
  QString doing_;    // empty: it looks after the job
  QString problem_;  // of the last command that was no look
  Answer answer_;
  QWidget* choices_;
  QFormLayout* form_;
  QLabel* heading_ = nullptr;
  QLineEdit* farm_ = nullptr;
  QLineEdit* partition_ = nullptr;
  QSpinBox* chunk_ = nullptr;
  QTreeWidget* table_ = nullptr;
  QProgressBar* progress_ = nullptr;
  QLabel* said_ = nullptr;
  QPushButton* submit_ = nullptr;
  QPushButton* latest_ = nullptr;
  QPushButton* retry_ = nullptr;
  QPushButton* cancel_ = nullptr;
  QPushButton* collect_ = nullptr;
  QPushButton* openFolder_ = nullptr;
  QTimer next_;
  QProcess call_;
};

// Asks to save the scene where need be, then opens the window for these pictures of it.
void AskForFarm(MainWindow& window, host::BaseDocument& doc, const rendering::PictureOrder& order,
                const QString& plan);

}  // namespace desktop
