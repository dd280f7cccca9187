// Samples that wait, next to the records that they become.
#include "writers/binarywriter_plugin/sample_store.h"

#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "client/src/common/byte_packing.h"
#include "host/logger.h"
#include "tests/support/disk_faults.h"
#include "writers/binarywriter_plugin/sample_block.h"

namespace qumetra::test {
namespace {

using pwr::bin::SampleBlock;
using pwr::bin::SampleStore;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::size_t kRecordSize = 27;

struct Sample {
  float duration;
  std::uint16_t name;
  std::uint16_t descriptor;
  float value;
};

/// A handle that keeps what is flushed, and empties its buffer by itself.
class EmptyingHandle : public pwr::Logger {
 public:
  EmptyingHandle() : pwr::Logger("") {}

  void flush() override {
    flushed.insert(flushed.end(), m_buffer.begin(), m_buffer.end());
    std::vector<char>().swap(m_buffer);
    ++flushes;
  }

  std::vector<char> flushed;
  std::size_t flushes = 0;
};

class SampleStoring : public testing::Test {
 protected:
  /// Appends a message to the store, and its records to what is expected.
  void add(std::uint64_t timestamp, std::uint32_t metricId, const std::vector<Sample>& samples) {
    m_store.startMessage(timestamp, metricId);
    for (const Sample& sample : samples) {
      m_store.append(sample.duration, sample.name, sample.descriptor, sample.value);
      expect(timestamp, metricId, sample);
    }
  }

  void expect(std::uint64_t timestamp, std::uint32_t metricId, const Sample& sample) {
    char record[kRecordSize];
    char* at = pwr::packNumber(std::uint16_t{24}, record);
    at = pwr::packNumber(std::uint8_t{4}, at);
    at = pwr::packNumber(timestamp, at);
    at = pwr::packNumber(sample.duration, at);
    at = pwr::packNumber(metricId, at);
    at = pwr::packNumber(sample.name, at);
    at = pwr::packNumber(sample.descriptor, at);
    pwr::packNumber(sample.value, at);
    m_expected.insert(m_expected.end(), record, record + kRecordSize);
  }

  /// The bytes that the store moves to a handle.
  std::vector<char> moved() {
    EmptyingHandle handle;
    m_store.prepareToMove(handle, 0);
    m_store.moveTo(handle);
    handle.flush();
    m_flushes = handle.flushes;
    return handle.flushed;
  }

  TempArea m_area;
  SampleStore m_store;
  std::vector<char> m_expected;
  std::size_t m_flushes = 0;
};

TEST_F(SampleStoring, NothingBecomesNothing) { EXPECT_THAT(moved(), IsEmpty()); }

TEST_F(SampleStoring, MessagesWithoutSamplesLeaveNoTrace) {
  add(1, 7, {});
  add(2, 7, {{1, 2, 3, 4}});
  add(3, 8, {});
  EXPECT_EQ(moved(), m_expected);
}

TEST_F(SampleStoring, MetricsKeepTheirNamesApart) {
  for (std::uint64_t time = 0; time < 3; ++time) {
    add(time, 7, {{1, 10, 11, 1}, {2, 12, 13, 2}});
    add(time, 8, {{3, 20, 21, 3}, {4, 22, 23, 4}});
  }
  EXPECT_EQ(moved(), m_expected);
}

TEST_F(SampleStoring, MessagesMayBringFewerOrMoreOrOtherNamesThanTheLast) {
  add(1, 7, {{1, 10, 11, 1}, {2, 12, 13, 2}});
  add(2, 7, {{1, 10, 11, 1}});
  add(3, 7, {{1, 10, 11, 1}, {2, 12, 13, 2}, {3, 14, 15, 3}});
  add(4, 7, {{1, 12, 13, 1}, {2, 10, 11, 2}});
  add(5, 7, {{1, 12, 13, 1}, {2, 10, 12, 2}});
  EXPECT_EQ(moved(), m_expected);
}

TEST_F(SampleStoring, MessageGoesOnInTheNextBlock) {
  std::vector<Sample> samples;
  for (std::size_t i = 0; i < SampleBlock::kSize / 5; ++i) {
    samples.push_back({1, static_cast<std::uint16_t>(i), static_cast<std::uint16_t>(i >> 8U),
                       static_cast<float>(i)});
  }
  add(9, 7, samples);
  EXPECT_EQ(moved(), m_expected);
  EXPECT_GT(m_flushes, 3U);
}

TEST_F(SampleStoring, NamesOfARepeatedMessageTakeNoRoomInABlock) {
  const std::vector<Sample> samples(100, {1, 2, 3, 4});
  constexpr std::size_t kMessages =
      SampleBlock::kSize / (SampleBlock::kRunHeadSize + 100 * SampleBlock::kNumbersSize) - 1;
  for (std::size_t i = 0; i < kMessages; ++i) {
    add(i, 7, samples);
  }
  EXPECT_EQ(moved(), m_expected);
  EXPECT_EQ(m_flushes, 1U);
}

TEST_F(SampleStoring, BeginsAnewWhenItWasEmptied) {
  add(1, 7, std::vector<Sample>(30'000, {1, 2, 3, 4}));
  EXPECT_THAT(moved(), SizeIs(30'000 * kRecordSize));
  m_expected.clear();
  add(2, 7, {{5, 6, 7, 8}});
  EXPECT_EQ(moved(), m_expected);
}

TEST_F(SampleStoring, MetricsWithoutSamplesDoNotUseUpABlock) {
  // As of messages that fail with their first element; more than a block has numbers for.
  for (std::uint32_t id = 0; id < 70'000; ++id) {
    add(id, id, {});
  }
  add(1, 70'000, {{1, 2, 3, 4}});
  EXPECT_EQ(moved(), m_expected);
}

class Blocks : public testing::Test {
 protected:
  Blocks() {
    m_block.clear();
    for (std::uint32_t i = 0; i < 6; ++i) {
      m_block.startRun(i, i % 2);
      m_block.append(1, 2, 3, 4);
      m_block.append(5, static_cast<std::uint16_t>(i / 3), 7, 8);
      m_block.endRun();
    }
    const char* const bytes = m_block.seal();
    m_bytes.assign(bytes, bytes + SampleBlock::kSize);
  }

  SampleBlock m_block;
  std::vector<char> m_bytes;
};

TEST_F(Blocks, AreWholeAsTheyCome) {
  EXPECT_TRUE(pwr::bin::isWhole(m_bytes.data()));
  EXPECT_EQ(pwr::bin::sampleCount(m_bytes.data()), 12U);
}

TEST_F(Blocks, OfZerosAreNotWhole) {
  EXPECT_FALSE(pwr::bin::isWhole(std::vector<char>(SampleBlock::kSize).data()));
}

RC_GTEST_FIXTURE_PROP(Blocks, AreReadWithinTheirBoundsWhateverChangesThem, ()) {
  const auto changes = *rc::gen::inRange(1, 4);
  for (int i = 0; i < changes; ++i) {
    // The heads, the runs and the rows.
    const auto place = *rc::gen::inRange<std::size_t>(0, 200);
    const bool isAtTheEnd = *rc::gen::inRange(0, 4) == 0;
    m_bytes[isAtTheEnd ? SampleBlock::kSize - 1 - place : place] =
        *rc::gen::element('\0', '\1', '\x7f', '\x80', '\xff');
  }
  if (pwr::bin::isWhole(m_bytes.data())) {
    std::vector<char> records(pwr::bin::sampleCount(m_bytes.data()) * kRecordSize);
    pwr::bin::writeRecords(m_bytes.data(), records.data());
  }
}

/// Few metrics and names, so that messages often bring the names of the last one.
std::vector<Sample> randomSamples(bool isLong) {
  const auto count = *rc::gen::inRange<std::size_t>(0, isLong ? 30'000 : 6);
  const auto shift = *rc::gen::inRange(0, 2);
  std::vector<Sample> samples;
  for (std::size_t i = 0; i < count; ++i) {
    samples.push_back({static_cast<float>(i), static_cast<std::uint16_t>(i + 1),
                       static_cast<std::uint16_t>(i % 3 == 0 ? shift : 5),
                       static_cast<float>(i * 7)});
  }
  return samples;
}

RC_GTEST_FIXTURE_PROP(SampleStoring, GivesBackWhatItGot, ()) {
  const auto messages = *rc::gen::inRange(0, 60);
  m_expected.clear();
  for (int i = 0; i < messages; ++i) {
    const auto metricId = *rc::gen::inRange<std::uint32_t>(1, 4);
    add(static_cast<std::uint64_t>(i), metricId, randomSamples(*rc::gen::inRange(0, 12) == 0));
  }
  RC_ASSERT(moved() == m_expected);
}

}  // namespace
}  // namespace qumetra::test
