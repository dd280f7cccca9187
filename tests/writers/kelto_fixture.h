// A writer of the import stream whose inside can be looked at, and the objects that tests feed it.
#pragma once

#include <cstdint>
#include <cstdio>
#include <deque>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/handles.h"
#include "host/messages.h"
#include "host/metric.h"
#include "host/platform_metadata.h"
#include "host/quantity.h"
#include "host/system_metadata.h"
#include "tests/support/disk_faults.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"
#include "writers/keltowriter_plugin/kelto_writer.h"
#include "writers/keltowriter_plugin/name_tables.h"

namespace qumetra::test {

/// Bytes as "10 00 40 02 ", lower case, so that a failed comparison can be read.
inline std::string hex(const std::string& bytes) {
  std::string text;
  for (const char byte : bytes) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%02x ", static_cast<unsigned char>(byte));
    text += digits;
  }
  return text;
}

/// A little-endian number of `size` bytes at `at`; 0 past the end.
inline std::uint64_t number(const std::string& bytes, std::size_t at, std::size_t size) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < size && at + i < bytes.size(); ++i) {
    value |= std::uint64_t{static_cast<unsigned char>(bytes[at + i])} << (8 * i);
  }
  return value;
}

/// A decoded node.
struct Node {
  std::uint64_t kindId = 0;
  std::uint64_t value = 0;
  std::uint64_t parent = 0;
  std::uint64_t uid = 0;
  std::string longName;
  std::string shortName;
  std::string kind;
  std::string description;
};

/// All that `KeltoWriter` keeps to itself.
class OpenKeltoWriter : public KeltoWriter {
 public:
  using KeltoWriter::addAttributeToRecord;
  using KeltoWriter::checkTscMonotonicity;
  using KeltoWriter::flushStoredStates;
  using KeltoWriter::getFirstDataAttributeAsString;
  using KeltoWriter::getInfoTypeMetadataId;
  using KeltoWriter::getKeltoQuantityType;
  using KeltoWriter::getNameIdKey;
  using KeltoWriter::getPreviousTsc;
  using KeltoWriter::getUniqueId;
  using KeltoWriter::handleMetricMetadata;
  using KeltoWriter::handleMetricMetadataHelper;
  using KeltoWriter::handleProcessInfo;
  using KeltoWriter::handleQuantityMetadata;
  using KeltoWriter::handleThreadInfo;
  using KeltoWriter::processData;
  using KeltoWriter::processDataAttributes;
  using KeltoWriter::processDataAttributesHelper;
  using KeltoWriter::processInfoAttributes;
  using KeltoWriter::processInfoAttributesHelper;
  using KeltoWriter::processRangeAsString;
  using KeltoWriter::processStringData;
  using KeltoWriter::processValueAsString;
  using KeltoWriter::setInvalidTempFile;
  using KeltoWriter::writeAPKMetadataNonGeneric;
  using KeltoWriter::writeColInfoRecord;
  using KeltoWriter::writeEntityMetadata;
  using KeltoWriter::writeEntityMetadataTopology;
  using KeltoWriter::writeHardCfgRecord;
  using KeltoWriter::writeHeadMarkerRecord;
  using KeltoWriter::writeInfoMetadataHelper;
  using KeltoWriter::writeKernelWakelockSampleNonGeneric;
  using KeltoWriter::writeMagicRecord;
  using KeltoWriter::writeMetricMetadata;
  using KeltoWriter::writePowerThreshold;
  using KeltoWriter::writeProcessSample;
  using KeltoWriter::writeQM2Record;
  using KeltoWriter::writeQuantityMetadata;
  using KeltoWriter::writeRecord;
  using KeltoWriter::writeStateColorMetadata;
  using KeltoWriter::writeStateMetadata;
  using KeltoWriter::writeSysInfoRecord;
  using KeltoWriter::writeTabGroupMetadata;
  using KeltoWriter::writeThreadSample;
  using KeltoWriter::writeTimelineGroupMetadata;
  using KeltoWriter::writeUserWakelockSampleNonGeneric;

  using KeltoWriter::apkNames;
  using KeltoWriter::colorIds;
  using KeltoWriter::entityParents;
  using KeltoWriter::fieldIds;
  using KeltoWriter::impl;
  using KeltoWriter::infoRecordIds;
  using KeltoWriter::infoTypeIds;
  using KeltoWriter::legacy;
  using KeltoWriter::metricNames;
  using KeltoWriter::metricTypeIds;
  using KeltoWriter::nameIdStrings;
  using KeltoWriter::previousTsc;
  using KeltoWriter::quantityIds;
  using KeltoWriter::systemInfo;
  using KeltoWriter::systemStreamId;
  using KeltoWriter::tabGroupIds;
  using KeltoWriter::timelineGroupIds;

  /// As in a process that has not run a writer yet.
  static void resetProcess() {
    s_nextInfoTypeId = 1;
    s_wasCountNoted = false;
    s_wasRealNoted = false;
    s_wasRealRangeNoted = false;
    KeltoWriterImpl::m_hasData = false;
    KeltoWriterImpl::m_wasFileOpened = false;
    m_processes.clear();
    m_threads.clear();
    processKeysByPid.clear();
    coreThreadCount.clear();
  }
};

/// The attributes of a sample record, as (id, value).
using Attributes = std::vector<std::pair<std::uint64_t, std::uint64_t>>;

class KeltoTest : public ::testing::Test {
 protected:
  static constexpr std::uint64_t kSystem = 1;
  static constexpr std::uint64_t kMetric = 7;
  static constexpr std::uint64_t kStart = 1000;
  static constexpr std::uint64_t kStop = 9000;

  KeltoTest() {
    OpenKeltoWriter::resetProcess();
    m_cpu.m_cpuWords.cpuFrequencyMHz = 2000;
    m_metadata.m_platformMetadata[pwr::SystemMetadata::kCpu] = &m_cpu;
    m_metadata.m_timestampFrequency = 2500;
    m_metadata.m_firstTimestamp = kStart;
    m_metadata.m_lastTimestamp = kStop;
    m_metric.metricId = kMetric;
    m_metric.name = "Metric";
    m_metric.metricType = pwr::Metric::SAMPLED_DELTA;
    m_writer.init(m_area.file("run"), false);
  }

  // Objects. They live as long as the test.

  pwr::EntityHandle& entity(const std::string& name, const pwr::EntityHandle* parent = nullptr) {
    return m_entities.emplace_back(m_nextId++, pwr::HandleTexts{name, name, ""}, parent);
  }
  pwr::DataDescriptor& descriptor(const std::string& name) {
    return m_descriptors.emplace_back(m_nextId++, pwr::HandleTexts{name, name, ""});
  }
  pwr::Quantity& quantity(const std::string& name, const std::string& units,
                          std::uint32_t code = 3) {
    return m_quantities.emplace_back(m_nextId++, code, name, units, name);
  }
  const pwr::NameValuePair& pair(const std::string& name, const std::string& description,
                                 std::uint64_t value) {
    return m_pairs.emplace_back(m_nextId++, pwr::HandleTexts{"pair", "", ""}, name, description,
                                value);
  }
  pwr::Process& process(std::uint32_t pid, const std::string& path, std::uint64_t start,
                        std::uint64_t end = 0) {
    return m_processObjects.emplace_back(m_nextId++, pwr::HandleTexts{path, "", ""}, pid, 1, path,
                                         pwr::Lifetime{start, end});
  }
  pwr::Thread& thread(std::uint32_t tid, std::uint32_t pid, std::uint64_t start,
                      std::uint64_t end = 0) {
    return m_threadObjects.emplace_back(m_nextId++, pwr::HandleTexts{"thread", "", ""}, tid, pid,
                                        pwr::Lifetime{start, end});
  }
  static const pwr::Attribute* attribute(const std::string& name, pwr::AttributeType type,
                                         const pwr::Quantity* quantity = nullptr) {
    return pwr::Attribute::create(name, quantity, type);
  }
  /// Adds `count` info attributes that share one pair.
  void addInfos(pwr::AttributeValueManager& manager, std::size_t count) {
    const pwr::Attribute* const info = attribute("info", pwr::AttributeType::Info);
    const pwr::Data value = pwr::Data::fromHandle(&pair("shared", "", 1));
    for (std::size_t i = 0; i < count; ++i) {
      manager.addAttributeValue(info, value);
    }
  }

  // Messages.

  int deliverSystem() {
    pwr::SystemMessage message;
    message.m_id = kSystem;
    message.m_metadata = &m_metadata;
    return m_writer.writeMessage(message);
  }
  static pwr::DataElement element(const pwr::EntityHandle& entity,
                                  const pwr::DataDescriptor* descriptor, pwr::Data value,
                                  std::uint64_t duration = 0,
                                  const pwr::DynamicAttributeValueManager* info = nullptr) {
    return {&entity, descriptor, nullptr, std::move(value), duration, info};
  }
  int deliver(std::uint64_t tsc, const std::vector<pwr::DataElement>& elements) {
    pwr::SampleData data;
    data.timestamp = tsc;
    for (const pwr::DataElement& one : elements) {
      data.elements.push_back(&one);
    }
    m_metric.setData(std::move(data));
    return m_target->writeMessage(m_metric);
  }
  /// A sample of one value that needs nothing special.
  int deliverPlain(std::uint64_t tsc) {
    if (m_plainEntity == nullptr) {
      m_plainEntity = &entity("CPU0");
      m_plainState = &descriptor("C6");
    }
    return deliver(tsc, {element(*m_plainEntity, m_plainState, pwr::Data(5UL), 10)});
  }

  // What the writer has made so far.

  std::string stream(std::uint64_t id) {
    KeltoBackingStoreManager* const manager = m_writer.impl->findStore(id);
    if (manager == nullptr) {
      return {};
    }
    std::string bytes(manager->store->size(), '\0');
    manager->store->resetForRead();
    const std::int64_t got = manager->store->read(bytes.data(), bytes.size());
    EXPECT_EQ(got, static_cast<std::int64_t>(bytes.size()));
    return bytes;
  }
  std::string systemStream() { return stream(kSystem); }

  /// The records of a stream.
  std::vector<std::string> records(std::uint64_t id) {
    const std::string bytes = stream(id);
    std::vector<std::string> all;
    for (std::size_t at = 0; at < bytes.size();) {
      const std::size_t length = recordLength(bytes, at);
      all.push_back(bytes.substr(at, length));
      at += length;
    }
    return all;
  }
  static std::size_t recordLength(const std::string& bytes, std::size_t at) {
    switch (number(bytes, at, 4)) {
      case 0x08000000:
        return 8;
      case 0x22000020:
        return 25;
      case 0x0200001D:
        return 28;
      case 0x02400000:
        return 4 + number(bytes, at + 4, 2);
      case 0x02400010:
        return 12 + number(bytes, at + 12, 2);
      case 0x02400018:
        return 20 + number(bytes, at + 20, 2);
      case 0x0240001D:
        return 28 + number(bytes, at + 28, 2);
      default:
        ADD_FAILURE() << "no record begins at " << at;
        return bytes.size();
    }
  }
  /// The records of a type in a stream. Only for records with a time.
  std::vector<std::string> samples(std::uint64_t id = kMetric) {
    std::vector<std::string> found;
    for (const std::string& record : records(id)) {
      if (number(record, 0, 4) == 0x02400010 && number(record, 14, 2) == 71) {
        found.push_back(record);
      }
    }
    return found;
  }
  /// The attributes of the last sample.
  Attributes lastSample(std::uint64_t id = kMetric) {
    const std::vector<std::string> all = samples(id);
    return all.empty() ? Attributes{} : attributesOf(all.back());
  }
  static Attributes attributesOf(const std::string& record) {
    Attributes attributes;
    const std::size_t count = number(record, 20, 2);
    EXPECT_EQ(record.size(), 22 + 12 * count);
    for (std::size_t i = 0; i < count; ++i) {
      attributes.emplace_back(number(record, 22 + 12 * i, 4), number(record, 26 + 12 * i, 8));
    }
    return attributes;
  }
  /// All nodes of a kind.
  std::vector<Node> nodes(const std::string& kind) {
    std::vector<Node> found;
    for (const std::string& record : records(kSystem)) {
      if (number(record, 0, 4) != 0x02400010 || number(record, 16, 2) != 7) {
        continue;
      }
      Node node{number(record, 20, 4),
                number(record, 24, 4),
                number(record, 28, 4),
                number(record, 32, 4),
                "",
                "",
                "",
                ""};
      std::size_t at = 44;
      std::size_t length = 36;
      for (std::string* part : {&node.longName, &node.shortName, &node.kind, &node.description}) {
        *part = record.substr(at, number(record, length, 2));
        at += part->size();
        length += 2;
      }
      EXPECT_EQ(record.size(), at + 1);
      if (node.kind == kind) {
        found.push_back(node);
      }
    }
    return found;
  }

  // Trouble.

  void refuse(std::uint64_t id) { m_writer.setInvalidTempFile(id); }
  /// Fills the store of `id` so that it takes `bytes` more and then needs the disk.
  void leaveRoom(std::uint64_t id, std::size_t bytes) {
    KeltoBackingStoreManager* const manager = m_writer.impl->getBackingStore("filled", id);
    const std::string filling(0x100000 - bytes - manager->store->size(), '\0');
    manager->store->write(filling.data(), filling.size());
  }

  /// The warnings' texts behind the writer's prefix.
  std::vector<std::string> warnings() const {
    const std::string prefix = "WARNING: KeltoWriterPlugin:    ";
    std::vector<std::string> texts;
    for (const auto& [level, text] : m_log.warnings()) {
      if (level == LogSink::kWarning) {
        texts.push_back(text.starts_with(prefix) ? text.substr(prefix.size())
                                                 : "no prefix: " + text);
      }
    }
    return texts;
  }
  std::vector<std::string> notes() const {
    std::vector<std::string> texts;
    for (const auto& [level, text] : m_log.warnings()) {
      if (level == LogSink::kNote) {
        texts.push_back(text);
      }
    }
    return texts;
  }
  std::string resultPath() const { return m_area.file("run.pwr"); }
  std::string result() const { return readFile(resultPath()); }

  TempArea m_area;
  LogCapture m_log;
  pwr::CPUMetadata m_cpu;
  pwr::SystemMetadata m_metadata;
  pwr::Metric m_metric;
  OpenKeltoWriter m_writer;
  /// Who gets the samples.
  OpenKeltoWriter* m_target = &m_writer;

 private:
  std::uint64_t m_nextId = 100;
  std::deque<pwr::EntityHandle> m_entities;
  std::deque<pwr::DataDescriptor> m_descriptors;
  std::deque<pwr::Quantity> m_quantities;
  std::deque<pwr::NameValuePair> m_pairs;
  std::deque<pwr::Process> m_processObjects;
  std::deque<pwr::Thread> m_threadObjects;
  const pwr::EntityHandle* m_plainEntity = nullptr;
  const pwr::DataDescriptor* m_plainState = nullptr;
};

/// The note of a result that was withdrawn.
inline constexpr const char* kNoResult =
    "Note: A .pwr result file was not created. No supported metric was found.\n";

/// The note of a refused metric.
inline std::string notSupported(const std::string& name) {
  return "Note: The .pwr file will not contain data associated with '" + name +
         "'. This metric is not supported for visualization in Kelto(TM) Viewer.\n";
}

}  // namespace qumetra::test
