// The part of a .qmjson document that tells the system and the collection.
#pragma once

#include <cstdint>
#include <string>

class JsonFile;

namespace pwr {
class CPUMetadata;
struct SystemMetadata;
}  // namespace pwr

/// What it is made from. Versions, command line and start are those that the system message
/// brought, which the samples go by; the rest is read when the document is written.
struct SystemFacts {
  const pwr::SystemMetadata& system;
  const pwr::CPUMetadata& cpu;
  const std::string& toolVersion;
  const std::string& driverVersion;
  const std::string& commandLine;
  /// In ticks.
  std::uint64_t startTimestamp;
};

/// Writes the member "systemMetaData".
void writeSystem(JsonFile& file, const SystemFacts& facts);
