#include "qumetra/cli/pwr_dump.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <variant>

#include <fmt/format.h>

#include "qumetra/cli/command.h"
#include "qumetra/cli/console.h"
#include "qumetra/cli/pwr_json.h"
#include "qumetra/cli/pwr_text.h"
#include "qumetra/cli/reading_output.h"
#include "qumetra/readers/byte_source.h"
#include "qumetra/readers/pwr_checker.h"
#include "qumetra/readers/pwr_findings.h"
#include "qumetra/readers/pwr_reader.h"

namespace qumetra::cli {
namespace {

/// Prints the records of one file.
class Dumper : public PwrVisitor {
 public:
  Dumper(const std::string& file, bool asJson) : m_asJson(asJson) { m_faults.startFile(file); }

  void record(const PwrRecord& record) override {
    if (m_asJson) {
      appendPwrJson(m_result.line(), record);
    } else {
      m_text.append(m_result.line(), record);
    }
    m_result.endLine();
  }
  void fault(std::uint64_t offset, const std::string& what) override {
    m_faults.print(offset, what);
  }

  void end() {
    m_result.flush();
    m_faults.endFile();
  }

 private:
  bool m_asJson;
  PwrText m_text;
  ResultLines m_result;
  FaultLines m_faults;
};

/// Prints and counts what is found in one file.
class Findings : public PwrFindings {
 public:
  explicit Findings(const std::string& file) {
    m_faultLines.startFile(file);
    m_warningLines.startFile(file);
  }

  void fault(std::uint64_t offset, const std::string& what) override {
    ++m_faults;
    m_firstFault = std::min(offset, m_firstFault.value_or(offset));
    m_faultLines.print(offset, what);
  }
  void warning(std::uint64_t offset, const std::string& what) override {
    ++m_warnings;
    m_warningLines.print(offset, "warning: " + what);
  }

  void end() const {
    m_faultLines.endFile();
    m_warningLines.endFile();
  }
  bool hasFault() const { return m_faults != 0; }
  std::string summary() const {
    const std::string counts = fmt::format("{} warnings, {} faults", m_warnings, m_faults);
    return m_firstFault ? fmt::format("{}, the first at byte {}", counts, *m_firstFault) : counts;
  }

 private:
  FaultLines m_faultLines;
  FaultLines m_warningLines;
  std::uint64_t m_faults = 0;
  std::uint64_t m_warnings = 0;
  std::optional<std::uint64_t> m_firstFault;
};

/// Counts what people look for.
class CountingChecker : public PwrChecker {
 public:
  using PwrChecker::PwrChecker;

  void record(const PwrRecord& record) override {
    m_metrics += std::holds_alternative<PwrMetric>(record.body) ? 1U : 0U;
    m_samples += std::holds_alternative<PwrSample>(record.body) ? 1U : 0U;
    m_wakelocks += std::holds_alternative<PwrKernelWakelock>(record.body) ||
                           std::holds_alternative<PwrUserWakelock>(record.body)
                       ? 1U
                       : 0U;
    PwrChecker::record(record);
  }

  std::uint64_t metrics() const { return m_metrics; }
  std::uint64_t samples() const { return m_samples; }
  std::uint64_t wakelocks() const { return m_wakelocks; }

 private:
  std::uint64_t m_metrics = 0;
  std::uint64_t m_samples = 0;
  std::uint64_t m_wakelocks = 0;
};

bool checkFile(const std::string& file) {
  FileSource source(file);
  Findings findings(file);
  CountingChecker checker(findings);
  PwrReader reader(checker);
  const PwrCounts counts = reader.read(source);
  checker.end(counts.end);
  findings.end();
  printResult(fmt::format("{}: {} records, {} metrics, {} samples, {} wakelock records, {}\n", file,
                          counts.records, checker.metrics(), checker.samples(), checker.wakelocks(),
                          findings.summary()));
  return !findings.hasFault();
}

/// What was decoded before the file cannot be read any further is printed.
bool dumpFile(const std::string& file, bool asJson) {
  FileSource source(file);
  Dumper dumper(file, asJson);
  PwrReader reader(dumper);
  try {
    const PwrCounts counts = reader.read(source);
    dumper.end();
    return counts.faults == 0;
  } catch (const ReadError&) {
    dumper.end();
    throw;
  }
}

}  // namespace

int dumpPwr(const std::vector<std::string>& files, bool asJson) {
  int status = kDone;
  for (const std::string& file : files) {
    status = dumpFile(file, asJson) ? status : kFaulty;
  }
  return status;
}

int checkPwr(const std::vector<std::string>& files) {
  int status = kDone;
  for (const std::string& file : files) {
    status = checkFile(file) ? status : kFaulty;
  }
  return status;
}

}  // namespace qumetra::cli
