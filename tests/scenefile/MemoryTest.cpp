// Memory that opening a scene takes off what a file may take: something for each kind of contents,
// and no more than the writer has foreseen, or it would have made a file that nobody can open.
#include <gtest/gtest.h>

#include "engine/scene/ElementState.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/NodeIds.h"
#include "engine/scenefile/SceneFile.h"
#include "engine/scenefile/SceneWriter.h"
#include "engine/scenefile/Trash.h"
#include "tests/scenefile/Scenes.h"

namespace tests {
namespace {

using host::BaseContainer;
using host::BaseDocument;
using host::BaseObject;
using host::LONG;

constexpr LONG kMany = 4000;

BaseObject& Add(BaseDocument& doc, LONG type = host::Onull) {
  BaseObject* object = BaseObject::Alloc(type);
  doc.AppendObject(object);
  return *object;
}

// A long list in the document's data, its entries set by `set`.
template <class Set>
void AddList(BaseDocument& doc, const Set& set) {
  BaseContainer list;
  for (LONG i = 0; i < kMany; ++i) set(list, i);
  doc.GetDataInstance()->SetContainer(doc.GetDataInstance()->GetCount() + 1000, list);
}

void AddMesh(BaseDocument& doc, void (*fill)(engine::Mesh&)) {
  engine::Mesh mesh;
  mesh.points.resize(3);
  mesh.polygons.assign(kMany, {0, 1, 2, -1});
  fill(mesh);
  engine::SetMesh(Add(doc, host::Opolygon), std::make_shared<const engine::Mesh>(mesh));
}

struct Contents {
  const char* name;
  void (*add)(BaseDocument&);
  double kibibytes;  // that opening it takes, about
};

const Contents kKinds[] = {
    {"elements",
     [](BaseDocument& doc) {
       for (LONG i = 0; i < kMany; ++i) Add(doc);
     },
     2016},
    {"names",
     [](BaseDocument& doc) {
       AddList(doc, [](BaseContainer& list, LONG i) { list.SetString(i, host::LongToString(i)); });
     },
     440},
    {"a long text",
     [](BaseDocument& doc) {
       doc.GetDataInstance()->SetString(1,
                                        host::String(std::string_view(std::string(1000000, 'a'))));
     },
     1970},
    {"vectors",
     [](BaseDocument& doc) {
       AddList(doc, [](BaseContainer& list, LONG i) { list.SetVector(i, host::Vector(i)); });
     },
     472},
    {"times",
     [](BaseDocument& doc) {
       AddList(doc, [](BaseContainer& list, LONG i) { list.SetTime(i, host::BaseTime(i, 25)); });
     },
     346},
    {"frames",
     [](BaseDocument& doc) {
       for (LONG i = 0; i < kMany; ++i) {
         host::Matrix frame;
         frame.off = host::Vector(i);
         Add(doc).SetMl(frame);
       }
     },
     2864},
    {"reals",
     [](BaseDocument& doc) {
       AddList(doc, [](BaseContainer& list, LONG i) { list.SetReal(i, i / 7.0); });
     },
     222},
    {"nothing in entries",
     [](BaseDocument& doc) {
       AddList(doc, [](BaseContainer& list, LONG i) { list.SetData(i, host::GeData()); });
     },
     190},
    {"records",
     [](BaseDocument& doc) { doc.GetDataInstance()->SetContainer(1, Records(kMany, 1)); }, 984},
    {"patches",
     [](BaseDocument& doc) {
       for (LONG copy = 0; copy < 20; ++copy) {
         AddList(doc,
                 [copy](BaseContainer& list, LONG i) { list.SetLong(i, i % 100 == copy ? 1 : 2); });
       }
     },
     2080},
    {"polygons", [](BaseDocument& doc) { AddMesh(doc, [](engine::Mesh&) {}); }, 190},
    {"points",
     [](BaseDocument& doc) {
       AddMesh(doc, [](engine::Mesh& mesh) { mesh.points.resize(kMany * 10); });
     },
     1600},
    {"normals",
     [](BaseDocument& doc) {
       AddMesh(doc, [](engine::Mesh& mesh) { mesh.normals.resize(kMany * 4); });
     },
     756},
    {"coordinates",
     [](BaseDocument& doc) {
       AddMesh(doc, [](engine::Mesh& mesh) { mesh.uvs.resize(kMany * 4); });
     },
     568},
    {"colors",
     [](BaseDocument& doc) {
       AddMesh(doc, [](engine::Mesh& mesh) { mesh.colors.resize(kMany * 4); });
     },
     944},
    {"files",
     [](BaseDocument& doc) { engine::AddEmbeddedFile(doc, "a.png", std::string(1000000, 'a')); },
     1968},
};

// Within a hundredth.
std::uint64_t LeastToOpen(const std::string& bytes) {
  std::uint64_t low = 0, high = std::uint64_t{1} << 28;
  while (high - low > high / 100) {
    const std::uint64_t middle = (low + high) / 2;
    (engine::ReadScene(bytes, middle) ? high : low) = middle;
  }
  return high;
}

TEST(SceneMemory, IsTakenForEachKindOfContentsAndForeseen) {
  for (const Contents& kind : kKinds) {
    const Document doc = EmptyScene();
    kind.add(*doc);
    const std::uint64_t least = LeastToOpen(Bytes(*doc));
    EXPECT_NEAR(static_cast<double>(least) / 1024, kind.kibibytes, kind.kibibytes * 0.04)
        << kind.name;
    const engine::ProgressCallback nobody;
    engine::ProgressMeter meter(nobody);
    engine::SceneWriter writer(*doc, meter, "");
    engine::SectionWriter sections(engine::ContentKind::Scene);
    writer.Write(sections);
    const std::uint64_t foreseen = writer.MemoryToRead() + 3 * sections.ContentBytes();
    EXPECT_GE(foreseen, least) << kind.name;
    EXPECT_LT(foreseen, least * 8) << kind.name;
  }
}

// What is only kept, and what a Stagemark in the trash is packed in.
TEST(SceneMemory, IsTakenForWhatIsOnlyKept) {
  const std::string plain = Bytes(*EmptyScene());
  const std::uint64_t least = LeastToOpen(plain);
  std::string mixed;
  for (unsigned i = 0; mixed.size() < 1000000; ++i) mixed += static_cast<char>(i * i * 7919U >> 9U);
  const auto kibibytes = [least](const std::string& bytes) {
    return static_cast<double>(LeastToOpen(bytes) - least) / 1024;
  };
  EXPECT_NEAR(kibibytes(WithSection(plain, "FUTURE", mixed)), 62, 2) << "packed as it is";
  const Document doc = EmptyScene();
  auto packed = std::make_shared<engine::PackedScene>();
  packed->bytes = mixed;
  engine::SetDeletedStates(*doc, std::make_shared<engine::DeletedStates>(
                                     engine::DeletedStates{{"Night", "", "", true, packed}}));
  EXPECT_NEAR(kibibytes(Bytes(*doc)), 1967, 40);
}

}  // namespace
}  // namespace tests
