// RecordedCalls: what the plug-in asked of the host's interface, in order, while one of these
// lives. The program's own definitions of some published functions take the place of the engine's
// for the plug-in: they note the call, hand it on, or let it fail as it does where memory has run
// out. Main thread; one at a time.
#pragma once

#include <string>
#include <vector>

namespace tests {

class RecordedCalls {
 public:
  RecordedCalls();
  RecordedCalls(const RecordedCalls&) = delete;
  RecordedCalls& operator=(const RecordedCalls&) = delete;
  ~RecordedCalls();

  // One line a call, "BaseBitmap::Free" or "BaseContainer::SetContainer 1023294".
  const std::vector<std::string>& All() const { return calls_; }
  // Those from the first call of `first` to the next of `last`, a line each; empty where there are
  // none.
  std::string Between(const std::string& first, const std::string& last) const;
  // Those that begin with one of `beginnings`, a line each.
  std::string Only(const std::vector<std::string>& beginnings) const;
  // How often there was a call of exactly that text.
  int Count(const std::string& call) const;

  // While this lives, calls of that name do nothing and answer as without memory. Known:
  // "BaseBitmap::Alloc", "BaseBitmap::Init", "C4DAtom::GetClone".
  void Fail(const std::string& call) { failing_ = call; }

  // For the definitions: notes a call; and whether it is to fail.
  static void Note(const std::string& call);
  static bool Fails(const std::string& call);

 private:
  std::vector<std::string> calls_;
  std::string failing_;
};

}  // namespace tests
