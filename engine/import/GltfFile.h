// GltfFile: a glTF file of version 2 with its JSON and its bytes: the binary chunk, buffers beside
// the file or inside its text, and parts of them, packed (EXT_meshopt_compression) or not. Every
// size is checked against what is there. What cannot be read throws UnreadableFile. Lives in the
// child.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/import/FolderFiles.h"
#include "engine/import/GltfJson.h"
#include "engine/import/Notes.h"

namespace engine {

class GltfFile {
 public:
  // Reads the file and its JSON; buffers are read when they are asked for.
  GltfFile(const std::string& path, bool isBinary, Notes& notes);
  GltfFile(const GltfFile&) = delete;
  GltfFile& operator=(const GltfFile&) = delete;

  // Version 1 is another format: nothing but this may be asked then.
  bool IsVersion1() const { return isVersion1_; }
  const Json& Top() const { return top_; }
  // An entry of one of the file's lists ("meshes"); null for kNowhere, unreadable where there is
  // none.
  const Json& Entry(const char* list, std::size_t index) const;
  std::size_t Count(const char* list) const { return SizeOf(List(top_, list)); }

  // The bytes of a buffer view, unpacked. Valid as long as the file.
  std::string_view View(std::size_t index);
  // The bytes of an address that holds them itself ("data:..."), and whether it is one.
  static bool IsData(const std::string& address);
  static std::string DataOf(const std::string& address);

 private:
  void ReadBinary(Notes& notes);
  void ParseText(std::string_view text, Notes& notes);
  void CheckVersion();
  std::string_view Buffer(std::size_t index);
  std::string ReadBeside(const std::string& address);
  std::string_view Range(std::size_t buffer, std::size_t offset, std::size_t length);
  std::string Unpacked(const Json& packing, std::size_t view);

  std::string folder_;
  FolderFiles files_;
  std::string bytes_;
  std::string_view chunk_;  // the binary chunk, empty without one
  Json top_;
  bool isVersion1_ = false;
  std::unordered_map<std::size_t, std::string> buffers_;   // those that are not the chunk
  std::unordered_map<std::size_t, std::string> unpacked_;  // by buffer view
};

}  // namespace engine
