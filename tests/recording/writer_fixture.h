// A recording that tests write, and what it holds.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qumetra/recording/recording_writer.h"
#include "tests/recording/reading.h"

namespace qumetra::test {

/// The lines of a recording, without their ends.
inline std::vector<std::string> linesOf(const std::string& bytes) {
  std::vector<std::string> lines;
  std::size_t at = 0;
  for (std::size_t end = bytes.find('\n'); end != std::string::npos; end = bytes.find('\n', at)) {
    lines.push_back(bytes.substr(at, end - at));
    at = end + 1;
  }
  EXPECT_EQ(at, bytes.size()) << "the last line has its end";
  return lines;
}

/// A recording that tests write.
class Writer : public ::testing::Test {
 protected:
  std::string path() const { return directory.file("w"); }
  /// Ends the recording and returns its lines behind the first record.
  std::vector<std::string> written() {
    EXPECT_EQ(writer.close(), "");
    std::vector<std::string> lines = linesOf(readFile(path()));
    EXPECT_EQ(lines.at(0), kFirstRecord);
    lines.erase(lines.begin());
    return lines;
  }
  /// Ends the recording, and reads it again in a fresh world.
  std::vector<std::string> readAgain() {
    EXPECT_EQ(writer.close(), "");
    Reading again;
    EXPECT_EQ(again.readPath(path()), "");
    return again.messages();
  }
  /// Delivers a sample of one element.
  void sampleOf(const pwr::EntityHandle& entity, const pwr::Data& value) {
    const pwr::DataElement element(&entity, nullptr, nullptr, value, 0, nullptr);
    metric.setData({0, {&element}});
    writer.sample(metric);
    metric.setData({});
  }

  TempDir directory;
  Model model;
  pwr::Metric metric;
  RecordingWriter writer{path()};
};

}  // namespace qumetra::test
