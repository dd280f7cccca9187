#include "bench/support/ratio.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/support/allocation_count.h"

namespace qumetra::bench {
namespace {

/// The first round warms caches, files and the allocator, and is not counted.
constexpr int kDroppedRounds = 1;
constexpr int kCountedRounds = 9;
constexpr std::size_t kGrowth = 4;

/// Resident memory in MiB.
struct Peaks {
  double subject = 0;
  double subjectGrown = 0;
  double floor = 0;
};

std::vector<Contest>& contests() {
  static std::vector<Contest> all;
  return all;
}

double secondsFor(const Side& side, std::size_t elements) {
  const auto start = std::chrono::steady_clock::now();
  side(elements);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

/// The peak of a process of its own that runs `side`, in KiB.
long peakOfChild(const Side& side, std::size_t elements) {
  const pid_t child = ::fork();
  if (child == 0) {
    side(elements);
    ::_exit(0);
  }
  rusage usage{};
  int status = 0;
  if (child < 0 || ::wait4(child, &status, 0, &usage) != child || status != 0) {
    std::fprintf(stderr, "no peak memory: the measured process failed\n");
    return 0;
  }
  return usage.ru_maxrss;
}

Peaks peaksOf(const Contest& contest) {
  const long nothing = peakOfChild([](std::size_t) {}, 0);
  const auto mebibytes = [&](const Side& side, std::size_t elements) {
    return static_cast<double>(peakOfChild(side, elements) - nothing) / 1024;
  };
  return {mebibytes(contest.subject, contest.elements),
          mebibytes(contest.subject, contest.elements * kGrowth),
          mebibytes(contest.floor, contest.elements)};
}

/// The times of all rounds, the dropped ones left out.
class Rounds {
 public:
  void run(const Contest& contest, bool counted) {
    const double floor = secondsFor(contest.floor, contest.elements);
    const std::uint64_t before = allocationCount();
    const double subject = secondsFor(contest.subject, contest.elements);
    m_allocations = static_cast<double>(allocationCount() - before);
    const double grown = secondsFor(contest.subject, contest.elements * kGrowth);
    if (!counted) {
      return;
    }
    m_floor.push_back(floor);
    m_subject.push_back(subject);
    m_ratio.push_back(subject / floor);
    m_growth.push_back(grown / kGrowth / subject);
  }

  double lastSubject() const { return m_subject.empty() ? 0 : m_subject.back(); }

  void report(const Contest& contest, const Peaks& peaks, benchmark::State& state) const {
    const auto elements = static_cast<double>(contest.elements);
    state.counters["ratio"] = median(m_ratio);
    state.counters["ns"] = median(m_subject) * 1e9 / elements;
    state.counters["floor_ns"] = median(m_floor) * 1e9 / elements;
    state.counters["growth"] = median(m_growth);
    state.counters["allocs"] = m_allocations / elements;
    state.counters["peak_MiB"] = peaks.subject;
    state.counters["peak4_MiB"] = peaks.subjectGrown;
    state.counters["floor_peak_MiB"] = peaks.floor;
  }

 private:
  std::vector<double> m_floor;
  std::vector<double> m_subject;
  std::vector<double> m_ratio;
  std::vector<double> m_growth;
  double m_allocations = 0;
};

void runContest(benchmark::State& state, const Contest& contest, const Peaks& peaks) {
  for (int round = 0; round < kDroppedRounds; ++round) {
    Rounds().run(contest, false);
  }
  Rounds rounds;
  for (auto _ : state) {
    rounds.run(contest, true);
    state.SetIterationTime(rounds.lastSubject());
  }
  rounds.report(contest, peaks, state);
}

std::optional<std::string_view> optionValue(int argc, char** argv, std::string_view name) {
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument.substr(0, name.size()) == name) {
      return argument.substr(name.size());
    }
  }
  return std::nullopt;
}

int runSide(std::string_view wanted, std::string_view elementsText) {
  std::size_t elements = 0;
  const char* end = elementsText.data() + elementsText.size();
  const auto [stop, error] = std::from_chars(elementsText.data(), end, elements);
  if (error != std::errc() || stop != end) {
    std::fprintf(stderr, "--side needs --elements=N, N being a number\n");
    return 2;
  }
  for (const Contest& contest : contests()) {
    if (wanted == contest.name + "/subject") {
      contest.subject(elements);
      return 0;
    }
    if (wanted == contest.name + "/floor") {
      contest.floor(elements);
      return 0;
    }
  }
  std::fprintf(stderr, "no side '%.*s'\n", static_cast<int>(wanted.size()), wanted.data());
  return 2;
}

/// Peaks are taken first, while this process is still small: a child begins with what its parent
/// holds.
void registerBenchmarks() {
  for (const Contest& contest : contests()) {
    const Peaks peaks = peaksOf(contest);
    benchmark::RegisterBenchmark(
        contest.name.c_str(),
        [&contest, peaks](benchmark::State& state) { runContest(state, contest, peaks); })
        ->UseManualTime()
        ->Iterations(kCountedRounds)
        ->Unit(benchmark::kMillisecond);
  }
}

}  // namespace

void addContest(Contest contest) { contests().push_back(std::move(contest)); }

int runContests(int argc, char** argv) {
  if (const auto side = optionValue(argc, argv, "--side=")) {
    return runSide(*side, optionValue(argc, argv, "--elements=").value_or(""));
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 2;
  }
  registerBenchmarks();
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}

}  // namespace qumetra::bench
