// The order in which the plug-in asks things of its host, where no document and no file shows it
// afterwards.
#include <functional>

#include "tests/hostcalls/RecordedCalls.h"
#include "tests/source/StageTest.h"

namespace stagemarks {
namespace {

using tests::RecordedCalls;

class CallOrderTest : public StageTest {
 protected:
  BaseContainer& Settings() { return *Doc().GetActiveRenderData()->GetDataInstance(); }
};

TEST_F(CallOrderTest, APreviewFreesItsCopyThenGivesTheValuesBackThenEndsItsThread) {
  PretendSaved("shot.c4d");
  Tick(kGeneratePreview, true);
  for (const LONG there : {5300, 5076, 5202}) Settings().SetLong(there, 0);
  for (const LONG missing : {RDATA_FRAMEFROM, RDATA_FRAMETO}) Settings().RemoveData(missing);
  const RecordedCalls calls;
  Record("A");
  EXPECT_EQ(calls.Between("BaseBitmap::Save", "BaseBitmap::Free"),
            "BaseBitmap::Save\n"
            "BaseDocument::Free\n"
            "BaseContainer::SetData 5008\n"
            "BaseContainer::SetData 5009\n"
            "BaseContainer::SetData 5300\n"
            "BaseContainer::SetData 5016\n"
            "BaseContainer::RemoveData 5017\n"
            "BaseContainer::RemoveData 5018\n"
            "BaseContainer::SetData 5202\n"
            "BaseContainer::SetData 5076\n"
            "C4DThread::End\n"
            "C4DThread::Wait\n"
            "C4DThread::End\n"  // the thread's own, as it goes
            "BaseBitmap::Free\n");
}

TEST_F(CallOrderTest, WithoutMemoryForAPreviewTheElementIsThereAndNothingGoesOnShowing) {
  PretendSaved("shot.c4d");
  Tick(kGeneratePreview, true);
  const BaseContainer before = Settings();
  for (const char* lacking : {"BaseBitmap::Alloc", "BaseBitmap::Init", "C4DAtom::GetClone"}) {
    Transcript();
    {
      RecordedCalls calls;
      calls.Fail(lacking);
      EXPECT_FALSE(Record(lacking)) << lacking;
    }
    const std::string told = Transcript();
    const std::string ending = "status: Stagemarks - Generating Preview Image\nstatus cleared\n";
    EXPECT_TRUE(told.ends_with(ending)) << lacking << ":\n" << told;
    EXPECT_NE(Rows().find(std::string("* ") + lacking), std::string::npos) << Rows();
    EXPECT_EQ(Settings(), before) << lacking;
  }
}

TEST_F(CallOrderTest, TheDialogBeginsWithTheOptions) {
  const RecordedCalls calls;
  Dialog().InitValues();
  EXPECT_EQ(calls.Only({"GeDialog::", "SimpleListView::"}),
            "GeDialog::SetBool on 10016\n"
            "GeDialog::SetBool on 10017\n"
            "GeDialog::SetBool on 10018\n"
            "GeDialog::SetBool on 10019\n"
            "GeDialog::SetBool on 10020\n"
            "GeDialog::SetBool on 10021\n"
            "GeDialog::SetBool off 10045\n"
            "GeDialog::SetLong 10026\n"
            "GeDialog::SetBool off 10041\n"
            "GeDialog::SetReal 10042\n"
            "GeDialog::SetReal 10044\n"
            "SimpleListView::SetLayout\n"
            "SimpleListView::RemoveAll\n");
}

// Which store is written when, of all that one command does.
TEST_F(CallOrderTest, EachCommandWritesTheStoresInItsOwnOrder) {
  struct Case {
    const char* name;
    std::function<void()> run;
    const char* written;
  };
  const Case cases[] = {
      {"recording", [this] { Record("B"); },
       "BaseContainer::SetContainer 1021477\nBaseContainer::SetContainer "
       "1023294\nBaseDocument::SetChanged\n"},
      {"renaming", [this] { Rename("A", "Z"); },
       "BaseContainer::SetContainer 1023294\nBaseContainer::SetContainer "
       "1021477\nBaseDocument::SetChanged\n"},
      {"deleting all", [this] { Menu(kDeleteAll); },
       "BaseContainer::SetContainer 1021477\nBaseContainer::SetContainer "
       "1023294\nBaseDocument::SetChanged\n"
       "BaseContainer::RemoveData 1021477\nBaseContainer::RemoveData "
       "1023294\nBaseDocument::SetChanged\n"},
  };
  Record("A");
  for (const Case& c : cases) {
    const RecordedCalls calls;
    c.run();
    EXPECT_EQ(calls.Only({"BaseContainer::SetContainer 102", "BaseContainer::RemoveData 102",
                          "BaseDocument::SetChanged"}),
              c.written)
        << c.name;
  }
}

// The list is built anew as often for three elements as for thirty: decided so, because nobody can
// see it in between.
TEST_F(CallOrderTest, ManyDeletionsRebuildTheListOnce) {
  for (const LONG entry : {kDeleteChecked, kDeleteAll}) {
    int refreshes[2];
    for (const int many : {0, 1}) {
      for (int i = 0; i < (many ? 30 : 3); ++i) Record("S" + std::to_string(i));
      Menu(kCheckAll);
      const RecordedCalls calls;
      Menu(entry);
      EXPECT_EQ(Rows(), "");
      refreshes[many] = calls.Count("SimpleListView::RemoveAll");
    }
    EXPECT_EQ(refreshes[0], refreshes[1]) << entry;
    EXPECT_GE(refreshes[0], 1);
  }
}

}  // namespace
}  // namespace stagemarks
