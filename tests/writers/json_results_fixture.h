// Runs of a JSON writer and the documents that come of them.
#pragma once

#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"
#include "tests/writers/json_world.h"
#include "writers/qmjson_plugin/qmjson_writer.h"

namespace qumetra::test {

template <typename Writer>
class Results : public ::testing::Test {
 protected:
  Results() {
    m_writer.init(m_dir.file("run"), false);
    m_writer.writeMessage(m_world.systemMessage());
  }

  /// Gives one element at tick 1000 that is 250 long.
  int sample(pwr::Metric& metric, const pwr::Data& value,
             const pwr::DataDescriptor* descriptor = nullptr) {
    return give(m_writer, metric, 1000, {m_world.element(m_entity, descriptor, value, 250)});
  }
  int sample(pwr::Metric::MetricType type, const pwr::Data& value,
             const pwr::DataDescriptor* descriptor = nullptr,
             const pwr::Quantity* quantity = nullptr) {
    return sample(m_world.metric("M", type, quantity), value, descriptor);
  }

  LogCapture m_log;
  TempDir m_dir;
  JsonWorld m_world;
  const pwr::EntityHandle* m_entity = m_world.entity("E");
  Writer m_writer;
};

class QmjsonResults : public Results<QMJSONWriter> {
 protected:
  std::string file() const { return m_dir.file("run.qmjson"); }
  /// All from "data" on, without the braces of the document.
  std::string data() {
    EXPECT_EQ(m_writer.fini(), 0);
    const std::string text = readFile(file());
    const std::size_t begin = text.find(R"("data":)");
    return text.substr(begin, text.size() - begin - 2);
  }
  /// The points of the first series of the first metric.
  std::string points() {
    const std::string text = data();
    const std::size_t begin = text.find(R"("points":)") + 9;
    return text.substr(begin, text.find(']', begin) + 1 - begin);
  }
};

}  // namespace qumetra::test
