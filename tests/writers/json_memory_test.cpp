// The JSON writers of a process that runs out of memory in the middle of an operation.

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/failing_allocation.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"
#include "tests/writers/json_world.h"
#include "writers/json_plugin.h"
#include "writers/qmjson_plugin/qmjson_writer.h"

namespace {

using pwr::Data;
using pwr::Metric;
using qumetra::test::failEachAllocation;
using qumetra::test::give;
using qumetra::test::readFile;

/// Longer than what a string holds without an allocation.
std::string longText(const std::string& text) { return text + std::string(40, '.'); }

/// Runs of one of the two writers.
template <typename Writer>
class WithoutMemory : public ::testing::Test {
 protected:
  using Elements = std::vector<const pwr::DataElement*>;

  WithoutMemory() {
    m_world.system().m_collectorArguments = {longText("first"), longText("arguments")};
    m_other.m_timestampFrequency = 2.0F;
    m_other.m_collectorArguments = {longText("other"), longText("arguments")};
    m_other.m_platformMetadata = m_world.system().m_platformMetadata;
  }

  /// A writer that has one sample already.
  void start() {
    m_writer.emplace();
    ASSERT_EQ(m_writer->init(m_dir.file("run"), false), 0);
    ASSERT_EQ(m_writer->writeMessage(m_world.systemMessage()), 0);
    ASSERT_EQ(give(*m_writer, m_first, 500, {m_number}), 0);
  }

  std::string document() {
    EXPECT_EQ(m_writer->fini(), 0);
    const std::string path = m_dir.file(std::string("run") + suffix());
    qumetra::test::parseFile(path);
    return readFile(path);
  }

  /// The document now, and behind it the one that a further message makes.
  std::string documents(Metric& metric, const Elements& elements) {
    const std::string now = document();
    EXPECT_EQ(give(*m_writer, metric, 2000, elements), 0);
    return now + document();
  }

  /// A message that fails keeps the elements before the failure, and the next one is taken.
  void expectWholeElementsOnly(Metric& metric, const Elements& elements) {
    std::vector<std::string> possible;
    for (auto end = elements.begin();; ++end) {
      start();
      give(*m_writer, metric, 1000, Elements(elements.begin(), end));
      possible.push_back(documents(metric, elements));
      if (end == elements.end()) {
        break;
      }
    }
    int status = 0;
    const auto prepare = [&] {
      start();
      metric.setData({1000, elements});
    };
    const auto action = [&] { status = m_writer->writeMessage(metric); };
    failEachAllocation(prepare, action, [&](bool failed) {
      EXPECT_EQ(status, failed ? 1 : 0);
      const std::string text = documents(metric, elements);
      EXPECT_NE(std::find(possible.begin(), possible.end(), text), possible.end()) << text;
      EXPECT_TRUE(failed || text == possible.back()) << text;
    });
  }

  static const char* suffix() { return std::is_same_v<Writer, JSONWriter> ? ".json" : ".qmjson"; }

  const pwr::DataElement* element(Data value, const pwr::DataDescriptor* descriptor = nullptr) {
    return m_world.element(m_entity, descriptor, std::move(value), 250);
  }

  qumetra::test::LogCapture m_log;
  qumetra::test::TempDir m_dir;
  qumetra::test::JsonWorld m_world;
  pwr::SystemMetadata m_other;
  const pwr::EntityHandle* m_entity = m_world.entity(longText("E"));
  Metric& m_first = m_world.metric("first", Metric::SAMPLED_VALUE);
  const pwr::DataElement* m_number = m_world.element(m_entity, nullptr, Data(1.0), 250);
  std::optional<Writer> m_writer;
};

using Writers = ::testing::Types<JSONWriter, QMJSONWriter>;
TYPED_TEST_SUITE(WithoutMemory, Writers);

TYPED_TEST(WithoutMemory, RangesAreKeptWholeOrNotAtAll) {
  Metric& metric = this->m_world.metric(longText("M"), Metric::SAMPLED_VALUE,
                                        this->m_world.quantity(1, longText("Q"), longText("u")));
  this->expectWholeElementsOnly(metric, {this->element(Data::fromRealRange({1.0, 2.0})),
                                         this->element(Data::fromRealRange({3.0, 4.0}))});
}

TYPED_TEST(WithoutMemory, StatesAreKeptWithTheirNumbersOrNotAtAll) {
  Metric& metric = this->m_world.metric(longText("M"), Metric::TRACED_VALUE_TRANSITION);
  metric.states = {Data::fromHandle(this->m_world.descriptor("d", Data(longText("declared"))))};
  this->expectWholeElementsOnly(
      metric, {this->element(Data(longText("s"))), this->element(Data(longText("t")))});
}

TYPED_TEST(WithoutMemory, SeriesOfCountersAreKeptWithAPointOrNotAtAll) {
  Metric& metric = this->m_world.metric(longText("M"), Metric::SAMPLED_DELTA);
  this->expectWholeElementsOnly(
      metric, {this->element(Data(5.0), this->m_world.descriptor(longText("C0"))),
               this->element(Data(6.0), this->m_world.descriptor(longText("C1")))});
}

TYPED_TEST(WithoutMemory, SystemIsTakenWholeOrNotAtAll) {
  this->start();
  const std::string former = this->document();
  pwr::SystemMessage message;
  message.m_metadata = &this->m_other;
  int status = 0;
  failEachAllocation([this] { this->start(); },
                     [&] { status = this->m_writer->writeMessage(message); },
                     [&](bool failed) {
                       EXPECT_EQ(status, failed ? 1 : 0);
                       if (failed) {
                         EXPECT_EQ(this->document(), former);
                         EXPECT_EQ(this->m_writer->writeMessage(message), 0);
                       }
                     });
}

TYPED_TEST(WithoutMemory, EndThatFailedCanBeRepeated) {
  Metric& metric = this->m_world.metric(longText("M"), Metric::TRACED_VALUE_TRANSITION);
  const auto prepare = [&] {
    this->start();
    give(*this->m_writer, metric, 1000,
         {this->element(Data(longText("P2"))), this->element(Data(longText("P1")))});
  };
  prepare();
  const std::string whole = this->document();
  int status = 0;
  failEachAllocation(
      prepare, [&] { status = this->m_writer->fini(); },
      [&](bool failed) {
        EXPECT_EQ(status, failed ? 1 : 0);
        EXPECT_EQ(this->document(), whole);
      });
  for (const auto& [level, text] : this->m_log.errors()) {
    EXPECT_EQ(text, "ERROR: Could not write all of " +
                        this->m_dir.file(std::string("run") + this->suffix()) + "\n");
  }
}

TYPED_TEST(WithoutMemory, BeginningThatFailedLeavesAllAsItWas) {
  const std::string other = this->m_dir.file(longText("other"));
  int status = 0;
  failEachAllocation([this] { this->start(); }, [&] { status = this->m_writer->init(other, true); },
                     [&](bool failed) {
                       EXPECT_EQ(status, failed ? 1 : 0);
                       if (failed) {
                         const std::string text = this->document();
                         EXPECT_NE(text.find("first"), std::string::npos) << "no continuous run";
                         EXPECT_EQ(this->m_writer->flushContinuousResults(this->m_other), 0);
                       }
                     });
}

}  // namespace
