// MaterialThumbnails: a lit ball for each material that is looked at, made one after the other on
// another thread and made anew when the material, one of its shaders or, as it is told, a file
// has changed. Main thread.
#pragma once

#include <QPixmap>
#include <QPointer>
#include <map>

#include "engine/outside/Services.h"
#include "engine/render/Renderer.h"
#include "host/BaseMaterial.h"
#include "program/desktop/OpenDocument.h"
#include "program/desktop/background/BackgroundJob.h"

namespace desktop {

class MaterialThumbnails {
 public:
  static constexpr int kSide = 64;  // of the pictures, in pixels of scale 1

  // Both arguments outlive the thumbnails.
  MaterialThumbnails(const engine::Services& services, engine::RenderCaches& caches);

  // The present thumbnail, maybe of a former state, maybe null; a new one is made when it is
  // needed. Cheap: called while painting.
  QPixmap Of(host::BaseMaterial& material, double scale);
  // Makes those that are looked at anew, since files that they use have changed.
  void MakeAgain();
  // `ready` is called when there is or should be a new picture of that material, as long as
  // `listener` lives.
  void Listen(QObject* listener, std::function<void(engine::NodeId)> ready);
  // How many pictures were made.
  std::size_t Made() const { return made_; }

 private:
  struct Thumbnail {
    QPixmap picture;
    double scale = 0;
    // Copies of the parameters that it was asked for with: a change gives the material another
    // body.
    std::vector<host::BaseContainer> parameters;
  };
  // Document and material: the same file opened twice has the same materials.
  using Key = std::pair<host::ULLONG, engine::NodeId>;

  void MakeNext();
  void Begin(Key key, const host::BaseDocument& doc, host::BaseMaterial& material);
  void Take(const QImage& image);
  void Tell(engine::NodeId material) const;

  engine::FileSystem& files_;
  engine::Person& person_;
  engine::RenderCaches& caches_;
  std::vector<std::pair<QPointer<QObject>, std::function<void(engine::NodeId)>>> listeners_;
  std::map<Key, Thumbnail> thumbnails_;
  std::vector<Key> wanted_;  // the last one is the next
  Key making_{0, 0};
  std::size_t made_ = 0;
  BackgroundJob job_;  // last: it ends before what it tells of
};

}  // namespace desktop
