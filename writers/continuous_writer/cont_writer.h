// What both JSON writers hand out in a continuous run: numbered documents.
#pragma once

#include <string>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "writers/continuous_writer/continuous_writer.h"

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

  /// Returns 0 when `system` has no processor: nothing is written then, and all is kept. Returns 1
  /// otherwise, which is no failure; also for another extension and without a host's environment,
  /// where all is kept too.
  virtual int flushContinuousResults(const pwr::SystemMetadata& system);

  /// Writes the entries of `node` as members of the object that is open. A key with several values
  /// has an array. Null writes nothing.
  static void flushMetadata_i(const ContinuousWriter::Metadata* node, JsonWriter& writer);

  /// Kept free for owners.
  std::string unused;
  /// ".json" or ".qmjson", set by the owner.
  std::string extension;

 private:
  void flushTraceEvents_i();
  void flushQmjson_i();
  /// Brings a document to the file of that number and forgets what it was made from. REQUIRES:
  /// there is a host's environment.
  void handOut_i(int number, const rapidjson::StringBuffer& document);
};
