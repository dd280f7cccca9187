// Benchmarks that compare a piece of this system with a floor: a program that makes the same bytes
// by the plainest means there are. The two run alternately in one process, so that whatever the
// machine does meanwhile meets both.
//
//     int main(int argc, char** argv) {
//       using namespace qumetra::bench;
//       addContest({"raw", 2'000'000, [](std::size_t n) { ... }, [](std::size_t n) { ... }});
//       return runContests(argc, argv);
//     }
//
// Each contest becomes one Google Benchmark with these counters:
//   ratio                 the median over the rounds of subject time / floor time
//   ns, floor_ns          medians, per element
//   growth                subject time per element at four times the elements / at the elements
//   allocs                calls of operator new per element, by the subject
//   peak_MiB, peak4_MiB   the most memory that the subject held resident, at the elements and at
//                         four times as many, above what a process that does nothing holds
//   floor_peak_MiB        the same for the floor, at the elements
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace qumetra::bench {

/// Does the work for that many elements, from nothing to finished output.
using Side = std::function<void(std::size_t elements)>;

struct Contest {
  std::string name;
  std::size_t elements;
  Side subject;
  Side floor;
};

/// Adds a contest to the program. What its sides need beside the elements is best made in them, so
/// that it counts neither as memory of the program nor of the other side.
void addContest(Contest contest);

/// Measures all contests and prints what it found; takes the options of Google Benchmark. With
///     --side=NAME/subject --elements=N      or     --side=NAME/floor --elements=N
/// runs that side once and prints nothing, for programs that count instructions. Returns the exit
/// status: 2 for an option or a side that does not exist.
int runContests(int argc, char** argv);

}  // namespace qumetra::bench
