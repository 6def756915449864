// The text of Stagemarks as it is written: every line of a small scene.
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "engine/states/StateText.h"
#include "tests/states/Stage.h"

namespace {

using tests::Stage;

// As it stands in version control; identities and dates are of the day.
TEST(StateTextForm, LooksLikeThis) {
  Stage stage(0, 2);
  stage.Build().Post("Render Settings", host::VPglobalillumination, false);
  stage.Build().Pass("Render Settings", 2001);
  stage.Build().Modes("Object 1", host::MODE_OFF, host::MODE_ON, false);
  host::LayerData hidden;
  hidden.view = false;
  stage.Build().Layer("Hidden", hidden).Cube("Object 0/Bolt").Cube("Object 0/Bolt");
  stage.Build().Texture("Object 0/Bolt", "");
  stage.Switch(engine::Part::CompositingTags, false);
  stage.Build().LookThrough("Wide");
  stage.Record("Day");
  host::BaseObject* gone = stage.Build().GetObject("Near");
  host::BaseObject::Free(gone);
  std::string text;
  engine::WriteStatesAsText(stage.Doc(), engine::ReadStates(stage.Doc()), "room.c4d",
                            [&](std::string_view piece) {
                              text += piece;
                              return true;
                            });
  for (const char* pattern : {R"x("(?:identity|gone)":"(\d+)")x", R"x("date": "([^"]*)")x"}) {
    const std::regex ofTheDay(pattern);
    std::string rest;
    for (std::smatch found; std::regex_search(text, found, ofTheDay); text = found.suffix())
      rest += found.prefix().str() + found.str().substr(0, found.position(1) - found.position()) +
              "?\"";
    text = rest + text;
  }
  std::ranges::replace(text, '"', '\'');  // read more easily
  EXPECT_EQ(
      text,
      "{\n"
      " 'format': 'stagemarks-states',\n"
      " 'version': 1,\n"
      " 'scene': 'room.c4d',\n"
      " 'states': [\n"
      "  {\n"
      "   'name': 'Day',\n"
      "   'id': 0,\n"
      "   'date': '?',\n"
      "   'renderSettings': {\n"
      "    'element': 'Day',\n"
      "    'name': 'Day',\n"
      "    'values': {\n"
      "     'Width': 1280,\n"
      "     'Height': 720,\n"
      "     'Frames': 1,\n"
      "     'From': {'time':[0.0,30.0]},\n"
      "     'To': {'time':[90.0,30.0]},\n"
      "     'Frame rate': 30,\n"
      "     'Save alpha': 0,\n"
      "     'Save multi-pass': 0,\n"
      "     '#5300': 0\n"
      "    },\n"
      "    'effects': [{'type':1021096,'name':'Global Illumination','on':false,'values':{}}],\n"
      "    'passes': [{'type':2001,'name':'','on':true,'values':{}}]\n"
      "   },\n"
      "   'camera': 'Wide',\n"
      "   'layers': [\n"
      "    "
      "{'element':'Front','solo':false,'view':true,'render':true,'manager':true,'locked':false,'"
      "generators':true,'deformers':true,'expressions':true,'animation':true},\n"
      "    "
      "{'element':'Front/"
      "Left','solo':false,'view':true,'render':true,'manager':true,'locked':false,'generators':"
      "true,'deformers':true,'expressions':true,'animation':true},\n"
      "    "
      "{'element':'Back','solo':false,'view':true,'render':true,'manager':true,'locked':false,'"
      "generators':true,'deformers':true,'expressions':true,'animation':true},\n"
      "    "
      "{'element':'Hidden','solo':false,'view':false,'render':true,'manager':true,'locked':false,'"
      "generators':true,'deformers':true,'expressions':true,'animation':true}\n"
      "   ],\n"
      "   'objects': [\n"
      "    {'element':'Object 0','editor':'undefined','render':'undefined','deform':true},\n"
      "    {'element':'Object 0/Bolt','editor':'undefined','render':'undefined','deform':true},\n"
      "    {'element':'Object 0/Bolt "
      "#2','editor':'undefined','render':'undefined','deform':true},\n"
      "    {'element':'Object 1','editor':'off','render':'on','deform':false},\n"
      "    {'element':'Wide','editor':'undefined','render':'undefined','deform':true},\n"
      "    {'element':{'gone':'?'},'editor':'undefined','render':'undefined','deform':true}\n"
      "   ],\n"
      "   'tags': [\n"
      "    {'element':'Object 0/Texture','material':'Red'},\n"
      "    {'element':'Object 0/Unknown','#1':0,'#2':'plain'},\n"
      "    {'element':'Object 0/Bolt/Texture','material':null},\n"
      "    {'element':'Object 1/Texture','material':'Red'},\n"
      "    {'element':'Object 1/Unknown','#1':0,'#2':'plain'}\n"
      "   ]\n"
      "  }\n"
      " ],\n"
      " 'elements': {\n"
      "  'Back': {'name':'Back','kind':'Layer','type':100004801,'identity':'?'},\n"
      "  'Day': {'name':'Day','kind':'Render Settings','type':110050,'identity':'?'},\n"
      "  'Front': {'name':'Front','kind':'Layer','type':100004801,'identity':'?'},\n"
      "  'Front/Left': "
      "{'name':'Left','kind':'Layer','type':100004801,'in':'Front','identity':'?'},\n"
      "  'Hidden': {'name':'Hidden','kind':'Layer','type':100004801,'identity':'?'},\n"
      "  'Object 0': {'name':'Object 0','kind':'Cube','type':5159,'identity':'?'},\n"
      "  'Object 0/Bolt': {'name':'Bolt','kind':'Cube','type':5159,'in':'Object "
      "0','identity':'?'},\n"
      "  'Object 0/Bolt #2': {'name':'Bolt','kind':'Cube','type':5159,'in':'Object "
      "0','position':1,'identity':'?'},\n"
      "  'Object 0/Bolt/Texture': {'name':'Texture','kind':'Texture','type':5616,'in':'Object "
      "0/Bolt','identity':'?'},\n"
      "  'Object 0/Texture': {'name':'Texture','kind':'Texture','type':5616,'in':'Object "
      "0','identity':'?'},\n"
      "  'Object 0/Unknown': {'name':'','kind':'Unknown','type':1011012,'in':'Object "
      "0','identity':'?'},\n"
      "  'Object 1': {'name':'Object 1','kind':'Cube','type':5159,'identity':'?'},\n"
      "  'Object 1/Texture': {'name':'Texture','kind':'Texture','type':5616,'in':'Object "
      "1','identity':'?'},\n"
      "  'Object 1/Unknown': {'name':'','kind':'Unknown','type':1011012,'in':'Object "
      "1','identity':'?'},\n"
      "  'Red': {'name':'Red','kind':'Material','type':5703,'identity':'?'},\n"
      "  'Wide': {'name':'Wide','kind':'Camera','type':5103,'identity':'?'}\n"
      " }\n"
      "}\n");
}

}  // namespace
