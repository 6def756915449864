#include "engine/outside/Person.h"

#include <cstdio>

namespace engine {
namespace {

void Print(const std::string& text) { std::fprintf(stderr, "%s\n", text.c_str()); }

}  // namespace

void AbsentPerson::Tell(const std::string& text) { Print(text); }

bool AbsentPerson::Ask(const std::string& text) {
  Print(text + " (answered no)");
  return false;
}

std::optional<std::string> AbsentPerson::ChooseFile(const FileQuestion& question) {
  Print(question.title + " (canceled)");
  return std::nullopt;
}

}  // namespace engine
