// Records of .pwr files, byte by byte, and what readers find in them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "qumetra/readers/pwr_reader.h"
#include "tests/readers/string_source.h"

namespace qumetra::test {

// One record of every kind, worked out by hand. A line is a field, or fields that belong together.

inline const std::string kMagicHex = "00 00 00 08 fa de de ad";

/// Of version 3.4.5.
inline const std::string kCollectionHex =
    "00 00 40 02  1e 00  2c 00  01 00 00 00"
    "03 00 04 00 05 00 00 00"
    "00 00 00 00 00 08 00 00"
    "05 70 6f 77 65 72";

/// Of the kind 5, version 5.15.0.91; host "h", platform "pl", a system without a name.
inline const std::string kSystemHex =
    "00 00 40 02  21 00  2d 00  01 00 00 00"
    "05 00  05 00 0f 00 00 00 5b 00"
    "02 00 68 00"
    "03 00 70 6c 00"
    "01 00 00"
    "01 00 00";

/// 1 GHz, 64 bits, family 6, model 0x97, stepping 2, two threads.
inline const std::string kHardwareHex =
    "00 00 40 02  30 00  12 00  01 00 00 00"
    "00 ca 9a 3b 00 00 00 00"
    "00 ca 9a 3b 00 00 00 00"
    "ff ff ff ff ff ff ff ff"
    "40 06 97 02"
    "02 00 00 00  00 01 02 00  00 01 02 01";

/// The start 1000 and the resolution 10000.
inline const std::string kHeadMarkerHex =
    "20 00 00 22 20 00 00 02 02"
    "e8 03 00 00 00 00 00 00"
    "10 27 00 00 00 00 00 00";

/// 3600 MHz.
inline const std::string kPowerThresholdHex =
    "00 00 40 02  3e 00  3f 00  01 00 00 00  0c 00"
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
    "10 0e 00 00";

/// The entity 300, "CPU0" or "C", of the description "d", below 299.
inline const std::string kInfoHex =
    "10 00 40 02  00 00 00 00 00 00 00 00  2d 00  48 00  07 00 02 00"
    "05 00 00 00  2d 01 00 00  2b 01 00 00  2c 01 00 00"
    "04 00 01 00 06 00 01 00"
    "43 50 55 30 43 65 6e 74 69 74 79 64 00";

/// The metric 30 of the type 7, "ab" and "cd", without a quantity.
inline const std::string kMetricHex =
    "10 00 40 02  00 00 00 00 00 00 00 00  25 00  48 00  08 00 02 00"
    "07 00 00 00  1e 00 00 00  ff ff ff ff  01 00 00 60  02 00 00 60"
    "02 00 02 00"
    "61 62 63 64 00";

/// Metric 30 and a real 1.5.
inline const std::string kSampleHex =
    "10 00 40 02  08 07 06 05 04 03 02 01  22 00  47 00  06 00 02 00"
    "02 00"
    "00 00 00 00  1e 00 00 00 00 00 00 00"
    "0b 00 00 00  00 00 00 00 00 00 f8 3f";

/// "sh", pid 77, at 500.
inline const std::string kProcessHex =
    "1d 00 40 02  00 10 00 00  00 00 00 00  4d 00 00 00  00 00 00 00"
    "f4 01 00 00 00 00 00 00  07 00  00 00"
    "73 68 00";

/// Thread 78 of process 77 ends at 600.
inline const std::string kThreadHex =
    "1d 00 00 02  00 20 00 00  00 00 00 00  4d 00 00 00  4e 00 00 00"
    "58 02 00 00 00 00 00 00";

/// "W" is taken with a timeout of 5000 by thread 2 of process 1, at 4000.
inline const std::string kKernelWakelockHex =
    "18 00 40 02  02 00 00 00  01 00 00 00  a0 0f 00 00 00 00 00 00  11 00  40 00"
    "02  88 13 00 00 00 00 00 00"
    "02 00  57 00";

/// "W" is given back by thread 2 of process 1, of the package 10042, screen bright, at 4000.
inline const std::string kUserWakelockHex =
    "18 00 40 02  02 00 00 00  01 00 00 00  a0 0f 00 00 00 00 00 00  12 00  43 00"
    "04  03  3a 27 00 00  00 00 00 00"
    "02 00  57 00";

/// 10042 is "p", at 4000.
inline const std::string kPackageHex =
    "10 00 40 02  a0 0f 00 00 00 00 00 00  0c 00  44 00"
    "3a 27 00 00"
    "02 00  70 00";

/// The number in `count` bytes, the lowest first.
inline std::string littleEndian(std::uint64_t number, std::size_t count) {
  std::string bytes;
  for (std::size_t i = 0; i < count; ++i) {
    bytes += static_cast<char>(number >> (8 * i) & 0xff);
  }
  return bytes;
}

/// A sample of these attributes.
inline std::string sampleBytes(std::uint64_t tsc, const std::vector<PwrAttribute>& attributes) {
  std::string bytes = fromHex("10 00 40 02") + littleEndian(tsc, 8) +
                      littleEndian(12 * attributes.size() + 10, 2) + fromHex("47 00 06 00 02 00") +
                      littleEndian(attributes.size(), 2);
  for (const PwrAttribute& attribute : attributes) {
    bytes += littleEndian(static_cast<std::uint32_t>(attribute.id), 4);
    bytes += littleEndian(attribute.bits, 8);
  }
  return bytes;
}

/// A sample of a metric and an entity.
inline std::string sampleBytes(std::uint64_t tsc, std::uint64_t metric, std::uint64_t entity) {
  return sampleBytes(tsc, {{PwrAttributeId::Metric, metric}, {PwrAttributeId::Entity, entity}});
}

/// A node without a parent.
inline std::string infoBytes(const std::string& kind, std::uint32_t uid, const std::string& name,
                             std::uint32_t parent = kPwrNoUid) {
  const std::string text = name + name + kind;
  return fromHex("10 00 40 02 00 00 00 00 00 00 00 00") + littleEndian(text.size() + 33, 2) +
         fromHex("48 00 07 00 02 00 01 00 00 00") + littleEndian(uid, 4) + littleEndian(parent, 4) +
         littleEndian(uid, 4) + littleEndian(name.size(), 2) + littleEndian(name.size(), 2) +
         littleEndian(kind.size(), 2) + littleEndian(0, 2) + text + '\0';
}

/// Keeps copies of what it gets.
class PwrKeeper : public PwrVisitor {
 public:
  void record(const PwrRecord& record) override { records.push_back(record); }
  void fault(std::uint64_t offset, const std::string& what) override {
    faults.push_back(std::to_string(offset) + ": " + what);
  }

  std::vector<PwrRecord> records;
  std::vector<std::string> faults;
};

/// What a reader finds in the bytes.
inline PwrKeeper readPwr(const std::string& bytes) {
  PwrKeeper found;
  PwrReader reader(found);
  StringSource source(bytes);
  reader.read(source);
  return found;
}

}  // namespace qumetra::test
