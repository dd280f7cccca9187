// Where messages go: a run of writers, a recording, or a test.
#pragma once

#include "host/handles.h"
#include "host/messages.h"
#include "host/metric.h"
#include "host/system_metadata.h"
#include "host/table.h"

namespace qumetra {

/// Takes the messages of a collection in the order of delivery. Messages live for the call; what
/// they point at lives as long as the model that made it. A sink decides itself what a failure
/// means.
class MessageSink {
 public:
  virtual ~MessageSink();

  virtual void system(const pwr::SystemMessage& message) = 0;
  /// Header texts come here too.
  virtual void text(const pwr::TextMessage& message) = 0;
  virtual void id(const pwr::IdMessage& message) = 0;
  virtual void sample(const pwr::Metric& metric) = 0;
  virtual void table(const pwr::TableMessage& table) = 0;
  virtual void container(const pwr::MetricContainerInfoMessage& message) = 0;
  /// A moment at which a continuous run hands out what it has.
  virtual void flush(const pwr::SystemMetadata& metadata) = 0;

  // Objects that changed after they were first seen. Writers read the objects themselves, so only
  // sinks that keep a copy care; here: nothing happens.
  virtual void attributesChanged(const pwr::DataHandle& handle);
  /// `handle` is a process or a thread, whose end time is known now.
  virtual void ended(const pwr::DataHandle& handle);
  virtual void metadataChanged(const pwr::SystemMetadata& metadata);
};

}  // namespace qumetra
