// What the records of a .pwr import stream say.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace qumetra {

// Every kind of record has a structure with the fields of the file, in their order and under the
// kind's name. A `constantN` is the field at byte N of the record, of which nothing is told but the
// value that it always has. Texts are without their terminating zeros. Times are in ticks.

/// Opens and closes the part of the file that tells what its samples are about.
struct PwrMagic {
  static constexpr const char* kKind = "magic";

  std::uint32_t constant4 = 0;
};

/// The tool that collected.
struct PwrCollection {
  static constexpr const char* kKind = "collection";

  std::uint32_t constant8 = 0;
  std::uint16_t versionMajor = 0;
  std::uint16_t versionMinor = 0;
  std::uint32_t versionPatch = 0;
  std::uint64_t constant20 = 0;
  std::string name;
};

/// The measured system.
struct PwrSystem {
  static constexpr const char* kKind = "system";

  std::uint16_t constant8 = 0;
  std::uint16_t constant10 = 0;
  /// 2 Windows; 3 x86; 4 Itanium; 5 x86-64; 6 others.
  std::uint16_t osKind = 0;
  std::array<std::uint16_t, 4> osVersion{};
  std::string hostName;
  std::string platformName;
  std::string osName;
  /// Always empty.
  std::string lastText;
};

/// Its processor.
struct PwrHardware {
  static constexpr const char* kKind = "hardware";

  struct Thread {
    std::uint8_t constant0 = 0;
    std::uint8_t package = 0;
    std::uint8_t core = 0;
    /// The place of the thread within its core.
    std::uint8_t thread = 0;
  };

  std::uint32_t constant8 = 0;
  std::uint64_t tscFrequencyHz = 0;
  std::uint64_t tscFrequencyHzAgain = 0;
  std::uint64_t highestAddress = 0;
  /// Bits.
  std::uint8_t addressWidth = 0;
  std::uint8_t family = 0;
  std::uint8_t model = 0;
  std::uint8_t stepping = 0;
  std::vector<Thread> threads;
};

/// The start of the collection.
struct PwrHeadMarker {
  static constexpr const char* kKind = "head_marker";

  std::uint32_t constant4 = 0;
  std::uint8_t constant8 = 0;
  std::uint64_t firstTsc = 0;
  std::uint64_t timerResolutionDiv100 = 0;
};

/// Carries the frequency of the processor.
struct PwrPowerThreshold {
  static constexpr const char* kKind = "power_threshold";

  std::uint32_t constant8 = 0;
  std::uint16_t constant12 = 0;
  /// 48 bytes.
  std::string constant14;
  std::uint32_t cpuFrequencyMHz = 0;
};

/// The uid of nothing, where a uid may be missing.
inline constexpr std::uint32_t kPwrNoUid = 0xFFFFFFFF;
/// A version of metadata and samples. Real numbers of such samples were cut to unsigned ones.
inline constexpr std::uint16_t kPwrLegacyVersion = 1;

/// A node of the names: what a uid, of an entity, a state, a colour and so on, stands for.
struct PwrInfo {
  static constexpr const char* kKind = "info";

  std::uint64_t tsc = 0;
  std::uint16_t subType = 0;
  std::uint16_t version = 0;
  /// The number of the node's kind; 0 in nodes that tell the number of a kind.
  std::uint32_t infoType = 0;
  std::uint32_t value = 0;
  /// `kPwrNoUid` for none.
  std::uint32_t parentUid = 0;
  std::uint32_t uid = 0;
  std::string longName;
  std::string shortName;
  std::string kindName;
  std::string description;
};

/// A metric and the uids of its quantity and groups.
struct PwrMetric {
  static constexpr const char* kKind = "metric";

  std::uint64_t tsc = 0;
  std::uint16_t subType = 0;
  std::uint16_t version = 0;
  std::uint32_t metricType = 0;
  std::uint32_t metricId = 0;
  /// `kPwrNoUid` for none.
  std::uint32_t quantityUid = 0;
  std::uint32_t tabGroupUid = 0;
  std::uint32_t timelineGroupUid = 0;
  std::string name;
  std::string secondName;
};

/// What an attribute of a sample is.
enum class PwrAttributeId : std::uint32_t {
  Metric = 0,
  Entity = 1,
  Field = 2,
  Process = 3,
  Thread = 4,
  CallStackFrame = 5,
  Quantity = 6,
  Color = 7,
  Info = 8,
  Int = 9,
  Uint = 10,
  Real = 11,
  IntLowerBound = 12,
  IntUpperBound = 13,
  UintLowerBound = 14,
  UintUpperBound = 15,
  RealLowerBound = 16,
  RealUpperBound = 17,
  Duration = 18
};

/// The name of an attribute in lower case, or "unknown".
const char* pwrAttributeName(PwrAttributeId id);

/// One number of a sample.
struct PwrAttribute {
  PwrAttributeId id{};
  /// As they stand: an id, a signed or unsigned number, or the bits of a real one.
  std::uint64_t bits = 0;
};

/// A point in time: its metric, and for each entity what was measured, told by the attributes'
/// order.
struct PwrSample {
  static constexpr const char* kKind = "sample";

  std::uint64_t tsc = 0;
  std::uint16_t subType = 0;
  std::uint16_t version = 0;
  std::vector<PwrAttribute> attributes;
};

/// Start or end of a process; nothing but the time tells which.
struct PwrProcess {
  static constexpr const char* kKind = "process";

  std::uint32_t event = 0;
  std::uint32_t constant8 = 0;
  std::uint32_t pid = 0;
  std::uint32_t constant16 = 0;
  std::uint64_t tsc = 0;
  std::string path;
};

/// Start or end of a thread.
struct PwrThread {
  static constexpr const char* kKind = "thread";

  static constexpr std::uint32_t kStart = 0x1000;
  static constexpr std::uint32_t kEnd = 0x2000;

  std::uint32_t event = 0;
  std::uint32_t constant8 = 0;
  std::uint32_t pid = 0;
  std::uint32_t tid = 0;
  std::uint64_t tsc = 0;
};

/// What happens to a wakelock.
enum class PwrWakelockAction : std::uint8_t {
  Lock = 0,
  Unlock = 1,
  LockTimeout = 2,
  LockInitial = 3,
  UnlockAll = 4
};

/// A wakelock of the kernel is taken or given back.
struct PwrKernelWakelock {
  static constexpr const char* kKind = "kernel_wakelock";

  std::uint32_t tid = 0;
  std::uint32_t pid = 0;
  std::uint64_t tsc = 0;
  PwrWakelockAction action{};
  std::uint64_t timeout = 0;
  std::string name;
};

/// The same for one of a package.
struct PwrUserWakelock {
  static constexpr const char* kKind = "user_wakelock";

  std::uint32_t tid = 0;
  std::uint32_t pid = 0;
  std::uint64_t tsc = 0;
  PwrWakelockAction action{};
  /// 0 partial, 1 full, 2 screen dim, 3 screen bright, 4 proximity screen off.
  std::uint8_t flag = 0;
  /// The package's; 0 for none.
  std::uint32_t uid = 0;
  std::uint32_t constant30 = 0;
  std::string name;
};

/// The name of a package.
struct PwrPackage {
  static constexpr const char* kKind = "package";

  std::uint64_t tsc = 0;
  std::uint32_t uid = 0;
  std::string name;
};

/// A record and where it stands.
struct PwrRecord {
  /// In bytes from the front of the file.
  std::uint64_t offset = 0;
  /// Some kinds have neither.
  std::optional<std::uint16_t> size;
  std::optional<std::uint16_t> type;
  std::variant<PwrMagic, PwrCollection, PwrSystem, PwrHardware, PwrHeadMarker, PwrPowerThreshold,
               PwrInfo, PwrMetric, PwrSample, PwrProcess, PwrThread, PwrKernelWakelock,
               PwrUserWakelock, PwrPackage>
      body;
};

/// The name of the record's kind.
const char* pwrKindName(const PwrRecord& record);

}  // namespace qumetra
