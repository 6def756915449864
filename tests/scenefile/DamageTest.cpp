// Files that are cut, damaged, foreign, from the future or hostile: a message, no document, no
// crash.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/SceneDump.h"
#include "engine/scenefile/Bytes.h"
#include "engine/scenefile/Columns.h"
#include "engine/scenefile/Elements.h"
#include "engine/scenefile/SceneFile.h"
#include "engine/scenefile/Sections.h"
#include "engine/scenefile/Trash.h"
#include "engine/scenefile/ValueSections.h"
#include "host/RenderData.h"
#include "tests/scenefile/Scenes.h"

namespace tests {
namespace {

using namespace engine;
using host::BaseContainer;
using host::LONG;

TEST(SceneFileDamage, ACutFileIsRefusedAtEveryByte) {
  const std::string bytes = Bytes(*EverythingScene());
  for (std::size_t length = 1; length < bytes.size(); ++length) {
    const std::string message = Refusal(bytes.substr(0, length));
    ASSERT_EQ(message.rfind("The file is cut off", 0), 0u) << length << ": " << message;
  }
}

TEST(SceneFileDamage, ACutFileSaysHowMuchIsMissing) {
  const std::string bytes = Bytes(*EverythingScene());
  const std::vector<Section> sections = ReadSections(bytes, ContentKind::Scene);
  const Section& objects = *FindSection(sections, "OBJECTS");
  EXPECT_EQ(Refusal(bytes.substr(0, objects.offset + 32)),
            "The file is cut off: section OBJECTS needs " + Grouped(objects.payload.size()) +
                " bytes more.");
  // The first section begins at byte 12 and is one of texts.
  const std::pair<std::size_t, const char*> kRows[] = {
      {1, "it ends within its first 12 bytes."},
      {11, "it ends within its first 12 bytes."},
      {12, "The file is cut off at byte 12: its end section is missing."},
      {15, "the head of the section at byte 12 needs 29 bytes more."},
      {20, "section TEXTS needs 24 bytes more."},
      {43, "section TEXTS needs 1 bytes more."}};
  for (const auto& [length, what] : kRows)
    EXPECT_TRUE(Refusal(bytes.substr(0, length)).ends_with(what)) << length;
  EXPECT_EQ(Grouped(123), "123");
  EXPECT_EQ(Grouped(1204), "1,204");
  EXPECT_EQ(Grouped(12), "12");
  EXPECT_EQ(Grouped(1234567), "1,234,567");
}

TEST(SceneFileDamage, EveryChangedBitIsFound) {
  std::string bytes = Bytes(*EverythingScene());
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    for (const char flip : {'\x01', '\x80', '\x24', '\xFF'}) {
      bytes[at] = static_cast<char>(bytes[at] ^ flip);
      ASSERT_NE(Refusal(bytes), "opened") << at;
      bytes[at] = static_cast<char>(bytes[at] ^ flip);
    }
  }
}

// Behind a right checksum: whatever a section holds, the reader keeps to its rules.
TEST(SceneFileDamage, ChangedContentsBehindARightChecksumDoNoHarm) {
  const std::string bytes = Bytes(*EverythingScene());
  for (const Section& section : ReadSections(bytes, ContentKind::Scene)) {
    const std::string contents = ContentsOf(bytes, section.name);
    for (std::size_t at = 0; at < contents.size(); ++at) {
      std::string changed = contents;
      changed[at] = static_cast<char>(changed[at] ^ (1 << (at % 8)));
      const auto doc = engine::ReadScene(WithSection(bytes, section.name, changed), 1 << 28);
      if (doc) engine::DumpDocument(*doc.Value());
      // Sections that are read only on demand report the damage then.
      if (doc && section.name == "TRASH") {
        for (const engine::DeletedState& state : engine::DeletedStatesOf(*doc.Value())) {
          const auto unpacked = engine::Unpack(*state.packed);
          if (unpacked) engine::PartsOfScene(*unpacked.Value());
        }
      }
      EXPECT_FALSE(engine::ReadScene(WithSection(bytes, section.name, contents.substr(0, at))).Ok())
          << section.name << at;
    }
  }
}

TEST(SceneFileDamage, NothingMayFollowTheEndOfASection) {
  const std::string bytes = Bytes(*EverythingScene());
  for (const Section& section : ReadSections(bytes, ContentKind::Scene)) {
    const std::string longer = ContentsOf(bytes, section.name) + '\0';
    EXPECT_NE(Refusal(WithSection(bytes, section.name, longer)).find("1 bytes are left over"),
              std::string::npos)
        << section.name;
  }
}

TEST(SceneFileDamage, ForeignFilesAreNamedAsSuch) {
  for (const std::string& foreign :
       {std::string(), std::string("solid cube\n facet normal 0 0 1\n"),
        std::string("\x89PNG\r\n\x1A\n...."), std::string(5000, '\0'),
        std::string("\x8ASMS\n\x1A\n")})
    EXPECT_EQ(Refusal(foreign), "This is no scene file.");
}

TEST(SceneFileDamage, AFileFromTheFutureSaysWhatToDo) {
  std::string bytes = Bytes(*EmptyScene());
  bytes[8] = 7;
  EXPECT_EQ(Refusal(bytes),
            "The file is of version 7, and this program reads versions up to 1. Open it with a "
            "newer program.");
  bytes[8] = 0;
  EXPECT_EQ(Refusal(bytes), "The file is damaged: it names version 0, which never was.");
}

TEST(SceneFileDamage, NamesOfSectionsAreOfLettersAndDigits) {
  const std::string bytes = Bytes(*EmptyScene());
  for (const char* name : {"A0", "Z9", "A/", "A:", "A@", "A[", "a", " "}) {
    const std::string refusal = Refusal(WithSection(bytes, name, "contents"));
    const bool opens = name == std::string("A0") || name == std::string("Z9");
    EXPECT_EQ(refusal == "opened", opens) << name;
    EXPECT_EQ(refusal.ends_with(": no section begins there."), !opens) << refusal;
  }
}

// Contents that are as long packed as they are plain, too.
TEST(SceneFileDamage, ContentsOfAnyLengthComeBack) {
  std::size_t plain = 0;
  for (unsigned mixed = 0; mixed < 30; ++mixed) {
    for (unsigned alike = 0; alike < 30; ++alike) {
      std::string contents(alike, 'a');
      for (unsigned i = 0; i < mixed; ++i) contents += static_cast<char>(i * i * 77 + mixed);
      SectionWriter out(ContentKind::Scene);
      out.Add("ANY", contents);
      const std::string file = Joined(out.Finish());
      const std::vector<Section> sections = ReadSections(file, ContentKind::Scene);
      Budget budget(1 << 20);
      ASSERT_EQ(Expand(sections.at(0), budget), contents) << mixed << " " << alike;
      plain += sections[0].payload.size() == contents.size();
    }
  }
  EXPECT_GT(plain, 100U);
  EXPECT_LT(plain, 800U);
}

TEST(SceneFileDamage, MissingAndDoubledSectionsAreNamed) {
  const std::string bytes = Bytes(*EverythingScene());
  const std::vector<Section> sections = ReadSections(bytes, ContentKind::Scene);
  for (const Section& left : sections) {
    // Left out where there are none.
    constexpr std::string_view kLeftOut[] = {"FILES", "COLORS", "TRASH", "NAMES"};
    if (std::ranges::find(kLeftOut, left.name) != std::end(kLeftOut)) continue;
    SectionWriter out(ContentKind::Scene);
    for (const Section& section : sections)
      if (section.name != left.name)
        out.AddAsItIs(section.name, section.rawLength, section.payload);
    const std::string file = Joined(out.Finish());
    EXPECT_EQ(Refusal(file), "The file is damaged: its section " + left.name + " is missing.");
  }
  SectionWriter twice(ContentKind::Scene);
  twice.Add("TEXTS", "");
  twice.Add("TEXTS", "");
  const std::string file = Joined(twice.Finish());
  EXPECT_EQ(Refusal(file), "The file is damaged in section TEXTS (from byte 44): it occurs twice.");
}

struct HostileContents {
  const char* name;
  const char* section;
  std::string contents;
  std::string message;
};

std::string Repeated(std::size_t count, char byte) { return std::string(count, byte); }

TEST(SceneFileDamage, HostileContentsAreNamedByTheirPlace) {
  const std::string bytes = Bytes(*EmptyScene());
  const std::string damaged = "The file is damaged in section ";
  const std::string noneOrMore = "a block holds none or more containers than announced.";
  const HostileContents cases[] = {
      {"a count beyond the bytes", "OBJECTS", "\xFF\xFF\xFF\xFF\x0F",
       damaged + "OBJECTS at byte 5 of its contents: it names 4,294,967,295 rows, more than its "
                 "bytes can hold."},
      {"a number without end", "TEXTS", Repeated(20, '\xFF'),
       damaged + "TEXTS at byte 10 of its contents: a number is longer than 64 bits."},
      {"bytes left over", "TEXTS", Repeated(3, '\0'),
       damaged + "TEXTS at byte 1 of its contents: 2 bytes are left over."},
      {"a number too long by a bit", "TEXTS", Repeated(9, '\xFF') + "\x02",
       damaged + "TEXTS at byte 10 of its contents: a number is longer than 64 bits."},
      {"a text of more than 2 GB", "TEXTS", std::string("\x01\x00\x80\x80\x80\x80\x10", 7),
       damaged + "TEXTS at byte 7 of its contents: a text is longer than 2 GB."},
      {"a text of 2 GB", "TEXTS", std::string("\x01\x00\xFE\xFF\xFF\xFF\x0F", 7),
       damaged + "TEXTS at byte 7 of its contents: 2,147,483,647 bytes more are needed."},
      {"a block of none", "VALUES", std::string("\x01\x01\x00\x00", 4),
       damaged + "VALUES at byte 4 of its contents: " + noneOrMore},
      {"more than announced", "VALUES", std::string("\x01\x01\x02\x00\x80\x00", 6),
       damaged + "VALUES at byte 4 of its contents: " + noneOrMore},
      {"more keys than a record has", "VALUES", "\x01\x01\x01\x41",
       damaged + "VALUES at byte 4 of its contents: the number of keys is out of range."},
      {"no block", "VALUES", "\x01\x04",
       damaged + "VALUES at byte 2 of its contents: no block begins there."},
      {"a run beyond its column", "VALUES", std::string("\x01\x01\x01\x00\x80\x00", 6),
       damaged + "VALUES at byte 5 of its contents: a run goes beyond its column."},
      {"a patch of what comes later", "VALUES", "\x01\x03\x01",
       damaged + "VALUES at byte 3 of its contents: the base of a patch is out of range."},
      {"an own ID of 33 bits", "VALUES",
       std::string("\x01\x01\x01\x00\x00\x80\x80\x80\x80\x10", 10),
       damaged + "VALUES at byte 10 of its contents: an own ID is no 32-bit number."},
      {"a list's own ID of 33 bits", "VALUES", std::string("\x01\x02\x00\x80\x80\x80\x80\x10", 8),
       damaged + "VALUES at byte 8 of its contents: an own ID is no 32-bit number."},
      {"a key of 33 bits", "VALUES", std::string("\x01\x01\x01\x01\x00\x80\x80\x80\x80\x10", 10),
       damaged + "VALUES at byte 10 of its contents: a key is no 32-bit number."},
      {"a patch that goes back", "VALUES",
       // A list of two entries without a value, then a patch of it.
       std::string("\x02\x02\x02\x00\x01\x02\x02\x80\x00\x03\x01\x00\x02\x00\x01\x02\x00", 17),
       damaged + "VALUES at byte 17 of its contents: positions of a patch do not rise."},
      {"a container in itself", "VALUES",
       std::string("\x01\x01\x01\x01\x00\x02\x00\x88\x02\x00\x00\x00\x02", 13),
       damaged + "VALUES at byte 13 of its contents: a container is out of range."},
      {"a value of no type", "VALUES", std::string("\x01\x01\x01\x01\x00\x02\x00\x02", 8),
       damaged + "VALUES at byte 8 of its contents: there is no type of value 1."},
      {"a key twice", "VALUES", std::string("\x01\x01\x01\x02\x01\x02\x00\x80\x00\x00\x00", 11),
       damaged + "VALUES at byte 11 of its contents: a container has a key twice."},
      {"more colors than bytes", "COLORS", std::string("\x01sum of 8\x00\xFF\xFF\xFF\x7F", 14),
       damaged + "COLORS at byte 14 of its contents: it names 268,435,455 rows, more than its "
                 "bytes can hold."},
      {"colors twice", "COLORS", std::string("\x02sum of 8\x00\x00sum of 8\x00\x00", 21),
       damaged + "COLORS at byte 21 of its contents: a mesh has colors twice."},
      {"more points than bytes", "MESHES", std::string("\x01\xFF\xFF\xFF\xFF\x7F\x00\x00\x00", 9),
       damaged + "MESHES at byte 9 of its contents: it names 34,359,738,367 rows, more than its "
                 "bytes can hold."},
      {"a switch that is neither", "MESHES", std::string("\x01\x00\x00\x00\x02", 5),
       damaged + "MESHES at byte 5 of its contents: a switch is out of range."},
      {"more deleted Stagemarks than bytes", "TRASH", "\xFF\xFF\x03",
       damaged + "TRASH at byte 3 of its contents: it is too short for what it counts."},
      {"a Stagemark deleted for no reason", "TRASH", std::string("\x01\x01N\x00\x00\x07\x01x", 8),
       damaged + "TRASH at byte 6 of its contents: a reason is unknown."},
      {"a deleted Stagemark without a scene", "TRASH", std::string("\x01\x01N\x00\x00\x01\x00", 7),
       damaged + "TRASH at byte 7 of its contents: a Stagemark in it is empty."},
      {"more names than bytes", "NAMES", std::string("sum of 8\x02\x00", 10),
       damaged + "NAMES at byte 9 of its contents: it is too short for what it counts."},
      {"a name beyond the bytes", "NAMES", std::string("sum of 8\x01\x05N", 11),
       damaged + "NAMES at byte 10 of its contents: 4 bytes more are needed."},
      {"more polygons than bytes", "MESHES", std::string("\x01\x00\xFF\xFF\xFF\xFF\x7F\x00\x00", 9),
       damaged + "MESHES at byte 9 of its contents: it names 34,359,738,367 rows, more than its "
                 "bytes can hold."},
  };
  for (const HostileContents& hostile : cases)
    EXPECT_EQ(Refusal(WithSection(bytes, hostile.section, hostile.contents)), hostile.message)
        << hostile.name;
}

// --- Numbers that point beyond what there is: the first that is too much is refused by name, the
// last that is not too much has no such fault.

// One container with one value of that type.
std::string OneValue(LONG type, std::uint64_t word) {
  std::string out("\x01\x01\x01\x01", 4);
  PutInts(out, ColumnValues{5});
  PutInts(out, ColumnValues{static_cast<std::uint64_t>(type)});
  PutInts(out, ColumnValues{0});
  PutInts(out, ColumnValues{word});
  return out;
}

// A triangle or quadrangle with these corners, of three points.
std::string OnePolygon(std::array<std::int64_t, 4> corners) {
  std::string out("\x01\x03\x01\x00\x00", 5);
  out += std::string(36, '\0');
  for (const std::int64_t corner : corners)
    PutInts(out, ColumnValues{static_cast<std::uint64_t>(corner)});
  return out;
}

TEST(SceneFileDamage, ReferencesAreBounded) {
  const std::string bytes = Bytes(*EverythingScene());
  Budget budget(1 << 30);
  const ValueReader all(ReadSections(bytes, ContentKind::Scene), budget);
  const auto row = [](std::size_t count) { return static_cast<std::uint64_t>(count); };
  struct Case {
    const char* section;
    std::string inside, beyond;
    const char* fault;
  };
  const auto value = [](LONG type, std::uint64_t bound, const char* fault) {
    return Case{"VALUES", OneValue(type, bound - 1), OneValue(type, bound), fault};
  };
  const Case cases[] = {
      value(host::DA_STRING, row(all.texts.size()), "a text is out of range"),
      value(host::DA_FILENAME, row(all.texts.size()), "a text is out of range"),
      value(host::DA_VECTOR, row(all.numbers.vectors.size()), "a vector is out of range"),
      value(host::DA_TIME, row(all.numbers.times.size()), "a time is out of range"),
      value(host::DA_CONTAINER, 1,
            "VALUES at byte 13 of its contents: a container is out of range"),
      value(host::DA_LONG, 1U << 31U, "a number is no 32-bit number"),
      {"VALUES", OneValue(15, 1), OneValue(17, 1), "there is no type of value 17"},
      {"MESHES", OnePolygon({0, 1, 2, -1}), OnePolygon({0, 1, 3, -1}), "a polygon names a point"},
      {"MESHES", OnePolygon({0, 1, 2, 2}), OnePolygon({0, 1, 2, 3}), "a polygon names a point"},
      {"MESHES", OnePolygon({0, 0, 0, -1}), OnePolygon({0, 1, 2, -2}), "a polygon names a point"},
      {"MESHES", OnePolygon({0, 1, 2, -1}), OnePolygon({-1, 1, 2, 0}), "a polygon names a point"},
  };
  for (const Case& c : cases) {
    const std::string inside = Refusal(WithSection(bytes, c.section, c.inside));
    EXPECT_EQ(inside.find(c.fault), std::string::npos) << inside;
    const std::string beyond = Refusal(WithSection(bytes, c.section, c.beyond));
    EXPECT_NE(beyond.find(c.fault), std::string::npos) << c.fault << ": " << beyond;
  }
}

// A table of elements with one number of it exchanged.
std::string WithCell(const std::string& contents, std::size_t column, std::size_t row,
                     std::uint64_t value) {
  Budget budget(1 << 30);
  Cursor in(contents, "TABLE", budget);
  const auto rows = static_cast<std::size_t>(in.Varint());
  std::string out;
  PutVarint(out, rows);
  for (std::size_t at = 0; in.Left() > 0; ++at) {
    ColumnValues values = TakeInts(in, rows);
    if (at == column) values.at(row) = value;
    PutInts(out, values);
  }
  return out;
}

TEST(SceneFileDamage, ElementsReferToWhatThereIs) {
  const std::string bytes = Bytes(*EverythingScene());
  Budget budget(1 << 30);
  const ValueReader all(ReadSections(bytes, ContentKind::Scene), budget);
  enum Column : std::size_t { Owner, Depth, Type, Id, Name, Bits, NBits, Layer, Data, More };
  struct Case {
    const char* section;
    std::size_t column, row;
    std::uint64_t first;  // that is refused
    const char* fault;
  };
  const auto texts = all.texts.size();
  const auto containers = all.containers.size();
  // Rows of elements are counted through all sections, behind the document.
  std::uint64_t objects = 1, tags = 1, shaderRow = 0, shaders = 0;
  for (const ElementRule& rule : kElementRules) {
    const std::string contents = ContentsOf(bytes, rule.name);
    Cursor in(contents, rule.name, budget);
    const std::uint64_t rows = in.Varint();
    const std::string_view name = rule.name;
    shaders = rows;
    shaderRow += rows;
    if (name == "OBJECTS") objects = shaderRow - rows + 1;
    if (name == "TAGS") tags = shaderRow - rows + 1;
  }
  const Case cases[] = {
      {"OBJECTS", Name, 1, texts, "a name is out of range"},
      {"OBJECTS", Data, 1, containers, "a data container is out of range"},
      {"SHADERS", Name, 0, texts, "a name is out of range"},
      {"OBJECTS", Type, 1, 1U << 31U, "a type is no 32-bit number"},
      {"OBJECTS", Bits, 1, 1U << 31U, "a set of bits is no 32-bit number"},
      {"LAYERS", More, 0, 1U << 9U, "a set of layer flags is out of range"},
      {"LAYERS", More + 1, 0, all.numbers.vectors.size(), "a color is out of range"},
      {"OBJECTS", More, 1, 3, "an editor mode is out of range"},
      {"OBJECTS", More + 1, 1, 3, "a render mode is out of range"},
      {"OBJECTS", More + 2, 1, 2, "a deform mode is out of range"},
      {"OBJECTS", More + 3, 1, all.numbers.matrices.size() + 1, "a matrix is out of range"},
      {"OBJECTS", More + 4, 1, 2, "a mesh is out of range"},
      {"OBJECTS", Depth, 0, 1, "an element hangs below none"},
      {"OBJECTS", Depth, 1, 2, "an element hangs below none"},
      {"MATERIAL", Depth, 1, 1, "an element hangs below none"},
      {"OBJECTS", Owner, 5, 1, "an owner is no element that can own one"},
      {"TAGS", Owner, 0, objects - 1, "an owner is no element that can own one"},
      {"TAGS", Owner, 3, tags, "an owner is no element that can own one"},
      {"SHADERS", Owner, shaders - 1, shaderRow, "an owner is no element that can own one"},
      {"NODES", Depth, 0, 1, "an element hangs below none"},
      {"NODES", Depth, 1, 2, "an element hangs below none"},
      {"LAYERS", Type, 0, 5, "an element has a type that there is not"},
      {"RENDER", Type, 1, 5, "an element has a type that there is not"},
      {"NODES", Type, 0, 5, "a node master or root has a strange type"},
      {"NODES", Type, 1, 5, "a node master or root has a strange type"},
      {"NODES", Depth, 4, 1, "an expression has two masters or roots"},
      {"POSTS", Owner, 0, 0, "an owner is no element that can own one"},
      {"PASSES", Owner, 0, 0, "an owner is no element that can own one"},
      {"TAGS", Owner, 0, 0, "an owner is no element that can own one"},
      {"NODES", Owner, 0, 0, "an owner is no element that can own one"},
      {"SHADERS", Owner, 2, 0, "owners do not rise"},
      {"OBJECTS", Id, 1, 0, "an element has no identity"},
  };
  for (const Case& c : cases) {
    const auto refusal = [&](std::uint64_t value) {
      return Refusal(WithSection(bytes, c.section,
                                 WithCell(ContentsOf(bytes, c.section), c.column, c.row, value)));
    };
    const std::string what = std::string(c.section) + " " + std::to_string(c.column);
    EXPECT_NE(refusal(c.first).find(c.fault), std::string::npos) << what << refusal(c.first);
    const bool bounded = std::string_view(c.fault).find(" range") != std::string_view::npos ||
                         std::string_view(c.fault).find("32-bit") != std::string_view::npos;
    EXPECT_TRUE(!bounded || refusal(c.first - 1).find(c.fault) == std::string::npos) << what;
  }
}

// Saving puts embedded files beside the scene: none may be put elsewhere.
TEST(SceneFileDamage, EmbeddedFilesMustHaveBareNames) {
  const auto refusal = [](const std::string& name) {
    const Document doc = EmptyScene();
    engine::SetEmbeddedFiles(*doc, {{name, std::make_shared<const std::string>("x")}});
    return Refusal(Bytes(*doc));
  };
  for (const std::string& name :
       {std::string("../evil.png"), std::string("/etc/evil"), std::string(".hidden"), std::string(),
        std::string("a\\b"), std::string("line\nbreak"), std::string(256, 'n')}) {
    EXPECT_NE(refusal(name).find("a file has a name that leads elsewhere"), std::string::npos)
        << name;
  }
  for (const std::string& name :
       {std::string("old wood.png"), std::string("\xC3\xBC.."), std::string(255, 'n')})
    EXPECT_EQ(refusal(name), "opened") << name;
  const Document doc = EmptyScene();
  const auto picture = std::make_shared<const std::string>("x");
  engine::SetEmbeddedFiles(*doc, {{"a.png", picture}, {"b.png", picture}, {"a.png", picture}});
  EXPECT_NE(Refusal(Bytes(*doc)).find("two files have the same name"), std::string::npos);
}

TEST(SceneFileDamage, TheDocumentRefersToWhatThereIs) {
  const Document doc = EmptyScene();
  doc->AppendObject(host::BaseObject::Alloc(host::Onull));
  const std::string bytes = Bytes(*doc);
  const std::string whole = ContentsOf(bytes, "DOCUMENT");
  // Three numbers of eight bytes, the bits and the data; the frame rate; two more and a selection.
  ASSERT_EQ(whole.size(), 26U + 1 + 16 + 1);
  const auto settings = engine::IdOf(*doc->GetFirstRenderData());
  struct Case {
    LONG fps;
    engine::NodeId settings;
    ColumnValues selection;
    const char* message;
  };
  const engine::NodeId object = engine::IdOf(*doc->GetFirstObject());
  const Case cases[] = {{1, settings, {}, "opened"},
                        {0, settings, {}, "the frame rate is less than 1"},
                        {-30, settings, {}, "the frame rate is less than 1"},
                        {25, 0, {}, "the active render settings are missing"},
                        {25, object, {}, "the active render settings are missing"},
                        {25, settings, {77}, "what is selected is missing"},
                        {25, settings, {object}, "what is selected is missing"}};
  for (const Case& c : cases) {
    std::string contents = whole.substr(0, 26);
    PutVarint(contents, ZigZag(static_cast<std::uint64_t>(std::int64_t{c.fps})));
    PutFixed64(contents, 0);
    PutFixed64(contents, c.settings);
    PutVarint(contents, c.selection.size());
    PutInts(contents, c.selection);
    const std::string refusal = Refusal(WithSection(bytes, "DOCUMENT", contents));
    EXPECT_NE(refusal.find(c.message), std::string::npos) << refusal;
  }
}

// A frame that promises more than it holds costs no memory, and one that expands without end is
// stopped.
TEST(SceneFileDamage, ExpansionIsBounded) {
  const std::string bytes = Bytes(*EmptyScene());
  const std::vector<Section> sections = ReadSections(bytes, ContentKind::Scene);
  SectionWriter liar(ContentKind::Scene);
  SectionWriter bomb(ContentKind::Scene);
  for (const Section& section : sections) {
    const bool texts = section.name == "TEXTS";
    liar.AddAsItIs(section.name, texts ? ~std::uint64_t{0} : section.rawLength, section.payload);
    texts ? bomb.Add("TEXTS", Repeated(std::size_t{64} << 20, '\0'))
          : bomb.AddAsItIs(section.name, section.rawLength, section.payload);
  }
  std::string file = Joined(liar.Finish());
  EXPECT_NE(Refusal(file).find("section TEXTS"), std::string::npos) << Refusal(file);
  file = Joined(bomb.Finish());
  EXPECT_LT(file.size(), 20000u);
  EXPECT_EQ(engine::ReadScene(file, std::uint64_t{16} << 20).Message(),
            "The file needs more memory than may be used for it (16 MB). If you trust it, set "
            "STAGEMARKS_OPEN_MEMORY to more, in GiB.");

  // Each is the list before it with some of its entries changed: nearly all of it is copied.
  const Document patched = EmptyScene();
  BaseContainer list;
  for (LONG i = 0; i < 20000; ++i) list.SetLong(i, i);
  for (LONG copy = 1; copy <= 60; ++copy) {
    for (LONG i = 0; i < 20000; i += 40) list.SetLong(i, copy);
    patched->GetDataInstance()->SetContainer(copy, list);
  }
  file = Bytes(*patched);
  EXPECT_LT(file.size(), 100000u);
  EXPECT_FALSE(engine::ReadScene(file, std::uint64_t{16} << 20));
  EXPECT_TRUE(engine::ReadScene(file, std::uint64_t{64} << 20));
}

// The memory that a file may take grows with its size; the file of many alike elements, too short
// for them, is filled up when it is written, so that it can be opened again.
TEST(SceneFileDamage, WhatAFileMayTakeGrowsWithItsSize) {
  constexpr std::uint64_t kMega = 1 << 20;
  EXPECT_EQ(engine::MemoryFor(0), 256 * kMega);
  EXPECT_EQ(engine::MemoryFor(1093) / kMega, 257U);
  EXPECT_EQ(engine::MemoryFor(263000) / kMega, 512U);
  const auto pages = static_cast<std::uint64_t>(::sysconf(_SC_PHYS_PAGES));
  const auto machine = pages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
  EXPECT_EQ(engine::MemoryFor(machine) / kMega, machine / 4 * 3 / kMega)
      << "the rest is for others";
  EXPECT_EQ(engine::RoomFor(256 * kMega, 0), 0U);
  EXPECT_EQ(engine::RoomFor(512 * kMega, 263000), 0U);
  EXPECT_EQ(engine::RoomFor(1024 * kMega, 0), 768 * kMega / 1024 + 1);
  EXPECT_EQ(engine::RoomFor(std::uint64_t{1} << 50, std::uint64_t{1} << 40), 0U);

  const Document many = EmptyScene();
  for (int i = 0; i < 600000; ++i) many->AppendObject(host::BaseObject::Alloc(host::Onull));
  const std::string bytes = Bytes(*many);
  const std::vector<Section> sections = ReadSections(bytes, ContentKind::Scene);
  ASSERT_NE(FindSection(sections, kRoomSection), nullptr);
  SectionWriter shorter(ContentKind::Scene);
  for (const Section& section : sections) {
    if (section.name != kRoomSection)
      shorter.AddAsItIs(section.name, section.rawLength, section.payload);
  }
  const std::string file = Joined(shorter.Finish());
  EXPECT_LT(file.size(), 100000U);
  EXPECT_NE(Refusal(file).find("needs more memory than may be used for it (2"), std::string::npos);
  const auto opened = engine::ReadScene(bytes);
  ASSERT_TRUE(opened) << opened.Message();
  EXPECT_EQ(Bytes(*opened.Value()), bytes) << "the room is not kept twice";
}

// Each container holds the one before it twice: 40 rows, 2^40 entries.
TEST(SceneFileDamage, ContainersThatMultiplyAreRefused) {
  std::string contents("\x28", 1);
  for (std::uint64_t number = 1; number <= 40; ++number) {
    contents += std::string("\x01\x01\x02\x01\x02\x04\x01\x88\x02\x00\x00\x00", 12);
    contents += '\x00';
    PutVarint(contents, ZigZag(number - 1));
    contents += '\x00';
    PutVarint(contents, ZigZag(number - 1));
  }
  const std::string message = Refusal(WithSection(Bytes(*EmptyScene()), "VALUES", contents));
  EXPECT_NE(message.find("multiply"), std::string::npos) << message;
}

TEST(SceneFileDamage, IdentitiesThatOccurTwiceAreRefused) {
  const Document doc = EmptyScene();
  doc->AppendObject(host::BaseObject::Alloc(host::Onull));
  const Document other = Reopened(Bytes(*doc));
  const std::string bytes = Bytes(*doc);
  host::BaseObject* twin = host::BaseObject::Alloc(host::Onull);
  engine::SetId(*twin, engine::IdOf(*doc->GetFirstRenderData()));
  const Document strange = EmptyScene();
  strange->AppendObject(twin);
  EXPECT_EQ(Refusal(WithSection(bytes, "OBJECTS", ContentsOf(Bytes(*strange), "OBJECTS"))),
            "The file is damaged: two elements have the same identity.");
}

// A program that keeps colors without knowing them may write the meshes in another order, or fewer.
TEST(SceneFileDamage, ColorsFindTheirMesh) {
  const auto scene = [](const std::string& names, bool colored) {
    Document doc = EmptyScene();
    for (const char name : names) {
      Mesh mesh;
      mesh.points = {{0, 0, 0}, {1, 0, 0}, {0, name == 'b' ? 2.0f : 1.0f, 0}};
      mesh.polygons = {{0, 1, 2, -1}};
      if (colored && name != 'a') mesh.colors.assign(4, {0, 0, name == 'b' ? 1.0f : 0.5f, 1});
      host::BaseObject* object = host::BaseObject::Alloc(host::Opolygon);
      SetMesh(*object, std::make_shared<const Mesh>(mesh));
      doc->AppendObject(object);
    }
    return Bytes(*doc);
  };
  const std::string colors = ContentsOf(scene("abc", true), "COLORS");
  const auto found = [&](const std::string& names) {
    const Document doc = Reopened(WithSection(scene(names, false), "COLORS", colors));
    std::string text;
    for (const host::BaseObject* o = doc->GetFirstObject(); o; o = o->GetNext())
      text += MeshOf(*o)->colors.empty() ? '-' : MeshOf(*o)->colors[0][2] == 1 ? 'b' : 'c';
    return text;
  };
  EXPECT_EQ(found("abc"), "-bc") << "a and c are alike but for the color";
  EXPECT_EQ(found("bac"), "b-c");
  EXPECT_EQ(found("a"), "-");
}

TEST(SceneFileDamage, SectionsThatAreNotKnownAreWrittenBack) {
  const std::string bytes =
      WithSection(Bytes(*EverythingScene()), "FUTURE1", "what a later program wrote");
  const Document doc = Reopened(bytes);
  EXPECT_EQ(ContentsOf(Bytes(*doc), "FUTURE1"), "what a later program wrote");
}

}  // namespace
}  // namespace tests
