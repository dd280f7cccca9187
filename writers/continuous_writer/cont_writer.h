// What both JSON writers hand out in a continuous run: numbered documents.
#pragma once

#include <string>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "writers/continuous_writer/continuous_writer.h"

namespace pwr {
class CPUMetadata;
}  // namespace pwr

/// Writes what has come since the last flush to a file of its own, `<base>_<n>` and the extension,
/// and forgets it. The extension is the choice between two documents, which are numbered apart from
/// 0 up, as long as the process lives:
///
///     .json    {"traceEvents":[{"name":"CPU/0","ph":"X","ts":…,"dur":…,"pid":…,"tid":1,
///                               "args":{"power":…,"state":"C0"}},…]}
///     .qmjson  {"Metadata":[{"FeatureName":…,"Name":…,"ID":…,…},…],
///               "Data":[{"ID":…,"Entity":…,"Descriptor":…,"State":…,"Timestamp":…,
///                        "Duration":…,"Value":…},…]}
///
/// A number that JSON cannot hold (NaN, infinities) leaves its key without a value.
class ContWriter : public ContinuousWriter {
 public:
  using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

  ContWriter();
  explicit ContWriter(const std::string& base);
  ~ContWriter() override;

  /// Returns 0 when nothing is written, since `system` has no processor or the host no output for
  /// the file: all is kept then, and the file's number too. Returns 1 otherwise, which is no
  /// failure; also for another extension, where all is kept as well.
  ///
  /// Throws for want of memory, and keeps all. When the host throws while it writes, all is kept
  /// too and 0 returned, but the number is gone: its file may have a beginning.
  virtual int flushContinuousResults(const pwr::SystemMetadata& system);

  /// Writes the entries of `node` as members of the object that is open. A key with several values
  /// has an array. Null writes nothing.
  static void flushMetadata_i(const ContinuousWriter::Metadata* node, JsonWriter& writer);

  /// Kept free for owners.
  std::string unused;
  /// ".json" or ".qmjson", set by the owner.
  std::string extension;

 private:
  // Each of them: false when nothing was written, or nobody knows how much.
  bool flushTraceEvents_i();
  bool flushQmjson_i(const pwr::SystemMetadata& system, const pwr::CPUMetadata& cpu);
  /// Brings the document that `write` makes to the file of that number, and counts the number on.
  bool handOut_i(int& number, void (ContWriter::*write)(JsonWriter&) const) const;
  void writeTraceEvents_i(JsonWriter& writer) const;
  void writeQmjson_i(JsonWriter& writer) const;
};
