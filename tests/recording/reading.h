// What tests of reading a recording share.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "qumetra/model/model.h"
#include "qumetra/recording/recording_reader.h"
#include "tests/recording/message_dump.h"
#include "tests/support/temp_dir.h"

namespace qumetra::test {

/// The first record of every recording.
inline const std::string kFirstRecord = R"({"recording":{"version":1}})";

/// A recording that is read from a file into a model of its own.
class Reading {
 public:
  /// Reads the bytes as they are. Returns the error without the directory, empty when there was
  /// none.
  std::string readBytes(const std::string& bytes);
  /// Reads a recording of these lines behind the first record, so that the first is line 2.
  std::string readLines(std::initializer_list<std::string> lines);
  std::string readPath(const std::string& path);

  Model& model() { return m_model; }
  const std::vector<std::string>& messages() const { return m_dump.messages(); }
  const std::vector<std::string>& warnings() const { return m_warnings; }
  std::uint64_t samplesRead() const { return m_samplesRead; }
  /// Takes every message too; null for none.
  MessageSink* second = nullptr;

 private:
  std::string withoutDirectory(const std::string& text) const;

  TempDir m_directory;
  Model m_model;
  MessageDump m_dump;
  std::vector<std::string> m_warnings;
  std::uint64_t m_samplesRead = 0;
};

/// The handle that a model made for an id; fails the test when there is none.
const pwr::DataHandle& handleOf(std::uint64_t id);
template <typename Handle>
const Handle& handleOf(std::uint64_t id) {
  return dynamic_cast<const Handle&>(handleOf(id));
}

}  // namespace qumetra::test
