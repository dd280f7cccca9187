#include "qumetra/collect/proc_stat.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <string_view>

namespace qumetra {
namespace {

/// user, nice, system and idle: what every kernel tells.
constexpr std::size_t kFewestModes = 4;

/// Takes a word or number off the front of a line.
class LineScanner {
 public:
  explicit LineScanner(std::string_view line) : m_rest(line) {}

  bool atEnd() {
    m_rest.remove_prefix(std::min(m_rest.find_first_not_of(' '), m_rest.size()));
    return m_rest.empty();
  }
  template <typename Number>
  bool number(Number& value) {
    if (atEnd()) {
      return false;
    }
    const char* const end = m_rest.data() + m_rest.size();
    const auto [next, error] = std::from_chars(m_rest.data(), end, value);
    if (error != std::errc() || (next != end && *next != ' ')) {
      return false;
    }
    m_rest.remove_prefix(static_cast<std::size_t>(next - m_rest.data()));
    return true;
  }

 private:
  std::string_view m_rest;
};

bool parseCpuLine(std::string_view line, CpuTimes& times) {
  LineScanner scanner(line);
  if (!scanner.number(times.cpu)) {
    return false;
  }
  std::size_t count = 0;
  while (count < times.modes.size() && !scanner.atEnd()) {
    if (!scanner.number(times.modes[count])) {
      return false;
    }
    ++count;
  }
  return count >= kFewestModes;
}

/// The first number of a line; the rest, hundreds of single counts, is not looked at.
std::optional<std::uint64_t> firstNumber(std::string_view line) {
  std::uint64_t value = 0;
  return LineScanner(line).number(value) ? std::optional(value) : std::nullopt;
}

void parseLine(std::string_view line, ProcStat& stat) {
  constexpr std::string_view kCpu = "cpu";
  constexpr std::string_view kInterrupts = "intr ";
  constexpr std::string_view kContextSwitches = "ctxt ";
  if (line.starts_with(kInterrupts)) {
    stat.interrupts = firstNumber(line.substr(kInterrupts.size()));
  } else if (line.starts_with(kContextSwitches)) {
    stat.contextSwitches = firstNumber(line.substr(kContextSwitches.size()));
  } else if (line.starts_with(kCpu) && !line.starts_with("cpu ")) {
    CpuTimes times;
    if (parseCpuLine(line.substr(kCpu.size()), times)) {
      stat.cpus.push_back(times);
    }
  }
}

}  // namespace

void parseProcStat(std::string_view text, ProcStat& stat) {
  stat.cpus.clear();
  stat.interrupts.reset();
  stat.contextSwitches.reset();
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    parseLine(text.substr(0, end), stat);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

}  // namespace qumetra
