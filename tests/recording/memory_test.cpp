// Memory does not grow with the number of messages.
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include <gtest/gtest.h>

#include "tests/recording/reading.h"
#include "tests/support/sanitizers.h"

namespace qumetra::test {
namespace {

constexpr std::size_t kMebibyte = std::size_t{1} << 20;

/// Takes everything and keeps nothing.
class Nothing : public MessageSink {
 public:
  void system(const pwr::SystemMessage& /*message*/) override {}
  void text(const pwr::TextMessage& /*message*/) override {}
  void id(const pwr::IdMessage& /*message*/) override {}
  void sample(const pwr::Metric& /*metric*/) override {}
  void table(const pwr::TableMessage& /*table*/) override {}
  void container(const pwr::MetricContainerInfoMessage& /*message*/) override {}
  void flush(const pwr::SystemMetadata& /*metadata*/) override {}
};

void writeRecording(const std::string& path, std::size_t size) {
  std::ofstream out(path, std::ios::binary);
  out << kFirstRecord << "\n"
      << R"({"handle":{"ref":"h","name":"h","type":1}})"
      << "\n"
      << R"({"entity":{"ref":"e","name":"e"}})"
      << "\n"
      << R"({"metric":{"ref":"m","metricId":1}})"
      << "\n";
  for (std::uint64_t i = 0; out.tellp() < static_cast<std::streamoff>(size); ++i) {
    out << R"({"sample":{"metric":"m","timestamp":)" << i << R"(,"elements":[)";
    for (int element = 0; element < 20; ++element) {
      out << (element == 0 ? "" : ",") << R"({"entity":"e","value":{"real":)" << i
          << R"(.5},"info":[["h",{"string":"a text that is too long to be kept within"}]]})";
    }
    out << "]}}\n"
        << R"({"table":{"type":1,"shared":["h"],"sharedCells":["cell )" << i << R"("]}})"
        << "\n"
        << R"({"text":{"message":"some text of number )" << i << "\"}}\n";
  }
}

/// The resident memory of this process.
std::size_t residentBytes() {
  std::ifstream statm("/proc/self/statm");
  std::size_t total = 0;
  std::size_t resident = 0;
  statm >> total >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

/// What a process of its own grows by while it reads the recording; 0 when that failed.
std::size_t growthOfReading(const std::string& path) {
  int ends[2] = {};
  if (pipe(ends) != 0) {
    return 0;
  }
  const pid_t child = fork();
  if (child == 0) {
    const std::size_t before = residentBytes();
    Model model;
    Nothing sink;
    RecordingReader reader(path, model, sink);
    reader.readAll();
    const std::size_t growth = residentBytes() - before;
    _exit(write(ends[1], &growth, sizeof growth) == sizeof growth ? 0 : 1);
  }
  std::size_t growth = 0;
  close(ends[1]);
  const bool isRead = read(ends[0], &growth, sizeof growth) == sizeof growth;
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  return isRead && status == 0 ? growth : 0;
}

TEST(Memory, OfReadingFourTimesAsMuchIsTheSame) {
  if (kAddressSanitizer) {
    GTEST_SKIP() << "the sanitizer keeps memory that was freed";
  }
  const TempDir directory;
  writeRecording(directory.file("small"), 16 * kMebibyte);
  writeRecording(directory.file("large"), 64 * kMebibyte);
  const std::size_t small = growthOfReading(directory.file("small"));
  const std::size_t large = growthOfReading(directory.file("large"));
  EXPECT_GT(small, 0U);
  EXPECT_GT(large, 0U);
  EXPECT_LT(large, small + kMebibyte / 2);
  // Buffers, and the pages of code that reading touches.
  EXPECT_LT(large, 8 * kMebibyte);
}

}  // namespace
}  // namespace qumetra::test
