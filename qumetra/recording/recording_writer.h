// Writes the messages that it gets as a recording.
#pragma once

#include <memory>
#include <string>

#include "qumetra/model/message_sink.h"

namespace qumetra {

/// A message sink that writes a recording. Every object is defined before its first use, with its
/// id; an id drawn at run time, which a recording cannot hold, is replaced by a high one. Objects
/// are told apart by their addresses and must outlive the writer; metrics are told apart by what
/// they say. A first failure to write sticks: later calls write nothing and `close` returns the
/// failure. Not synchronised.
///
/// The first system message is written with room to spare, so that `rewriteSystem` can put the
/// final metadata in its place: a collection knows its end only when it is over.
class RecordingWriter : public MessageSink {
 public:
  /// Makes or truncates the file, with missing directories. A failure to do so sticks as any other;
  /// see `error`.
  explicit RecordingWriter(const std::string& path);
  RecordingWriter(const RecordingWriter&) = delete;
  RecordingWriter& operator=(const RecordingWriter&) = delete;
  ~RecordingWriter() override;

  void system(const pwr::SystemMessage& message) override;
  void text(const pwr::TextMessage& message) override;
  void id(const pwr::IdMessage& message) override;
  void sample(const pwr::Metric& metric) override;
  void table(const pwr::TableMessage& table) override;
  void container(const pwr::MetricContainerInfoMessage& message) override;
  void flush(const pwr::SystemMetadata& metadata) override;
  void attributesChanged(const pwr::DataHandle& handle) override;
  void ended(const pwr::DataHandle& handle) override;
  void metadataChanged(const pwr::SystemMetadata& metadata) override;

  /// Writes the process-wide metric order as a `config` record. REQUIRES: no message yet.
  void config();
  void note(const std::string& text);
  /// Writes `message` over the first system record. Returns false, and changes nothing, when it
  /// does not fit or there is no such record.
  bool rewriteSystem(const pwr::SystemMessage& message);

  /// Brings what is buffered to the file, so that a kill loses nothing written before.
  void sync();
  /// Ends the recording. Returns the first failure as "FILE: reason", empty when there was none.
  std::string close();
  /// The first failure so far, as `close` returns it.
  const std::string& error() const;

 private:
  struct State;
  std::unique_ptr<State> m_state;
};

}  // namespace qumetra
