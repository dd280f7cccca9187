// The fields that are a .pwr record's own.
#pragma once

#include <cstddef>
#include <string>

#include "qumetra/readers/pwr_records.h"
#include "qumetra/readers/record_fields.h"

namespace qumetra {

/// Takes the bodies of records: what stands behind the fields that tell the kind. What is wrong
/// first sticks; what is taken behind it is of no use.
class PwrBodyDecoder {
 public:
  /// `fields` is borrowed, and stands at the body when that is taken.
  explicit PwrBodyDecoder(RecordFields& fields) : m_fields(fields) {}

  void take(PwrMagic& magic);
  void take(PwrCollection& collection);
  void take(PwrSystem& system);
  void take(PwrHardware& hardware);
  void take(PwrHeadMarker& marker);
  void take(PwrPowerThreshold& threshold);
  void take(PwrProcess& process);
  void take(PwrThread& thread);
  void take(PwrPackage& package);
  // REQUIRES: the version is set.
  void take(PwrInfo& info);
  void take(PwrMetric& metric);
  /// Reuses the room for attributes.
  void take(PwrSample& sample);
  void take(PwrKernelWakelock& wakelock);
  void take(PwrUserWakelock& wakelock);

  /// Notes that a number of the file stands for nothing known, unless something was wrong before.
  void unknown(const char* what, unsigned number);
  /// What is wrong; empty when nothing is.
  const std::string& problem() const { return m_problem; }

 private:
  std::string sizedText(std::size_t longest);
  std::string terminatedText(std::size_t size, std::size_t longest);
  void limit(std::size_t size, std::size_t longest);
  void takeTerminator();
  void wrong(std::string what);

  RecordFields& m_fields;
  std::string m_problem;
};

}  // namespace qumetra
