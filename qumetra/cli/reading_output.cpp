#include "qumetra/cli/reading_output.h"

#include <cstddef>

#include <fmt/format.h>

#include "qumetra/cli/console.h"

namespace qumetra::cli {
namespace {

constexpr std::size_t kBlockSize = 0x10000;
/// Of one file.
constexpr std::uint64_t kShownFaults = 20;

}  // namespace

void FaultLines::startFile(const std::string& file) {
  m_file = file;
  m_count = 0;
}

void FaultLines::endFile() const {
  if (m_count > kShownFaults) {
    printNote(fmt::format("{}: {} more of these", m_file, m_count - kShownFaults));
  }
}

void FaultLines::print(std::uint64_t offset, const std::string& what) {
  if (++m_count <= kShownFaults) {
    printNote(fmt::format("{}: byte {}: {}", m_file, offset, what));
  }
}

void ResultLines::endLine() {
  m_out += '\n';
  if (m_out.size() >= kBlockSize) {
    flush();
  }
}

void ResultLines::flush() {
  printResult(m_out);
  m_out.clear();
}

}  // namespace qumetra::cli
