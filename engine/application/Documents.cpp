// Opening, saving and listing documents: the application's operations and the published functions.
#include "engine/application/ApplicationBody.h"
#include "engine/import/EmbeddedTextures.h"
#include "engine/import/Import.h"
#include "engine/scene/Nodes.h"
#include "engine/scenefile/SceneFile.h"

namespace engine {
namespace {

host::Filename NameOfPath(const std::string& path) { return host::Filename(host::String(std::string_view(path))); }

std::string SavedPath(const host::BaseDocument& doc) {
  if (!doc.GetDocumentPath().Content()) return "";
  return (doc.GetDocumentPath() + doc.GetDocumentName()).GetString().ToUtf8();
}

Result<host::BaseDocument*> Import(const std::string& path, const std::string& worker, std::vector<std::string>* notes) {
  Result<Imported> imported = ImportScene(path, worker);
  if (!imported) return imported.GetStatus();
  if (notes != nullptr) *notes = std::move(imported.Value().notes);
  return imported.Value().document;
}

}  // namespace

host::BaseDocument* Application::NewDocument() {
  host::BaseDocument* doc = host::BaseDocument::Alloc();
  host::InsertBaseDocument(doc);
  host::SetActiveDocument(doc);
  return doc;
}

Result<host::BaseDocument*> Application::OpenDocument(const std::string& path, std::vector<std::string>* notes) {
  Result<host::BaseDocument*> doc = IsImportable(path) ? Import(path, body_->setup.importWorker, notes) : OpenSceneFile(path);
  if (!doc) return doc;
  body_->documents.Insert(doc.Value());
  body_->documents.Activate(doc.Value());
  host::EventAdd();
  return doc;
}

Status Application::SaveDocumentAs(host::BaseDocument& doc, const std::string& path) {
  const host::Filename file = NameOfPath(path);
  host::DocumentInfoData info{host::MSG_DOCUMENTINFO_TYPE_SAVE_BEFORE, file};
  const bool listed = body_->documents.Holds(&doc);
  doc.Message(host::MSG_DOCUMENTINFO, &info);
  if (listed && !body_->documents.Holds(&doc)) return Status::Failure("The document was closed before it could be saved.");
  if (Status textures = WriteEmbeddedTextures(doc, file.GetDirectory().GetString().ToUtf8()); !textures) return textures;
  Status saved = SaveSceneFile(doc, path);
  if (!saved) return saved;
  doc.SetDocumentPath(file.GetDirectory());
  doc.SetDocumentName(file.GetFile());
  ClearChanged(doc);
  return saved;
}

Status Application::SaveDocument(host::BaseDocument& doc) {
  const std::string path = SavedPath(doc);
  if (path.empty()) return Status::Failure("The document was never saved; it needs a file name.");
  return SaveDocumentAs(doc, path);
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
  return engine::SaveSceneFile(*doc, file.GetString().ToUtf8()).Ok();
}

Filename GetGlobalTexturePath(LONG index) {
  const ApplicationBody* body = ApplicationBody::Current();
  if (body == nullptr || index < 0 || static_cast<std::size_t>(index) >= body->setup.texturePaths.size()) return Filename();
  return Filename(String(std::string_view(body->setup.texturePaths[static_cast<std::size_t>(index)])));
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
