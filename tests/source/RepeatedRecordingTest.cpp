// Tags with many values recorded again and again: what the plug-in remembers of them saves it the
// reading and changes nothing.
#include <functional>

#include "engine/core/ContainerContents.h"
#include "source/Stagemarks/keys/TagTypes.h"
#include "tests/source/StageTest.h"

namespace {

int boolsRead = 0;

}  // namespace

namespace host {

// In the place of the engine's, for the plug-in, too: answers the same and counts.
Bool BaseContainer::GetBool(LONG id, Bool preset) const {
  ++boolsRead;
  return FindIndex(id) == NOTOK ? preset : GetData(id).GetBool();
}

}  // namespace host

namespace stagemarks {
namespace {

constexpr LONG kNested = 1126;  // a parameter that is recorded whatever its type

class RepeatedRecordingTest : public StageTest {
 protected:
  static constexpr LONG kStyle = 1011012;  // recorded as its whole data

  RepeatedRecordingTest() {
    OnlyOptions({Option::CompositingTags, Option::Materials, Option::SketchStyleTags});
  }

  BaseTag* Compositing(BaseObject* object, LONG number) {
    return Numbered(object, Tcompositing, number);
  }
  // A tag whose values are its own, unless `number` is 0.
  BaseTag* Numbered(BaseObject* object, LONG type, LONG number) {
    BaseTag* tag = Tag(object, type);
    if (number != 0) tag->GetDataInstance()->SetLong(1006, number);
    return tag;
  }

  BaseContainer Tags(LONG element) const {
    return Doc()
        .GetDataInstance()
        ->GetContainer(kRecordStore)
        .GetContainer(element)
        .GetContainer(kTags);
  }

  // The record of a tag, written from the start.
  static BaseContainer Plain(const BaseTag& tag, LONG index) {
    const BaseContainer& data = *tag.GetDataInstance();
    BaseContainer record(index);
    if (tag.GetType() == kStyle) {
      record = data;
      record.SetId(index);
      record.SetLink(kTagLink, &tag);
      return record;
    }
    GeData parameter;
    for (const CompositingRow& row : kCompositing) {
      if (row.reading == Reading::Parameter) data.GetParameter(DescID(row.parameter), parameter);
      if (row.reading == Reading::Bool) record.SetBool(row.key, data.GetBool(row.parameter));
      if (row.reading == Reading::Long) record.SetLong(row.key, data.GetLong(row.parameter));
      if (row.reading == Reading::Real) record.SetReal(row.key, data.GetReal(row.parameter));
      if (row.reading == Reading::Parameter) record.SetData(row.key, parameter);
    }
    record.SetLink(kTagLink, &tag);
    return record;
  }

  int ReadsOfRecording(const char* name) {
    boolsRead = 0;
    Record(name);
    return boolsRead;
  }
};

TEST_F(RepeatedRecordingTest, ReadsOnlyWhatHasChanged) {
  constexpr int kTags = 200;
  const auto rows = static_cast<int>(kCompositing.size());
  std::vector<BaseTag*> tags;
  for (LONG i = 1; i <= kTags; ++i) tags.push_back(Compositing(Object("Cube"), i));
  EXPECT_GT(ReadsOfRecording("A"), kTags * rows / 4);
  EXPECT_LT(ReadsOfRecording("B"), kTags) << "unchanged tags were read";
  tags[7]->GetDataInstance()->SetLong(1007, 5);
  EXPECT_LT(ReadsOfRecording("C"), kTags + rows);
  Load("A");
  EXPECT_GT(ReadsOfRecording("D"), kTags * rows / 4) << "loading completed what the tags hold";
  EXPECT_LT(ReadsOfRecording("E"), kTags);
}

TEST_F(RepeatedRecordingTest, ReadsTagsThatAreAlikeOnce) {
  for (int i = 0; i < 200; ++i) Compositing(Object("Cube"), 0);
  EXPECT_LT(ReadsOfRecording("A"), 200);
}

// Whatever comes between two recordings, an element's records are those that a dialog which
// remembers nothing makes.
class RepeatedTypeTest : public RepeatedRecordingTest, public testing::WithParamInterface<LONG> {
 protected:
  BaseTag* Own(BaseObject* object, LONG number) { return Numbered(object, GetParam(), number); }
};

TEST_P(RepeatedTypeTest, RecordsWhatTheTagsHold) {
  BaseObject* first = Object("First");
  BaseObject* second = Object("Second");
  BaseTag* one = Own(first, 1);
  BaseTag* other = Own(second, 1);
  BaseTag* third = Own(second, 2);
  const auto inner = [](LONG id) {
    BaseContainer container(id);
    container.SetLong(1, 1);
    return container;
  };
  const std::pair<const char*, std::function<void()>> kSteps[] = {
      {"nothing", [] {}},
      {"a value", [&] { one->GetDataInstance()->SetLong(1006, 9); }},
      {"the same value on the next", [&] { other->GetDataInstance()->SetLong(1006, 9); }},
      {"another type", [&] { third->GetDataInstance()->SetReal(1006, 2); }},
      {"a tag in front, so that all others count up", [&] { first->MakeTag(Ttexture, nullptr); }},
      {"a container", [&] { one->GetDataInstance()->SetContainer(kNested, inner(3)); }},
      {"only its own ID", [&] { one->GetDataInstance()->SetContainer(kNested, inner(4)); }},
      {"the next with another own ID",
       [&] {
         *other->GetDataInstance() = one->GetData();
         other->GetDataInstance()->SetContainer(kNested, inner(5));
       }},
      {"a load", [&] { Load("Start"); }},
      {"a tag less", [&] { BaseTag::Free(third); }},
      {"another tag with the values of one that went", [&] { third = Own(second, 2); }},
      {"one that moved to the end",
       [&] {
         BaseTag::Free(one);
         one = Own(second, 9);
       }},
  };
  LONG element = 0;
  Record("Start");
  for (const auto& [name, change] : kSteps) {
    SCOPED_TRACE(name);
    change();
    Record(name);
    ++element;
    LONG index = 0;
    for (BaseObject* object = first; object; object = object->GetNext()) {
      for (BaseTag* tag = object->GetFirstTag(); tag; tag = tag->GetNext(), ++index) {
        if (tag->GetType() != GetParam()) continue;
        EXPECT_TRUE(engine::Identical(Tags(element).GetContainer(index), Plain(*tag, index)))
            << tests::ContainerText(Tags(element).GetContainer(index), &Doc());
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Types, RepeatedTypeTest, testing::Values(Tcompositing, 1011012));

// Tags that are alike and get alike values share what comes out; others do not.
TEST_F(RepeatedRecordingTest, RecallSharesWhatComesOutAlike) {
  std::vector<BaseTag*> tags;
  for (const LONG number : {1, 1, 9, 9, 1}) tags.push_back(Compositing(Object("Cube"), number));
  tags[1]->GetDataInstance()->SetId(12);
  Record("A");
  for (BaseTag* tag : tags) {
    tag->GetDataInstance()->SetLong(1006, 7);
    tag->GetDataInstance()->SetLong(1007, 8);
  }
  Load("A");
  const auto body = [&](std::size_t i) { return engine::BodyOf(*tags[i]->GetDataInstance()); };
  EXPECT_EQ(body(2), body(3));
  EXPECT_NE(body(0), body(1));
  EXPECT_NE(body(3), body(4));
  EXPECT_EQ(tags[1]->GetDataInstance()->GetId(), 12);
  for (const BaseTag* tag : tags) EXPECT_NE(tag->GetDataInstance()->GetLong(1007), 8);
  for (std::size_t i = 0; i < tags.size(); ++i)
    EXPECT_EQ(tags[i]->GetDataInstance()->GetLong(1006), i == 2 || i == 3 ? 9 : 1);
}

// A container inside may have another own ID although both count as equal: each tag keeps its own.
TEST_F(RepeatedRecordingTest, RecallKeepsOwnIdsInside) {
  std::vector<BaseTag*> tags;
  for (LONG id = 1; id <= 3; ++id) {
    tags.push_back(Compositing(Object("Cube"), 0));
    tags.back()->GetDataInstance()->SetContainer(77, BaseContainer(id));
  }
  Record("A");
  Load("A");
  for (LONG id = 1; id <= 3; ++id) {
    EXPECT_EQ(tags[static_cast<std::size_t>(id - 1)]->GetDataInstance()->GetContainer(77).GetId(),
              id);
  }
}

}  // namespace
}  // namespace stagemarks
