// Wakelocks: a held period becomes the record of its start and the record of its end.
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

#include "host/handles.h"
#include "host/metric.h"
#include "writers/held_handle.h"
#include "writers/keltowriter_plugin/kelto_log.h"
#include "writers/keltowriter_plugin/kelto_writer.h"
#include "writers/keltowriter_plugin/packed_record.h"

namespace {

using kelto::shown;

/// With the terminator.
constexpr std::size_t kLongestName = 80;
constexpr std::size_t kKernelFixedSize = 35;
constexpr std::size_t kUserFixedSize = 36;
constexpr std::size_t kPackageFixedSize = 22;

/// The actions and flags stand in files and never change.
enum Action : std::uint16_t {
  kWakeLock = 0,
  kWakeUnlock = 1,
  kWakeLockTimeout = 2,
  kWakeLockInitial = 3,
  kWakeUnlockAll = 4,
};
enum Flag : std::uint16_t {
  kWakePartial = 0,
  kWakeFull = 1,
  kWakeScreenDim = 2,
  kWakeScreenBright = 3,
  kWakeProximityScreenOff = 4,
};

/// The name up to its first zero byte.
std::string_view terminatedName(const std::string& name) { return name.c_str(); }

bool isTooLong(std::string_view name) { return name.size() + 1 > kLongestName; }

}  // namespace

/// A held period, as the entity's attributes tell it.
struct KeltoWriter::Wakelock {
  std::uint64_t metricId;
  /// Tells wakelocks apart.
  std::string key;
  std::uint64_t tsc;
  std::uint64_t lockTsc;
  std::uint16_t flag = kWakeFull;
  std::uint16_t lockAction = kWakeLock;
  std::uint16_t unlockAction = kWakeUnlock;
  std::uint64_t timeout = 0;
  std::uint32_t uid = 0;
  std::uint32_t pid = 0;
  std::uint32_t tid = 0;

  void applyMask(std::uint64_t mask);
};

void KeltoWriter::Wakelock::applyMask(std::uint64_t mask) {
  switch (mask) {
    case 2:
      lockAction = kWakeLockTimeout;
      timeout = tsc;
      break;
    case 3:
      lockAction = kWakeLockInitial;
      break;
    case 4:
      unlockAction = kWakeUnlockAll;
      break;
    case 7:
      unlockAction = kWakeUnlockAll;
      lockAction = kWakeLockInitial;
      break;
    default:
      break;
  }
}

int KeltoWriter::handleWakelockSampleNonGeneric(const pwr::Metric* metric) {
  const pwr::SampleData& sample = metric->getData();
  if (sample.elements.size() != 1) {
    return kelto::failure("Invalid wakelock Sample.\n");
  }
  const pwr::DataElement& element = *sample.elements.front();
  const pwr::EntityHandle* const entity = element.getEntity();
  const pwr::Data* const value = element.getValue();
  const pwr::DataHandle* const state = value == nullptr ? nullptr : handleIn(*value);
  if (state != nullptr && state->getName() == "Released") {
    return 0;
  }
  return handleWakelockSampleNonGenericHelper(metric->metricId, metric->tableClass, entity,
                                              sample.timestamp, element.getDuration(),
                                              entity->begin(), entity->end());
}

int KeltoWriter::handleWakelockSampleNonGenericHelper(std::uint64_t metricId,
                                                      pwr::TableClass tableClass,
                                                      const pwr::EntityHandle* entity,
                                                      std::uint64_t tsc, std::uint64_t duration,
                                                      Begin begin, Begin end) {
  const std::string name = entity->getName();
  // A duration above the time wraps around, as unsigned numbers do.
  Wakelock wakelock{.metricId = metricId,
                    .key = getNameIdKey("WAKELOCK_" + name, entity->getId()),
                    .tsc = tsc,
                    .lockTsc = tsc - duration};
  if (checkTscMonotonicity(tsc, wakelock.key) != 0) {
    return kelto::failure("Invalid TSC value.'%s' TSC: %llu\n", wakelock.key.c_str(), shown(tsc));
  }
  for (Begin entry = begin; entry != end && entry->first != nullptr; ++entry) {
    if (takeWakelockAttribute(*entry->first, entry->second, wakelock) != 0) {
      return 1;
    }
  }
  const int status = tableClass == pwr::TableClass::UserWakelock
                         ? writeUserWakelock(name, wakelock)
                         : writeKernelWakelock(name, wakelock);
  if (status == 0) {
    KeltoWriterImpl::m_hasData = true;
  }
  return status;
}

int KeltoWriter::takeWakelockAttribute(const pwr::Attribute& attribute, const pwr::Data& data,
                                       Wakelock& wakelock) {
  switch (attribute.getAttributeType()) {
    case pwr::AttributeType::Info:
      return takeWakelockInfo(attribute, handleIn(data), wakelock);
    case pwr::AttributeType::Thread:
      return takeWakelockThread(handleIn(data), wakelock);
    case pwr::AttributeType::Process:
      return takeWakelockProcess(handleIn(data), wakelock);
    default:
      return 0;
  }
}

int KeltoWriter::takeWakelockInfo(const pwr::Attribute& attribute, const pwr::DataHandle* handle,
                                  Wakelock& wakelock) {
  if (handle == nullptr) {
    return kelto::failure("Failed to get wakelock data handle for info attribute. TSC: %llu\n",
                          shown(wakelock.tsc));
  }
  const auto* const pair = dynamic_cast<const pwr::NameValuePair*>(handle);
  if (pair == nullptr) {
    return kelto::failure("Failed to get data for info attribute\n");
  }
  const std::string name = attribute.getName();
  if (name == "User Wakelock Flag") {
    wakelock.flag = static_cast<std::uint16_t>(pair->getValue());
  } else if (name == "Wakelock Mask") {
    wakelock.applyMask(pair->getValue());
  } else if (name == "APK") {
    const std::string package = pair->getInfoName();
    wakelock.uid = static_cast<std::uint32_t>(pair->getValue());
    if (writeAPKMetadataNonGeneric(wakelock.tsc, wakelock.uid, package, wakelock.metricId) != 0) {
      return kelto::failure("Unable to write APK metadata sample. '%s' current TSC: %llu\n",
                            package.c_str(), shown(wakelock.tsc));
    }
  }
  return 0;
}

int KeltoWriter::takeWakelockThread(const pwr::DataHandle* handle, Wakelock& wakelock) {
  if (handle == nullptr) {
    return kelto::failure("Failed to get wakelock data for thread attribute handle. TSC: %llu\n",
                          shown(wakelock.tsc));
  }
  const auto* const thread = dynamic_cast<const pwr::Thread*>(handle);
  if (thread == nullptr) {
    return kelto::failure("Kelto writer plugin: Unable to retrieve data handle. TSC: %llu\n",
                          shown(wakelock.tsc));
  }
  wakelock.tid = thread->getTid();
  if (handleThreadInfo(thread, true) != 0) {
    return kelto::failure("Failed to handle thread information. TSC: %llu\n", shown(wakelock.tsc));
  }
  return 0;
}

int KeltoWriter::takeWakelockProcess(const pwr::DataHandle* handle, Wakelock& wakelock) {
  if (handle == nullptr) {
    return kelto::failure("Failed to get wakelock data handle for process attribute. TSC: %llu\n",
                          shown(wakelock.tsc));
  }
  const auto* const process = dynamic_cast<const pwr::Process*>(handle);
  if (process == nullptr) {
    return kelto::failure("Kelto writer plugin: Unable to retrieve data handle. TSC: %llu\n",
                          shown(wakelock.tsc));
  }
  wakelock.pid = process->getPid();
  if (handleProcessInfo(process, true) != 0) {
    return kelto::failure("Failed to handle process information. TSC: %llu\n", shown(wakelock.tsc));
  }
  if (wakelock.lockTsc < process->getStartTime()) {
    return kelto::failure(
        "Invalid wakelock locking process start time for wakelock: '%s'. Process pid: %d. Process "
        "start TSC: %llu > Wakelock lock TSC: %llu!\n",
        wakelock.key.c_str(), static_cast<int>(wakelock.pid), shown(process->getStartTime()),
        shown(wakelock.lockTsc));
  }
  return 0;
}

int KeltoWriter::writeUserWakelock(const std::string& name, const Wakelock& wakelock) {
  const auto write = [&](std::uint64_t tsc, std::uint16_t action) {
    return writeUserWakelockSampleNonGeneric(tsc, name, wakelock.uid, wakelock.pid, wakelock.tid, 0,
                                             action, wakelock.flag, wakelock.metricId);
  };
  if (write(wakelock.lockTsc, wakelock.lockAction) != 0) {
    return kelto::failure("Failed to write lock state for user wakelock '%s' TSC: %llu\n",
                          wakelock.key.c_str(), shown(wakelock.tsc));
  }
  if (write(wakelock.tsc, wakelock.unlockAction) != 0) {
    return kelto::failure("Failed to write unlock state for user wakelock '%s' TSC: %llu\n",
                          wakelock.key.c_str(), shown(wakelock.tsc));
  }
  return 0;
}

int KeltoWriter::writeKernelWakelock(const std::string& name, const Wakelock& wakelock) {
  const auto write = [&](std::uint64_t tsc, std::uint16_t action) {
    return writeKernelWakelockSampleNonGeneric(tsc, name, wakelock.pid, wakelock.tid,
                                               wakelock.timeout, action, wakelock.metricId);
  };
  if (write(wakelock.lockTsc, wakelock.lockAction) != 0) {
    return kelto::failure("Failed to write lock state for wakelock '%s' TSC: %llu\n",
                          wakelock.key.c_str(), shown(wakelock.tsc));
  }
  if (write(wakelock.tsc, wakelock.unlockAction) != 0) {
    return kelto::failure("Failed to write unlock state for wakelock '%s' TSC: %llu\n",
                          wakelock.key.c_str(), shown(wakelock.tsc));
  }
  return 0;
}

// offset  size
//      0     4  18 00 40 02
//      4     4  tid
//      8     4  pid
//     12     8  time
//     20     2  size, from here to the end: length of the name plus 16
//     22     2  type, 64
//     24     1  action
//     25     8  timeout
//     33     2  length of the name with terminator
//     35     n  name with terminator, 80 bytes at most
int KeltoWriter::writeKernelWakelockSampleNonGeneric(std::uint64_t tsc, const std::string& name,
                                                     std::uint32_t pid, std::uint32_t tid,
                                                     std::uint64_t timeout, std::uint16_t action,
                                                     std::uint64_t metricId) {
  const std::string_view text = terminatedName(name);
  if (isTooLong(text)) {
    return kelto::failure("Kernel wakelock name too long, TSC: %llu\n", shown(tsc));
  }
  kelto::PackedRecord<kKernelFixedSize + kLongestName> record;
  record.u32(kelto::kWakelockWord);
  record.u32(tid);
  record.u32(pid);
  record.u64(tsc);
  record.u16(static_cast<std::uint16_t>(text.size() + 16));
  record.u16(kelto::kKernelWakelockRecord);
  record.u8(static_cast<std::uint8_t>(action));
  record.u64(timeout);
  record.u16(static_cast<std::uint16_t>(text.size() + 1));
  record.terminatedText(text);
  return writeRecord(metricId, record.data(), record.size());
}

// offset  size
//      0     4  18 00 40 02
//      4     4  tid
//      8     4  pid
//     12     8  time
//     20     2  size, from here to the end: length of the name plus 17
//     22     2  type, 67
//     24     1  action
//     25     1  flag
//     26     4  uid
//     30     4  0
//     34     2  length of the name with terminator
//     36     n  name with terminator, 80 bytes at most
int KeltoWriter::writeUserWakelockSampleNonGeneric(std::uint64_t tsc, const std::string& name,
                                                   std::uint32_t uid, std::uint32_t pid,
                                                   std::uint32_t tid, std::uint32_t zero,
                                                   std::uint16_t action, std::uint16_t flag,
                                                   std::uint64_t metricId) {
  const std::string_view text = terminatedName(name);
  if (isTooLong(text)) {
    return kelto::failure("User wakelock name too long, TSC: %llu\n", shown(tsc));
  }
  kelto::PackedRecord<kUserFixedSize + kLongestName> record;
  record.u32(kelto::kWakelockWord);
  record.u32(tid);
  record.u32(pid);
  record.u64(tsc);
  record.u16(static_cast<std::uint16_t>(text.size() + 17));
  record.u16(kelto::kUserWakelockRecord);
  record.u8(static_cast<std::uint8_t>(action));
  record.u8(static_cast<std::uint8_t>(flag));
  record.u32(uid);
  record.u32(zero);
  record.u16(static_cast<std::uint16_t>(text.size() + 1));
  record.terminatedText(text);
  return writeRecord(metricId, record.data(), record.size());
}

// offset  size
//      0     4  10 00 40 02
//      4     8  time
//     12     2  size, from here to the end: length of the name plus 11
//     14     2  type, 68
//     16     4  uid
//     20     2  length of the name with terminator
//     22     n  name with terminator, 80 bytes at most
int KeltoWriter::writeAPKMetadataNonGeneric(std::uint64_t tsc, std::uint32_t uid,
                                            const std::string& name, std::uint64_t metricId) {
  const auto [known, isNew] = apkNames.try_emplace(uid, name);
  if (!isNew && known->second == name) {
    return 0;
  }
  if (!isNew) {
    return kelto::failure(
        "APK name conflict! Previously processed APK name '%s' for uid '%d' does not match current "
        "APK name '%s' with same uid. TSC: %llu\n",
        known->second.c_str(), static_cast<int>(uid), name.c_str(), shown(tsc));
  }
  // The uid stays known although its name has no place, so the next sample passes without one.
  const std::string_view text = terminatedName(name);
  if (isTooLong(text)) {
    return kelto::failure("User wakelock package name too long, TSC: %llu\n", shown(tsc));
  }
  kelto::PackedRecord<kPackageFixedSize + kLongestName> record;
  record.u32(kelto::kTimedWord);
  record.u64(tsc);
  record.u16(static_cast<std::uint16_t>(text.size() + 11));
  record.u16(kelto::kPackageNameRecord);
  record.u32(uid);
  record.u16(static_cast<std::uint16_t>(text.size() + 1));
  record.terminatedText(text);
  return writeRecord(metricId, record.data(), record.size());
}
