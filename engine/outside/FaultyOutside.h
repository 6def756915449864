// FaultyOutside: a door whose n-th file operation goes wrong, to see what becomes of the files and
// whether somebody hears of it. Everything else is handed to the door behind it. Main thread.
#pragma once

#include <optional>

#include "engine/outside/ForwardingOutside.h"

namespace engine {

enum class Fault {
  Fail,      // nothing is done, the operation reports an input/output error
  CutShort,  // reading and listing give the first half and no error; anything else fails
};

class FaultyOutside : public ForwardingOutside {
 public:
  using ForwardingOutside::ForwardingOutside;

  // Makes the `number`-th operation from now on (1 is the next one) go wrong; with `only`
  // operations of that kind are counted only. Asking what a path is counts as none.
  void Break(std::size_t number, Fault fault, std::optional<Operation> only = std::nullopt);
  // As Break, and every counted operation after it fails, too: a disk that is full or gone.
  void BreakFrom(std::size_t number, std::optional<Operation> only = std::nullopt);
  void Mend() { left_ = 0; }
  // Operations seen so far that the present rule counts.
  std::size_t Count() const { return count_; }

 protected:
  Result<std::string> DoReadFile(const std::string& path, std::uint64_t limit) override;
  Status DoReplaceFile(const std::string& path, std::span<const std::string_view> pieces,
                       const BeforePlacing& ready) override;
  Status DoMakeFolder(const std::string& path) override;
  Status DoCopyFile(const std::string& from, const std::string& to, bool replace) override;
  Status DoRemoveFile(const std::string& path) override;
  Status DoRemoveFolder(const std::string& path) override;
  Status DoRename(const std::string& from, const std::string& to) override;
  Result<std::vector<std::string>> DoListFiles(const std::string& folder) override;
  Result<std::vector<std::string>> DoListFolders(const std::string& folder) override;

 private:
  // The fault of the operation that begins now, if it has one.
  std::optional<Fault> Next(Operation operation);

  std::size_t left_ = 0;  // operations until the fault, this one included; 0: none
  bool stays_ = false;
  Fault fault_ = Fault::Fail;
  std::optional<Operation> only_;
  std::size_t count_ = 0;
};

}  // namespace engine
