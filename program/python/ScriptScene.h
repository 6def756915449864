// ScriptScene: the open scene of a script as the makers of pictures see it. Looking at states is no
// change of the document: it is as saved or unsaved afterwards as before. What is said is kept, for
// the answer and for the exception. The thread of the session, Progress from any.
#pragma once

#include "program/python/Session.h"
#include "program/rendering/StatePictures.h"

namespace scripting {

class ScriptScene : public rendering::PictureScene, public rendering::PictureListener {
 public:
  explicit ScriptScene(DocumentId document);
  ScriptScene(const ScriptScene&) = delete;
  ScriptScene& operator=(const ScriptScene&) = delete;
  ~ScriptScene() override;

  host::BaseDocument& Document() override { return doc_; }
  pictures::StagemarksDialog& Dialog() override { return dialog_; }
  engine::FileSystem& Files() override { return Session::Get().Services().files; }
  rendering::PictureListener& Listener() override { return *this; }
  void DeliverEvents() override { Session::Get().App().DeliverEvents(); }
  int ChooseMarks(const Names& typed, Names& names) override;

  void Say(const std::string&) override {}
  void Note(const std::string& text) override { notes_.push_back(text); }
  void Error(const std::string& text) override { error_ = text; }
  bool Progress(double share, const std::string& what) override {
    return Session::Person().Progress(share, what);
  }
  void Step(std::size_t, std::size_t, const std::string&) override {}
  bool IsStopped() const override { return Session::Person().WasStopped(); }

  // Throws what was said where the work did not end well.
  void Check(int status) const;
  const Names& Notes() const { return notes_; }

 private:
  DocumentId document_;
  host::BaseDocument& doc_;
  pictures::StagemarksDialog dialog_;
  bool wasChanged_;
  Names notes_;
  std::string error_;
};

// Throws where a file is at that absolute path that this maker (publish/FileOrigin.h) may not
// replace without being told.
void CheckPlace(const std::string& path, const std::string& maker, bool overwrite);

}  // namespace scripting
