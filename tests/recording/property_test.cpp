// Whatever a text or number is, a recording brings it back.
#include <bit>
#include <cmath>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "qumetra/recording/recording_writer.h"
#include "qumetra/recording/utf8.h"
#include "tests/recording/reading.h"

namespace qumetra::test {
namespace {

/// Keeps what the properties look at.
class Kept : public MessageSink {
 public:
  void system(const pwr::SystemMessage& message) override {
    frequency = message.m_metadata->m_timestampFrequency;
  }
  void text(const pwr::TextMessage& message) override { texts.push_back(message.m_message); }
  void id(const pwr::IdMessage& /*message*/) override {}
  void sample(const pwr::Metric& metric) override {
    for (const pwr::DataElement* element : metric.getData().elements) {
      element->getValue()->toReal(values.emplace_back());
    }
  }
  void table(const pwr::TableMessage& /*table*/) override {}
  void container(const pwr::MetricContainerInfoMessage& /*message*/) override {}
  void flush(const pwr::SystemMetadata& /*metadata*/) override {}

  std::vector<std::string> texts;
  std::vector<double> values;
  float frequency = 0;
};

/// Equal to the last bit, but for NaN: all that is no number is one.
template <typename Real>
bool isSame(Real left, Real right) {
  return std::isnan(left) ? std::isnan(right)
                          : left == right && std::signbit(left) == std::signbit(right);
}

/// Writes by `write` and reads what was written.
template <typename Write>
Kept writeAndRead(Write write) {
  const TempDir directory;
  RecordingWriter writer(directory.file("w"));
  write(writer);
  RC_ASSERT(writer.close().empty());
  Reading reading;
  Kept kept;
  reading.second = &kept;
  RC_ASSERT(reading.readPath(directory.file("w")) == "");
  return kept;
}

/// Bytes among which parts of UTF-8 and of escapes are frequent.
rc::Gen<std::string> anyBytes() {
  const auto byte =
      rc::gen::map(rc::gen::inRange(0, 256), [](int n) { return static_cast<char>(n); });
  const auto piece = rc::gen::weightedOneOf<std::string>(
      {{4, rc::gen::container<std::string>(byte)},
       {1, rc::gen::element<std::string>("\\udc80", "\\", "\"", "u", "\xed\xb2\x80", "\xc3\xa4",
                                         "\xf0\x9f\x98\x80", "\xc3", "\xf0\x9f")}});
  return rc::gen::map(rc::gen::container<std::vector<std::string>>(piece),
                      [](const std::vector<std::string>& pieces) {
                        std::string all;
                        for (const std::string& one : pieces) {
                          all += one;
                        }
                        return all;
                      });
}

RC_GTEST_PROP(AnyText, ComesBackByteByByte, ()) {
  const auto texts = *rc::gen::container<std::vector<std::string>>(anyBytes());
  const Kept kept = writeAndRead([&](RecordingWriter& writer) {
    for (const std::string& text : texts) {
      pwr::TextMessage message;
      message.setMessage(text);
      writer.text(message);
    }
  });
  RC_ASSERT(kept.texts == texts);
}

RC_GTEST_PROP(AnyText, IsWrittenAsUtf8, ()) {
  const TempDir directory;
  RecordingWriter writer(directory.file("w"));
  writer.note(*anyBytes());
  RC_ASSERT(writer.close().empty());
  RC_ASSERT(findInvalidUtf8(readFile(directory.file("w"))) == std::string::npos);
}

RC_GTEST_PROP(AnyReal, ComesBackBitByBit, ()) {
  const auto patterns =
      *rc::gen::container<std::vector<std::uint64_t>>(rc::gen::arbitrary<std::uint64_t>());
  std::vector<double> values;
  for (const std::uint64_t pattern : patterns) {
    values.push_back(std::bit_cast<double>(pattern * 0x9E3779B97F4A7C15U));
  }
  const Kept kept = writeAndRead([&](RecordingWriter& writer) {
    const pwr::EntityHandle entity(1, {}, nullptr);
    std::vector<pwr::DataElement> elements;
    for (const double value : values) {
      elements.emplace_back(&entity, nullptr, nullptr, pwr::Data(value), 0, nullptr);
    }
    pwr::SampleData data;
    for (const pwr::DataElement& element : elements) {
      data.elements.push_back(&element);
    }
    pwr::Metric metric;
    metric.setData(data);
    writer.sample(metric);
  });
  RC_ASSERT(kept.values.size() == values.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    RC_ASSERT(isSame(values[i], kept.values[i]));
  }
}

RC_GTEST_PROP(AnyFloat, ComesBackBitByBit, (std::uint32_t pattern)) {
  const auto value = std::bit_cast<float>(pattern * 0x9E3779B1U);
  const Kept kept = writeAndRead([&](RecordingWriter& writer) {
    pwr::SystemMetadata metadata;
    metadata.m_timestampFrequency = value;
    pwr::SystemMessage message;
    message.m_metadata = &metadata;
    writer.system(message);
  });
  RC_ASSERT(isSame(value, kept.frequency));
}

/// Recordings that are nearly right: parts of good lines in any order, cut anywhere.
RC_GTEST_PROP(AnyFile, GivesMessagesAnErrorOrAWarningButNoCrash, ()) {
  const std::string good = readFile(QUMETRA_RECORDINGS "/all_kinds.qmrec");
  const auto size = static_cast<int>(good.size());
  const auto from = *rc::gen::inRange(0, size);
  const auto length = *rc::gen::inRange(0, 40);
  const auto with = *anyBytes();
  std::string bytes = good;
  bytes.replace(static_cast<std::size_t>(from), static_cast<std::size_t>(length), with);
  Reading reading;
  const std::string error = reading.readBytes(bytes);
  RC_ASSERT(error.find('\n') == std::string::npos);
  RC_ASSERT(error.empty() || error.starts_with("r:"));
}

}  // namespace
}  // namespace qumetra::test
