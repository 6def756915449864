#include "host/Host.h"
#include "tests/application/Stage.h"

namespace {

using host::BaseDocument;

struct Documents : tests::Stage {
  BaseDocument* New(const char* name) {
    BaseDocument* doc = application->NewDocument();
    doc->SetDocumentName(name);
    return doc;
  }

  // The names of the chain, the active one in brackets.
  static std::string Chain() {
    std::string text;
    for (host::GeListNode* node = host::GetFirstDocument(); node != nullptr;
         node = node->GetNext()) {
      auto* doc = static_cast<BaseDocument*>(node);
      const std::string name = doc->GetDocumentName().GetString().ToUtf8();
      text += doc == host::GetActiveDocument() ? "[" + name + "]" : name;
    }
    for (host::GeListNode *node = nullptr, *next = host::GetFirstDocument(); next != nullptr;
         node = next, next = next->GetNext())
      EXPECT_EQ(next->GetPred(), node);
    return text;
  }

  bool TakeEvent() {
    const bool pending = application->HasPendingEvents();
    application->DeliverEvents();
    return pending;
  }
};

TEST_F(Documents, KillingTheActiveOneActivatesAnother) {
  EXPECT_EQ(host::GetActiveDocument(), nullptr);
  BaseDocument* a = New("a");
  BaseDocument* b = New("b");
  BaseDocument* c = New("c");
  EXPECT_EQ(Chain(), "ab[c]");
  BaseDocument* middle = New("middle");
  New("last");
  EXPECT_TRUE(application->ReleaseDocument(middle));
  EXPECT_EQ(Chain(), "abc[last]") << "the active one stays";
  BaseDocument::Free(middle);
  host::KillDocument(host::GetActiveDocument());
  EXPECT_EQ(Chain(), "ab[c]");
  host::SetActiveDocument(b);
  EXPECT_TRUE(TakeEvent());
  host::KillDocument(b);
  EXPECT_EQ(Chain(), "a[c]");
  EXPECT_TRUE(TakeEvent());
  host::KillDocument(b);
  EXPECT_FALSE(TakeEvent()) << "one that is not in the list is left alone";
  host::KillDocument(c);
  EXPECT_EQ(Chain(), "[a]");
  host::KillDocument(a);
  EXPECT_EQ(Chain(), "");
  EXPECT_EQ(host::GetActiveDocument(), nullptr);
  host::KillDocument(nullptr);
}

TEST_F(Documents, OnlyInsertedOnesCanBeActive) {
  BaseDocument* a = New("a");
  BaseDocument* loose = BaseDocument::Alloc();
  TakeEvent();
  host::SetActiveDocument(loose);
  host::SetActiveDocument(nullptr);
  host::SetActiveDocument(a);
  EXPECT_EQ(host::GetActiveDocument(), a);
  EXPECT_FALSE(TakeEvent()) << "nothing changed";
  host::InsertBaseDocument(loose);
  host::InsertBaseDocument(loose);
  EXPECT_EQ(Chain(), "[a]Untitled") << "inserting does not activate";
  EXPECT_EQ(application->Documents().size(), 2U);
}

TEST_F(Documents, UndoPostsAChangeAndWithoutStepsDoesNothing) {
  BaseDocument* doc = New("a");
  host::BaseObject* cube = host::BaseObject::Alloc(host::Ocube);
  doc->InsertObject(cube, nullptr, nullptr);
  TakeEvent();
  EXPECT_FALSE(application->Undo());
  EXPECT_FALSE(TakeEvent());
  doc->StartUndo();
  doc->AddUndo(host::UNDO_CHANGE, cube);
  cube->SetName("changed");
  doc->EndUndo();
  EXPECT_TRUE(application->Undo());
  EXPECT_TRUE(TakeEvent());
  EXPECT_NE(cube->GetName(), host::String("changed"));
  EXPECT_TRUE(application->Redo());
  EXPECT_TRUE(TakeEvent());
  EXPECT_EQ(cube->GetName(), host::String("changed"));
}

TEST_F(Documents, EachHasOneInstanceOfTheHook) {
  BaseDocument* before = New("before");
  LoadGood();
  New("after");
  EXPECT_EQ(Heard(), "hook init Untitled\n");
  host::KillDocument(before);
  EXPECT_EQ(Heard(), "hook free before\nhook destroyed\n");
}

TEST_F(Documents, GlobalTexturePathsAreThoseOfTheSetup) {
  EXPECT_EQ(host::GetGlobalTexturePath(0).GetString().ToUtf8(), "/first");
  EXPECT_EQ(host::GetGlobalTexturePath(1).GetString().ToUtf8(), "/second");
  for (const host::LONG index : {-1, 2, 9, 10})
    EXPECT_FALSE(host::GetGlobalTexturePath(index).Content()) << index;
}

TEST(NoApplication, ThePublishedFunctionsAnswerNothing) {
  ASSERT_EQ(engine::Application::Current(), nullptr);
  EXPECT_EQ(host::GetActiveDocument(), nullptr);
  EXPECT_EQ(host::GetFirstDocument(), nullptr);
  EXPECT_EQ(host::GetWorldPluginData(1), nullptr);
  EXPECT_FALSE(host::SetWorldPluginData(1, host::BaseContainer()));
  EXPECT_FALSE(host::GetGlobalTexturePath(0).Content());
  host::EventAdd();
}

}  // namespace
