#include "tests/hostcalls/RecordedCalls.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>

#include "host/BaseBitmap.h"
#include "host/BaseDocument.h"
#include "host/C4DThread.h"
#include "host/GeDialog.h"

namespace tests {

namespace {

RecordedCalls* current = nullptr;

// The engine's function behind one of those below, by its name in the library.
template <class Function>
Function* Engine(const char* symbol) {
  void* found = dlsym(RTLD_NEXT, symbol);
  if (!found) std::abort();
  return reinterpret_cast<Function*>(found);
}

std::string Lines(const std::vector<std::string>& calls) {
  std::string text;
  for (const std::string& call : calls) text += call + "\n";
  return text;
}

void NoteWith(const char* call, host::LONG id) {
  RecordedCalls::Note(std::string(call) + " " + std::to_string(id));
}

}  // namespace

RecordedCalls::RecordedCalls() { current = this; }
RecordedCalls::~RecordedCalls() { current = nullptr; }

void RecordedCalls::Note(const std::string& call) {
  if (current) current->calls_.push_back(call);
}

bool RecordedCalls::Fails(const std::string& call) { return current && current->failing_ == call; }

std::string RecordedCalls::Between(const std::string& first, const std::string& last) const {
  const auto begin = std::find(calls_.begin(), calls_.end(), first);
  const auto end = std::find(begin, calls_.end(), last);
  return end == calls_.end() ? "" : Lines(std::vector<std::string>(begin, end + 1));
}

std::string RecordedCalls::Only(const std::vector<std::string>& beginnings) const {
  std::vector<std::string> found;
  for (const std::string& call : calls_) {
    const auto begins = [&](const std::string& beginning) { return call.rfind(beginning, 0) == 0; };
    if (std::any_of(beginnings.begin(), beginnings.end(), begins)) found.push_back(call);
  }
  return Lines(found);
}

int RecordedCalls::Count(const std::string& call) const {
  return static_cast<int>(std::count(calls_.begin(), calls_.end(), call));
}

}  // namespace tests

// The published functions, as the plug-in calls them.
namespace host {

using tests::Engine;
using tests::NoteWith;
using tests::RecordedCalls;

BaseBitmap* BaseBitmap::Alloc() {
  if (RecordedCalls::Fails("BaseBitmap::Alloc")) return nullptr;
  static const auto engine = Engine<BaseBitmap*()>("_ZN4host10BaseBitmap5AllocEv");
  return engine();
}

void BaseBitmap::Free(BaseBitmap*& bitmap) {
  RecordedCalls::Note("BaseBitmap::Free");
  static const auto engine = Engine<void(BaseBitmap*&)>("_ZN4host10BaseBitmap4FreeERPS0_");
  engine(bitmap);
}

LONG BaseBitmap::Init(LONG width, LONG height, LONG depth) {
  if (RecordedCalls::Fails("BaseBitmap::Init")) return IMAGERESULT_OUTOFMEMORY;
  static const auto engine =
      Engine<LONG(BaseBitmap*, LONG, LONG, LONG)>("_ZN4host10BaseBitmap4InitEiii");
  return engine(this, width, height, depth);
}

LONG BaseBitmap::Save(const Filename& file, LONG format) const {
  RecordedCalls::Note("BaseBitmap::Save");
  static const auto engine = Engine<LONG(const BaseBitmap*, const Filename&, LONG)>(
      "_ZNK4host10BaseBitmap4SaveERKNS_8FilenameEi");
  return engine(this, file, format);
}

C4DAtom* C4DAtom::GetClone(LONG flags, AliasTrans* translator) {
  if (RecordedCalls::Fails("C4DAtom::GetClone")) return nullptr;
  static const auto engine =
      Engine<C4DAtom*(C4DAtom*, LONG, AliasTrans*)>("_ZN4host7C4DAtom8GetCloneEiPNS_10AliasTransE");
  return engine(this, flags, translator);
}

void BaseDocument::Free(BaseDocument*& doc) {
  RecordedCalls::Note("BaseDocument::Free");
  static const auto engine = Engine<void(BaseDocument*&)>("_ZN4host12BaseDocument4FreeERPS0_");
  engine(doc);
}

void BaseDocument::SetChanged() {
  RecordedCalls::Note("BaseDocument::SetChanged");
  static const auto engine = Engine<void(BaseDocument*)>("_ZN4host12BaseDocument10SetChangedEv");
  engine(this);
}

void BaseContainer::SetData(LONG id, const GeData& value) {
  NoteWith("BaseContainer::SetData", id);
  static const auto engine = Engine<void(BaseContainer*, LONG, const GeData&)>(
      "_ZN4host13BaseContainer7SetDataEiRKNS_6GeDataE");
  engine(this, id, value);
}

Bool BaseContainer::RemoveData(LONG id) {
  NoteWith("BaseContainer::RemoveData", id);
  static const auto engine =
      Engine<Bool(BaseContainer*, LONG)>("_ZN4host13BaseContainer10RemoveDataEi");
  return engine(this, id);
}

void BaseContainer::SetContainer(LONG id, const BaseContainer& value) {
  NoteWith("BaseContainer::SetContainer", id);
  static const auto engine = Engine<void(BaseContainer*, LONG, const BaseContainer&)>(
      "_ZN4host13BaseContainer12SetContainerEiRKS0_");
  engine(this, id, value);
}

void C4DThread::End(Bool wait) {
  RecordedCalls::Note("C4DThread::End");
  static const auto engine = Engine<void(C4DThread*, Bool)>("_ZN4host9C4DThread3EndEb");
  engine(this, wait);
}

void C4DThread::Wait(Bool checkEvents) {
  RecordedCalls::Note("C4DThread::Wait");
  static const auto engine = Engine<void(C4DThread*, Bool)>("_ZN4host9C4DThread4WaitEb");
  engine(this, checkEvents);
}

Bool GeDialog::SetBool(LONG id, Bool value) {
  NoteWith(value ? "GeDialog::SetBool on" : "GeDialog::SetBool off", id);
  static const auto engine = Engine<Bool(GeDialog*, LONG, Bool)>("_ZN4host8GeDialog7SetBoolEib");
  return engine(this, id, value);
}

Bool GeDialog::SetLong(LONG id, LONG value) {
  NoteWith("GeDialog::SetLong", id);
  static const auto engine = Engine<Bool(GeDialog*, LONG, LONG)>("_ZN4host8GeDialog7SetLongEii");
  return engine(this, id, value);
}

Bool GeDialog::SetReal(LONG id, Real value, Real min, Real max, Real step, LONG format) {
  NoteWith("GeDialog::SetReal", id);
  static const auto engine = Engine<Bool(GeDialog*, LONG, Real, Real, Real, Real, LONG)>(
      "_ZN4host8GeDialog7SetRealEiddddi");
  return engine(this, id, value, min, max, step, format);
}

void SimpleListView::RemoveAll() {
  RecordedCalls::Note("SimpleListView::RemoveAll");
  static const auto engine = Engine<void(SimpleListView*)>("_ZN4host14SimpleListView9RemoveAllEv");
  engine(this);
}

Bool SimpleListView::SetLayout(LONG count, const BaseContainer& columns) {
  RecordedCalls::Note("SimpleListView::SetLayout");
  static const auto engine = Engine<Bool(SimpleListView*, LONG, const BaseContainer&)>(
      "_ZN4host14SimpleListView9SetLayoutEiRKNS_13BaseContainerE");
  return engine(this, count, columns);
}

}  // namespace host
