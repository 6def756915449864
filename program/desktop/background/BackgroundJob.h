// BackgroundJob: one piece of work at a time on a worker thread, on what nobody else changes: a
// copy, a picture. It can be told to stop. An exception ends it with a problem for a person.
// Destroying it stops the work and waits for that. Called from the main thread.
#pragma once

#include <QFutureWatcher>
#include <QPromise>
#include <functional>
#include <string>

namespace desktop {

class BackgroundJob : public QObject {
 public:
  // The job as the work sees it, on the work's thread.
  class Control {
   public:
    // Whether the work is to end soon.
    bool IsStopped() const { return promise_.isCanceled(); }
    // Has `act` called on the main thread, in the order of asking and before the job has ended;
    // not any more once the job is destroyed.
    void OnMainThread(std::function<void()> act) const;

   private:
    friend class BackgroundJob;
    Control(BackgroundJob& job, const QPromise<void>& promise) : job_(job), promise_(promise) {}
    BackgroundJob& job_;
    const QPromise<void>& promise_;
  };
  using Work = std::function<void(const Control&)>;

  // `name`: of the work, as in "There is not enough memory for NAME."
  explicit BackgroundJob(std::string name);
  ~BackgroundJob() override;

  // Only while none is running. What the work holds goes on its thread. `ended` is called on the
  // main thread, with what went wrong or nothing.
  void Start(Work work, std::function<void(const std::string& problem)> ended);
  // The work ends soon; `ended` is called as ever.
  void Stop();
  // Waits for the work; `ended` has been called when this returns.
  void Finish();
  // Until `ended` is called.
  bool IsRunning() const { return ended_ != nullptr; }

 private:
  void End();

  std::string name_;
  std::string problem_;  // the work's while it runs
  std::function<void(const std::string&)> ended_;
  QFutureWatcher<void> watcher_;
};

}  // namespace desktop
