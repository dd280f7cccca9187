// Continuous runs whose host has no output, throws, or runs out of memory.
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "host/environment.h"
#include "host/logger.h"
#include "tests/support/failing_allocation.h"
#include "tests/writers/continuous_fixture.h"
#include "writers/json_plugin.h"
#include "writers/qmjson_plugin/qmjson_writer.h"

namespace {

/// What the host of this program hands out for any name.
pwr::Logger* s_output = nullptr;
/// The name that was asked for last.
std::string s_name;

}  // namespace

// In the place of the library's own, which always has an output.
pwr::Logger* PluginEnvironment::getFileOutputHandle(const char* name) const {
  s_name = name;
  return s_output;
}

namespace {

using pwr::Data;
using pwr::Metric;
using qumetra::test::failEachAllocation;
using qumetra::test::give;

/// Longer than what a string holds without an allocation.
std::string longText(const std::string& text) { return text + std::string(40, '.'); }

/// An output that keeps the last document and throws where it is told to.
class TestOutput : public pwr::Logger {
 public:
  TestOutput() : Logger("") {}

  int finish() override {
    m_ends += 1;
    return 7;
  }
  void flush() override {
    m_text.assign(m_buffer.begin(), m_buffer.end());
    if (m_flushThrows) {
      throw std::runtime_error("flush");
    }
  }
  void close() override {
    m_closed += 1;
    if (m_closeThrows) {
      throw std::runtime_error("close");
    }
  }

  std::string m_text;
  bool m_flushThrows = false;
  bool m_closeThrows = false;
  int m_closed = 0;
  int m_ends = 0;
};

class ContinuousHost : public qumetra::test::ContinuousResults {
 protected:
  ContinuousHost() {
    m_output.m_text.reserve(10000);
    s_output = &m_output;
    m_writer.extension = ".qmjson";
  }
  ~ContinuousHost() override { s_output = nullptr; }

  int flush() { return m_writer.flushContinuousResults(m_world.system()); }
  void expectAllKept() {
    EXPECT_EQ(m_writer.data.size(), 1U);
    EXPECT_EQ(m_writer.metadata.size(), 1U) << "the metric's alone";
  }
  void expectOutputIsEmpty() {
    EXPECT_EQ(m_output.m_buffer.capacity(), 0U);
    EXPECT_EQ(m_output.m_pendingBytes, 0U);
  }

  TestOutput m_output;
};

TEST_F(ContinuousHost, FlushWithoutAnOutputKeepsAllAndUsesNoNumber) {
  sampleOf(Metric::SAMPLED_DELTA, Data(1.0));
  for (const char* extension : {".json", ".qmjson"}) {
    m_writer.extension = extension;
    s_output = nullptr;
    EXPECT_EQ(flush(), 0);
    expectAllKept();
  }
  s_output = &m_output;
  EXPECT_EQ(flush(), 1);
  EXPECT_EQ(s_name, file("run_0.qmjson"));
  m_writer.extension = ".json";
  EXPECT_EQ(flush(), 1);
  EXPECT_EQ(s_name, file("run_0.json"));
}

TEST_F(ContinuousHost, EndWithoutAnOutputIsNone) {
  EXPECT_EQ(m_writer.fini(), 7);
  EXPECT_EQ(m_output.m_ends, 1);
  s_output = nullptr;
  EXPECT_EQ(m_writer.fini(), 0);
}

TEST_F(ContinuousHost, FlushLeavesNoMemoryInTheOutput) {
  m_output.m_pendingBytes = 7;
  sampleOf(Metric::SAMPLED_DELTA, Data(1.0));
  EXPECT_EQ(flush(), 1);
  EXPECT_FALSE(m_output.m_text.empty());
  EXPECT_EQ(m_output.m_closed, 1);
  expectOutputIsEmpty();
}

TEST_F(ContinuousHost, OutputThatThrowsCostsItsNumberOnly) {
  sampleOf(Metric::SAMPLED_DELTA, Data(1.0));
  m_output.m_flushThrows = true;
  EXPECT_EQ(flush(), 0);
  expectAllKept();
  expectOutputIsEmpty();
  EXPECT_EQ(m_output.m_closed, 1);

  m_output.m_flushThrows = false;
  EXPECT_EQ(flush(), 1);
  EXPECT_EQ(s_name, file("run_1.qmjson")) << "of the one before nobody knows what is in it";
  EXPECT_TRUE(m_writer.data.empty());
}

TEST_F(ContinuousHost, OutputThatThrowsAtItsCloseHasTheDocument) {
  sampleOf(Metric::SAMPLED_DELTA, Data(1.0));
  m_output.m_closeThrows = true;
  EXPECT_EQ(flush(), 1);
  EXPECT_TRUE(m_writer.data.empty());
  EXPECT_TRUE(m_writer.metadata.empty());
}

TEST_F(ContinuousHost, ExceptionOfTheEndDoesNotReachTheHost) {
  class Thrower : public TestOutput {
    int finish() override { throw std::runtime_error("finish"); }
  };
  Thrower thrower;
  s_output = &thrower;
  JSONWriter writer;
  writer.init(file("run"), true);
  EXPECT_EQ(writer.fini(), 1);
}

/// A continuous run of a writer, as its host sees it.
template <typename Writer>
class ContinuousWithoutMemory : public ContinuousHost {
 protected:
  void start() {
    m_run.emplace();
    ASSERT_EQ(m_run->init(file(longText("run")), true), 0);
    ASSERT_EQ(m_run->writeMessage(m_world.systemMessage()), 0);
  }
  /// Each time another metric: descriptions are given once per process.
  Metric& newMetric() {
    Metric& metric = m_world.metric(longText("M"), Metric::SAMPLED_DELTA);
    metric.states = {Data(longText("state"))};
    metric.entities = {{m_entity, m_descriptor}};
    metric.setData({1000, {m_element}});
    return metric;
  }
  /// What a flush brings out: how often the sample and the description stand there.
  void expectFlushed(std::size_t samples, std::size_t descriptions) {
    ASSERT_EQ(m_run->flushContinuousResults(m_world.system()), 1);
    rapidjson::Document document;
    document.Parse(m_output.m_text.data(), m_output.m_text.size());
    ASSERT_FALSE(document.HasParseError()) << m_output.m_text;
    if (document.HasMember("traceEvents")) {
      EXPECT_EQ(document["traceEvents"].Size(), samples);
      return;
    }
    EXPECT_EQ(document["Data"].Size(), samples);
    EXPECT_EQ(document["Metadata"].Size(), descriptions + 1) << "and the system";
  }

  pwr::DataDescriptor* m_descriptor = m_world.descriptor(longText("d"), Data(longText("C0")));
  const pwr::DataElement* m_element = m_world.element(m_entity, m_descriptor, Data(1.0), 250);
  std::optional<Writer> m_run;
};

using Writers = ::testing::Types<JSONWriter, QMJSONWriter>;
TYPED_TEST_SUITE(ContinuousWithoutMemory, Writers);

TYPED_TEST(ContinuousWithoutMemory, SampleIsThereWithItsDescriptionOrNotAtAll) {
  Metric* metric = nullptr;
  int status = 0;
  failEachAllocation(
      [&] {
        this->start();
        metric = &this->newMetric();
      },
      [&] { status = this->m_run->writeMessage(*metric); },
      [&](bool failed) {
        EXPECT_EQ(status, failed ? 1 : 0);
        this->expectFlushed(failed ? 0 : 1, failed ? 0 : 1);
        EXPECT_EQ(this->m_run->writeMessage(*metric), 0);
        this->expectFlushed(1, failed ? 1 : 0);
      });
}

TYPED_TEST(ContinuousWithoutMemory, FlushThatFailedKeepsAll) {
  int status = 0;
  failEachAllocation(
      [this] {
        this->start();
        ASSERT_EQ(this->m_run->writeMessage(this->newMetric()), 0);
      },
      [&] { status = this->m_run->flushContinuousResults(this->m_world.system()); },
      [&](bool failed) {
        EXPECT_EQ(status, failed ? 0 : 1);
        this->expectFlushed(failed ? 1 : 0, failed ? 1 : 0);
      });
}

TYPED_TEST(ContinuousWithoutMemory, BeginningThatFailedCanBeRepeated) {
  const std::string base = this->file(longText("run"));
  int status = 0;
  failEachAllocation([this] { this->m_run.emplace(); },
                     [&] { status = this->m_run->init(base, true); },
                     [&](bool failed) {
                       EXPECT_EQ(status, failed ? 1 : 0);
                       if (failed) {
                         this->start();
                       }
                       EXPECT_EQ(this->m_run->fini(), 7);
                     });
}

}  // namespace
