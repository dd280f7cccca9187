// The part of a .qmjson document that tells the system and the collection.
#pragma once

#include <string>

class JsonFile;

namespace pwr {
class CPUMetadata;
struct SystemMetadata;
}  // namespace pwr

/// What it is made from.
struct SystemFacts {
  const pwr::SystemMetadata& system;
  const pwr::CPUMetadata& cpu;
  const std::string& toolVersion;
  const std::string& driverVersion;
  const std::string& commandLine;
};

/// Writes the member "systemMetaData".
void writeSystem(JsonFile& file, const SystemFacts& facts);
