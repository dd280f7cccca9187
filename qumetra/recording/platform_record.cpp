#include "host/platform_metadata.h"
#include "qumetra/recording/metadata_record.h"
#include "qumetra/recording/record_values.h"

namespace qumetra {
namespace {

/// Reads what all platform entries have.
void readCommon(RecordObject& record, pwr::PlatformMetadata& entry) {
  entry.m_name = record.string("name");
  entry.m_description = record.string("description");
  entry.m_specifiers = readStrings(record, "specifiers");
  if (const auto values = record.find("values")) {
    RecordObject(*values).forAll([&](std::string_view name, RecordValue text) {
      if (!entry.m_values.emplace(name, text.string()).second) {
        text.fail("a member given twice", "it once");
      }
    });
  }
  entry.m_id = record.integer<std::uint16_t>("id");
}

float narrowReal(RecordObject& record, std::string_view name) {
  const auto member = record.find(name);
  return member ? member->narrowReal() : 0.0F;
}

pwr::ThreadLocation readThreadLocation(RecordValue value) {
  RecordObject record(value);
  pwr::ThreadLocation location;
  location.package = record.integer<std::uint32_t>("package");
  if (const auto module = record.findNotNull("module")) {
    location.module = module->integer<std::uint32_t>();
  }
  location.core = record.integer<std::uint32_t>("core");
  location.id = record.integer<std::uint32_t>("id");
  record.finish();
  return location;
}

pwr::PlatformMetadata* readCpu(RecordValue value, Model& model) {
  RecordObject record(value);
  pwr::CPUMetadata& cpu = model.addCpuMetadata();
  readCommon(record, cpu);
  cpu.m_family = record.integer<std::uint8_t>("family");
  cpu.m_model = record.integer<std::uint8_t>("model");
  cpu.m_stepping = record.integer<std::uint8_t>("stepping");
  cpu.m_cpuWords.busFrequencyMHz = narrowReal(record, "busFrequency");
  cpu.m_cpuWords.lowFrequencyMHz = narrowReal(record, "lowFrequency");
  cpu.m_cpuWords.highFrequencyMHz = narrowReal(record, "highFrequency");
  cpu.m_cpuWords.cpuFrequencyMHz = narrowReal(record, "cpuFrequency");
  cpu.m_cpuWords.platformId = record.integer<std::uint32_t>("platformId");
  cpu.m_cpuWords.lastWord = record.integer<std::uint32_t>("lastWord");
  record.forEach("threads",
                 [&](RecordValue thread) { cpu.m_topology.addThread(readThreadLocation(thread)); });
  record.finish();
  return &cpu;
}

pwr::PlatformMetadata* readPch(RecordValue value, Model& model) {
  RecordObject record(value);
  pwr::PCHMetadata& pch = model.addPchMetadata();
  readCommon(record, pch);
  record.finish();
  return &pch;
}

pwr::PlatformMetadata* readOther(RecordValue value, Model& model) {
  RecordObject record(value);
  pwr::PlatformMetadata& other = model.addPlatformMetadata();
  readCommon(record, other);
  record.finish();
  return &other;
}

pwr::PlatformMetadata* readNull(RecordValue value, Model& /*model*/) {
  if (!value.boolean()) {
    value.fail("false", "true");
  }
  return nullptr;
}

struct EntryKind {
  std::string_view name;
  pwr::PlatformMetadata* (*read)(RecordValue, Model&);
};

constexpr EntryKind kEntryKinds[] = {
    {"cpu", readCpu}, {"pch", readPch}, {"other", readOther}, {"null", readNull}};

/// Readers of the metadata take an entry of type 1 for a processor and one of type 2 for a hub.
std::string_view kindOf(std::uint16_t type) {
  switch (type) {
    case pwr::SystemMetadata::kCpu:
      return "cpu";
    case pwr::SystemMetadata::kPch:
      return "pch";
    default:
      return "other";
  }
}

/// Reads the content of an entry, whichever of the kinds it is.
pwr::PlatformMetadata* readContent(RecordObject& entry, std::uint16_t type, Model& model) {
  const std::string expected =
      "one of \"" + std::string(kindOf(type)) + "\" and \"null\" for type " + std::to_string(type);
  for (const EntryKind& kind : kEntryKinds) {
    const auto member = entry.find(kind.name);
    if (!member) {
      continue;
    }
    if (kind.name != "null" && kind.name != kindOf(type)) {
      member->fail("an entry of another kind", expected);
    }
    return kind.read(*member, model);
  }
  entry.value().fail("an entry without content", expected);
}

}  // namespace

void readPlatform(RecordList list, Model& model, pwr::SystemMetadata& metadata) {
  std::map<std::uint16_t, pwr::PlatformMetadata*> platform;
  for (const RecordValue value : list) {
    RecordObject entry(value);
    const auto type = entry.integer<std::uint16_t>("type");
    if (!platform.emplace(type, readContent(entry, type, model)).second) {
      value.fail("type " + std::to_string(type) + " given twice", "it once");
    }
    // A second content is a member that nobody asked for.
    entry.finish();
  }
  metadata.m_platformMetadata = std::move(platform);
}

}  // namespace qumetra
