// SaidNotes: which notes about pictures of one scene a person has heard already, so that none is
// said at every picture. Any one thread.
#pragma once

#include <set>
#include <string>

namespace pictures {

// Whether the note counts what is wrong with the objects ("12 triangles ..."), which stays so from
// picture to picture.
bool IsCount(const std::string& note);

class SaidNotes {
 public:
  // Remembers it. False when it was said before, also with another count: states show different
  // parts of the same objects.
  bool IsNew(const std::string& note);

 private:
  std::set<std::string> said_;
};

}  // namespace pictures
