#include "qumetra/recording/platform_writer.h"

#include <vector>

#include "host/platform_metadata.h"

namespace qumetra {
namespace {

void appendCommon(JsonText& json, const pwr::PlatformMetadata& entry) {
  json.textMember("name", entry.m_name);
  json.textMember("description", entry.m_description);
  if (!entry.m_specifiers.empty()) {
    json.name("specifiers");
    json.beginList();
    for (const std::string& specifier : entry.m_specifiers) {
      json.text(specifier);
    }
    json.endList();
  }
  if (!entry.m_values.empty()) {
    json.name("values");
    json.beginObject();
    for (const auto& [name, value] : entry.m_values) {
      json.name(name);
      json.text(value);
    }
    json.endObject();
  }
  json.numberMember("id", entry.m_id);
}

void appendNarrowReal(JsonText& json, std::string_view name, float value) {
  json.name(name);
  json.narrowReal(value);
}

void appendThread(JsonText& json, const pwr::TNode& thread) {
  json.beginObject();
  for (const pwr::TNode* node = &thread; node != nullptr; node = node->parent) {
    switch (node->kind) {
      case pwr::TNode::kPackage:
        json.numberMember("package", node->id);
        break;
      case pwr::TNode::kModule:
        json.name("module");
        json.unsignedInteger(node->id);
        break;
      case pwr::TNode::kCore:
        json.numberMember("core", node->id);
        break;
      case pwr::TNode::kThread:
        json.numberMember("id", node->id);
        break;
      default:
        break;
    }
  }
  json.endObject();
}

void appendThreads(JsonText& json, const pwr::TopTree& topology) {
  std::vector<const pwr::TNode*> threads;
  topology.getAllThreads(threads);
  if (threads.empty()) {
    return;
  }
  json.name("threads");
  json.beginList();
  for (const pwr::TNode* thread : threads) {
    appendThread(json, *thread);
  }
  json.endList();
}

void appendCpu(JsonText& json, const pwr::CPUMetadata& cpu) {
  json.beginObject();
  appendCommon(json, cpu);
  json.numberMember("family", cpu.m_family);
  json.numberMember("model", cpu.m_model);
  json.numberMember("stepping", cpu.m_stepping);
  appendNarrowReal(json, "busFrequency", cpu.m_cpuWords.busFrequencyMHz);
  appendNarrowReal(json, "lowFrequency", cpu.m_cpuWords.lowFrequencyMHz);
  appendNarrowReal(json, "highFrequency", cpu.m_cpuWords.highFrequencyMHz);
  appendNarrowReal(json, "cpuFrequency", cpu.m_cpuWords.cpuFrequencyMHz);
  json.numberMember("platformId", cpu.m_cpuWords.platformId);
  json.numberMember("lastWord", cpu.m_cpuWords.lastWord);
  appendThreads(json, cpu.m_topology);
  json.endObject();
}

void appendPlain(JsonText& json, const pwr::PlatformMetadata& entry) {
  json.beginObject();
  appendCommon(json, entry);
  json.endObject();
}

void appendContent(JsonText& json, std::uint16_t type, const pwr::PlatformMetadata* entry) {
  const auto* cpu = dynamic_cast<const pwr::CPUMetadata*>(entry);
  const auto* pch = dynamic_cast<const pwr::PCHMetadata*>(entry);
  const bool isOther = type != pwr::SystemMetadata::kCpu && type != pwr::SystemMetadata::kPch;
  if (type == pwr::SystemMetadata::kCpu && cpu != nullptr) {
    json.name("cpu");
    appendCpu(json, *cpu);
  } else if (type == pwr::SystemMetadata::kPch && pch != nullptr) {
    json.name("pch");
    appendPlain(json, *pch);
  } else if (isOther && entry != nullptr) {
    json.name("other");
    appendPlain(json, *entry);
  } else {
    json.flagMember("null", true);
  }
}

}  // namespace

void appendPlatform(JsonText& json, const pwr::SystemMetadata& metadata) {
  json.beginList();
  for (const auto& [type, entry] : metadata.m_platformMetadata) {
    json.beginObject();
    json.name("type");
    json.unsignedInteger(type);
    appendContent(json, type, entry);
    json.endObject();
  }
  json.endList();
}

}  // namespace qumetra
