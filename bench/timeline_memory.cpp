#include "bench/timeline_memory.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/support/floor_text.h"
#include "bench/timeline_clock.h"
#include "client/src/common/backing_store.h"
#include "host/handles.h"
#include "host/metric.h"
#include "writers/textwriter_plugin/int_writer.h"

namespace qumetra::bench {
namespace {

constexpr std::size_t kTables = 1000;
constexpr std::size_t kRows = 10'000;

/// Resident memory of this process in bytes.
std::size_t residentBytes() {
  std::ifstream in("/proc/self/statm");
  std::size_t pages = 0;
  in >> pages >> pages;
  return pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

/// How much the resident memory grows while `fill` runs, in MiB; by a process of its own.
double growthBy(const std::function<std::size_t()>& fill) {
  void* shared =
      ::mmap(nullptr, sizeof(double), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  auto* const result = static_cast<double*>(shared);
  const pid_t child = ::fork();
  if (child == 0) {
    const std::size_t before = residentBytes();
    *result = static_cast<double>(fill() - before) / 1024 / 1024;
    ::_exit(0);
  }
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child || status != 0) {
    std::abort();
  }
  const double mebibytes = *result;
  ::munmap(shared, sizeof(double));
  return mebibytes;
}

/// Fills the tables of the writer and returns what is resident then.
std::size_t fillTables() {
  IntWriterV2 writer;
  tellClock(writer);
  const pwr::EntityHandle entity(1, {"CPU0", "", ""}, nullptr);
  const pwr::DataElement element(&entity, nullptr, nullptr, pwr::Data(123456.75), 200'000, nullptr);
  pwr::Metric metric;
  metric.name = "Metric";
  metric.metricType = pwr::Metric::SAMPLED_VALUE;
  for (std::size_t row = 0; row < kRows; ++row) {
    metric.setData({kStart + row * 200'000, {&element}});
    for (std::size_t table = 0; table < kTables; ++table) {
      metric.metricId = static_cast<std::uint32_t>(table);
      writer.writeMessage(metric);
    }
  }
  return residentBytes();
}

/// The same bytes in byte stores.
std::size_t fillStores() {
  std::vector<std::unique_ptr<pwr::QMExtensibleBackingStore>> stores;
  for (std::size_t i = 0; i < kTables; ++i) {
    stores.push_back(std::make_unique<pwr::QMExtensibleBackingStore>(
        pwr::QMExtensibleBackingStore::kDefaultMaxBufferSize));
  }
  std::array<char, kLongestText> text{};
  const std::vector<char> bytes(4 * kLongestText);
  for (std::size_t row = 0; row < kRows; ++row) {
    // Five records with their lengths: number, time, "100.00", "123456.75" and the row's end.
    const std::size_t texts = countText(text.data(), row + 1) +
                              fixedText(text.data(), static_cast<double>(row) * 100'000) + 6 + 9 +
                              1;
    for (auto& store : stores) {
      store->write(bytes.data(), texts + 5 * sizeof(std::uint32_t));
    }
  }
  return residentBytes();
}

}  // namespace

void addMemoryReport() {
  const double tables = growthBy(fillTables);
  const double stores = growthBy(fillStores);
  benchmark::RegisterBenchmark("int_1000_tables", [tables, stores](benchmark::State& state) {
    for (auto _ : state) {
    }
    state.counters["resident_MiB"] = tables;
    state.counters["stores_MiB"] = stores;
  })->Iterations(1);
}

}  // namespace qumetra::bench
