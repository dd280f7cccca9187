// A PHM writer with its files.
#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/writers/time_line_world.h"
#include "writers/phmwriter_text_plugin/phm_writer.h"

namespace qumetra::test {

/// A PHM writer that knows its output name, "out", and the clock.
class PhmWriter : public TimeLineTest<PhmTextWriter> {
 protected:
  void SetUp() override { start(); }

  void start() {
    ASSERT_EQ(m_writer->init(m_area.file("results/out"), false), 0);
    ASSERT_EQ(system(), 0);
  }
  /// Makes the writer anew, so that it reads its switches.
  void restart() {
    m_writer = std::make_unique<PhmTextWriter>();
    start();
  }

  std::string result(const std::string& name) const {
    return readFile(m_area.file("results/" + name));
  }
  std::string metadata() const { return result("out_meta_phm.csv"); }
  /// Ends the collection and returns the default file.
  std::string report() {
    EXPECT_EQ(m_writer->fini(), 0);
    return result("out_phm.csv");
  }
  /// The names of the result files, in order.
  std::vector<std::string> results() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_area.file("results"))) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }
};

}  // namespace qumetra::test
