#include "host/GeDialog.h"

#include <algorithm>

#include "engine/dialog/DialogBody.h"

namespace host {

using engine::DialogBody;
using engine::DialogCall;
using engine::DialogWorld;

namespace {

void TakeOffScreen(GeDialog& dialog) {
  DialogBody::Of(dialog).open = false;
  auto& open = DialogWorld::Get().open;
  open.erase(std::remove(open.begin(), open.end(), &dialog), open.end());
  engine::TellClosed(dialog);
}

// A dialog that fails to build keeps nothing, so that the next Open begins anew.
Bool LayOut(GeDialog& dialog) {
  const Bool built = dialog.CreateLayout();
  DialogBody* body = engine::BodyIfAlive(&dialog);
  if (!body) return FALSE;
  body->openGroups.clear();
  body->laidOut = built;
  if (!built) body->ClearLayout();
  return built;
}

// False also when the dialog destroyed itself meanwhile.
Bool BuildAndFill(GeDialog& dialog) {
  const DialogCall call;
  // The layout is built once; InitValues fills it at each opening.
  if (!DialogBody::Of(dialog).laidOut && !LayOut(dialog)) return FALSE;
  return dialog.InitValues() && DialogWorld::Get().IsAlive(&dialog);
}

}  // namespace

GeDialog::GeDialog() : body_(std::make_unique<DialogBody>()) {
  DialogWorld::Get().alive.insert(this);
}

GeDialog::~GeDialog() {
  if (body_->open) TakeOffScreen(*this);
  DialogWorld::Get().alive.erase(this);
}

Bool GeDialog::CreateLayout() { return TRUE; }
Bool GeDialog::InitValues() { return TRUE; }
Bool GeDialog::CoreMessage(LONG, const BaseContainer&) { return TRUE; }
Bool GeDialog::Command(LONG, const BaseContainer&) { return TRUE; }
Bool GeDialog::AskClose() { return FALSE; }
void GeDialog::Timer(const BaseContainer&) {}
LONG GeDialog::Message(const BaseContainer&, BaseContainer&) { return 0; }
void GeDialog::DestroyWindow() {}

Bool GeDialog::Open(LONG, LONG pluginid, LONG, LONG, LONG, LONG, LONG) {
  // From within its own CreateLayout or InitValues.
  if (body_->opening) return FALSE;
  if (!body_->open) {
    body_->pluginId = pluginid;
    body_->opening = true;
    const Bool ready = BuildAndFill(*this);
    if (!DialogWorld::Get().IsAlive(this)) return FALSE;
    body_->opening = false;
    if (!ready) return FALSE;
    body_->open = true;
    DialogWorld::Get().open.push_back(this);
  }
  // Also of one that is open already, which comes to the front.
  engine::TellOpened(*this);
  return TRUE;
}

Bool GeDialog::RestoreLayout(LONG pluginid, LONG subid, void*) {
  return Open(DLG_TYPE_ASYNC, pluginid, -1, -1, 0, 0, subid);
}

// AskClose and DestroyWindow may be where the plug-in ends the dialog.
Bool GeDialog::Close() {
  if (!body_->open) return FALSE;
  const DialogCall call;
  if (AskClose()) return FALSE;
  if (!DialogWorld::Get().IsAlive(this)) return TRUE;
  DestroyWindow();
  if (DialogWorld::Get().IsAlive(this) && body_->open) TakeOffScreen(*this);
  return TRUE;
}

Bool GeDialog::IsOpen() const { return body_->open; }

void GeDialog::SetTitle(const String& title) {
  body_->title = title;
  engine::TellChanged(*this, nullptr);
}

}  // namespace host
