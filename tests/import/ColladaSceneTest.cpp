// COLLADA files that the test writes itself: what the importing library leaves to us.
#include "host/Parameters.h"
#include "tests/import/ImportSession.h"
#include "tests/support/ScratchFolder.h"

namespace tests {
namespace {

constexpr const char* kColladaHead =
    "<?xml version=\"1.0\"?><COLLADA xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" "
    "version=\"1.4.1\"><asset><unit meter=\"0.01\"/><up_axis>Y_UP</up_axis></asset>";
constexpr const char* kColladaFoot =
    "</visual_scene></library_visual_scenes><scene><instance_visual_scene "
    "url=\"#s\"/></scene></COLLADA>";
constexpr const char* kColladaScene = "<library_visual_scenes><visual_scene id=\"s\" name=\"s\">";

std::string NumberSource(const std::string& id, const std::string& numbers, int count, int stride,
                         const std::string& params) {
  return "<source id=\"" + id + "\"><float_array id=\"" + id + "-a\" count=\"" +
         std::to_string(count * stride) + "\">" + numbers +
         "</float_array><technique_common><accessor source=\"#" + id + "-a\" count=\"" +
         std::to_string(count) + "\" stride=\"" + std::to_string(stride) + "\">" + params +
         "</accessor></technique_common></source>";
}

// A triangle, and a skin that gives its last point to the second of two joints.
std::string SkinnedTriangle() {
  const std::string xyz =
      "<param name=\"X\" type=\"float\"/><param name=\"Y\" type=\"float\"/>"
      "<param name=\"Z\" type=\"float\"/>";
  const std::string unit = "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1 ";
  return "<library_geometries><geometry id=\"g\" name=\"g\"><mesh>" +
         NumberSource("p", "0 0 0 1 0 0 0 1 0", 3, 3, xyz) +
         "<vertices id=\"v\"><input semantic=\"POSITION\" source=\"#p\"/></vertices>"
         "<triangles count=\"1\"><input semantic=\"VERTEX\" source=\"#v\" offset=\"0\"/>"
         "<p>0 1 2</p></triangles></mesh></geometry></library_geometries>"
         "<library_controllers><controller id=\"c\"><skin source=\"#g\">"
         "<bind_shape_matrix>" +
         unit +
         "</bind_shape_matrix>"
         "<source id=\"j\"><Name_array id=\"j-a\" count=\"2\">one two</Name_array>"
         "<technique_common><accessor source=\"#j-a\" count=\"2\" stride=\"1\">"
         "<param name=\"JOINT\" type=\"name\"/></accessor></technique_common></source>" +
         NumberSource("b", unit + unit, 2, 16, "<param name=\"TRANSFORM\" type=\"float4x4\"/>") +
         NumberSource("w", "1", 1, 1, "<param name=\"WEIGHT\" type=\"float\"/>") +
         "<joints><input semantic=\"JOINT\" source=\"#j\"/>"
         "<input semantic=\"INV_BIND_MATRIX\" source=\"#b\"/></joints>"
         "<vertex_weights count=\"3\"><input semantic=\"JOINT\" source=\"#j\" offset=\"0\"/>"
         "<input semantic=\"WEIGHT\" source=\"#w\" offset=\"1\"/>"
         "<vcount>1 1 1</vcount><v>0 0 0 0 1 0</v></vertex_weights></skin></controller>"
         "</library_controllers>";
}

class ColladaScene : public ImportSession {
 protected:
  void Import(const std::string& text) {
    WriteText(folder_ / "s.dae", text);
    Open(folder_ / "s.dae");
  }
  ScratchFolder folder_;
};

TEST_F(ColladaScene, SkinsAreWhereTheirJointsAre) {
  Import(kColladaHead + SkinnedTriangle() + kColladaScene +
         "<node id=\"one\" sid=\"one\" name=\"one\" type=\"JOINT\"/>"
         "<node id=\"two\" sid=\"two\" name=\"two\" type=\"JOINT\">"
         "<translate>0 5 0</translate></node>"
         "<node id=\"m\" name=\"m\"><translate>10 0 0</translate><instance_controller url=\"#c\">"
         "<skeleton>#one</skeleton></instance_controller></node>" +
         kColladaFoot);
  const Box box = WorldBox();
  EXPECT_NEAR(box.low[0], 0, 1e-4) << "a skin leaves its node's own place out";
  EXPECT_NEAR(box.high[0], 1, 1e-4);
  EXPECT_NEAR(box.low[1], 0, 1e-4);
  EXPECT_NEAR(box.high[1], 6, 1e-4) << "the last point goes with the second joint";
}

TEST_F(ColladaScene, CamerasWithoutANameHaveTheirLens) {
  const std::string lens =
      "<optics><technique_common><perspective><xfov>60</xfov><znear>2</znear><zfar>50</zfar>"
      "</perspective></technique_common></optics></camera>";
  for (const char* tag :
       {"<camera id=\"c\">", "<camera id='c' >", "<camera id=\"c\" name=\"n\">"}) {
    Import(std::string(kColladaHead) + "<library_cameras>" + tag + lens + "</library_cameras>" +
           kColladaScene + "<node id=\"n\" name=\"n\"><instance_camera url=\"#c\"/></node>" +
           kColladaFoot);
    ASSERT_EQ(OfType(host::Ocamera).size(), 1U) << tag;
    const host::BaseContainer& data = *OfType(host::Ocamera)[0]->GetDataInstance();
    EXPECT_NEAR(data.GetReal(host::CAMERA_FOV), 1.0472, 1e-3) << tag;
    EXPECT_NEAR(data.GetReal(host::CAMERA_FAR), 50, 1e-3) << tag;
  }
}

TEST_F(ColladaScene, CamerasThatAreNotToldApartAreNoted) {
  for (const bool isTwice : {false, true}) {
    Import(std::string(kColladaHead) +
           "<library_cameras><camera id=\"c\" name=\"n\"><optics><technique_common><orthographic>"
           "<xmag>2</xmag></orthographic></technique_common></optics></camera></library_cameras>" +
           (isTwice ? "<library_nodes><node><instance_camera url=\"#c\"/></node></library_nodes>"
                    : "") +
           kColladaScene + "<node id=\"n\" name=\"n\"><instance_camera url=\"#c\"/></node>" +
           kColladaFoot);
    const host::BaseContainer& data = *OfType(host::Ocamera).at(0)->GetDataInstance();
    EXPECT_EQ(data.GetLong(host::CAMERA_PROJECTION), isTwice ? 0 : 1);
    EXPECT_EQ(HasNote("Parallel cameras may have become perspective ones"), isTwice);
  }
}

}  // namespace
}  // namespace tests
