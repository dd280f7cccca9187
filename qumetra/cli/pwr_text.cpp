#include "qumetra/cli/pwr_text.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>
#include <variant>

#include <fmt/format.h>

#include "qumetra/recording/json_text.h"

namespace qumetra::cli {
namespace {

constexpr std::array<const char*, 5> kActions{"lock", "unlock", "lock with timeout", "initial lock",
                                              "unlock all"};
constexpr std::array<const char*, 5> kFlags{"partial", "full", "screen dim", "screen bright",
                                            "proximity screen off"};

std::string nameOf(const std::array<const char*, 5>& names, unsigned number) {
  return number < names.size() ? names[number] : std::to_string(number);
}

/// Appends what the kinds of records say.
class Line {
 public:
  Line(std::string& out, const PwrNames& names) : m_out(out), m_names(names) {}

  void tell(const PwrMagic& /*magic*/) { add("magic"); }

  void tell(const PwrCollection& collection) {
    add("collection: {}, version {}.{}.{}", quoted(collection.name), collection.versionMajor,
        collection.versionMinor, collection.versionPatch);
  }

  void tell(const PwrSystem& system) {
    add("system: host {}, platform {}, OS {} of kind {}, version {}.{}.{}.{}",
        quoted(system.hostName), quoted(system.platformName), quoted(system.osName), system.osKind,
        system.osVersion[0], system.osVersion[1], system.osVersion[2], system.osVersion[3]);
  }

  void tell(const PwrHardware& hardware) {
    add("hardware: {} ticks per second, family {}, model {}, stepping {}, {} bits, addresses up to "
        "{:#x}, {} thread{}",
        hardware.tscFrequencyHz, hardware.family, hardware.model, hardware.stepping,
        hardware.addressWidth, hardware.highestAddress, hardware.threads.size(),
        hardware.threads.size() == 1 ? "" : "s");
    const char* separator = " (package/core/thread): ";
    for (const PwrHardware::Thread& thread : hardware.threads) {
      add("{}{}/{}/{}", std::exchange(separator, ", "), thread.package, thread.core, thread.thread);
    }
  }

  void tell(const PwrHeadMarker& marker) {
    add("head marker: start {}, timer resolution / 100 {}", marker.firstTsc,
        marker.timerResolutionDiv100);
  }

  void tell(const PwrPowerThreshold& threshold) {
    add("power threshold: CPU {} MHz", threshold.cpuFrequencyMHz);
  }

  void tell(const PwrInfo& info) {
    add("info {} {}: {}", quoted(info.kindName), info.uid, quoted(info.longName));
    if (info.shortName != info.longName) {
      add(", short {}", quoted(info.shortName));
    }
    add(", {} {}", quoted(info.description), info.value);
    if (info.parentUid != kPwrNoUid) {
      add(", parent {}", info.parentUid);
    }
    add(", info type {}", info.infoType);
  }

  void tell(const PwrMetric& metric) {
    add("metric {}: {}", metric.metricId, quoted(metric.name));
    if (metric.secondName != metric.name) {
      add(", second name {}", quoted(metric.secondName));
    }
    add(", type {}", metric.metricType);
    if (metric.quantityUid != kPwrNoUid) {
      add(", quantity {}", named({PwrNamed::Quantity, metric.quantityUid}));
    }
    add(", tab group {}", named({PwrNamed::TabGroup, metric.tabGroupUid}));
    add(", timeline group {}", named({PwrNamed::TimelineGroup, metric.timelineGroupUid}));
  }

  void tell(const PwrSample& sample) {
    add("sample at {}", sample.tsc);
    const char* separator = ": ";
    for (const PwrAttribute& attribute : sample.attributes) {
      add("{}{} {}", std::exchange(separator, ", "), pwrAttributeName(attribute.id),
          valueOf(attribute, sample.version == kPwrLegacyVersion));
    }
  }

  void tell(const PwrProcess& process) {
    add("process at {}: pid {}, {}", process.tsc, process.pid, quoted(process.path));
  }

  void tell(const PwrThread& thread) {
    const std::string event = thread.event == PwrThread::kStart ? "start"
                              : thread.event == PwrThread::kEnd
                                  ? "end"
                                  : fmt::format("{:#x}", thread.event);
    add("thread {} at {}: pid {}, tid {}", event, thread.tsc, thread.pid, thread.tid);
  }

  void tell(const PwrKernelWakelock& wakelock) {
    add("kernel wakelock {} at {}: {}, timeout {}, pid {}, tid {}",
        nameOf(kActions, static_cast<std::uint8_t>(wakelock.action)), wakelock.tsc,
        quoted(wakelock.name), wakelock.timeout, wakelock.pid, wakelock.tid);
  }

  void tell(const PwrUserWakelock& wakelock) {
    add("user wakelock {} at {}: {}, {}, uid {}, pid {}, tid {}",
        nameOf(kActions, static_cast<std::uint8_t>(wakelock.action)), wakelock.tsc,
        quoted(wakelock.name), nameOf(kFlags, wakelock.flag),
        named({PwrNamed::Package, wakelock.uid}), wakelock.pid, wakelock.tid);
  }

  void tell(const PwrPackage& package) {
    add("package at {}: uid {}, {}", package.tsc, package.uid, quoted(package.name));
  }

 private:
  template <typename... Values>
  void add(fmt::format_string<Values...> format, Values&&... values) {
    fmt::format_to(std::back_inserter(m_out), format, std::forward<Values>(values)...);
  }

  static std::string quoted(std::string_view text) {
    std::string quoted;
    JsonText(quoted).text(text);
    return quoted;
  }

  std::string named(PwrUid uid) const {
    const std::string* const name = m_names.find(uid);
    return name == nullptr ? fmt::format("{}", uid.number)
                           : fmt::format("{} {}", uid.number, quoted(*name));
  }

  std::string valueOf(const PwrAttribute& attribute, bool isLegacy) const {
    if (const std::optional<PwrUid> uid = pwrReferredUid(attribute)) {
      return named(*uid);
    }
    switch (attribute.id) {
      case PwrAttributeId::Int:
      case PwrAttributeId::IntLowerBound:
      case PwrAttributeId::IntUpperBound:
        return fmt::format("{}", static_cast<std::int64_t>(attribute.bits));
      case PwrAttributeId::Real:
      case PwrAttributeId::RealLowerBound:
      case PwrAttributeId::RealUpperBound:
        return isLegacy ? fmt::format("{}", attribute.bits)
                        : fmt::format("{}", std::bit_cast<double>(attribute.bits));
      default:
        return fmt::format("{}", attribute.bits);
    }
  }

  std::string& m_out;
  const PwrNames& m_names;
};

}  // namespace

void PwrText::append(std::string& out, const PwrRecord& record) {
  m_names.learn(record);
  fmt::format_to(std::back_inserter(out), "{} ", record.offset);
  Line line(out, m_names);
  std::visit([&](const auto& body) { line.tell(body); }, record.body);
}

}  // namespace qumetra::cli
