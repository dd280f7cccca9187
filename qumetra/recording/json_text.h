// JSON as text, for lines of a recording.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qumetra {

/// Appends one JSON value to a string, piece by piece, and sets the commas. Nothing checks that the
/// pieces make sense together. Not synchronised.
///
///     JsonText json(line);
///     json.beginObject();
///     json.name("message");
///     json.text("done");
///     json.endObject();
class JsonText {
 public:
  /// `out` is borrowed.
  explicit JsonText(std::string& out) : m_out(out) {}

  void beginObject() { begin('{'); }
  void endObject() { end('}'); }
  void beginList() { begin('['); }
  void endList() { end(']'); }
  /// The name of a member, whose value comes next.
  void name(std::string_view name);

  /// Bytes that are not part of valid UTF-8 become lone surrogates from \udc80 to \udcff.
  void text(std::string_view text);
  void integer(std::int64_t value);
  void unsignedInteger(std::uint64_t value);
  /// In the shortest form that reads back the same; "nan", "inf" or "-inf" as a text.
  void real(double value);
  /// The same for what is narrowed to 32 bits when it is read.
  void narrowReal(float value);
  void boolean(bool value);
  void null();
  /// A value that is JSON already.
  void raw(std::string_view json);

  // Members that are left out when they would say nothing: the empty text, 0, false.
  void textMember(std::string_view member, std::string_view value);
  void numberMember(std::string_view member, std::uint64_t value);
  void flagMember(std::string_view member, bool value);
  void rawMember(std::string_view member, std::string_view json);

 private:
  void separate();
  void begin(char bracket);
  void end(char bracket);
  void appendQuoted(std::string_view text);

  std::string& m_out;
  bool m_needsComma = false;
};

}  // namespace qumetra
