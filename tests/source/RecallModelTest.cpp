// Random recordings, loads, renamings and deletions amid random changes of the scene, beside a
// plain model of what elements hold. It would see a write that reaches an older element, and a work
// container that forgets or keeps too much.
#include <map>
#include <random>

#include "tests/source/StageTest.h"

namespace stagemarks {
namespace {

class RecallModelTest : public StageTest, public testing::WithParamInterface<unsigned> {
 protected:
  // The recorded values of one object: its switches, the material of its texture tag, the value in
  // its style tag.
  struct Look {
    LONG editor;
    LONG render;
    Bool deform;
    BaseMaterial* material;
    LONG style;

    bool operator==(const Look&) const = default;
  };
  using Recorded = std::vector<std::pair<BaseObject*, Look>>;

  LONG Pick(LONG count) { return std::uniform_int_distribution<LONG>(0, count - 1)(random_); }

  static Look LookOf(const BaseObject* object) {
    const BaseTag* texture = object->GetTag(Ttexture);
    return {object->GetEditorMode(), object->GetRenderMode(), object->GetDeformMode(),
            static_cast<const TextureTag*>(texture)->GetMaterial(),
            object->GetTag(kStyle)->GetDataInstance()->GetLong(1)};
  }

  static void Apply(BaseObject* object, const Look& look) {
    SetSwitches(object, look.editor, look.render, look.deform);
    static_cast<TextureTag*>(object->GetTag(Ttexture))->SetMaterial(look.material);
    object->GetTag(kStyle)->GetDataInstance()->SetLong(1, look.style);
  }

  Recorded Scene() const {
    Recorded scene;
    for (BaseObject* object : objects_) scene.emplace_back(object, LookOf(object));
    return scene;
  }

  void AddObject() {
    BaseObject* object = Object("o");
    Texture(object, nullptr);
    Tag(object, kStyle)->GetDataInstance()->SetLong(1, 0);
    objects_.push_back(object);
  }

  void Change() {
    if (objects_.empty()) return;
    Apply(objects_[static_cast<std::size_t>(Pick(static_cast<LONG>(objects_.size())))],
          {Pick(3), Pick(3), Pick(2) == 1, materials_[static_cast<std::size_t>(Pick(2))], Pick(5)});
  }

  void DeleteObject() {
    if (objects_.empty()) return;
    const auto victim = objects_.begin() + Pick(static_cast<LONG>(objects_.size()));
    BaseObject* object = *victim;
    BaseObject::Free(object);
    objects_.erase(victim);
  }

  // A recording writes over the work containers from the front.
  void RecordOne() {
    const std::string name = NewName();
    if (elements_.count(name) > 0) Answer(true);
    Record(name);
    const Recorded scene = Scene();
    if (work_.size() < scene.size()) work_.resize(scene.size());
    std::copy(scene.begin(), scene.end(), work_.begin());
    elements_[name] = work_;
  }

  void LoadOne(bool undone) {
    if (elements_.empty()) return;
    const std::string name = OldName();
    const Recorded before = Scene();
    Load(name);
    work_.clear();
    std::map<BaseObject*, Look> expected(before.begin(), before.end());
    for (const auto& [object, look] : elements_[name]) {
      if (expected.count(object) > 0) expected[object] = look;
    }
    const Recorded after = Scene();
    EXPECT_EQ((std::map<BaseObject*, Look>(after.begin(), after.end())), expected);
    if (!undone) return;
    EXPECT_TRUE(Undo());
    EXPECT_EQ(Scene(), before);
  }

  void RenameOne() {
    if (elements_.empty()) return;
    const std::string from = OldName();
    const std::string to = NewName();
    if (elements_.count(to) > 0) return;
    Rename(from, to);
    elements_[to] = elements_[from];
    elements_.erase(from);
  }

  void DeleteOne() {
    if (elements_.empty()) return;
    const std::string name = OldName();
    Answer(true);
    Delete(name);
    elements_.erase(name);
  }

  std::string NewName() { return std::string(1, static_cast<char>('A' + Pick(8))); }
  std::string OldName() {
    return std::next(elements_.begin(), Pick(static_cast<LONG>(elements_.size())))->first;
  }

  std::string ExpectedNames() const {
    std::string text;
    for (const auto& [name, recorded] : elements_) text += name;
    return text;
  }
  std::string ListedNames() const {
    std::string text;
    for (const char letter : Rows())
      text += letter >= 'A' && letter <= 'Z' ? std::string(1, letter) : "";
    return text;
  }

  static constexpr LONG kStyle = 1011012;
  std::mt19937 random_{GetParam()};
  std::vector<BaseObject*> objects_;
  BaseMaterial* materials_[2] = {Material("Wood"), Material("Steel")};
  Recorded work_;
  std::map<std::string, Recorded> elements_;
};

TEST_P(RecallModelTest, ElementsHoldWhatTheModelHolds) {
  // Another object may come to lie where a deleted one lay, so all that will be deleted is made
  // beforehand.
  for (int i = 0; i < 40; ++i) AddObject();
  for (int step = 0; step < 300 && !HasFailure(); ++step) {
    switch (Pick(8)) {
      case 0:
        RecordOne();
        break;
      case 1:
        LoadOne(false);
        break;
      case 2:
        LoadOne(true);
        break;
      case 3:
        RenameOne();
        break;
      case 4:
        DeleteOne();
        break;
      case 5:
        if (step % 10 == 0) DeleteObject();
        break;
      default:
        Change();
        break;
    }
    ASSERT_EQ(ListedNames(), ExpectedNames()) << "after step " << step;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RecallModelTest, testing::Values(1u, 2u, 3u, 4u, 5u, 6u));

}  // namespace
}  // namespace stagemarks
