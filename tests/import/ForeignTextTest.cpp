// Texts as other programs write them: OBJ and COLLADA in UTF-16, names in Latin-1 or missing, and
// numbers behind blanks.
#include "engine/scene/PictureParameters.h"
#include "host/Parameters.h"
#include "tests/import/ImportSession.h"
#include "tests/support/ScratchFolder.h"

namespace tests {
namespace {

class ForeignText : public ImportSession {
 protected:
  void Import(const std::string& name, const std::string& text) {
    WriteText(folder_ / name, text);
    Open(folder_ / name);
  }
  std::string MaterialName() { return Doc().GetFirstMaterial()->GetName().ToUtf8(); }
  ScratchFolder folder_;
};

// Texts of plain letters and the signs of two and four bytes that the tests use.
std::string Utf16(const std::u16string& text, bool isBigEndian) {
  std::string bytes;
  for (const char16_t unit : u"\xFEFF" + text) {
    const char low = static_cast<char>(unit & 0xFF);
    const char high = static_cast<char>(unit >> 8);
    bytes += isBigEndian ? std::string{high, low} : std::string{low, high};
  }
  return bytes;
}

const std::string kObjTriangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl ";

TEST_F(ForeignText, NamesOfObjAreKeptHoweverTheyAreWritten) {
  Import("plain.obj", kObjTriangle + "Caf\xC3\xA9\nf 1 2 3\n");
  EXPECT_EQ(MaterialName(), "Caf\xC3\xA9");
  EXPECT_EQ(Counts().objects, 1U);
  EXPECT_NE(Only("plain"), nullptr) << "an object without a name has the file's";
  Import("latin.obj", kObjTriangle + "Caf\xE9\nf 1 2 3\n");
  EXPECT_EQ(MaterialName(), "Caf\xC3\xA9");
  Import("lowest.obj", kObjTriangle + "a\x80\nf 1 2 3\n");
  EXPECT_EQ(MaterialName(), "a\xC2\x80");
  for (const bool isBigEndian : {false, true}) {
    Import(
        "wide.obj",
        Utf16(
            u"v 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl Caf\u00E9\U0001F600\uE000\xDFFF\xD83Dx\nf 1 2 3\n",
            isBigEndian));
    EXPECT_EQ(MaterialName(), "Caf\xC3\xA9\xF0\x9F\x98\x80\xEE\x80\x80\xEF\xBF\xBD\xEF\xBF\xBDx")
        << isBigEndian;
    EXPECT_EQ(Counts().polygons, 1U);
  }
}

TEST_F(ForeignText, MaterialsThatNothingDescribesAreAsBrightAsNewOnes) {
  for (const bool isWide : {false, true}) {
    WriteText(folder_ / "m.mtl", isWide ? Utf16(u"newmtl there\nKd 0.6 0.6 0.6\n", true)
                                        : "newmtl there\nKd 0.6 0.6 0.6\n");
    Import("m.obj", "mtllib m.mtl\n" + kObjTriangle + "there\nf 1 2 3\nusemtl gone\nf 3 2 1\n");
    EXPECT_NEAR(Material("there")->GetDataInstance()->GetVector(host::MATERIAL_COLOR).x, 0.6, 1e-6);
    EXPECT_EQ(Material("gone")->GetDataInstance()->GetVector(host::MATERIAL_COLOR),
              host::Vector(0.8));
    EXPECT_TRUE(HasNote("Materials that no .mtl file describes are plain gray: 1."));
  }
}

// A picture of opacity that is the picture of the color means the opacity in that.
TEST_F(ForeignText, MaterialsOfObjBringTheirPictures) {
  WriteText(folder_ / "m.mtl",
            "newmtl a\nKd 1 1 1\nmap_Kd a.png\nmap_d d.png\nPr 0.3\nPm 0.8\nmap_Pr r.png\n"
            "map_Pm m.png\nnewmtl b\nKd 1 1 1\nmap_Kd a.png\nmap_d a.png\n");
  Import("m.obj", "mtllib m.mtl\n" + kObjTriangle + "a\nf 1 2 3\nusemtl b\nf 3 2 1\n");
  const host::BaseMaterial& a = *Material("a");
  EXPECT_EQ(ShaderFile(a, host::MATERIAL_COLOR_SHADER), "a.png");
  EXPECT_EQ(ShaderFile(a, engine::kMaterialOpacityShader), "d.png");
  EXPECT_EQ(ShaderFile(a, engine::kMaterialRoughnessShader), "r.png");
  EXPECT_EQ(ShaderFile(a, engine::kMaterialMetallicShader), "m.png");
  EXPECT_EQ(ShaderFile(*Material("b"), engine::kMaterialOpacityShader), "");
  for (const char* name : {"a", "b"})
    EXPECT_EQ(Material(name)->GetDataInstance()->GetLong(host::MATERIAL_ALPHA_MODE), 2) << name;
}

const std::u16string kCollada =
    u"<?xml version=\"1.0\"?><COLLADA "
    u"xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" version=\"1.4.1\"><asset>"
    u"<unit meter=\"0.01\"/><up_axis> Y_UP</up_axis></asset><library_lights>"
    u"<light id=\"l\" name=\"l\"><technique_common><point><color>\n\t 1 0.5 0.25</color></point>"
    u"</technique_common></light></library_lights><library_cameras><camera id=\"c\"><optics>"
    u"<technique_common><orthographic><xmag> 2</xmag></orthographic></technique_common></optics>"
    u"</camera></library_cameras>"
    u"<library_visual_scenes><visual_scene id=\"s\"><node id=\"The id\">"
    u"<translate sid=\"t\">  1 2 3"
    u"</translate><scale>0 3 1</scale><instance_light url=\"#l\"/></node><node id=\"b\" name=\"a>  "
    u"b\"><instance_camera url=\"#c\"/></node>"
    u"</visual_scene></library_visual_scenes><scene><instance_visual_scene url=\"#s\"/></scene>"
    u"</COLLADA>";

TEST_F(ForeignText, NumbersOfColladaMayStandBehindBlanks) {
  for (const bool isWide : {false, true}) {
    Import("s.dae",
           isWide ? Utf16(kCollada, false) : std::string(kCollada.begin(), kCollada.end()));
    const host::BaseObject* light = Only("The id");
    ASSERT_NE(light, nullptr) << "a node without a name has its id";
    EXPECT_NEAR(light->GetMg().off.y, 2, 1e-5);
    EXPECT_EQ(light->GetMl().v1, host::Vector(0)) << "an axis without a length has none";
    EXPECT_NEAR(light->GetMl().v2.y, 1, 1e-6);
    EXPECT_NEAR(light->GetDataInstance()->GetVector(host::LIGHT_COLOR).z, 0.25, 1e-6);
    const host::BaseObject* camera = Only("a>  b");
    ASSERT_NE(camera, nullptr);
    EXPECT_NEAR(camera->GetDataInstance()->GetReal(host::CAMERA_WIDTH), 4, 1e-6);
  }
}

TEST_F(ForeignText, LightsOfColladaAreShownInPlainNumbers) {
  struct Case {
    std::string color;
    double brightness;
  };
  const std::string text(kCollada.begin(), kCollada.end());
  const std::string color = "1 0.5 0.25";
  for (const Case& light : std::vector<Case>{
           {"1 0.5 0.25", 1}, {"0.08 0.04 0.02", 0.08}, {"3 1.5 0.75", 3}, {"800 400 200", 1}}) {
    Import("s.dae", std::string(text).replace(text.find(color), color.size(), light.color));
    const host::BaseContainer& data = *Only("The id")->GetDataInstance();
    EXPECT_NEAR(data.GetReal(host::LIGHT_BRIGHTNESS), light.brightness, 1e-6) << light.color;
    EXPECT_NEAR(data.GetVector(host::LIGHT_COLOR).z, 0.25, 1e-6) << light.color;
  }
}

}  // namespace
}  // namespace tests
