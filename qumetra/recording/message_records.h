// The records that are messages.
#pragma once

#include <cstdint>
#include <deque>
#include <string_view>
#include <vector>

#include "host/attributes.h"
#include "host/metric.h"
#include "host/system_metadata.h"
#include "qumetra/model/message_sink.h"
#include "qumetra/model/model.h"
#include "qumetra/recording/definitions.h"
#include "qumetra/recording/record_object.h"

namespace qumetra {

/// Delivers the messages that records describe, and keeps the metadata of the last system message
/// for the records that refer to it. Faults are `RecordFault`; a message with a fault is not
/// delivered. Not synchronised.
class MessageRecords {
 public:
  /// All are borrowed. Metadata and notes go into the model.
  MessageRecords(Model& model, const Definitions& definitions, MessageSink& sink);

  /// Reads the record when its kind is one of those known here; returns false when it is not.
  bool read(std::string_view kind, RecordObject& record);

  /// Whether there was a message yet.
  bool hasDelivered() const { return m_hasDelivered; }
  std::uint64_t samplesRead() const { return m_samplesRead; }

 private:
  struct Kind;
  static const Kind kKinds[];

  void sample(RecordObject& record);
  void system(RecordObject& record);
  void text(RecordObject& record);
  void headerText(RecordObject& record);
  void idMessage(RecordObject& record);
  void table(RecordObject& record);
  void container(RecordObject& record);
  void flush(RecordObject& record);
  void metadata(RecordObject& record);

  void addElement(RecordValue value);
  const pwr::DynamicAttributeValueManager* readInfo(RecordValue value);

  Model& m_model;
  const Definitions& m_definitions;
  MessageSink& m_sink;
  /// That of the last system message; owned by the model.
  pwr::SystemMetadata* m_lastMetadata = nullptr;
  bool m_hasDelivered = false;
  std::uint64_t m_samplesRead = 0;

  // What the sample that is being delivered consists of; kept for the storage.
  std::vector<pwr::DataElement> m_elements;
  std::deque<pwr::DynamicAttributeValueManager> m_infos;
};

}  // namespace qumetra
