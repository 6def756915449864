// Cost of containers per entry at a million records, beside plain vectors of structures and shared
// pointers.
#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "engine/core/ContainerContents.h"
#include "host/BaseContainer.h"

namespace {

using host::BaseContainer;
using host::LONG;

constexpr LONG kRecords = 1000000;
constexpr LONG kLink = 30000;

BaseContainer Record(LONG i) {
  BaseContainer record(0);
  record.SetId(i);
  engine::SetLinkId(record, kLink, 1000 + static_cast<engine::NodeId>(i));
  record.SetLong(30001, i & 1);
  record.SetLong(30002, i & 3);
  record.SetLong(30003, 1);
  return record;
}

BaseContainer Store() {
  BaseContainer store;
  for (LONG i = 0; i < kRecords; ++i) store.SetContainer(i, Record(i));
  return store;
}

struct PlainEntry {
  LONG key, type;
  host::LLONG value;
};
struct PlainRecord {
  LONG id;
  std::vector<PlainEntry> entries;
};

std::shared_ptr<PlainRecord> MakePlain(LONG i) {
  auto record = std::make_shared<PlainRecord>();
  record->id = i;
  record->entries = {
      {kLink, 133, 1000 + i}, {30001, 15, i & 1}, {30002, 15, i & 3}, {30003, 15, 1}};
  return record;
}

void CountRecords(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * kRecords);
}

void BaselineBuild(benchmark::State& state) {
  for (auto _ : state) {
    std::vector<std::shared_ptr<PlainRecord>> store;
    for (LONG i = 0; i < kRecords; ++i) store.push_back(MakePlain(i));
    state.PauseTiming();
    store = {};
    state.ResumeTiming();
  }
  CountRecords(state);
}

void Build(benchmark::State& state) {
  for (auto _ : state) {
    BaseContainer store = Store();
    state.PauseTiming();
    store = BaseContainer();
    state.ResumeTiming();
  }
  CountRecords(state);
}

void Destroy(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    BaseContainer store = Store();
    state.ResumeTiming();
    store = BaseContainer();
  }
  CountRecords(state);
}

void BuildAgainUnchanged(benchmark::State& state) {
  const BaseContainer kept = Store();
  BaseContainer store = kept;
  for (auto _ : state) {
    for (LONG i = 0; i < kRecords; ++i) store.SetContainer(i, Record(i));
  }
  if (engine::BodyOf(store) != engine::BodyOf(kept)) state.SkipWithError("the store was split");
  CountRecords(state);
}

// Builds the store again where every record changes and an earlier recording shares it.
void BuildAgainChanged(benchmark::State& state) {
  const BaseContainer kept = Store();
  for (auto _ : state) {
    BaseContainer store = kept;
    for (LONG i = 0; i < kRecords; ++i) {
      BaseContainer record = Record(i);
      record.SetLong(30003, 0);
      store.SetContainer(i, record);
    }
    state.PauseTiming();
    store = BaseContainer();
    state.ResumeTiming();
  }
  CountRecords(state);
}

void BaselineRead(benchmark::State& state) {
  std::vector<std::shared_ptr<PlainRecord>> store;
  for (LONG i = 0; i < kRecords; ++i) store.push_back(MakePlain(i));
  for (auto _ : state) {
    host::LLONG sum = 0;
    for (LONG i = 0; i < kRecords; ++i) {
      const std::shared_ptr<PlainRecord> record = store[static_cast<std::size_t>(i)];
      for (const PlainEntry& entry : record->entries) sum += entry.value;
    }
    benchmark::DoNotOptimize(sum);
  }
  CountRecords(state);
}

void Read(benchmark::State& state) {
  const BaseContainer store = Store();
  for (auto _ : state) {
    host::LLONG sum = 0;
    for (LONG i = 0; i < kRecords; ++i) {
      const BaseContainer record = store.GetContainer(i);
      sum += record.GetLong(30001) + record.GetLong(30002) + record.GetLong(30003);
      sum += static_cast<host::LLONG>(engine::LinkOf(record, kLink));
    }
    benchmark::DoNotOptimize(sum);
  }
  CountRecords(state);
}

void ReadInPlace(benchmark::State& state) {
  BaseContainer store = Store();
  for (auto _ : state) {
    host::LLONG sum = 0;
    for (LONG i = 0; i < kRecords; ++i) sum += store.GetContainerInstance(i)->GetLong(30003);
    benchmark::DoNotOptimize(sum);
  }
  CountRecords(state);
}

void WriteInPlace(benchmark::State& state) {
  BaseContainer store = Store();
  LONG value = 5;
  for (auto _ : state) {
    ++value;
    for (LONG i = 0; i < kRecords; ++i) store.GetContainerInstance(i)->SetLong(30003, value);
  }
  CountRecords(state);
}

void BaselineCopy(benchmark::State& state) {
  std::vector<std::shared_ptr<PlainRecord>> store;
  for (LONG i = 0; i < kRecords; ++i) store.push_back(MakePlain(i));
  for (auto _ : state) {
    auto copy = store;
    copy[5] = MakePlain(-1);
    benchmark::DoNotOptimize(copy.data());
  }
}

void CopyAndChangeOne(benchmark::State& state) {
  const BaseContainer store = Store();
  LONG i = 0;
  for (auto _ : state) {
    BaseContainer copy = store;
    copy.SetContainer((i += 7919) % kRecords, BaseContainer(-1));
    benchmark::DoNotOptimize(engine::BodyOf(copy));
  }
}

BENCHMARK(BaselineBuild)->Unit(benchmark::kMillisecond);
BENCHMARK(Build)->Unit(benchmark::kMillisecond);
BENCHMARK(Destroy)->Unit(benchmark::kMillisecond);
BENCHMARK(BuildAgainUnchanged)->Unit(benchmark::kMillisecond);
BENCHMARK(BuildAgainChanged)->Unit(benchmark::kMillisecond);
BENCHMARK(BaselineRead)->Unit(benchmark::kMillisecond);
BENCHMARK(Read)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadInPlace)->Unit(benchmark::kMillisecond);
BENCHMARK(WriteInPlace)->Unit(benchmark::kMillisecond);
BENCHMARK(BaselineCopy)->Unit(benchmark::kMicrosecond);
BENCHMARK(CopyAndChangeOne)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
