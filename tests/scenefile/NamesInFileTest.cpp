// Names read from a file without its scene: the same as those of the scene, in every form that
// containers have in a file, and damage told.
#include "engine/scenefile/NamesInFile.h"

#include <gtest/gtest.h>

#include "engine/scenefile/Bytes.h"
#include "engine/scenefile/Columns.h"
#include "engine/scenefile/SceneFile.h"
#include "engine/scenefile/Sections.h"
#include "tests/scenefile/Scenes.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/SceneBytes.h"
#include "tests/support/ScratchFolder.h"

namespace {

using host::BaseContainer;
using tests::SceneBuilder;

constexpr engine::NamedStore kStore{700, 20, 21};
using Names = std::vector<std::string>;

// A store with so many named containers, every seventh of them emptied and every fifth with no
// name; one is so long that it is stored by itself.
BaseContainer Store(int count, bool noted = true) {
  BaseContainer store;
  store.SetReal(7, 0.3);
  store.SetData(9, host::GeData());
  for (int i = 0; i < count; ++i) {
    BaseContainer one(i);
    if (i % 7 != 6) one.SetLong(3, i);
    if (i % 7 != 6 && i % 5 != 4)
      one.SetString(20, host::String(std::string_view("State " + std::to_string(i * 37 % 100))));
    one.SetReal(4, i * 0.5);
    one.SetData(6, host::GeData());
    for (int key = 100; i == 3 && key < 200; ++key) one.SetString(key, host::String("no name"));
    store.SetContainer(i * 2, i % 7 == 6 ? BaseContainer() : one);
  }
  store.SetString(5, host::String("no container"));
  if (noted) store.SetBool(21, host::TRUE);
  return store;
}

Names NamesOf(const BaseContainer& store) {
  Names names;
  for (host::LONG i = 0; i < store.GetCount(); ++i) {
    const BaseContainer* one = store.GetContainerInstance(store.GetIndexId(i));
    if (one && one->GetCount() > 0) names.push_back(one->GetString(20).ToUtf8());
  }
  return names;
}

class NamesInFile : public testing::Test {
 protected:
  std::string Save(const host::BaseDocument& doc) const {
    const std::string bytes = tests::Bytes(doc);
    tests::WriteText(path_, bytes);
    return bytes;
  }

  tests::ScratchFolder folder_;
  std::string path_ = folder_ / "scene.c4d";
};

TEST_F(NamesInFile, AreThoseOfTheStoreWhateverItsSize) {
  for (const int count : {0, 1, 30, 64, 65, 400}) {
    SceneBuilder scene;
    BaseContainer& data = *scene.Doc().GetDataInstance();
    // Long lists that differ little from one another stand as changes of the first.
    for (int copy = 0; copy < 3; ++copy) {
      BaseContainer other = Store(count);
      other.SetLong(5, copy);
      other.SetContainer(20, Store(1));
      data.SetContainer(600 + copy, other);
    }
    data.SetContainer(700, Store(count));
    Save(scene.Doc());
    const auto names = engine::NamesInStore(path_, kStore);
    ASSERT_TRUE(names) << names.Message();
    ASSERT_TRUE(names.Value()) << count;
    EXPECT_EQ(*names.Value(), NamesOf(Store(count))) << count;
  }
}

TEST_F(NamesInFile, SayWhenTheStoreDoesNotTellOfAll) {
  SceneBuilder scene;
  Save(scene.Doc());
  EXPECT_FALSE(engine::NamesInStore(path_, kStore).Value());
  scene.Doc().GetDataInstance()->SetContainer(700, Store(5, false));
  Save(scene.Doc());
  EXPECT_FALSE(engine::NamesInStore(path_, kStore).Value());
}

TEST_F(NamesInFile, ElementsByKindAndType) {
  SceneBuilder scene;
  scene.Cube("A").Camera("A/Cam").Object("B").Material("Red").Material("Red").Layer("L/M");
  Save(scene.Doc());
  const auto names = [&](engine::ElementSection section, host::LONG type) {
    return engine::NamesInSection(path_, section, type).Value();
  };
  EXPECT_EQ(names(engine::kObjectRows, 0), (Names{"A", "Cam", "B"}));
  EXPECT_EQ(names(engine::kObjectRows, host::Ocamera), Names{"Cam"});
  EXPECT_EQ(engine::NamesInSection(path_, engine::kMaterialRows, 0, "Re").Value().size(), 2U);
  EXPECT_EQ(engine::NamesInSection(path_, engine::kObjectRows, 0, "Ca").Value(), Names{"Cam"});
  EXPECT_EQ(names(engine::kMaterialRows, 0), (Names{"Red", "Red"}));
  EXPECT_EQ(names(engine::kLayerRows, 0), (Names{"L", "M"}));
}

// Bytes that are read are checked as when the scene is opened; one elsewhere may be wrong.
TEST_F(NamesInFile, DamageIsToldWithThePlace) {
  SceneBuilder scene;
  scene.Cube("A").Material("Red");
  scene.Doc().GetDataInstance()->SetContainer(700, Store(100));
  const std::string bytes = Save(scene.Doc());
  std::size_t refused = 0;
  const auto check = [&](const std::string& damaged, const std::string& what) {
    tests::WriteText(path_, damaged);
    const auto names = engine::NamesInStore(path_, kStore);
    const auto opened = engine::ReadScene(damaged);
    EXPECT_FALSE(opened) << what;
    if (names) return;
    ++refused;
    EXPECT_TRUE(names.Message().starts_with("\"" + path_ + "\": The file is ") ||
                names.Message().ends_with("This is no scene file."))
        << names.Message();
  };
  for (std::size_t length = 0; length < bytes.size(); length += 41)
    check(bytes.substr(0, length), "cut at " + std::to_string(length));
  EXPECT_EQ(refused, (bytes.size() + 40) / 41) << "what is cut off is always told";
  for (std::size_t at = 0; at < bytes.size(); at += 7) {
    std::string damaged = bytes;
    damaged[at] = static_cast<char>(damaged[at] ^ 0x55);
    check(damaged, "changed at " + std::to_string(at));
  }
  EXPECT_GT(refused, bytes.size() / 20);
  EXPECT_FALSE(engine::NamesInStore(folder_ / "nowhere.c4d", kStore));
  EXPECT_FALSE(engine::NamesInStore(folder_.Path(), kStore));
}

// Contents that no program wrote, in a frame that is right.
TEST_F(NamesInFile, AContainerThatIsNotThereIsDamage) {
  SceneBuilder scene;
  scene.Doc().GetDataInstance()->SetContainer(700, Store(3));
  for (const std::uint64_t number : {std::uint64_t{60}, ~std::uint64_t{0}}) {
    // Identity, bits of one byte, and two numbers of eight.
    std::string crafted(25, '\0');
    engine::PutVarint(crafted, number);
    tests::WriteText(path_, tests::WithSection(tests::Bytes(scene.Doc()), "DOCUMENT", crafted));
    const auto names = engine::NamesInStore(path_, kStore);
    ASSERT_FALSE(names);
    EXPECT_EQ(names.Message(), "\"" + path_ + "\": The file is damaged: it names container " +
                                   engine::Grouped(number) + ", which there is not.");
  }
}

TEST_F(NamesInFile, APatchStaysWithinWhatItChanges) {
  SceneBuilder scene;
  for (const std::uint64_t position : {0U, 1U, 1000000U}) {
    // Two containers: a list of one number, and the same with another number at that position.
    std::string values("\x02\x02\x01\x00", 4);
    for (const std::uint64_t key : {5U, 15U, 7U})
      engine::PutInts(values, engine::ColumnValues{key});
    values += std::string("\x03\x01\x00\x01\x00", 5);
    for (const std::uint64_t part : {position, std::uint64_t{15}, std::uint64_t{8}})
      engine::PutInts(values, engine::ColumnValues{part});
    const std::string document = std::string(25, '\0') + '\x02';
    const std::string bytes = tests::WithSection(tests::Bytes(scene.Doc()), "VALUES", values);
    tests::WriteText(path_, tests::WithSection(bytes, "DOCUMENT", document));
    const auto names = engine::NamesInStore(path_, kStore);
    EXPECT_EQ(names.Ok(), position == 0) << names.Message();
    EXPECT_EQ(names.Message().find("a position in a patch is out of range") != std::string::npos,
              position > 0);
  }
}

TEST_F(NamesInFile, WhatIsPassedOverMustBeWhatItSays) {
  const struct {
    const char* section;
    std::string contents;
    const char* fault;
  } kRows[] = {
      {"VALUES", std::string("\x01\x01\x00\x00", 4), "a block holds none or more"},
      {"VALUES", std::string("\x01\x01\x02\x00\x80\x00", 6), "a block holds none or more"},
      {"VALUES", "\x01\x01\x01\x41", "the number of keys is out of range"},
      {"VALUES", "\x01\x04", "no block begins there"},
      {"VALUES", "\x01\x03\x01", "the base of a patch is out of range"},
      {"VALUES", std::string("\x01\x02\x00\x80\x80\x80\x80\x10", 8), "an own ID is no 32-bit"},
      {"TEXTS", std::string("\x01\x00\x0A..", 5), "a text goes beyond the section"},
      {"TEXTS", std::string("\x02\x01\x02\x00...", 7), "bytes are left over"},
      {"TEXTS", std::string("\x02\x80\x04...", 6), "a text goes beyond the section"},
      {"TEXTS", std::string(1, '\0'), " of 0."},
  };
  SceneBuilder scene;
  for (const auto& row : kRows) {
    tests::WriteText(path_,
                     tests::WithSection(tests::Bytes(scene.Doc()), row.section, row.contents));
    const std::string message =
        row.section == std::string("VALUES")
            ? engine::NamesInStore(path_, kStore).Message()
            : engine::NamesInSection(path_, engine::kRenderRows, 0).Message();
    EXPECT_NE(message.find(row.fault), std::string::npos) << row.fault << ": " << message;
  }
  engine::SectionWriter twice(engine::ContentKind::Scene);
  twice.Add("TEXTS", "");
  twice.Add("TEXTS", "");
  tests::WriteText(path_, tests::Joined(twice.Finish()));
  const std::string message = engine::NamesInSection(path_, engine::kRenderRows, 0).Message();
  EXPECT_TRUE(message.ends_with("section TEXTS (from byte 44): it occurs twice.")) << message;
}

// A frame whose parts are right, one by one, and do not fit together.
TEST_F(NamesInFile, AFrameThatDoesNotFitTogetherIsDamage) {
  SceneBuilder scene;
  for (int i = 0; i < 20; ++i) scene.Cube("A cube like others, " + std::to_string(i));
  const std::string bytes = tests::Bytes(scene.Doc());
  const auto refusal = [&](const std::string& file) {
    tests::WriteText(path_, file);
    return engine::NamesInSection(path_, engine::kObjectRows, 0).Message();
  };
  EXPECT_EQ(refusal(bytes), "");
  EXPECT_NE(refusal(bytes + "x").find("1 bytes follow its end"), std::string::npos);
  const auto sections = engine::ReadSections(bytes, engine::ContentKind::Scene);
  const std::size_t first = sections[0].offset, second = sections[1].offset;
  EXPECT_NE(refusal(bytes.substr(0, first) + bytes.substr(second)).find("missing or exchanged"),
            std::string::npos);
  for (const int more : {-1, 1}) {
    engine::SectionWriter liar(engine::ContentKind::Scene);
    for (const engine::Section& section : sections) {
      const bool isTexts = section.name == "TEXTS";
      ASSERT_TRUE(!isTexts || section.rawLength > section.payload.size() + 1);
      liar.AddAsItIs(section.name, section.rawLength + (isTexts ? more : 0), section.payload);
    }
    EXPECT_NE(refusal(tests::Joined(liar.Finish())).find("does not expand"), std::string::npos);
  }
  engine::SectionWriter endless(engine::ContentKind::Scene);
  for (const engine::Section& section : sections)
    endless.AddAsItIs(section.name, std::uint64_t{1} << 60, section.payload);
  EXPECT_NE(refusal(tests::Joined(endless.Finish())).find("needs more memory than may be used"),
            std::string::npos);
  for (const int more : {-9, -1, 1}) {
    engine::SectionWriter liar(engine::ContentKind::Scene);
    for (const engine::Section& section : sections) {
      std::string payload(section.payload);
      if (section.name == "TEXTS")
        payload.resize(payload.size() + static_cast<std::size_t>(more), 'x');
      liar.AddAsItIs(section.name, section.rawLength, payload);
    }
    const std::string file = tests::Joined(liar.Finish());
    EXPECT_NE(refusal(file).find("does not expand"), std::string::npos) << more;
    EXPECT_NE(tests::Refusal(file).find("does not expand"), std::string::npos) << more;
  }
}

// Names of Stagemarks have a section of their own, which nothing else is read for.
class NamesOfStates : public NamesInFile {
 protected:
  static engine::OwnedDocument SceneWith(const Names& names) {
    engine::OwnedDocument doc = tests::EmptyScene();
    BaseContainer list;
    list.SetBool(kList.note, host::TRUE);
    for (const std::string& name : names) {
      BaseContainer entry;
      entry.SetString(kList.name, host::String(std::string_view(name)));
      list.SetContainer(list.GetCount(), entry);
    }
    doc->GetDataInstance()->SetContainer(kList.store, list);
    return doc;
  }
  std::string Found(const std::string& bytes) const {
    tests::WriteText(path_, bytes);
    const auto names = engine::NamesInStore(path_, kList);
    if (!names) return names.Message();
    std::string found;
    for (const std::string& name : names.Value().value_or(Names{"no list"})) found += name + "|";
    return found;
  }
  static std::size_t Where(const std::string& bytes, const std::string& section) {
    const auto sections = engine::ReadSections(bytes, engine::ContentKind::Scene);
    const engine::Section* found = engine::FindSection(sections, section);
    return found ? found->offset : std::string::npos;
  }

  static constexpr engine::NamedStore kList = engine::kListOfStates;
  static constexpr std::size_t kHead = 32;
};

TEST_F(NamesOfStates, AreReadWithoutTheRest) {
  const std::string whole = tests::Bytes(*SceneWith({"Day", "", "Night"}));
  EXPECT_EQ(tests::Bytes(*tests::Reopened(whole)), whole);
  std::string bytes = whole;
  for (const char* section : {"TEXTS", "VALUES", "DOCUMENT"})
    bytes[Where(whole, section) + kHead] ^= '\x55';
  EXPECT_EQ(Found(bytes), "Day||Night|") << "nobody has looked at what is damaged";
  EXPECT_NE(tests::Refusal(bytes), "opened");
  bytes[Where(whole, "NAMES") + kHead] ^= '\x55';
  EXPECT_NE(Found(bytes).find("section NAMES"), std::string::npos) << Found(bytes);
}

// Programs that do not know the section keep it, whatever becomes of the scene.
TEST_F(NamesOfStates, AreThoseOfTheListWhereTheSectionIsStale) {
  const std::string bytes = tests::Bytes(*SceneWith({"Day", "Dusk"}));
  const std::string former = tests::ContentsOf(tests::Bytes(*SceneWith({"Night"})), "NAMES");
  const std::string stale = tests::WithSection(bytes, "NAMES", former);
  EXPECT_EQ(Found(stale), "Day|Dusk|");
  EXPECT_EQ(tests::Bytes(*tests::Reopened(stale)), bytes) << "saved again it is right";
  std::string other = tests::ContentsOf(bytes, "NAMES");
  other[3] ^= '\x10';
  EXPECT_EQ(Found(tests::WithSection(bytes, "NAMES", other)), "Day|Dusk|") << "a wrong sum";
  EXPECT_EQ(Found(tests::WithSection(bytes, "NAMES", other.substr(0, other.size() - 1))),
            "\"" + path_ +
                "\": The file is damaged in section NAMES at byte 14 of its contents: 1 "
                "bytes more are needed.");
}

TEST_F(NamesOfStates, AreLeftOutWhereThereAreNoStates) {
  EXPECT_EQ(Where(tests::Bytes(*tests::EmptyScene()), "NAMES"), std::string::npos);
  EXPECT_EQ(Where(tests::Bytes(*SceneWith({})), "NAMES"), std::string::npos);
  EXPECT_EQ(Found(tests::Bytes(*SceneWith({}))), "");
  const std::string unnamed = tests::Bytes(*SceneWith({"", ""}));
  EXPECT_EQ(Found(unnamed), "||");
  EXPECT_EQ(tests::Refusal(unnamed), "opened");
  // What is empty or no container at all has no name.
  const auto mixed = SceneWith({"Day", "", "Night"});
  BaseContainer& list = *mixed->GetDataInstance()->GetContainerInstance(kList.store);
  list.SetContainer(77, BaseContainer());
  list.SetLong(78, 1);
  const std::string names = tests::Bytes(*mixed);
  EXPECT_EQ(Found(names), "Day||Night|");
  EXPECT_EQ(Found(tests::WithSection(names, "NAMES", std::string(9, '\0'))), "Day||Night|");
  const auto noted = SceneWith({"Day"});
  noted->GetDataInstance()->GetContainerInstance(kList.store)->RemoveData(kList.note);
  EXPECT_EQ(Where(tests::Bytes(*noted), "NAMES"), std::string::npos);
  EXPECT_EQ(Found(tests::Bytes(*noted)), "no list|");
}

// As many sections as a scene may have, the end not counted; then one more.
TEST_F(NamesInFile, AreReadOfAllThatOpens) {
  SceneBuilder scene;
  scene.Cube("A");
  const std::string bytes = tests::Bytes(scene.Doc());
  engine::SectionWriter out(engine::ContentKind::Scene);
  const auto sections = engine::ReadSections(bytes, engine::ContentKind::Scene);
  for (const engine::Section& section : sections)
    out.AddAsItIs(section.name, section.rawLength, section.payload);
  for (std::size_t i = sections.size(); i < 4096; ++i) out.Add("X" + std::to_string(i), "");
  for (const bool opens : {true, false}) {
    engine::SectionWriter whole = out;
    if (!opens) whole.Add("ONEMORE", "");
    const std::string file = tests::Joined(whole.Finish());
    tests::WriteText(path_, file);
    EXPECT_EQ(engine::ReadScene(file).Ok(), opens);
    EXPECT_EQ(engine::NamesInSection(path_, engine::kObjectRows, 0).Ok(), opens);
  }
}

}  // namespace
