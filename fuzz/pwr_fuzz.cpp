// Arbitrary bytes as .pwr files: read, checked, and shown in both forms.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fuzz/bytes_source.h"
#include "qumetra/cli/pwr_json.h"
#include "qumetra/cli/pwr_text.h"
#include "qumetra/readers/pwr_checker.h"
#include "qumetra/readers/pwr_findings.h"
#include "qumetra/readers/pwr_reader.h"

namespace {

using qumetra::fuzz::BytesSource;

void require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

/// Shows every record in both forms.
class Shower : public qumetra::PwrVisitor {
 public:
  void record(const qumetra::PwrRecord& record) override {
    // Records stand one behind the other.
    require(records == 0 || record.offset > lastOffset);
    lastOffset = record.offset;
    ++records;
    m_line.clear();
    m_text.append(m_line, record);
    qumetra::cli::appendPwrJson(m_line, record);
    require(!m_line.empty() && m_line.back() == '}');
  }
  void fault(std::uint64_t offset, const std::string& what) override {
    ++faults;
    lastFault = offset;
    require(!what.empty());
  }

  std::uint64_t records = 0;
  std::uint64_t faults = 0;
  std::uint64_t lastOffset = 0;
  std::uint64_t lastFault = 0;

 private:
  qumetra::cli::PwrText m_text;
  std::string m_line;
};

/// Every finding has its place in the file.
class Findings : public qumetra::PwrFindings {
 public:
  explicit Findings(std::uint64_t size) : m_size(size) {}

  void fault(std::uint64_t offset, const std::string& /*what*/) override {
    ++faults;
    require(offset <= m_size);
  }
  void warning(std::uint64_t offset, const std::string& /*what*/) override {
    require(offset <= m_size);
  }

  std::uint64_t faults = 0;

 private:
  std::uint64_t m_size;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  Shower shower;
  qumetra::PwrReader reader(shower);
  BytesSource source(bytes);
  const qumetra::PwrCounts counts = reader.read(source);
  require(counts.records == shower.records && counts.faults == shower.faults);
  require(counts.end <= size && shower.lastFault <= size);
  // What is not read is told.
  require(counts.end == size || counts.faults != 0);
  Findings findings(size);
  qumetra::PwrChecker checker(findings);
  qumetra::PwrReader checked(checker);
  BytesSource again(bytes);
  checker.end(checked.read(again).end);
  require(findings.faults >= counts.faults);
  return 0;
}
