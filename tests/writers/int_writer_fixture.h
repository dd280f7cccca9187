// A trace writer with its file.
#pragma once

#include <string>

#include "tests/writers/time_line_world.h"
#include "writers/textwriter_plugin/int_writer.h"

namespace qumetra::test {

class IntWriter : public TimeLineTest<IntWriterV2> {
 protected:
  /// Ends the collection and returns the file.
  std::string report() {
    EXPECT_EQ(m_writer->fini(), 0);
    return readFile(m_area.file("out_trace.csv"));
  }
};

/// A trace writer that has opened its file and knows the clock.
class OpenIntWriter : public IntWriter {
 protected:
  void SetUp() override { start(); }

  void start() {
    ASSERT_EQ(m_writer->init(m_area.file("out"), false), 0);
    ASSERT_EQ(system(), 0);
  }
  /// Makes the writer anew, so that it reads its switches.
  void restart() {
    m_writer = std::make_unique<IntWriterV2>();
    start();
  }
};

}  // namespace qumetra::test
