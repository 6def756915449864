// Random stores, with gaps, several records of one item, dead links and names twice, beside the
// described steps taken one by one.
#include <random>

#include "tests/source/StageTest.h"
#include "tests/support/PlainBulk.h"

namespace stagemarks {
namespace {

namespace plain = tests::plain;

class BulkModelTest : public StageTest, public testing::WithParamInterface<unsigned> {
 protected:
  LONG Below(LONG end) { return static_cast<LONG>(random_() % static_cast<unsigned>(end)); }

  void BuildScene() {
    BaseObject* parent = nullptr;
    for (const CHAR* name : {"O0", "O1", "O2", "O3", "O4", "O5"}) {
      parent = Object(name, Below(2) == 0 ? parent : nullptr);
      SetSwitches(parent, Below(3), Below(3), Below(2) == 0);
      if (Below(2) == 0) parent->SetBit(BIT_ACTIVE);
      items_[0].push_back(parent);
      for (const LONG type : {Ttexture, kVRayTag, Tphong, Tcompositing}) {
        if (Below(2) == 0) AddTag(*parent, type);
      }
    }
    for (const CHAR* name : {"L0", "L1", "L2", "L3"}) {
      LayerObject* layer = Layer(name);
      if (Below(2) == 0) layer->SetBit(BIT_ACTIVE);
      items_[2].push_back(layer);
    }
  }

  // A generic tag's own data may hold a link to another tag, as that of a loaded and copied one
  // does.
  void AddTag(BaseObject& object, LONG type) {
    BaseTag* tag = Tag(&object, type);
    if (Below(2) == 0) tag->SetBit(BIT_ACTIVE);
    if (type == kVRayTag) tag->GetDataInstance()->SetLong(Below(3), Below(9));
    if (type == kVRayTag && !items_[1].empty() && Below(3) == 0) {
      tag->GetDataInstance()->SetLink(
          kTagLink,
          items_[1][static_cast<std::size_t>(Below(static_cast<LONG>(items_[1].size())))]);
    }
    items_[1].push_back(tag);
  }

  BaseContainer RandomRecords(std::size_t kind, LONG link) {
    BaseContainer records;
    for (LONG count = Below(9); count > 0; --count) {
      BaseContainer record;
      const LONG item = Below(static_cast<LONG>(items_[kind].size()) + 1);
      const bool dead = item == static_cast<LONG>(items_[kind].size());
      record.SetLink(link, dead ? nullptr : items_[kind][static_cast<std::size_t>(item)]);
      record.SetLong(1, Below(100));
      records.SetContainer(Below(10), record);
    }
    return records;
  }

  void BuildStores() {
    BaseContainer records;
    BaseContainer list;
    for (LONG id = 0; id < 6; ++id) {
      if (Below(4) == 0) continue;
      const String name(std::array{"A", "B", "C"}[static_cast<std::size_t>(Below(3))]);
      BaseContainer record(id);
      record.SetString(kName, name);
      if (Below(12) != 0) record.SetContainer(kObjects, RandomRecords(0, kObjectLink));
      if (Below(12) != 0) record.SetContainer(kTags, RandomRecords(1, kTagLink));
      if (Below(12) != 0) record.SetContainer(kLayers, RandomRecords(2, kLayerLink));
      if (Below(2) == 0) record.SetContainer(kRender, RecordedSettings(id));
      BaseContainer entry(Below(8) == 0 ? Below(6) : id);
      entry.SetString(kName, name);
      records.SetContainer(id, record);
      list.SetContainer(id, entry);
    }
    list.SetBool(kListBuilt, TRUE);
    Doc().GetDataInstance()->SetContainer(kRecordStore, records);
    Doc().GetDataInstance()->SetContainer(kListStore, list);
    EventAdd();
    Deliver();
  }

  BaseContainer RecordedSettings(LONG id) {
    RenderData* settings = RenderData::Alloc();
    settings->SetName(LongToString(id));
    Doc().InsertRenderData(settings, nullptr, Doc().GetFirstRenderData());
    BaseContainer render;
    render.SetLink(kRenderLink, settings);
    return render;
  }

  // Checks some rows; their names.
  plain::Names CheckRows() {
    plain::Names names;
    const std::vector<engine::Row>& rows = engine::FindGadget(Dialog(), kList)->listRows;
    for (std::size_t line = 0; line < rows.size(); ++line) {
      if (Below(2) == 0) continue;
      engine::ToggleLine(Dialog(), kList, static_cast<LONG>(line), kColumnChecked);
      names.push_back(rows[line].values.GetString(kColumnName));
    }
    Deliver();
    return names;
  }

  std::string Text(BaseDocument& doc) const {
    const BaseContainer& data = *doc.GetDataInstance();
    std::string text = tests::ContainerLines(data.GetContainer(kRecordStore), &doc) +
                       tests::ContainerLines(data.GetContainer(kListStore), &doc);
    for (const RenderData* one = doc.GetFirstRenderData(); one; one = one->GetNext())
      text += one->GetName().ToUtf8() + "\n";
    return text;
  }

  void SetUp() override {
    random_.seed(GetParam());
    BuildScene();
    BuildStores();
    names_ = CheckRows();
    twin_ = static_cast<BaseDocument*>(Doc().GetClone(COPY_DOCUMENT, nullptr));
  }
  void TearDown() override { BaseDocument::Free(twin_); }

  std::mt19937 random_;
  std::vector<BaseList2D*> items_[3];  // objects, tags, layers
  plain::Names names_;
  BaseDocument* twin_ = nullptr;
};

TEST_P(BulkModelTest, Updating) {
  Menu(kUpdateChecked);
  plain::Update(*twin_, names_);
  EXPECT_EQ(Text(Doc()), Text(*twin_));
}

TEST_P(BulkModelTest, SettingObjects) {
  Menu(kSetObjects);
  plain::SetObjects(*twin_, names_);
  EXPECT_EQ(Text(Doc()), Text(*twin_));
}

TEST_P(BulkModelTest, SettingTags) {
  Menu(kSetTags);
  plain::SetTags(*twin_, names_);
  EXPECT_EQ(Text(Doc()), Text(*twin_));
}

TEST_P(BulkModelTest, SettingLayers) {
  Menu(kSetLayers);
  plain::SetLayers(*twin_, names_);
  EXPECT_EQ(Text(Doc()), Text(*twin_));
}

TEST_P(BulkModelTest, DeletingTheCheckedOnes) {
  Menu(kDeleteChecked);
  std::string rows;
  for (const String& name : plain::Delete(*twin_, names_)) rows += name.ToUtf8() + "\n";
  EXPECT_EQ(Text(Doc()), Text(*twin_));
  std::string shown;
  for (const engine::Row& row : engine::FindGadget(Dialog(), kList)->listRows) {
    shown += row.values.GetString(kColumnName).ToUtf8() + "\n";
    const bool checked =
        std::find(names_.begin(), names_.end(), row.values.GetString(kColumnName)) != names_.end();
    EXPECT_EQ(row.values.GetBool(kColumnChecked), checked);
  }
  EXPECT_EQ(shown, rows);
}

INSTANTIATE_TEST_SUITE_P(Seeds, BulkModelTest, testing::Range(0U, 40U));

}  // namespace
}  // namespace stagemarks
