// reliability, reliability_window: rounds of one kind, by number or by time.
//   PROGRAM KIND COUNT [SEED]       so many executions
//   PROGRAM KIND SECONDSs [SEED]    for so long, as "60s"
// Prints a line for the ledger (kind, executions, findings, seed) and every finding; status 1 where
// there is one.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "tests/reliability/Rounds.h"

namespace {

tests::RoundBudget Limit(const std::string& amount) {
  const std::uint64_t number = std::strtoull(amount.c_str(), nullptr, 10);
  if (!amount.ends_with("s")) return [number](std::uint64_t done) { return done < number; };
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(number);
  return [end](std::uint64_t) { return std::chrono::steady_clock::now() < end; };
}

int Run(tests::Rounds rounds, const std::string& kind, const std::string& amount,
        std::uint64_t seed) {
  const tests::Findings findings = rounds(seed, Limit(amount));
  std::printf("%s\t%llu\t%zu\tseed %llu\n", kind.c_str(),
              static_cast<unsigned long long>(findings.executions), findings.damages.size(),
              static_cast<unsigned long long>(seed));
  constexpr std::size_t kShown = 20;
  for (std::size_t i = 0; i < std::min(findings.damages.size(), kShown); ++i)
    std::printf("  %s\n", findings.damages[i].c_str());
  return findings.damages.empty() && findings.executions > 0 ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
  const auto kind = count >= 3 ? tests::Kinds().find(arguments[1]) : tests::Kinds().end();
  if (kind == tests::Kinds().end()) {
    std::fprintf(stderr, "KIND COUNT|SECONDSs [SEED], of the kinds:\n");
    for (const auto& known : tests::Kinds()) std::fprintf(stderr, "  %s\n", known.first.c_str());
    return 2;
  }
  try {
    const std::uint64_t seed =
        count > 3 ? std::strtoull(arguments[3], nullptr, 10) : std::random_device()();
    return Run(kind->second, kind->first, arguments[2], seed);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "reliability: %s\n", error.what());
    return 2;
  }
}
