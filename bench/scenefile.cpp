// Cost of saving and opening a big scene, and the length of the file: a million null objects and
// ten states of a record per object, equal or not, shared or not. Beside it stands the least that
// would do: the same numbers as plain structs, copied and written to a file, read and copied back.
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "engine/core/ContainerContents.h"
#include "engine/scenefile/SceneFile.h"

namespace {

using host::BaseContainer;
using host::BaseDocument;
using host::BaseObject;
using host::LONG;

constexpr LONG kStates = 10;

// Processor time of the work; other programs do not count.
template <class Work>
double Seconds(const Work& work) {
  const std::clock_t begin = std::clock();
  work();
  return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

double MemoryInUse() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

// How the states after the first one come about.
enum class States { None, Shared, EqualCopies, OneInHundred, AllDiffer };

BaseContainer RecordOf(const BaseObject& object, LONG mode) {
  BaseContainer record;
  record.SetLink(70000, &object);
  record.SetLong(70001, mode);
  record.SetLong(70002, 2);
  record.SetLong(70003, 1);
  return record;
}

LONG ModeIn(States states, LONG state, LONG object) {
  if (states == States::OneInHundred) return (object + state) % 100 == 0 ? 1 : 2;
  return states == States::AllDiffer ? (object / 3 + object * state) % 3 : 2;
}

BaseContainer StateOf(const BaseDocument& doc, States states, LONG state) {
  BaseContainer records;
  LONG at = 0;
  for (const BaseObject* object = doc.GetFirstObject(); object; object = object->GetNext(), ++at)
    records.SetContainer(at, RecordOf(*object, ModeIn(states, state, at)));
  return records;
}

engine::OwnedDocument Scene(LONG objects, States states) {
  engine::OwnedDocument doc(BaseDocument::Alloc());
  for (LONG i = 0; i < objects; ++i) doc->AppendObject(BaseObject::Alloc(host::Onull));
  BaseContainer state;
  for (LONG i = 0; states != States::None && i < kStates; ++i) {
    if (i == 0 || states != States::Shared) state = StateOf(*doc, states, i);
    BaseContainer element(i);
    element.SetContainer(1, state);
    doc->GetDataInstance()->SetContainer(i, element);
  }
  return doc;
}

void Print(const char* what, double seconds, double objects, const std::string& more) {
  std::printf("  %-34s %7.3f s  %8.1f ns/object  %s\n", what, seconds, seconds * 1e9 / objects,
              more.c_str());
}

std::string PerObject(double bytes, double objects) {
  char text[64];
  std::snprintf(text, sizeof text, "%10.0f bytes  %7.3f bytes/object", bytes, bytes / objects);
  return text;
}

void WriteTo(std::FILE* file, const void* bytes, std::size_t size) {
  std::rewind(file);
  if (std::fwrite(bytes, 1, size, file) != size || std::fflush(file) != 0) std::abort();
}

// Saves and opens a block of the scene's least size: 48 bytes an object, 24 a record.
void Plain(LONG objects, States states) {
  const std::size_t size =
      static_cast<std::size_t>(objects) * (48 + (states == States::None ? 0 : 24 * kStates));
  const std::vector<char> scene(size, 'x');
  std::vector<char> copy(size);
  std::FILE* file = std::tmpfile();
  if (!file) std::abort();
  const double save = Seconds([&] {
    std::memcpy(copy.data(), scene.data(), size);
    WriteTo(file, copy.data(), size);
  });
  const double open = Seconds([&] {
    std::rewind(file);
    if (std::fread(copy.data(), 1, size, file) != size) std::abort();
    std::vector<char> back(copy);
    copy.swap(back);
  });
  std::fclose(file);
  Print("plain structs, save", save, objects, PerObject(static_cast<double>(size), objects));
  Print("plain structs, open", open, objects, "");
}

std::string Save(const BaseDocument& doc) {
  std::string bytes;
  const auto pieces = engine::WriteScene(doc);
  if (!pieces) std::abort();
  for (const std::string& piece : pieces.Value()) bytes += piece;
  std::FILE* file = std::tmpfile();
  if (!file) std::abort();
  WriteTo(file, bytes.data(), bytes.size());
  std::fclose(file);
  return bytes;
}

void Measure(const char* name, LONG objects, States states) {
  std::printf("%s, %d objects\n", name, objects);
  engine::OwnedDocument doc = Scene(objects, states);
  std::string bytes;
  const double save = Seconds([&] { bytes = Save(*doc); });
  Print("save", save, objects, PerObject(static_cast<double>(bytes.size()), objects));
  doc.reset();
  const double before = MemoryInUse();
  const double open = Seconds([&] {
    auto opened = engine::ReadScene(bytes);
    if (!opened) std::abort();
    doc = opened.Take();
  });
  Print("open", open, objects, PerObject(MemoryInUse() - before, objects) + " of memory");
  Plain(objects, states);
}

}  // namespace

int main(int count, char** values) {
  const LONG objects = count > 1 ? std::atoi(values[1]) : 1000000;
  Measure("No states", objects, States::None);
  Measure("Ten states sharing their records", objects, States::Shared);
  Measure("Ten equal states, made apart", objects, States::EqualCopies);
  Measure("Ten states, one record in hundred differs", objects, States::OneInHundred);
  Measure("Ten states, most records differ", objects, States::AllDiffer);
}
