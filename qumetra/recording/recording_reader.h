// Reads a message recording and delivers it, record by record.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace qumetra {

class MessageSink;
class Model;

/// A fault of a recording: `what()` is "FILE:LINE: what was wrong and what was expected", or for a
/// file that cannot be read "FILE: reason".
class RecordingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads a recording line by line; memory does not grow with the number of messages. Objects that
/// the recording defines go into the model and live as long as it, as do metadata and notes;
/// messages go to the sink and live for the call. A `config` record replaces the
/// process-wide metric order. Model and sink are borrowed and must outlive the reader. A last line
/// that was interrupted is a warning. What the sink throws passes through. Not synchronised.
class RecordingReader {
 public:
  using WarningHandler = std::function<void(const std::string& text)>;
  using NoteHandler = std::function<void(std::string_view text)>;

  /// Opens the file. Throws `RecordingError` when that fails.
  RecordingReader(const std::string& path, Model& model, MessageSink& sink);
  RecordingReader(const RecordingReader&) = delete;
  RecordingReader& operator=(const RecordingReader&) = delete;
  ~RecordingReader();

  /// Gets the warnings, without a line end. By default they are dropped.
  void setWarningHandler(WarningHandler handler);
  /// Gets the texts of `note` records, in the order of the recording. By default they are dropped.
  void setNoteHandler(NoteHandler handler);

  /// From now on a `config` record is checked but leaves the process-wide order as it is, for a
  /// user who has given an order of their own.
  void keepMetricOrder();

  /// Reads up to the first record, which tells that the file is a recording. Throws
  /// `RecordingError` when it is none; nothing has been delivered then.
  void readFirst();
  /// Reads one line and delivers what it holds. Returns false at the end of the file. Throws
  /// `RecordingError` at a fault; all before it has been delivered, and reading cannot go on.
  bool readLine();
  /// Reads everything that is left.
  void readAll();

  std::uint64_t bytesRead() const;
  /// The size of the file when it was opened; 0 for what has none, such as a pipe.
  std::uint64_t sizeBytes() const;
  std::uint64_t samplesRead() const;

 private:
  struct State;
  std::unique_ptr<State> m_state;
};

}  // namespace qumetra
