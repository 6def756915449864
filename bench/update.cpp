// Cost of bringing a scene up to a newer model: an update that finds nothing new and one in which
// every object has moved, beside a copy of the document, for scenes that are wide, deep or of one
// name only, at two sizes. The ratio must not grow with the size.
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string>

#include "engine/import/ImportedElements.h"
#include "engine/scene/Ownership.h"
#include "engine/update/SceneUpdate.h"

namespace {

using engine::OwnedDocument;
using host::BaseObject;

enum class Shape { Wide, Deep, OneName };

double Now() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

OwnedDocument Model(Shape shape, int objects, double moved) {
  OwnedDocument doc(host::BaseDocument::Alloc());
  BaseObject* last = nullptr;
  for (int i = 0; i < objects; ++i) {
    BaseObject* object = BaseObject::Alloc(host::Onull);
    const std::string name = shape == Shape::OneName ? "Screw" : "Part " + std::to_string(i);
    object->SetName(host::String(std::string_view(name)));
    host::Matrix frame;
    frame.off = host::Vector(i % 1000 + moved, 0, 0);
    object->SetMl(frame);
    doc->AppendObject(object, shape == Shape::Deep ? last : nullptr);
    last = object;
  }
  engine::KeepImportedElements(*doc, engine::DescribeElements(*doc, "model.glb"));
  return doc;
}

double UpdateSeconds(Shape shape, int objects, double moved) {
  double least = 1e9;
  for (int run = 0; run < 3; ++run) {
    const OwnedDocument scene = Model(shape, objects, 0);
    const OwnedDocument fresh = Model(shape, objects, moved);
    const double begin = Now();
    const engine::SceneUpdate update = engine::UpdateScene(*scene, *fresh, {});
    least = std::min(least, Now() - begin);
    if (update.objects.found != static_cast<std::size_t>(objects)) std::puts("not all were found");
  }
  return least;
}

double CopySeconds(Shape shape, int objects) {
  const OwnedDocument scene = Model(shape, objects, 0);
  double least = 1e9;
  for (int run = 0; run < 3; ++run) {
    const double begin = Now();
    const OwnedDocument copy(
        static_cast<host::BaseDocument*>(scene->GetClone(host::COPY_DOCUMENT, nullptr)));
    least = std::min(least, Now() - begin);
  }
  return least;
}

}  // namespace

int main() {
  std::printf("%-9s %8s %10s %12s %12s %10s %10s\n", "scene", "objects", "copy ms", "same ms",
              "moved ms", "same/copy", "moved/copy");
  for (const auto& [name, shape] : {std::pair("wide", Shape::Wide), std::pair("deep", Shape::Deep),
                                    std::pair("one name", Shape::OneName)}) {
    for (const int objects : {25000, 100000}) {
      const double copy = CopySeconds(shape, objects);
      const double same = UpdateSeconds(shape, objects, 0);
      const double moved = UpdateSeconds(shape, objects, 1);
      std::printf("%-9s %8d %10.1f %12.1f %12.1f %10.1f %10.1f\n", name, objects, copy * 1e3,
                  same * 1e3, moved * 1e3, same / copy, moved / copy);
    }
  }
  return 0;
}
