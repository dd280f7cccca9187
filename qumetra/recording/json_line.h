// One line of a recording as parsed JSON.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <rapidjson/reader.h>

namespace qumetra {

/// What is wrong with the text of a line; both are empty when nothing is.
struct JsonFaults {
  /// The text is no JSON object.
  std::string syntax;
  /// Bytes that are not UTF-8, or a lone surrogate that stands for no byte.
  std::string encoding;
};

/// The values of one line in one list: each value is followed by what it holds, so that the whole
/// line costs no allocation once the list has grown. Objects keep members given twice; their reader
/// notices. Nesting of any depth is safe. Reused line after line. Not synchronised.
class JsonLine {
 public:
  enum class Kind : std::uint8_t { Null, False, True, Number, String, List, Object };

  struct Node {
    Kind kind = Kind::Null;
    /// Set by the reader of an object for the members that it knows.
    bool taken = false;
    /// The number of members or elements.
    std::uint32_t count = 0;
    /// The place behind the last value that this one holds.
    std::uint32_t end = 0;
    /// The name of a member; empty for all others.
    std::string_view name;
    /// A string's bytes or a number's digits.
    std::string_view text;
  };

  /// Parses a line in place: `text` is changed, and must stay as long as the values are used. A
  /// lone surrogate from \udc80 to \udcff becomes the byte that it stands for. REQUIRES:
  /// `text[size]` is a zero byte.
  JsonFaults parse(char* text, std::size_t size);

  /// The first value is the line's.
  Node& node(std::uint32_t index) { return m_nodes[index]; }
  const Node& node(std::uint32_t index) const { return m_nodes[index]; }

  /// The place of a value as people name it: "sample.elements[2].value".
  std::string path(std::uint32_t index) const;

 private:
  /// Gets the parser's events.
  class Builder;

  /// Where the parser stopped.
  std::string parsePlace(const Builder& builder) const;

  std::vector<Node> m_nodes;
  rapidjson::Reader m_reader;
  /// The containers that the parser is in.
  std::vector<std::uint32_t> m_open;
};

}  // namespace qumetra
