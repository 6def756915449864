#include <sys/stat.h>

#include "host/Host.h"
#include "tests/application/Stage.h"

namespace {

namespace fs = std::filesystem;
using engine::FileNow;
using engine::Result;
using engine::Status;
using host::BaseDocument;

struct Saving : tests::Stage {
  BaseDocument* New(const char* name) {
    BaseDocument* doc = application->NewDocument();
    doc->SetDocumentName(name);
    return doc;
  }

  bool TakeEvent() {
    const bool pending = application->HasPendingEvents();
    application->DeliverEvents();
    return pending;
  }

  static std::string PathOf(const BaseDocument& doc) {
    return (doc.GetDocumentPath() + doc.GetDocumentName()).GetString().ToUtf8();
  }
};

TEST_F(Saving, SavingTellsTheHookOfThatDocumentFirst) {
  LoadGood();
  BaseDocument* doc = New("shot");
  New("other");
  Heard();
  EXPECT_EQ(application->SaveDocument(*doc).Message(),
            "The document was never saved; it needs a file name.");
  ASSERT_TRUE(application->SaveDocumentAs(*doc, At("first.c4d")));
  EXPECT_EQ(Heard(), "hook 1004: shot to " + At("first.c4d") + " (not there)\n");
  EXPECT_EQ(PathOf(*doc), At("first.c4d"));
  EXPECT_FALSE(doc->GetChanged());
  doc->SetChanged();
  ASSERT_TRUE(application->SaveDocument(*doc));
  EXPECT_EQ(Heard(), "hook 1004: " + At("first.c4d") + " to " + At("first.c4d") + " (there)\n");
  EXPECT_FALSE(doc->GetChanged());
}

// A name that leads to a file from the old folder only becomes the path of that file, unless the
// save fails.
TEST_F(Saving, ElsewhereKeepsItsTextures) {
  BaseDocument* doc = New("shot");
  for (const char* folder : {"old", "old/tex", "new", "new/tex"}) fs::create_directory(At(folder));
  for (const char* file : {"old/tex/a.png", "old/b.png", "new/tex/b.png"})
    tests::WriteText(At(file), file);
  host::BaseMaterial* material = host::BaseMaterial::Alloc(host::Mmaterial);
  doc->AppendMaterial(material);
  const auto texture = [&](const char* name) {
    host::BaseShader* shader = host::BaseShader::Alloc(host::Xbitmap);
    shader->GetDataInstance()->SetFilename(host::BITMAPSHADER_FILENAME, host::Filename(name));
    material->InsertShader(shader);
    return shader;
  };
  host::BaseShader* const shaders[] = {texture("a.png"), texture("b.png"), texture("nowhere.png")};
  const auto names = [&] {
    std::string text;
    for (const host::BaseShader* shader : shaders) {
      text +=
          shader->GetDataInstance()->GetFilename(host::BITMAPSHADER_FILENAME).GetString().ToUtf8() +
          " ";
    }
    return text;
  };
  ASSERT_TRUE(application->SaveDocumentAs(*doc, At("old/shot.c4d")));
  EXPECT_EQ(names(), "a.png b.png nowhere.png ");
  EXPECT_FALSE(application->SaveDocumentAs(*doc, At("missing/shot.c4d")));
  EXPECT_EQ(names(), "a.png b.png nowhere.png ");
  ASSERT_TRUE(application->SaveDocumentAs(*doc, At("new/shot.c4d")));
  EXPECT_EQ(names(), At("old/tex/a.png") + " " + At("old/b.png") + " nowhere.png ");
}

TEST_F(Saving, AFailedSaveLeavesPathAndChangesAsTheyWere) {
  BaseDocument* doc = New("shot");
  ASSERT_TRUE(application->SaveDocumentAs(*doc, At("first.c4d")));
  doc->SetChanged();
  const Status failed = application->SaveDocumentAs(*doc, At("missing/second.c4d"));
  EXPECT_NE(failed.Message().find(At("missing/second.c4d")), std::string::npos) << failed.Message();
  EXPECT_EQ(PathOf(*doc), At("first.c4d"));
  EXPECT_TRUE(doc->GetChanged());
  EXPECT_EQ(services.ledger.FailuresSince(0).size(), 1U);
}

TEST_F(Saving, WhicheverOperationFailsTheOldFileStaysWhole) {
  BaseDocument* doc = New("shot");
  ASSERT_TRUE(application->SaveDocumentAs(*doc, At("scene.c4d")));
  const std::string old = tests::ReadText(At("scene.c4d"));
  doc->InsertObject(host::BaseObject::Alloc(host::Ocube), nullptr, nullptr);
  std::size_t failures = 0;
  for (bool saved = false; !saved;) {
    services.files.BreakFrom(failures + 1);
    saved = application->SaveDocument(*doc).Ok();
    if (saved) break;
    ++failures;
    ASSERT_LT(failures, 100U);
    EXPECT_EQ(tests::ReadText(At("scene.c4d")), old);
    EXPECT_TRUE(doc->GetChanged());
    EXPECT_EQ(services.ledger.FailuresSince(0).size(), failures);
  }
  EXPECT_GE(failures, 1U);
  EXPECT_NE(tests::ReadText(At("scene.c4d")), old);
  EXPECT_EQ(tests::Names(scratch.Path()), "scene.c4d user");
}

TEST_F(Saving, TheVersionBeforeIsTheOneThatTheLastChangeReplaced) {
  const std::string path = At("scene.c4d");
  BaseDocument* doc = New("shot");
  ASSERT_TRUE(application->SaveDocumentAs(*doc, path));
  EXPECT_EQ(application->FormerVersionOf(path), "");
  const std::string first = tests::ReadText(path);
  const std::uint64_t number = services.files.Stamp(path).number;
  const auto change = [&] {
    doc->InsertObject(host::BaseObject::Alloc(host::Ocube), nullptr, nullptr);
  };
  change();
  ASSERT_TRUE(application->SaveDocument(*doc));
  ASSERT_TRUE(application->SaveDocument(*doc)) << "again, as people do";
  const std::string former = application->FormerVersionOf(path);
  EXPECT_EQ(tests::ReadText(former), first);
  EXPECT_EQ(services.files.Stamp(former).number, number) << "the file itself, and no copy";
  change();
  const auto refuse = [] { return Status::Failure("No."); };
  EXPECT_FALSE(application->SaveDocument(*doc, {.ready = refuse}).Ok());
  EXPECT_EQ(tests::ReadText(former), first) << "nothing was replaced";
  services.files.Break(1, tests::Fault::Fail, engine::Operation::ReplaceFile);
  EXPECT_FALSE(application->RestoreFormerVersion(path).Ok());
  ASSERT_TRUE(application->RestoreFormerVersion(path));
  EXPECT_EQ(tests::ReadText(path), first);
  EXPECT_EQ(application->LookAtFileOf(*doc), FileNow::Changed) << "the document is older";
  // Of more scenes than are kept the oldest go.
  for (int scene = 0; scene < 101; ++scene) {
    const std::string other = At("s" + std::to_string(scene) + ".c4d");
    tests::WriteText(other, "before");
    ASSERT_TRUE(application->SaveDocumentAs(*doc, other));
  }
  EXPECT_EQ(application->FormerVersionOf(path), "");
  EXPECT_NE(application->FormerVersionOf(At("s100.c4d")), "");
  EXPECT_NE(application->FormerVersionOf(At("s1.c4d")), "");
}

TEST_F(Saving, TheVersionBeforeIsKeptWhereThePersonWantsIt) {
  using engine::FormerPlace;
  fs::create_directory(At("folder"));
  const std::string name = std::string(170, 'n') + ".c4d";
  const std::string path = At("folder/" + name);
  tests::WriteText(path, "first");
  fs::create_symlink(path, At("link.c4d"));
  BaseDocument* doc = New("shot");
  const auto save = [&](const std::string& file) {
    ASSERT_TRUE(application->SaveDocumentAs(*doc, file, {.replaceChanged = true}));
    doc->SetFps(doc->GetFps() + 1);
  };
  EXPECT_EQ(application->PlaceOfFormerVersions(), FormerPlace::Hidden);
  save(At("link.c4d"));
  const std::string hidden = application->FormerVersionOf(path);
  EXPECT_EQ(application->FormerVersionOf(At("link.c4d")), hidden);
  EXPECT_EQ(tests::ReadText(hidden), "first");
  const std::string begin = At("user/state/previous/") + std::string(150, 'n') + "-";
  EXPECT_EQ(hidden.substr(0, begin.size()), begin);
  EXPECT_EQ(hidden.size(), begin.size() + 16 + 4) << "a hash and the suffix";
  ASSERT_TRUE(application->SetPlaceOfFormerVersions(FormerPlace::Beside));
  EXPECT_EQ(application->PlaceOfFormerVersions(), FormerPlace::Beside);
  EXPECT_EQ(application->FormerVersionOf(path), hidden) << "it was kept there before";
  save(path);
  EXPECT_EQ(application->FormerVersionOf(path), path + "~");
  ASSERT_TRUE(application->SetPlaceOfFormerVersions(FormerPlace::Hidden));
  EXPECT_EQ(application->FormerVersionOf(path), hidden);
  ASSERT_TRUE(application->SetPlaceOfFormerVersions(FormerPlace::Nowhere));
  const std::string both = tests::ReadText(hidden) + tests::ReadText(path + "~");
  save(path);
  EXPECT_EQ(tests::ReadText(hidden) + tests::ReadText(path + "~"), both);
  save(At("folder/new.c4d"));
  save(At("folder/new.c4d"));
  EXPECT_EQ(application->FormerVersionOf(At("folder/new.c4d")), "");
  // What no such place is counts as none that was chosen.
  for (const host::LONG place : {-1, 0, 3, 9}) {
    host::BaseContainer own;
    own.SetLong(1, place);
    ASSERT_TRUE(host::SetWorldPluginData(1, own, true));
    EXPECT_EQ(application->PlaceOfFormerVersions(), FormerPlace::Hidden) << place;
  }
}

TEST_F(Saving, AFileChangedBySomebodyElseIsNotReplacedWithoutAWord) {
  const std::string path = At("scene.c4d");
  BaseDocument* doc = New("shot");
  ASSERT_TRUE(application->SaveDocumentAs(*doc, path));
  const std::string own = tests::ReadText(path);
  const std::string other = "x" + own.substr(1);
  EXPECT_EQ(application->LookAtFileOf(*doc), FileNow::AsRead);
  const struct {
    std::function<void()> happens;
    FileNow now;
    bool saves;
  } kRows[] = {
      {[] {}, FileNow::AsRead, true},
      {[&] { tests::WriteText(path, own); }, FileNow::AsRead, true},
      {[&] { fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write); },
       FileNow::AsRead, true},
      {[&] { tests::WriteText(path, own + "more"); }, FileNow::Changed, false},
      {[&] { tests::WriteText(path, other); }, FileNow::Changed, false},
      {[&] { fs::remove(path); }, FileNow::Gone, true},
  };
  for (const auto& row : kRows) {
    row.happens();
    const std::string before = tests::ReadText(path);
    EXPECT_EQ(application->LookAtFileOf(*doc), row.now) << &row - kRows;
    doc->SetChanged();
    const Status saved = application->SaveDocument(*doc);
    EXPECT_EQ(saved.Ok(), row.saves) << &row - kRows << saved.Message();
    EXPECT_EQ(tests::ReadText(path), row.saves ? own : before) << &row - kRows;
    EXPECT_EQ(saved.Message().find("somebody else") != std::string::npos, !row.saves)
        << saved.Message();
    EXPECT_NE(doc->GetChanged(), row.saves);
  }
}

TEST_F(Saving, AChangedFileIsReplacedByWhoAcceptsItOrSaysSo) {
  const std::string path = At("scene.c4d");
  BaseDocument* doc = New("shot");
  ASSERT_TRUE(application->SaveDocumentAs(*doc, path));
  fs::create_symlink(path, At("link.c4d"));
  tests::WriteText(path, "somebody's");
  EXPECT_FALSE(application->SaveDocumentAs(*doc, At("link.c4d")).Ok())
      << "another name of the same file";
  ASSERT_TRUE(application->SaveDocument(*doc, {.replaceChanged = true}));
  EXPECT_EQ(application->LookAtFileOf(*doc), FileNow::AsRead);
  tests::WriteText(path, "somebody's again");
  application->AcceptFileOf(*doc);
  EXPECT_EQ(application->LookAtFileOf(*doc), FileNow::AsRead);
  EXPECT_TRUE(application->SaveDocument(*doc));
  const Result<BaseDocument*> opened = application->OpenDocument(path);
  tests::WriteText(path, "somebody's once more");
  EXPECT_EQ(application->LookAtFileOf(*opened.Value()), FileNow::Changed);
  EXPECT_EQ(application->LookAtFileOf(*New("never saved")), FileNow::AsRead);
}

TEST_F(Saving, AFileThatIsBeingChangedIsWaitedFor) {
  BaseDocument* doc = New("shot");
  ASSERT_TRUE(application->SaveDocumentAs(*doc, At("scene.c4d")));
  auto lock = engine::FileLock::Try(At("scene.c4d"));
  ASSERT_TRUE(lock && lock.Value());
  const Status busy =
      application->SaveDocument(*doc, {.longestWait = std::chrono::milliseconds(0)});
  EXPECT_NE(busy.Message().find("another program is changing it"), std::string::npos)
      << busy.Message();
  services.person.StopProgressAt(1);
  EXPECT_NE(application->SaveDocument(*doc).Message().find("stopped"), std::string::npos)
      << "and a person may stop waiting";
  services.person.StopProgressAt(0);
  ASSERT_TRUE(application->SetPlaceOfFormerVersions(engine::FormerPlace::Beside));
  tests::WriteText(At("scene.c4d~"), tests::ReadText(At("scene.c4d")));
  EXPECT_FALSE(application->RestoreFormerVersion(At("scene.c4d"),
                                                 {.longestWait = std::chrono::milliseconds(0)}));
  EXPECT_TRUE(application->SaveDocument(*doc, {.lock = &*lock.Value()})) << "by who has the lock";
  EXPECT_TRUE(application->SaveDocument(*doc)) << "the lock is on a file that is no longer there";
}

TEST_F(Saving, HooksHearNothingOfASaveThatCannotBe) {
  LoadGood();
  BaseDocument* doc = New("shot");
  ASSERT_TRUE(application->SaveDocumentAs(*doc, At("first.c4d")));
  fs::create_directory(At("folder"));
  Heard();
  mkfifo(At("pipe").c_str(), 0600);
  EXPECT_FALSE(application->SaveDocumentAs(*doc, At("pipe")).Ok());
  EXPECT_FALSE(application->SaveDocumentAs(*doc, At("folder")).Ok());
  EXPECT_FALSE(application->SaveDocumentAs(*doc, At("missing/scene.c4d")).Ok());
  EXPECT_EQ(Heard(), "");
  const auto refuse = [] { return Status::Failure("No."); };
  EXPECT_EQ(application->SaveDocumentAs(*doc, At("second.c4d"), {.ready = refuse}).Message(),
            "No.");
  EXPECT_EQ(tests::Names(scratch.Path()), "first.c4d folder pipe plugins");
}

TEST_F(Saving, ThePluginsSaveTellsNobodyAndKeepsPathAndName) {
  LoadGood();
  BaseDocument* doc = New("shot");
  doc->SetChanged();
  Heard();
  const host::Filename file(At("copy.c4d").c_str());
  EXPECT_FALSE(host::SaveDocument(doc, file, 0, 1001025));
  EXPECT_FALSE(host::SaveDocument(nullptr, file, 0, host::FORMAT_C4DEXPORT));
  EXPECT_FALSE(host::SaveDocument(doc, "copy.c4d", 0, host::FORMAT_C4DEXPORT));
  EXPECT_FALSE(
      host::SaveDocument(doc, host::Filename(scratch.Path().c_str()), 0, host::FORMAT_C4DEXPORT));
  EXPECT_TRUE(host::SaveDocument(doc, file, 0, host::FORMAT_C4DEXPORT));
  EXPECT_EQ(Heard(), "");
  EXPECT_EQ(PathOf(*doc), "shot");
  EXPECT_TRUE(doc->GetChanged());
}

TEST_F(Saving, OpeningInsertsAndActivates) {
  BaseDocument* doc = New("shot");
  doc->InsertObject(host::BaseObject::Alloc(host::Ocube), nullptr, nullptr);
  ASSERT_TRUE(application->SaveDocumentAs(*doc, At("a b.c4d")));
  TakeEvent();
  Result<BaseDocument*> opened = application->OpenDocument(At("a b.c4d"));
  ASSERT_TRUE(opened) << opened.Message();
  EXPECT_TRUE(TakeEvent());
  EXPECT_EQ(host::GetActiveDocument(), opened.Value());
  EXPECT_EQ(PathOf(*opened.Value()), At("a b.c4d"));
  EXPECT_NE(opened.Value()->GetFirstObject(), nullptr);
  for (const char* name : {"missing.c4d", "broken.c4d", "picture.xyz"}) {
    if (name[0] != 'm') tests::WriteText(At(name), "no scene");
    const Result<BaseDocument*> failed = application->OpenDocument(At(name));
    EXPECT_FALSE(failed) << name;
    EXPECT_NE(failed.Message().find(name), std::string::npos) << failed.Message();
  }
  EXPECT_EQ(application->Documents().size(), 2U);
  EXPECT_FALSE(TakeEvent());
}

}  // namespace
