// A continuous run, and what is kept of it between flushes.
#pragma once

#include <string>

#include <gtest/gtest.h>

#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"
#include "tests/writers/json_world.h"
#include "writers/continuous_writer/cont_writer.h"

namespace qumetra::test {

/// Shows what is kept.
class KeptResults : public ContWriter {
 public:
  using ContWriter::ContWriter;
  using ContWriter::data;
  using ContWriter::metadata;
  using ContWriter::tickScale;
};

class ContinuousResults : public ::testing::Test {
 protected:
  ContinuousResults() { m_writer.writeMessage(m_world.systemMessage()); }

  /// The one sample that comes of the value.
  ContinuousWriter::Data sampleOf(pwr::Metric::MetricType type, const pwr::Data& value,
                                  const pwr::DataDescriptor* descriptor = nullptr,
                                  const pwr::Quantity* quantity = nullptr) {
    pwr::Metric& metric = m_world.metric("M", type, quantity);
    EXPECT_EQ(give(m_writer, metric, 1000, {m_world.element(m_entity, descriptor, value, 250)}), 0);
    return m_writer.data.back();
  }

  std::string file(const std::string& name) const { return m_dir.file(name); }

  LogCapture m_log;
  TempDir m_dir;
  JsonWorld m_world;
  const pwr::EntityHandle* m_parent = m_world.entity("Package");
  const pwr::EntityHandle* m_entity = m_world.entity("Core", m_parent);
  KeptResults m_writer{m_dir.file("run")};
};

}  // namespace qumetra::test
