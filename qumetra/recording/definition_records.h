// The records that define objects, and those that change one from their place on.
#pragma once

#include <string_view>

#include "qumetra/model/message_sink.h"
#include "qumetra/model/model.h"
#include "qumetra/recording/definitions.h"
#include "qumetra/recording/record_object.h"

namespace qumetra {

/// Makes the objects that definition records describe. They belong to the model. Faults are
/// `RecordFault`. Not synchronised.
class DefinitionRecords {
 public:
  /// All are borrowed. The sink hears of objects that change.
  DefinitionRecords(Model& model, Definitions& definitions, MessageSink& sink);

  /// Reads the record when its kind is one of those known here; returns false when it is not.
  bool read(std::string_view kind, RecordObject& record);

 private:
  struct Kind;
  static const Kind kKinds[];

  void quantity(RecordObject& record);
  void attribute(RecordObject& record);
  void entity(RecordObject& record);
  void descriptor(RecordObject& record);
  void nameValuePair(RecordObject& record);
  void process(RecordObject& record);
  void thread(RecordObject& record);
  void handle(RecordObject& record);
  void metric(RecordObject& record);
  void attributes(RecordObject& record);
  void ended(RecordObject& record);

  /// Adds what `make` makes under the record's `ref`. `make` gets the record's id and comes after
  /// the ref was checked; an id that the model refuses is a fault of the member `id`.
  template <typename Make>
  void define(RecordObject& record, Make make);
  void describeMetric(RecordObject& record, pwr::Metric& metric);

  Model& m_model;
  Definitions& m_definitions;
  MessageSink& m_sink;
};

}  // namespace qumetra
