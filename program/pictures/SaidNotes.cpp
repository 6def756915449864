#include "program/pictures/SaidNotes.h"

#include <algorithm>

namespace pictures {

namespace {

std::size_t LengthOfCount(const std::string& note) {
  return std::min(note.find_first_not_of("0123456789"), note.size());
}

}  // namespace

bool IsCount(const std::string& note) { return LengthOfCount(note) > 0; }

bool SaidNotes::IsNew(const std::string& note) {
  return said_.insert(note.substr(LengthOfCount(note))).second;
}

}  // namespace pictures
