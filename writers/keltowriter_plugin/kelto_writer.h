// The writer of the import stream: a run as one binary file for a viewer's import.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "host/attributes.h"
#include "host/table_class.h"
#include "writers/keltowriter_plugin/processes.h"
#include "writers/keltowriter_plugin/record_stream.h"
#include "writers/keltowriter_plugin/sample_cache.h"
#include "writers/keltowriter_plugin/system_info.h"
#include "writers/writer_plugins.h"

namespace pwr {
class Attribute;
class Data;
class NameValuePair;
class Process;
class Quantity;
class Thread;
}  // namespace pwr

/// The attributes of one sample record.
struct QM2AttributeList {
  static constexpr std::uint32_t kCapacity = 2048;

  std::array<std::uint32_t, kCapacity> ids;
  std::array<std::uint64_t, kCapacity> values;
  std::uint32_t count = 0;

  /// REQUIRES: `count` is below `kCapacity`.
  void append(std::uint32_t id, std::uint64_t value) {
    ids[count] = id;
    values[count] = value;
    ++count;
  }
};

/// Writes `<output name>.pwr` (see record_stream.h for its order): one system message makes the
/// records that open it, then each sample becomes a record of the metric's stream, and whatever a
/// sample mentions for the first time becomes a record of the system stream. Finished tables and
/// texts do not reach the file.
///
/// A sample that cannot be written refuses its metric for good: nothing of the metric goes to the
/// file. The run goes on. No file is made for a run without a sample.
///
/// REQUIRES: the id of the system message is below that of every metric, or readers meet records
/// before what they refer to; processes and threads that samples mention live until the process
/// ends.
///
/// Operations return 0 for success and 1 for failure unless told otherwise, and throw nothing. One
/// thread at a time. The operations behind the public ones are grouped by source file.
class KeltoWriter : public WriterPlugin {
 public:
  /// Reads the environment variable PW_ENABLE_LEGACY_KELTO: older viewers need whole numbers.
  KeltoWriter();
  ~KeltoWriter() override;

  /// Makes no file. `continuous` makes no difference. Returns 0.
  int init(const std::string& base, bool continuous) override;
  /// Makes the file. A result that is withdrawn, with a note, is no failure.
  int fini() override;

  using WriterPlugin::writeMessage;
  /// Returns 1 when the metadata lacks a processor; the run then goes on without header records.
  /// Also when a header record fails, which ends the result.
  int writeMessage(const pwr::SystemMessage& message) override;
  /// Returns 1 when the metric is refused, now or before.
  int writeMessage(const pwr::Metric& metric) override;

 protected:
  using Begin = pwr::AttributeValueManager::const_iterator;
  /// The shared group has not been written yet.
  static constexpr std::uint64_t kNoGroup = 0xDEADBEEF;
  static constexpr std::uint64_t kAllOnes = ~std::uint64_t{0};

  // kelto_writer.cpp

  /// Appends a finished record to the store of `id`. Fails silently when the result is abandoned or
  /// the metric refused.
  int writeRecord(std::uint64_t id, const char* data, std::uint32_t size);
  /// Refuses the metric `id`.
  void setInvalidTempFile(std::uint64_t id);
  /// Writes the end records of processes, then of threads.
  int flushStoredStates();
  /// The name of the metric, or "unknown_metric" and the id.
  std::string storeName(std::uint64_t id) const;
  /// The version field of metadata and sample records.
  std::uint16_t formatVersion() const { return legacy ? 1 : 2; }
  /// 0 before the system message.
  std::uint64_t lastTsc() const { return systemInfo == nullptr ? 0 : systemInfo->lastTsc; }

  // header_records.cpp

  int handleSystemMessage(const pwr::SystemMessage& message);
  int writeHeader();
  // REQUIRES for all below: `systemInfo` is not null.
  int writeMagicRecord();
  int writeColInfoRecord();
  int writeSysInfoRecord();
  int writeHardCfgRecord();
  int writeHeadMarkerRecord();
  int writePowerThreshold();

  // info_metadata.cpp: nodes of a tree of names, each with a uid that samples refer to.

  /// The number of a kind of node, which is declared at its first use. All ones on failure.
  std::uint64_t getInfoTypeMetadataId(const std::string& kind);
  /// Writes a node, unless the very same has been written or tried before.
  int writeInfoMetadataHelper(const std::string& kind, std::uint64_t infoTypeId,
                              const std::string& longName, const std::string& shortName,
                              const std::string& description, std::uint64_t value,
                              std::uint64_t uid, long parentUid);
  int writeEntityMetadataTopology(const pwr::EntityHandle* entity);
  int writeEntityMetadata(const std::string& name, const std::string& shortName, std::uint64_t id,
                          std::uint64_t parentId);
  /// `id` comes in as the descriptor's and goes out as the one that the state is known by.
  int writeStateMetadata(const std::string& key, const std::string& name, std::uint64_t& id);
  int writeStateColorMetadata(const std::string& name);
  /// The name, "_" and the id.
  std::string getNameIdKey(const std::string& name, std::uint64_t id) const;
  /// A uid per key.
  std::uint64_t getUniqueId(const std::string& key);

  // metric_metadata.cpp

  int writeMetricTypeMetadata();
  /// `metricType` comes in as the state hint and goes out as the number in the file.
  int handleMetricMetadata(const pwr::Metric* metric, std::uint16_t* metricType);
  int handleMetricMetadataHelper(std::uint64_t id, std::uint16_t metricType,
                                 const std::string& name, const std::string& secondName,
                                 const pwr::Quantity* quantity);
  int writeTabGroupMetadata(const std::string& name, const std::string& shortName, std::uint64_t id,
                            std::uint64_t* tabGroupUid);
  int writeTimelineGroupMetadata(const std::string& name, const std::string& shortName,
                                 std::uint64_t id, std::uint64_t tabGroupUid);
  int writeMetricMetadata(const std::string& name, const std::string& secondName, std::uint64_t id,
                          std::uint32_t metricType, int quantityUid, std::uint64_t tabKey,
                          std::uint64_t timelineKey);

  // quantity_metadata.cpp

  /// `uid` is -1 for no quantity.
  int handleQuantityMetadata(const pwr::Quantity* quantity, long& uid);
  int writeQuantityMetadata(const std::string& name, const std::string& shortName,
                            const std::string& units, std::uint32_t type, long uid, long rateUid,
                            double multiplier);
  /// The code if it lies in 1 to 13, else 0.
  std::uint32_t getKeltoQuantityType(std::uint32_t code) const;

  // sample_elements.cpp, sample_records.cpp

  int handleMetricMessage(const pwr::Metric& metric);

  // attribute_list.cpp

  /// Fails, after a warning, for a null list and for a full one.
  std::uint32_t addAttributeToRecord(std::uint32_t id, std::uint64_t value, QM2AttributeList* list);
  int writeQM2Record(std::uint64_t tsc, std::uint64_t metricId, QM2AttributeList* list);
  /// Whether `tsc` may follow what has been accepted under `key`. Times below the collection's
  /// start never may; times that repeat may only while the last accepted one equals the start.
  /// REQUIRES: the system message has come; otherwise fails.
  int checkTscMonotonicity(std::uint64_t tsc, const std::string& key);
  std::uint64_t getPreviousTsc(const std::string& key);

  // sample_values.cpp

  /// Adds a value, in front of it its quantity where one is given; with `asString` as a text. With
  /// `out`, texts go there and not into the record.
  int processData(const pwr::Data* data, const pwr::Quantity* quantity, QM2AttributeList* list,
                  bool asString, std::string* out);
  /// For `long`, `unsigned long` and `double`.
  template <typename T>
  int processValueAsString(T value, const pwr::Quantity* quantity, QM2AttributeList* list,
                           std::string* out);
  /// For `long` and `double`.
  template <typename T>
  int processRangeAsString(T low, T high, const pwr::Quantity* quantity, QM2AttributeList* list,
                           std::string* out);
  int processStringData(const std::string& text, QM2AttributeList* list);

  // sample_attributes.cpp

  int processDataAttributes(const pwr::AttributeValueManager* manager, QM2AttributeList* list,
                            bool firstAsString);
  int processDataAttributes(const pwr::DynamicAttributeValueManager* manager,
                            QM2AttributeList* list, bool firstAsString);
  int processDataAttributesHelper(const pwr::Attribute* attribute, const pwr::Data* data,
                                  QM2AttributeList* list, bool asString, std::string* out);
  int processInfoAttributes(const pwr::AttributeValueManager* manager, QM2AttributeList* list);
  int processInfoAttributes(const pwr::DynamicAttributeValueManager* manager,
                            QM2AttributeList* list);
  int processInfoAttributesHelper(const pwr::Attribute* attribute, const pwr::Data* data,
                                  QM2AttributeList* list);
  int getFirstDataAttributeAsString(const pwr::AttributeValueManager* manager, std::string* out);

  // processes.cpp

  // REQUIRES: the object is not null. The path of a process, with its terminator, fits into 30
  // bytes; a longer one ends the process deliberately.
  int handleProcessInfo(const pwr::Process* process, bool isStart);
  int handleThreadInfo(const pwr::Thread* thread, bool isStart);
  int writeProcessSample(const KeltoProcess& process);
  int writeThreadSample(const KeltoThread& thread);

  // wakelocks.cpp

  int handleWakelockSampleNonGeneric(const pwr::Metric* metric);
  int handleWakelockSampleNonGenericHelper(std::uint64_t metricId, pwr::TableClass tableClass,
                                           const pwr::EntityHandle* entity, std::uint64_t tsc,
                                           std::uint64_t duration, Begin begin, Begin end);
  int writeKernelWakelockSampleNonGeneric(std::uint64_t tsc, const std::string& name,
                                          std::uint32_t pid, std::uint32_t tid,
                                          std::uint64_t timeout, std::uint16_t action,
                                          std::uint64_t metricId);
  int writeUserWakelockSampleNonGeneric(std::uint64_t tsc, const std::string& name,
                                        std::uint32_t uid, std::uint32_t pid, std::uint32_t tid,
                                        std::uint32_t zero, std::uint16_t action,
                                        std::uint16_t flag, std::uint64_t metricId);
  int writeAPKMetadataNonGeneric(std::uint64_t tsc, std::uint32_t uid, const std::string& name,
                                 std::uint64_t metricId);

  // State. Nothing of it but the shared groups is reset between runs.

  /// The last name that each metric bore.
  std::map<std::uint64_t, std::string> metricNames;
  /// The last accepted time per metric and entity.
  std::map<std::string, std::uint64_t> previousTsc;
  std::unique_ptr<KeltoWriterImpl> impl;
  /// Null until the system message has come.
  std::unique_ptr<KeltoSystemInfo> systemInfo;
  /// The id of the system message; all ones until it has come.
  std::uint64_t systemStreamId = kAllOnes;
  /// By uid.
  std::map<std::uint32_t, std::string> apkNames;
  // By metric id, uid of the quantity and number of the type: the uid of the node.
  std::map<std::uint64_t, std::uint64_t> tabGroupIds;
  std::map<std::uint64_t, std::uint64_t> timelineGroupIds;
  std::map<std::uint64_t, std::uint64_t> quantityIds;
  std::map<std::uint64_t, std::uint64_t> metricTypeIds;
  // Groups that several metrics share.
  std::uint64_t cstateTabGroupId = kNoGroup;
  std::uint64_t cstateTimelineGroupId = kNoGroup;
  std::uint64_t temperatureTabGroupId = kNoGroup;
  std::uint64_t powerTabGroupId = kNoGroup;
  /// The metrics whose metadata is written.
  std::map<std::int64_t, std::string> metricsDescribed;
  /// By name and id of the entity: the id of its parent, or -1.
  std::map<std::string, std::int64_t> entityParents;
  // By name of the state.
  std::map<std::string, std::int64_t> fieldIds;
  std::map<std::string, std::int64_t> colorIds;
  /// By name of the kind.
  std::map<std::string, std::int64_t> infoTypeIds;
  /// The values of nodes, by all that makes up a node.
  std::map<std::string, std::int64_t> infoRecordIds;
  /// By text.
  std::map<std::string, std::int64_t> nameIdStrings;
  std::map<std::string, std::int64_t> uniqueIds;
  bool legacy;

  // Of the process, never reset.

  /// The number of the next kind of node.
  static std::int64_t s_nextInfoTypeId;
  // Notes that are given once.
  static bool s_wasCountNoted;
  static bool s_wasRealNoted;
  static bool s_wasRealRangeNoted;

 private:
  /// A held period under way from the host to its records.
  struct Wakelock;

  int finish();

  // Samples.
  kelto::MetricTrack& trackOf(const pwr::Metric& metric);
  kelto::MetricTrack& trackByName(const pwr::Metric& metric, kelto::MetricTracks& tracks) const;
  int takeElements(const pwr::Metric& metric, kelto::MetricTrack& track, std::uint16_t& hint);
  int checkTsc(std::uint64_t tsc, std::map<std::string, std::uint64_t>::value_type& previous);
  int writeSample(const pwr::Metric& metric, kelto::MetricTrack& track);
  int addEntity(const pwr::Metric& metric, const kelto::MetricTrack& track,
                kelto::EntityTrack& entity);
  int addElement(const pwr::Metric& metric, const EntityDataElement& element,
                 kelto::StateGuess& guess);
  int addState(const pwr::Metric& metric, const EntityDataElement& element,
               kelto::StateGuess& guess);
  int findState(const pwr::Metric& metric, const pwr::DataDescriptor& descriptor,
                kelto::StateGuess& guess);
  int addElementAttributes(const pwr::Metric& metric, const EntityDataElement& element);
  kelto::DescriptorTrack& descriptorTrack(const pwr::DataDescriptor& descriptor);

  /// `addAttributeToRecord`, its everyday case inline.
  std::uint32_t add(std::uint32_t id, std::uint64_t value, QM2AttributeList* list) {
    if (list == nullptr || list->count >= QM2AttributeList::kCapacity || !s_wasCountNoted) {
      return addAttributeToRecord(id, value, list);
    }
    list->append(id, value);
    return 0;
  }

  // Values.
  std::uint64_t bitsOf(long value) const { return static_cast<std::uint64_t>(value); }
  std::uint64_t bitsOf(unsigned long value) const { return value; }
  std::uint64_t bitsOf(double value) const;
  template <typename T>
  int addValue(std::uint32_t attribute, const char* kind, T value, QM2AttributeList* list);
  int addQuantity(const pwr::Quantity& quantity, QM2AttributeList* list);
  int addNumber(const pwr::Data& data, QM2AttributeList* list);
  int addRange(const pwr::Data& data, QM2AttributeList* list);
  int processNumberAsString(const pwr::Data& data, const pwr::Quantity* quantity,
                            QM2AttributeList* list, std::string* out);
  int processAnyRangeAsString(const pwr::Data& data, const pwr::Quantity* quantity,
                              QM2AttributeList* list, std::string* out);
  int processText(const pwr::Data& data, QM2AttributeList* list, std::string* out);
  int deliverText(QM2AttributeList* list, std::string* out);

  // Attributes.
  template <typename Manager>
  int walkInfoAttributes(const Manager& manager, QM2AttributeList* list);
  template <typename Manager>
  int walkDataAttributes(const Manager& manager, QM2AttributeList* list, bool firstAsString);
  int addPair(const pwr::Data& data, QM2AttributeList* list);
  int writePair(const pwr::NameValuePair& pair);
  int addThread(const pwr::Data& data, QM2AttributeList* list);
  int addProcess(const pwr::Data& data, QM2AttributeList* list);
  int addIdentity(std::uint32_t attribute, std::uint64_t id, QM2AttributeList* list);

  // Metadata.
  int writeSharedGroup(std::uint64_t& groupUid, const std::string& kind,
                       const std::string& description, const std::string& name, std::uint64_t id,
                       long parentUid);
  bool isQuantityWritten(const pwr::Quantity& quantity) const;
  bool isEntityWritten(const pwr::EntityHandle& entity) const;

  // Wakelocks.
  int takeWakelockAttribute(const pwr::Attribute& attribute, const pwr::Data& data,
                            Wakelock& wakelock);
  int takeWakelockInfo(const pwr::Attribute& attribute, const pwr::DataHandle* handle,
                       Wakelock& wakelock);
  int takeWakelockThread(const pwr::DataHandle* handle, Wakelock& wakelock);
  int takeWakelockProcess(const pwr::DataHandle* handle, Wakelock& wakelock);
  int writeUserWakelock(const std::string& name, const Wakelock& wakelock);
  int writeKernelWakelock(const std::string& name, const Wakelock& wakelock);

  kelto::SampleCache m_cache;
  kelto::CurrentSample m_sample;
  QM2AttributeList m_list;
  // Texts in the making.
  std::string m_stateName;
  std::string m_firstText;
  std::string m_valueText;
};
