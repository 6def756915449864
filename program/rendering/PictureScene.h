// PictureScene: the open scene that pictures are made of, with the plug-in's dialog that loads its
// states, and who hears of the work. A program implements both; the work owns neither. Main thread,
// Progress from any.
#pragma once

#include <string>
#include <vector>

#include "engine/outside/FileSystem.h"
#include "program/pictures/StagemarksDialog.h"

namespace rendering {

using pictures::Mark;
using pictures::StagemarksDialog;

// Texts are whole sentences for a person.
class PictureListener {
 public:
  virtual ~PictureListener() = default;
  virtual void Say(const std::string& text) = 0;
  virtual void Note(const std::string& text) = 0;
  virtual void Error(const std::string& text) = 0;
  // Hears the share of the whole work, 0..1, within one picture; false asks the work to stop.
  virtual bool Progress(double share, const std::string& what) = 0;
  // Hears how many pictures are done, after each.
  virtual void Step(std::size_t done, std::size_t count, const std::string& what) = 0;
  virtual bool IsStopped() const = 0;
};

class PictureScene {
 public:
  virtual ~PictureScene() = default;
  virtual host::BaseDocument& Document() = 0;
  virtual StagemarksDialog& Dialog() = 0;
  virtual engine::FileSystem& Files() = 0;
  virtual PictureListener& Listener() = 0;
  // Tells the dialog what was changed.
  virtual void DeliverEvents() = 0;
  // Just before a state is loaded.
  virtual void BeforeLoading() {}
  // Whether textures that are missing were named already.
  virtual bool TexturesChecked() const { return false; }
  // The Stagemarks that are meant by what was typed, all where nothing was; what is unknown is said
  // and answers kUsage.
  virtual int ChooseMarks(const std::vector<std::string>& typed,
                          std::vector<std::string>& names) = 0;
};

}  // namespace rendering
