// The records that open the stream, made from the system message.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

#include "host/messages.h"
#include "host/platform_metadata.h"
#include "writers/keltowriter_plugin/kelto_log.h"
#include "writers/keltowriter_plugin/kelto_writer.h"
#include "writers/keltowriter_plugin/packed_record.h"
#include "writers/system_lookup.h"

namespace {

/// The largest record without a time: the largest size, and the word in front of it.
constexpr std::size_t kLargestHeaderRecord =
    sizeof(std::uint32_t) + std::numeric_limits<std::uint16_t>::max();
constexpr std::uint32_t kMagicNumber = 0xADDEDEFA;
constexpr std::string_view kCollectionName = "power";
/// The system record's size without its texts.
constexpr std::size_t kSystemRecordRest = 30;
/// The hardware record's size without its threads.
constexpr std::size_t kHardwareRecordRest = 40;
constexpr std::uint64_t kHighestAddress32 = 0x80000000;
constexpr std::uint64_t kHighestAddress64 = ~std::uint64_t{0};

/// The text up to its first zero byte.
std::string_view terminatedText(const std::string& text) { return text.c_str(); }

bool is32Bit(const std::string& osType) { return osType == "i386" || osType == "i686"; }

}  // namespace

int KeltoWriter::handleSystemMessage(const pwr::SystemMessage& message) {
  systemInfo = std::make_unique<KeltoSystemInfo>();
  systemStreamId = message.m_id;
  const pwr::CPUMetadata* const cpu = processorOf(message.m_metadata);
  if (cpu == nullptr) {
    return 1;  // The run goes on without header records, and with a start at 0.
  }
  fillKeltoSystemInfo(*message.m_metadata, *cpu, *systemInfo);
  if (writeHeader() != 0) {
    impl->valid = false;
    return 1;
  }
  return 0;
}

int KeltoWriter::writeHeader() {
  if (writeMagicRecord() != 0) {
    return kelto::failure("Failed to write magic record.\n");
  }
  if (writeColInfoRecord() != 0) {
    return kelto::failure("Failed to write collection info record.\n");
  }
  if (writeSysInfoRecord() != 0) {
    return kelto::failure("Failed to write system info record.\n");
  }
  // One text for three records: users know it as the failure of the hardware part.
  if (writeHardCfgRecord() != 0 || writeHeadMarkerRecord() != 0 || writePowerThreshold() != 0) {
    return kelto::failure("Failed to write hardware configuration record.\n");
  }
  if (writeMetricTypeMetadata() != 0) {
    return kelto::failure("Failed to write metric class type metadata records.\n");
  }
  return 0;
}

// 00 00 00 08 FA DE DE AD
int KeltoWriter::writeMagicRecord() {
  kelto::PackedRecord<8> record;
  record.u32(kelto::kMagicWord);
  record.u32(kMagicNumber);
  return writeRecord(systemStreamId, record.data(), record.size());
}

// offset  size
//      0     4  00 00 40 02
//      4     2  size, 30
//      6     2  type, 44
//      8     4  1
//     12     2  major version
//     14     2  minor version
//     16     4  patch version
//     20     8  00 00 00 00 00 08 00 00
//     28     1  length of the name, 5
//     29     5  "power"
int KeltoWriter::writeColInfoRecord() {
  kelto::PackedRecord<34> record;
  record.u32(kelto::kHeaderWord);
  record.u16(30);
  record.u16(kelto::kCollectionRecord);
  record.u32(1);
  record.u16(systemInfo->versionMajor);
  record.u16(systemInfo->versionMinor);
  record.u32(systemInfo->versionPatch);
  record.u64(0x0000080000000000);
  record.u8(static_cast<std::uint8_t>(kCollectionName.size()));
  record.text(kCollectionName);
  return writeRecord(systemStreamId, record.data(), record.size());
}

// offset  size
//      0     4  00 00 40 02
//      4     2  size, from here to the end
//      6     2  type, 45
//      8     2  1
//     10     2  0
//     12     2  kind of the operating system
//     14     8  its version, four numbers
//     22        host name, platform name, name of the operating system: each two bytes of length
//               with terminator, then the text with its terminator
//   then     2  1
//   then     1  0, an empty text
int KeltoWriter::writeSysInfoRecord() {
  const std::string_view texts[] = {terminatedText(systemInfo->hostName),
                                    terminatedText(systemInfo->platformName),
                                    terminatedText(systemInfo->osName)};
  std::size_t size = kSystemRecordRest;
  for (const std::string_view text : texts) {
    size += text.size();
  }
  if (size > std::numeric_limits<std::uint16_t>::max()) {
    return kelto::failure("System info record size mismatch.\n");
  }
  kelto::PackedRecord<kLargestHeaderRecord> record;
  record.u32(kelto::kHeaderWord);
  record.u16(static_cast<std::uint16_t>(size));
  record.u16(kelto::kSystemRecord);
  record.u16(1);
  record.u16(0);
  record.u16(static_cast<std::uint16_t>(systemInfo->osKind));
  for (const std::uint16_t number : systemInfo->osVersion) {
    record.u16(number);
  }
  for (const std::string_view text : texts) {
    record.u16(static_cast<std::uint16_t>(text.size() + 1));
    record.terminatedText(text);
  }
  record.u16(1);
  record.u8(0);
  return writeRecord(systemStreamId, record.data(), record.size());
}

// offset  size
//      0     4  00 00 40 02
//      4     2  size, 4 times the threads plus 40
//      6     2  type, 18
//      8     4  1
//     12     8  frequency of the timestamps in Hz
//     20     8  the same once more
//     28     8  highest address of a user
//     36     1  width of an address in bits
//     37     1  family
//     38     1  model
//     39     1  stepping
//     40     4  number of hardware threads
//     44     4  each thread
int KeltoWriter::writeHardCfgRecord() {
  const std::uint64_t tscFrequency = systemInfo->tscFrequencyHz;
  if (tscFrequency == 0) {
    return kelto::failure("Invalid TSC clock frequency: %lluHz\n", 0ULL);
  }
  // The processor's frequency has to be known, though the record has no place for it.
  if (systemInfo->cpuFrequencyHz == 0) {
    return kelto::failure("Invalid CPU frequency: %lluHz\n", 0ULL);
  }
  const std::size_t size =
      kHardwareRecordRest + systemInfo->threadTable.size() * sizeof(KeltoThreadEntry);
  if (size > std::numeric_limits<std::uint16_t>::max()) {
    return kelto::failure("Hardware configuration record size mismatch.\n");
  }
  const bool narrow = is32Bit(systemInfo->osType);
  kelto::PackedRecord<kLargestHeaderRecord> record;
  record.u32(kelto::kHeaderWord);
  record.u16(static_cast<std::uint16_t>(size));
  record.u16(kelto::kHardwareRecord);
  record.u32(1);
  record.u64(tscFrequency);
  record.u64(tscFrequency);
  record.u64(narrow ? kHighestAddress32 : kHighestAddress64);
  record.u8(narrow ? 32 : 64);
  record.u8(static_cast<std::uint8_t>(systemInfo->family));
  record.u8(static_cast<std::uint8_t>(systemInfo->model));
  record.u8(static_cast<std::uint8_t>(systemInfo->stepping));
  record.u32(systemInfo->threadCount);
  for (const KeltoThreadEntry& thread : systemInfo->threadTable) {
    std::for_each(thread.begin(), thread.end(), [&](std::uint8_t byte) { record.u8(byte); });
  }
  return writeRecord(systemStreamId, record.data(), record.size());
}

// offset  size
//      0     8  20 00 00 22 20 00 00 02
//      8     1  2
//      9     8  start of the collection
//     17     8  resolution of the timer, divided by 100
int KeltoWriter::writeHeadMarkerRecord() {
  kelto::PackedRecord<25> record;
  record.u32(kelto::kHeadMarkerWord);
  record.u32(kelto::kHeadMarkerSecondWord);
  record.u8(2);
  record.u64(systemInfo->firstTsc);
  record.u64(systemInfo->timerResolutionDiv100);
  return writeRecord(systemStreamId, record.data(), record.size());
}

// offset  size
//      0     4  00 00 40 02
//      4     2  size, 62
//      6     2  type, 63
//      8     4  1
//     12     2  12
//     14    48  0
//     62     4  frequency of the processor in MHz
int KeltoWriter::writePowerThreshold() {
  kelto::PackedRecord<66> record;
  record.u32(kelto::kHeaderWord);
  record.u16(62);
  record.u16(kelto::kPowerThresholdRecord);
  record.u32(1);
  record.u16(12);
  record.zeros(48);
  record.u32(static_cast<std::uint32_t>(systemInfo->cpuFrequencyMHz));
  return writeRecord(systemStreamId, record.data(), record.size());
}
