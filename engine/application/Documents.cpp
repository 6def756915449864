// Opening, saving and listing documents: the application's operations and the published functions.
#include <utility>

#include "engine/application/ApplicationBody.h"
#include "engine/import/EmbeddedTextures.h"
#include "engine/import/Import.h"
#include "engine/render/TextureSearch.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/ShaderWalk.h"
#include "engine/scenefile/SceneFile.h"
#include "engine/scenefile/Trash.h"

namespace engine {
namespace {

host::Filename NameOfPath(const std::string& path) {
  return host::Filename(host::String(std::string_view(path)));
}

std::string SavedPath(const host::BaseDocument& doc) {
  if (!doc.GetDocumentPath().Content()) return "";
  return (doc.GetDocumentPath() + doc.GetDocumentName()).GetString().ToUtf8();
}

Result<OwnedDocument> Import(const ApplicationBody& body, const std::string& path,
                             std::vector<std::string>* notes) {
  Result<Imported> imported =
      ImportScene(body.services, path, body.setup.importWorker, body.setup.importLimits);
  if (!imported) return imported.GetStatus();
  if (notes != nullptr) *notes = std::move(imported.Value().notes);
  return std::move(imported.Value().document);
}

// A scene that is saved into another folder goes on using its textures: those that were found from
// the old folder by a name that leads elsewhere, or nowhere, from the new one get the full path of
// their file.
class TexturesOnMove {
 public:
  // Changes the document's bitmap shaders, without undo. Embedded files and names that lead nowhere
  // already stay as they are.
  TexturesOnMove(FileSystem& files, host::BaseDocument& doc, const std::string& folder)
      : doc_(doc) {
    const std::string old = doc.GetDocumentPath().GetString().ToUtf8();
    if (old.empty() || old == folder) return;
    ForEachBitmapShader(doc, [&](host::BaseShader& shader) {
      const std::string name = BitmapFileOf(shader);
      if (name.empty() || name.front() == '/' || FindEmbeddedFile(doc, name) != nullptr) return;
      const std::string file = FindTexture(files, name, old);
      if (file.empty() || FindTexture(files, name, folder) == file) return;
      former_.emplace_back(IdOf(shader), name);
      SetBitmapFile(shader, file);
    });
  }

  // The names as they were, for a document that could not be saved. It must be there still.
  void TakeBack() {
    for (const auto& [id, name] : former_) {
      if (host::BaseList2D* shader = FindNode(&doc_, id))
        SetBitmapFile(static_cast<host::BaseShader&>(*shader), name);
    }
  }

 private:
  host::BaseDocument& doc_;
  std::vector<std::pair<NodeId, std::string>> former_;
};

// Remembers the file of a document and forgets those of documents that are no more.
void Know(ApplicationBody& body, const host::BaseDocument& doc, const std::string& path,
          const FileAsRead& file) {
  std::map<host::ULLONG, KnownFile> files;
  for (const host::BaseDocument* open : body.documents.All()) {
    if (auto known = body.files.extract(NumberOf(*open)); !known.empty())
      files.insert(std::move(known));
  }
  files.insert_or_assign(NumberOf(doc), KnownFile{path, file});
  body.files = std::move(files);
}

KnownFile* FileKnownOf(ApplicationBody& body, const host::BaseDocument& doc) {
  const auto known = body.files.find(NumberOf(doc));
  return known == body.files.end() ? nullptr : &known->second;
}

// By device and number, too: a link and its target are one file.
bool IsSameFile(FileSystem& files, const std::string& one, const std::string& other) {
  const FileStamp first = files.Stamp(one);
  const FileStamp second = files.Stamp(other);
  return one == other ||
         (first.number != 0 && first.device == second.device && first.number == second.number);
}

Result<FileLock> LockOn(const Services& services, const std::string& path,
                        std::chrono::milliseconds longest) {
  const std::string what =
      "Waiting for another program that changes " + path.substr(path.rfind('/') + 1);
  return FileLock::Take(path, longest,
                        [&](double share) { return services.person.Progress(share, what); });
}

// One saving of a document, from taking the lock to the new path and name.
class Saving {
 public:
  Saving(ApplicationBody& body, host::BaseDocument& doc, const std::string& path,
         const SaveChoices& choices)
      : body_(body),
        doc_(doc),
        path_(path),
        file_(NameOfPath(path)),
        choices_(choices),
        listed_(body.documents.Holds(&doc)) {}

  // From what is easily refused to what cannot be taken back: lock, place, textures, and last the
  // file itself. Where a hook closes the document while it is being saved, nothing of it is touched
  // any more.
  Status Run() {
    body_.services.files.FollowScene(path_);
    Status status = TakeLock();
    if (status) status = CheckFile();
    if (status)
      status = WriteEmbeddedTextures(body_.services.files, doc_,
                                     file_.GetDirectory().GetString().ToUtf8());
    if (!status) return status;
    TexturesOnMove textures(body_.services.files, doc_, file_.GetDirectory().GetString().ToUtf8());
    status = Write();
    if (!status && (!listed_ || body_.documents.Holds(&doc_))) textures.TakeBack();
    if (!status) return status;
    doc_.SetDocumentPath(file_.GetDirectory());
    doc_.SetDocumentName(file_.GetFile());
    ClearChanged(doc_);
    KeepPackedOnly(DeletedStatesOf(doc_));
    return status;
  }

 private:
  Status TakeLock() {
    if (choices_.lock != nullptr) return {};
    Result<FileLock> lock = LockOn(body_.services, path_, choices_.longestWait);
    if (lock) lock_ = lock.Take();
    return lock.GetStatus();
  }

  // Before anything is written or copied, what cannot be replaced is left alone.
  Status CheckFile() {
    const FileKind kind = body_.services.files.Kind(path_);
    if (kind == FileKind::Folder)
      return FileFailure("Cannot write", path_, "a folder is in its place");
    if (kind == FileKind::Other)
      return FileFailure("Cannot write", path_, "something that is no plain file is in its place");
    KnownFile* known = FileKnownOf(body_, doc_);
    if (choices_.replaceChanged || known == nullptr ||
        !IsSameFile(body_.services.files, known->path, path_))
      return {};
    if (LookAtFile(body_.services.files, known->file, path_) != FileNow::Changed) return {};
    return FileFailure("Did not write", path_,
                       "it was changed by somebody else after it had been opened");
  }

  // Hooks hear of it once; where one of them changes the document, that is written, too.
  Status Write() {
    Status saved;
    std::string former = body_.formerVersions.PlaceFor(path_);
    do {
      written_ = ChangeCount(doc_);
      FileAsRead now = FileBefore();
      saved =
          SaveSceneFile(body_.services, doc_, path_,
                        {[this] { return BeforePlacingIt(); }, std::exchange(former, "")}, &now);
      if (saved) Know(body_, doc_, path_, now);
    } while (saved && ChangeCount(doc_) != written_);
    if (saved) body_.formerVersions.RemoveOldest();
    return saved;
  }

  // Only for the same path: a former version is kept whenever another file is replaced.
  FileAsRead FileBefore() {
    const KnownFile* known = FileKnownOf(body_, doc_);
    return known != nullptr && known->path == path_ ? known->file : FileAsRead();
  }

  Status BeforePlacingIt() {
    // Once more, since writing a large scene takes long enough for somebody else to save it.
    if (Status unchanged = CheckFile(); !unchanged) return unchanged;
    if (!std::exchange(told_, true)) {
      host::DocumentInfoData info{host::MSG_DOCUMENTINFO_TYPE_SAVE_BEFORE, file_};
      doc_.Message(host::MSG_DOCUMENTINFO, &info);
      if (listed_ && !body_.documents.Holds(&doc_))
        return Status::Failure("The document was closed before it could be saved.");
    }
    return choices_.ready ? choices_.ready() : Status();
  }

  ApplicationBody& body_;
  host::BaseDocument& doc_;
  const std::string path_;
  const host::Filename file_;
  const SaveChoices& choices_;
  const bool listed_;
  FileLock lock_;
  host::ULLONG written_ = 0;  // change count of what was written
  bool told_ = false;
};

}  // namespace

host::BaseDocument* Application::NewDocument() {
  host::BaseDocument* doc = host::BaseDocument::Alloc();
  host::InsertBaseDocument(doc);
  host::SetActiveDocument(doc);
  return doc;
}

Result<host::BaseDocument*> Application::OpenDocument(const std::string& path,
                                                      std::vector<std::string>* notes) {
  body_->services.files.FollowScene(path);
  FileAsRead file;
  const bool imports = IsImportable(path);
  Result<OwnedDocument> read =
      imports ? Import(*body_, path, notes) : OpenSceneFile(body_->services, path, &file);
  if (!read) return read.GetStatus();
  host::BaseDocument* const doc = read.Take().release();
  body_->documents.Insert(doc);
  if (!imports) Know(*body_, *doc, path, file);
  body_->documents.Activate(doc);
  host::EventAdd();
  return doc;
}

Status Application::SaveDocumentAs(host::BaseDocument& doc, const std::string& path,
                                   const SaveChoices& choices) {
  return Saving(*body_, doc, path, choices).Run();
}

Status Application::SaveDocument(host::BaseDocument& doc, const SaveChoices& choices) {
  const std::string path = SavedPath(doc);
  if (path.empty()) return Status::Failure("The document was never saved; it needs a file name.");
  return SaveDocumentAs(doc, path, choices);
}

FileNow Application::LookAtFileOf(const host::BaseDocument& doc) {
  KnownFile* known = FileKnownOf(*body_, doc);
  return known == nullptr ? FileNow::AsRead
                          : LookAtFile(body_->services.files, known->file, known->path);
}

void Application::AcceptFileOf(const host::BaseDocument& doc) {
  KnownFile* known = FileKnownOf(*body_, doc);
  if (known == nullptr) return;
  const FileStamp stamp = body_->services.files.Stamp(known->path);
  const Result<std::string> bytes = body_->services.files.ReadFile(known->path);
  if (!bytes) return;
  const std::string_view whole = bytes.Value();
  known->file = {stamp, HashOfContent({&whole, 1})};
}

FormerPlace Application::PlaceOfFormerVersions() const { return body_->formerVersions.Place(); }

Status Application::SetPlaceOfFormerVersions(FormerPlace place) {
  return body_->formerVersions.SetPlace(place);
}

std::string Application::FormerVersionOf(const std::string& path) const {
  return body_->formerVersions.Find(path);
}

Status Application::RestoreFormerVersion(const std::string& path, const SaveChoices& choices) {
  const Services& services = body_->services;
  services.files.FollowScene(path);
  const std::string former = FormerVersionOf(path);
  if (former.empty())
    return FileFailure("Cannot restore", path, "no version from before its last saving is kept");
  FileLock lock;
  if (choices.lock == nullptr) {
    Result<FileLock> taken = LockOn(services, path, choices.longestWait);
    if (!taken) return taken.GetStatus();
    lock = taken.Take();
  }
  const Result<std::string> bytes = services.files.ReadFile(former);
  if (!bytes) return bytes.GetStatus();
  // Read as a whole and thrown away: a damaged version must not take the place of a scene that
  // opens.
  if (const Result<OwnedDocument> whole = ReadScene(bytes.Value()); !whole) {
    return Status::Failure("The version before is damaged, and nothing was changed. \"" + former +
                           "\": " + whole.Message());
  }
  const std::string_view view = bytes.Value();
  return services.files.ReplaceFile(path, {&view, 1}, {choices.ready, former});
}

std::vector<host::BaseDocument*> Application::Documents() const { return body_->documents.All(); }

bool Application::ReleaseDocument(host::BaseDocument* doc) {
  const bool released = body_->documents.Release(doc);
  if (released) host::EventAdd();
  return released;
}

}  // namespace engine

namespace host {

using engine::ApplicationBody;

BaseDocument* GetActiveDocument() {
  ApplicationBody* body = ApplicationBody::Current();
  return body != nullptr ? body->documents.Active() : nullptr;
}

void SetActiveDocument(BaseDocument* doc) {
  ApplicationBody* body = ApplicationBody::Current();
  if (body != nullptr && body->documents.Activate(doc)) EventAdd();
}

void InsertBaseDocument(BaseDocument* doc) {
  if (ApplicationBody* body = ApplicationBody::Current()) body->documents.Insert(doc);
}

void KillDocument(BaseDocument* doc) {
  ApplicationBody* body = ApplicationBody::Current();
  if (body != nullptr && body->documents.Kill(doc)) EventAdd();
}

BaseDocument* GetFirstDocument() {
  ApplicationBody* body = ApplicationBody::Current();
  return body == nullptr || body->documents.All().empty() ? nullptr : body->documents.All().front();
}

Bool SaveDocument(BaseDocument* doc, const Filename& file, LONG, LONG format) {
  if (doc == nullptr || format != FORMAT_C4DEXPORT) return FALSE;
  // Without messages, lock and new name: plug-ins write copies with it.
  return engine::SaveSceneFile(engine::PublishedServices(), *doc, file.GetString().ToUtf8()).Ok();
}

Filename GetGlobalTexturePath(LONG index) {
  const ApplicationBody* body = ApplicationBody::Current();
  if (body == nullptr || index < 0 ||
      static_cast<std::size_t>(index) >= body->setup.texturePaths.size())
    return Filename();
  return Filename(
      String(std::string_view(body->setup.texturePaths[static_cast<std::size_t>(index)])));
}

const BaseContainer* GetWorldPluginData(LONG id) {
  ApplicationBody* body = ApplicationBody::Current();
  return body != nullptr ? body->preferences.Get(id) : nullptr;
}

Bool SetWorldPluginData(LONG id, const BaseContainer& data, Bool add) {
  ApplicationBody* body = ApplicationBody::Current();
  return body != nullptr && body->preferences.Set(id, data, add).Ok();
}

}  // namespace host
