// The services that are small: the system's clock and a person who is absent; and those in use.
#include "engine/outside/Services.h"

#include <atomic>
#include <cstdio>
#include <ctime>

#include "engine/outside/SystemServices.h"

namespace engine {
namespace {

// Plug-ins call published functions from threads of their own, too.
std::atomic<const Services*> published{nullptr};

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

host::LocalFileTime SystemClock::Now() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
          local.tm_hour,        local.tm_min,     local.tm_sec};
}

const Services& PublishedServices() {
  if (const Services* services = published.load()) return *services;
  // Made when first asked for: programs have services of their own.
  static SystemServices fallback;
  return fallback.Get();
}

PublishedServicesScope::PublishedServicesScope(const Services& services)
    : former_(published.exchange(&services)) {}
PublishedServicesScope::~PublishedServicesScope() { published.store(former_); }

}  // namespace engine
