#include "qumetra/readers/pwr_checker.h"

#include <algorithm>
#include <optional>
#include <variant>

#include "qumetra/readers/pwr_findings.h"

namespace qumetra {
namespace {

// Whether the fields that always have the same value have it.
template <typename Body>
bool hasItsConstants(const Body& /*body*/) {
  return true;
}
bool hasItsConstants(const PwrCollection& collection) {
  return collection.constant8 == 1 && collection.constant20 == 0x0000080000000000;
}
bool hasItsConstants(const PwrSystem& system) {
  return system.constant8 == 1 && system.constant10 == 0 && system.lastText.empty();
}
bool hasItsConstants(const PwrHardware& hardware) {
  return hardware.constant8 == 1 && hardware.tscFrequencyHz == hardware.tscFrequencyHzAgain &&
         std::all_of(hardware.threads.begin(), hardware.threads.end(),
                     [](const PwrHardware::Thread& thread) { return thread.constant0 == 0; });
}
bool hasItsConstants(const PwrPowerThreshold& threshold) {
  return threshold.constant8 == 1 && threshold.constant12 == 12 &&
         threshold.constant14.find_first_not_of('\0') == std::string::npos;
}
bool hasItsConstants(const PwrProcess& process) {
  return process.event == PwrThread::kStart && process.constant8 == 0 && process.constant16 == 0;
}
bool hasItsConstants(const PwrThread& thread) {
  return (thread.event == PwrThread::kStart || thread.event == PwrThread::kEnd) &&
         thread.constant8 == 0;
}
bool hasItsConstants(const PwrUserWakelock& wakelock) { return wakelock.constant30 == 0; }

/// What a node of this kind is placed below.
PwrNamed parentKind(PwrNamed kind) {
  return kind == PwrNamed::TimelineGroup ? PwrNamed::TabGroup : kind;
}

}  // namespace

PwrFindings::~PwrFindings() = default;

PwrChecker::PwrChecker(PwrFindings& findings) : m_findings(findings) {}

PwrChecker::~PwrChecker() = default;

void PwrChecker::record(const PwrRecord& record) {
  m_offset = record.offset;
  if (const std::optional<PwrUid> uid = pwrDeclaredUid(record)) {
    m_references.declare(*uid);
  }
  const bool isUsual =
      std::visit([](const auto& body) { return hasItsConstants(body); }, record.body);
  if (!isUsual) {
    m_findings.warning(m_offset, std::string("a constant field of the ") + pwrKindName(record) +
                                     " record has another value than usual");
  }
  std::visit([this](const auto& body) { take(body); }, record.body);
}

void PwrChecker::fault(std::uint64_t offset, const std::string& what) {
  m_findings.fault(offset, what);
}

void PwrChecker::end(std::uint64_t offset) {
  // One at the end of what the file tells about its samples, and one at its front where there is a
  // header; a collection whose system was not told has none.
  const std::uint64_t wanted = m_hasHeader ? 2 : 1;
  if (m_magics < wanted) {
    m_findings.fault(offset, "magic records are missing: " + std::to_string(m_magics) + " of " +
                                 std::to_string(wanted) + " are there");
  }
  m_references.warn(m_findings);
  if (m_times.gaveUp()) {
    m_findings.warning(offset, "too many entities to follow; not all times were checked");
  }
}

void PwrChecker::take(const PwrMagic& /*magic*/) { ++m_magics; }

void PwrChecker::take(const PwrCollection& /*collection*/) { m_hasHeader = true; }

void PwrChecker::take(const PwrHeadMarker& marker) { m_times.setStart(marker.firstTsc); }

void PwrChecker::take(const PwrInfo& info) {
  const std::optional<PwrNamed> kind = pwrNodeKind(info.kindName);
  if (kind && info.parentUid != kPwrNoUid) {
    refer({parentKind(*kind), info.parentUid});
  }
}

void PwrChecker::take(const PwrMetric& metric) {
  if (metric.quantityUid != kPwrNoUid) {
    refer({PwrNamed::Quantity, metric.quantityUid});
  }
  refer({PwrNamed::TabGroup, metric.tabGroupUid});
  refer({PwrNamed::TimelineGroup, metric.timelineGroupUid});
}

void PwrChecker::take(const PwrSample& sample) {
  std::uint64_t metric = 0;
  for (const PwrAttribute& attribute : sample.attributes) {
    if (const std::optional<PwrUid> uid = pwrReferredUid(attribute)) {
      refer(*uid);
    }
    if (attribute.id == PwrAttributeId::Metric) {
      metric = attribute.bits;
    } else if (attribute.id == PwrAttributeId::Entity) {
      checkTime(m_times.sample(metric, attribute.bits, sample.tsc));
    }
  }
}

void PwrChecker::take(const PwrKernelWakelock& wakelock) { checkTime(m_times.wakelock(wakelock)); }

void PwrChecker::take(const PwrUserWakelock& wakelock) {
  checkTime(m_times.wakelock(wakelock));
  if (wakelock.uid != 0) {
    refer({PwrNamed::Package, wakelock.uid});
  }
}

void PwrChecker::checkTime(const std::string& problem) {
  if (!problem.empty()) {
    m_findings.fault(m_offset, problem);
  }
}

void PwrChecker::refer(PwrUid uid) { m_references.refer(uid, m_offset); }

}  // namespace qumetra
