// Tells whether what the records of a .pwr file say fits together.
#pragma once

#include <cstdint>
#include <string>

#include "qumetra/readers/pwr_reader.h"
#include "qumetra/readers/pwr_references.h"
#include "qumetra/readers/pwr_times.h"

namespace qumetra {

class PwrFindings;

/// Checks one file: the reader is given the checker, and `end` is called when it is done.
///
///     PwrChecker checker(findings);
///     PwrReader reader(checker);
///     FileSource file("run.pwr");
///     checker.end(reader.read(file).end);
///
/// What the reader finds wrong goes to the findings as well. Memory grows with what the file
/// declares, and with entities of metrics up to a limit, but not with samples. Not synchronised.
class PwrChecker : public PwrVisitor {
 public:
  /// `findings` is borrowed.
  explicit PwrChecker(PwrFindings& findings);
  ~PwrChecker() override;

  void record(const PwrRecord& record) override;
  void fault(std::uint64_t offset, const std::string& what) override;
  /// The file was read up to `offset`: tells what only shows then.
  void end(std::uint64_t offset);

 private:
  // What a kind of record tells about others; most kinds tell nothing.
  template <typename Body>
  void take(const Body& /*body*/) {}
  void take(const PwrMagic& magic);
  void take(const PwrCollection& collection);
  void take(const PwrHeadMarker& marker);
  void take(const PwrInfo& info);
  void take(const PwrMetric& metric);
  void take(const PwrSample& sample);
  void take(const PwrKernelWakelock& wakelock);
  void take(const PwrUserWakelock& wakelock);

  void checkTime(const std::string& problem);
  void refer(PwrUid uid);

  PwrFindings& m_findings;
  PwrTimes m_times;
  PwrReferences m_references;
  /// Of the record that is being checked.
  std::uint64_t m_offset = 0;
  std::uint64_t m_magics = 0;
  bool m_hasHeader = false;
};

}  // namespace qumetra
