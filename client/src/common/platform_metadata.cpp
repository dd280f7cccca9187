#include "host/platform_metadata.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

#include "client/src/common/packed_numbers.h"
#include "client/src/common/serializer.h"
#include "client/src/common/text_parsing.h"
#include "client/src/common/tokenizer.h"

// The packed form of a platform, in native byte order with nothing between the fields; texts as the
// serializer packs them:
//
//     name, description
//     count of specifiers (16 bits), each specifier
//     count of values (32), each a key and its value, in key order
//
// and of a processor behind that:
//
//     family, model, stepping (16 each)
//     the six words (32 each)
//     topology, its scheduling guidance
//     count of topology changes (16), each change
namespace pwr {
namespace {

constexpr int kAllOnes = -1;
/// Writers before this packed version wrote the deprecated topology.
constexpr std::uint32_t kFirstVersionWithNewTree = 0x07E90601;
constexpr const char* kEnergyReportingKey = "ENERGY-REPORTING";

/// An empty text counts as fallen short: a serializer cannot tell the two apart.
bool readText(Serializer& serializer, std::string& text) { return serializer.read_from(text) != 0; }

/// Writes a 16-bit count of as many of `items` as it can name, and returns it.
template <typename Items>
std::uint16_t writeCount(Serializer& serializer, const Items& items) {
  const auto count = static_cast<std::uint16_t>(
      std::min<std::size_t>(items.size(), std::numeric_limits<std::uint16_t>::max()));
  writeNumber(serializer, count);
  return count;
}

bool readSpecifiers(Serializer& serializer, std::vector<std::string>& specifiers) {
  std::uint16_t count = 0;
  if (!readNumber(serializer, count)) {
    return false;
  }
  for (std::uint16_t i = 0; i < count; ++i) {
    std::string specifier;
    if (!readText(serializer, specifier)) {
      return false;
    }
    specifiers.push_back(std::move(specifier));
  }
  return true;
}

/// The count may be anything; the bytes end the loop.
bool readValues(Serializer& serializer, std::map<std::string, std::string>& values) {
  std::uint32_t count = 0;
  if (!readNumber(serializer, count)) {
    return false;
  }
  for (std::uint32_t i = 0; i < count; ++i) {
    std::string key;
    std::string value;
    if (!readText(serializer, key) || !readText(serializer, value)) {
      return false;
    }
    values[std::move(key)] = std::move(value);
  }
  return true;
}

/// Moves `read` to `member` where that is empty.
template <typename Value>
void takeIfEmpty(Value& member, Value& read) {
  if (member.empty()) {
    member = std::move(read);
  }
}

/// Reads a 16-bit number of which a byte is kept.
bool readByte(Serializer& serializer, std::uint8_t& value) {
  std::uint16_t wide = 0;
  if (!readNumber(serializer, wide)) {
    return false;
  }
  value = static_cast<std::uint8_t>(wide);
  return true;
}

void writeWords(Serializer& serializer, const CPUWords& words) {
  writeNumber(serializer, words.busFrequencyMHz);
  writeNumber(serializer, words.lowFrequencyMHz);
  writeNumber(serializer, words.highFrequencyMHz);
  writeNumber(serializer, words.cpuFrequencyMHz);
  writeNumber(serializer, words.platformId);
  writeNumber(serializer, words.lastWord);
}

bool readWords(Serializer& serializer, CPUWords& words) {
  return readNumber(serializer, words.busFrequencyMHz) &&
         readNumber(serializer, words.lowFrequencyMHz) &&
         readNumber(serializer, words.highFrequencyMHz) &&
         readNumber(serializer, words.cpuFrequencyMHz) &&
         readNumber(serializer, words.platformId) && readNumber(serializer, words.lastWord);
}

bool readTopology(Serializer& serializer, std::uint32_t version, TopTree& topology) {
  const int status = version < kFirstVersionWithNewTree
                         ? topology.deserializeTreeDeprecated(serializer)
                         : topology.deserializeTree(serializer);
  return status == 0 && topology.deserializeHGS(serializer) == 0;
}

bool readChanges(Serializer& serializer, std::vector<TopologyChange>& changes) {
  std::uint16_t count = 0;
  if (!readNumber(serializer, count)) {
    return false;
  }
  std::vector<TopologyChange> read;
  for (std::uint16_t i = 0; i < count; ++i) {
    TopologyChange change;
    if (change.deserialize(serializer) != 0) {
      return false;
    }
    read.push_back(change);
  }
  changes = std::move(read);
  return true;
}

}  // namespace

PlatformMetadata::PlatformMetadata() = default;
PlatformMetadata::PlatformMetadata(const PlatformMetadata& other) = default;
PlatformMetadata::~PlatformMetadata() = default;

bool PlatformMetadata::shouldPrintMessageOnNoMatch() const { return false; }

void PlatformMetadata::serializePlatformMetadata(Serializer& serializer) const {
  serializer.write_to(m_name);
  serializer.write_to(m_description);
  const std::uint16_t specifierCount = writeCount(serializer, m_specifiers);
  for (std::uint16_t i = 0; i < specifierCount; ++i) {
    serializer.write_to(m_specifiers[i]);
  }
  writeNumber(serializer, static_cast<std::uint32_t>(m_values.size()));
  for (const auto& [key, value] : m_values) {
    serializer.write_to(key);
    serializer.write_to(value);
  }
}

int PlatformMetadata::deserializePlatformMetadata(Serializer& serializer) {
  std::string name;
  std::string description;
  std::vector<std::string> specifiers;
  if (!readText(serializer, name) || !readText(serializer, description) ||
      !readSpecifiers(serializer, specifiers) || !readValues(serializer, m_values)) {
    return kAllOnes;
  }
  takeIfEmpty(m_name, name);
  takeIfEmpty(m_description, description);
  takeIfEmpty(m_specifiers, specifiers);
  return 0;
}

int PlatformMetadata::initAndGetValue_i(SystemMetadata& /*metadata*/,
                                        std::list<std::string>& names) {
  names.emplace_back("N/A");
  return 0;
}

CPUMetadata::CPUMetadata() = default;
CPUMetadata::CPUMetadata(const CPUMetadata& other) = default;
CPUMetadata::~CPUMetadata() = default;

void CPUMetadata::serializePlatformMetadata(Serializer& serializer) const {
  PlatformMetadata::serializePlatformMetadata(serializer);
  for (const std::uint8_t part : {m_family, m_model, m_stepping}) {
    writeNumber(serializer, std::uint16_t{part});
  }
  writeWords(serializer, m_cpuWords);
  m_topology.serializeTree(serializer);
  m_topology.serializeHGS(serializer);
  const std::uint16_t changeCount = writeCount(serializer, m_topologyChanges);
  for (std::uint16_t i = 0; i < changeCount; ++i) {
    m_topologyChanges[i].serialize(serializer);
  }
}

int CPUMetadata::deserializePlatformMetadata(Serializer& serializer) {
  return deserializePlatformMetadata(serializer, 0);
}

int CPUMetadata::deserializePlatformMetadata(Serializer& serializer, std::uint32_t version) {
  const bool isWhole = PlatformMetadata::deserializePlatformMetadata(serializer) == 0 &&
                       readByte(serializer, m_family) && readByte(serializer, m_model) &&
                       readByte(serializer, m_stepping) && readWords(serializer, m_cpuWords) &&
                       readTopology(serializer, version, m_topology) &&
                       readChanges(serializer, m_topologyChanges);
  return isWhole ? 0 : 1;
}

PCHMetadata::PCHMetadata() = default;
PCHMetadata::PCHMetadata(const PCHMetadata& other) = default;
PCHMetadata::~PCHMetadata() = default;

std::map<std::string, std::uint32_t> PCHMetadata::getEnergyReportingConfiguration() const {
  std::map<std::string, std::uint32_t> configuration;
  for (const auto& [key, value] : m_values) {
    if (key.find(kEnergyReportingKey) == std::string::npos) {
      continue;
    }
    const Tokenizer tokenizer(key, "_");
    if (tokenizer.get_num_tokens() == 2) {
      configuration[tokenizer.get_all_tokens().front()] = extractNumber(value, false);
    }
  }
  return configuration;
}

}  // namespace pwr
