// A JSON document on its way into a file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

/// Makes or empties the file, and takes a document through `writer`; `drain` brings what has come
/// to the file in large blocks, so that the text is never in memory as a whole. Failures stay in
/// the stream, cost the rest of the file, and are told at the end. A number that JSON cannot hold
/// (NaN, infinities) is left out, and its key stands without a value.
class JsonFile {
 public:
  explicit JsonFile(const std::string& path);
  JsonFile(const JsonFile&) = delete;
  JsonFile& operator=(const JsonFile&) = delete;
  /// A document that has no end, because an exception came in between, is one error in the log.
  ~JsonFile();

  void startObject() { m_writer.StartObject(); }
  void endObject() { m_writer.EndObject(); }
  void startArray() { m_writer.StartArray(); }
  void endArray() { m_writer.EndArray(); }
  void key(std::string_view text) { m_writer.Key(text.data(), lengthOf(text)); }
  void text(std::string_view text) { m_writer.String(text.data(), lengthOf(text)); }
  void number(double value) { m_writer.Double(value); }
  void unsignedNumber(std::uint64_t value) { m_writer.Uint64(value); }
  void signedNumber(int value) { m_writer.Int(value); }
  void boolean(bool value) { m_writer.Bool(value); }

  /// A member of the open object.
  void textMember(std::string_view name, std::string_view value) {
    key(name);
    text(value);
  }
  void numberMember(std::string_view name, double value) {
    key(name);
    number(value);
  }
  void unsignedMember(std::string_view name, std::uint64_t value) {
    key(name);
    unsignedNumber(value);
  }

  /// Call it now and then.
  void drain() {
    if (m_buffer.GetSize() >= kBlockSize) {
      writeOut();
    }
  }
  /// Ends the file with a newline and closes it. One error in the log when it is not whole; a
  /// file that could not be made is passed over in silence, which hosts rely on.
  void finish();

 private:
  static constexpr std::size_t kBlockSize = 0x100000;

  static rapidjson::SizeType lengthOf(std::string_view text) {
    return static_cast<rapidjson::SizeType>(text.size());
  }
  void writeOut();
  void reportFailure() const;

  std::string m_path;
  std::ofstream m_file;
  rapidjson::StringBuffer m_buffer;
  rapidjson::Writer<rapidjson::StringBuffer> m_writer{m_buffer};
};
