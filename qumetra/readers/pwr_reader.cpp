#include "qumetra/readers/pwr_reader.h"

#include <charconv>
#include <optional>

#include "qumetra/readers/byte_source.h"
#include "qumetra/readers/pwr_decoder.h"
#include "qumetra/readers/record_fields.h"

namespace qumetra {
namespace {

constexpr std::size_t kWordSize = 4;
constexpr std::size_t kSizeFieldSize = 2;
/// The type stands behind the size and counts in it.
constexpr std::size_t kLeastSize = 4;

/// How the length of a record is found.
struct Framing {
  /// Up to the size field, or of the whole record where there is none.
  std::size_t fixedLength;
  bool hasSize;
};

std::optional<Framing> framingOf(std::uint32_t word) {
  switch (word) {
    case kPwrHeaderWord:
      return Framing{4, true};
    case kPwrTimedWord:
      return Framing{12, true};
    case kPwrWakelockWord:
      return Framing{20, true};
    case kPwrProcessWord:
      return Framing{28, true};
    case kPwrThreadWord:
      return Framing{28, false};
    case kPwrMagicWord:
      return Framing{8, false};
    case kPwrHeadMarkerWord:
      return Framing{25, false};
    default:
      return std::nullopt;
  }
}

std::string hexadecimal(std::uint32_t word) {
  std::array<char, 8> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), word, 16).ptr;
  return "0x" + std::string(digits.data(), end);
}

}  // namespace

PwrVisitor::~PwrVisitor() = default;
void PwrVisitor::record(const PwrRecord& /*record*/) {}
void PwrVisitor::fault(std::uint64_t /*offset*/, const std::string& /*what*/) {}

PwrReader::PwrReader(PwrVisitor& visitor) : m_visitor(visitor), m_bytes() {}

PwrReader::~PwrReader() = default;

PwrCounts PwrReader::read(ByteSource& source) {
  m_counts = {};
  while (readRecord(source)) {
    takeRecord();
  }
  return m_counts;
}

bool PwrReader::readRecord(ByteSource& source) {
  m_length = 0;
  if (!readUpTo(source, kWordSize)) {
    if (m_length != 0) {
      fault("the file ends in the first word of a record");
    }
    return false;
  }
  const std::uint32_t word = RecordFields(m_bytes.data(), m_length).u32();
  const std::optional<Framing> framing = framingOf(word);
  if (!framing) {
    fault("no record begins with " + hexadecimal(word) + "; what follows cannot be read");
    return false;
  }
  const std::size_t headLength = framing->fixedLength + (framing->hasSize ? kSizeFieldSize : 0);
  if (!readUpTo(source, headLength)) {
    fault("the file ends in a record");
    return false;
  }
  return !framing->hasSize || readSized(source, framing->fixedLength);
}

bool PwrReader::readSized(ByteSource& source, std::size_t sizePlace) {
  const std::size_t size = RecordFields(m_bytes.data(), m_length).peekU16(sizePlace);
  if (size < kLeastSize) {
    fault("the size " + std::to_string(size) +
          " has no room for the type of the record; what follows cannot be read");
    return false;
  }
  if (!readUpTo(source, sizePlace + size)) {
    fault("the file ends in a record: " + std::to_string(m_length) + " of " +
          std::to_string(sizePlace + size) + " bytes are there");
    return false;
  }
  return true;
}

bool PwrReader::readUpTo(ByteSource& source, std::size_t length) {
  m_length += source.read(m_bytes.data() + m_length, length - m_length);
  return m_length == length;
}

void PwrReader::takeRecord() {
  m_record.offset = m_counts.end;
  const std::string problem = decodePwrRecord(RecordFields(m_bytes.data(), m_length), m_record);
  if (problem.empty()) {
    ++m_counts.records;
    m_visitor.record(m_record);
  } else {
    fault(problem);
  }
  m_counts.end += m_length;
}

void PwrReader::fault(const std::string& what) {
  ++m_counts.faults;
  m_visitor.fault(m_counts.end, what);
}

}  // namespace qumetra
