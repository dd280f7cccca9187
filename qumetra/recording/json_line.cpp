#include "qumetra/recording/json_line.h"

#include <limits>

#include <rapidjson/error/en.h>

#include "qumetra/recording/surrogates.h"
#include "qumetra/recording/utf8.h"

namespace qumetra {
namespace {

// Numbers stay texts until it is known what they are for: an integer of some width, or a real whose
// sign counts even when it is zero.
constexpr unsigned kParseFlags = rapidjson::kParseInsituFlag | rapidjson::kParseIterativeFlag |
                                 rapidjson::kParseNumbersAsStringsFlag;

constexpr std::uint32_t kStillOpen = std::numeric_limits<std::uint32_t>::max();

/// The parser counts in 32 bits.
constexpr std::size_t kMaxLineSize = std::numeric_limits<std::uint32_t>::max() - 1;

/// No record is as deep; only junk is.
constexpr int kDeepestPath = 20;

std::string byteText(std::size_t at) { return "byte " + std::to_string(at + 1); }

/// What the parser could not read, at a place that may be empty.
std::string parseFault(rapidjson::ParseErrorCode code, const std::string& place) {
  if (code == rapidjson::kParseErrorNumberTooBig) {
    return place + ": a number out of range; expected one that a 64-bit real holds";
  }
  std::string reason = rapidjson::GetParseError_En(code);
  reason.erase(reason.find_last_not_of('.') + 1);
  return "no JSON" + (place.empty() ? "" : " at " + place) + ": " + reason +
         "; expected one JSON object";
}

}  // namespace

class JsonLine::Builder : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Builder> {
 public:
  explicit Builder(JsonLine& line) : m_line(line) {
    m_line.m_nodes.clear();
    m_line.m_open.clear();
  }

  bool Null() { return add(Kind::Null); }
  bool Bool(bool value) { return add(value ? Kind::True : Kind::False); }
  bool RawNumber(const char* digits, rapidjson::SizeType length, bool /*copy*/) {
    return add(Kind::Number, {digits, length});
  }
  bool String(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    return add(Kind::String, {text, length});
  }
  bool Key(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    m_name = {text, length};
    return true;
  }
  bool StartObject() { return open(Kind::Object); }
  bool StartArray() { return open(Kind::List); }
  bool EndObject(rapidjson::SizeType /*count*/) { return close(); }
  bool EndArray(rapidjson::SizeType /*count*/) { return close(); }

  /// The name of a member whose value has not come yet.
  std::string_view pendingName() const { return m_name; }

 private:
  bool add(Kind kind, std::string_view text = {}) {
    if (!m_line.m_open.empty()) {
      ++m_line.m_nodes[m_line.m_open.back()].count;
    }
    const auto end = static_cast<std::uint32_t>(m_line.m_nodes.size() + 1);
    m_line.m_nodes.push_back({kind, false, 0, end, m_name, text});
    m_name = {};
    return true;
  }

  bool open(Kind kind) {
    const auto index = static_cast<std::uint32_t>(m_line.m_nodes.size());
    add(kind);
    m_line.m_nodes.back().end = kStillOpen;
    m_line.m_open.push_back(index);
    return true;
  }

  bool close() {
    m_line.m_nodes[m_line.m_open.back()].end = static_cast<std::uint32_t>(m_line.m_nodes.size());
    m_line.m_open.pop_back();
    return true;
  }

  JsonLine& m_line;
  std::string_view m_name;
};

JsonFaults JsonLine::parse(char* text, std::size_t size) {
  if (size > kMaxLineSize) {
    return {"a line of 4 GiB or more; expected a shorter one", ""};
  }
  JsonFaults faults;
  const std::size_t invalid = findInvalidUtf8({text, size});
  if (invalid != std::string_view::npos) {
    faults.encoding =
        byteText(invalid) + " is not UTF-8; expected such bytes as escapes from \\udc80 to \\udcff";
  }
  const SurrogateResult replaced = replaceLoneSurrogates(text, size);
  if (replaced.isFaulty && faults.encoding.empty()) {
    faults.encoding = "a lone surrogate at " + byteText(replaced.faultAt) +
                      "; expected a pair, or one from \\udc80 to \\udcff for a single byte";
  }
  text[replaced.size] = '\0';

  Builder builder(*this);
  rapidjson::InsituStringStream stream(text);
  const rapidjson::ParseResult result = m_reader.Parse<kParseFlags>(stream, builder);
  if (result.IsError()) {
    faults.syntax = parseFault(result.Code(), parsePlace(builder));
  } else if (stream.Tell() != replaced.size) {
    // The parser takes a zero byte for the end of the text.
    faults.syntax = "no JSON: a zero byte in the line; expected \\u0000";
  } else if (m_nodes[0].kind != Kind::Object) {
    faults.syntax = "no JSON object; expected one per line";
  }
  return faults;
}

std::string JsonLine::parsePlace(const Builder& builder) const {
  if (m_open.empty()) {
    return {};
  }
  std::string place = path(m_open.back());
  if (m_nodes[m_open.back()].kind == Kind::List) {
    place += '[' + std::to_string(m_nodes[m_open.back()].count) + ']';
  } else if (!builder.pendingName().empty()) {
    place += (place.empty() ? "" : ".") + std::string(builder.pendingName());
  }
  return place;
}

std::string JsonLine::path(std::uint32_t index) const {
  std::string path;
  std::uint32_t at = 0;
  for (int depth = 0; at != index; ++depth) {
    if (depth == kDeepestPath) {
      return path + "...";
    }
    const bool isList = m_nodes[at].kind == Kind::List;
    std::size_t element = 0;
    ++at;
    while (m_nodes[at].end <= index) {
      at = m_nodes[at].end;
      ++element;
    }
    if (isList) {
      path += '[' + std::to_string(element) + ']';
    } else {
      path += (path.empty() ? "" : ".") + std::string(m_nodes[at].name);
    }
  }
  return path;
}

}  // namespace qumetra
