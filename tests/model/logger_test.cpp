#include "host/logger.h"

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"

namespace {

using pwr::Logger;
using qumetra::test::LogCapture;
using qumetra::test::readFile;
using qumetra::test::writeFile;
using Texts = qumetra::test::RecordingSink::Texts;

/// Uses the handle as writers do.
void put(Logger& logger, const std::string& bytes) {
  logger.m_buffer.insert(logger.m_buffer.end(), bytes.begin(), bytes.end());
  logger.flush();
  logger.m_buffer.clear();
  logger.m_pendingBytes = 0;
  logger.close();
}

class LoggerTest : public testing::Test {
 protected:
  qumetra::test::TempDir directory;
  LogCapture log;
  std::string path = directory.file("result");
};

TEST_F(LoggerTest, FlushWritesTheBytesOfTheBuffer) {
  Logger logger(path);
  put(logger, std::string("a\0b", 3));
  EXPECT_EQ(readFile(path), std::string("a\0b", 3));
  EXPECT_EQ(log.errors(), Texts{});
}

TEST_F(LoggerTest, FlushLeavesTheBufferToItsUser) {
  Logger logger(path);
  logger.m_buffer = {'a', 'b'};
  logger.flush();
  EXPECT_EQ(logger.m_buffer.size(), 2U);
}

TEST_F(LoggerTest, FileIsMadeAtItsFirstUseOnly) {
  Logger logger(path);
  logger.close();
  EXPECT_EQ(logger.finish(), 0);
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(LoggerTest, FirstUseEmptiesAFileThatIsThere) {
  writeFile(path, "what was there before");
  Logger logger(path);
  put(logger, "new");
  EXPECT_EQ(readFile(path), "new");
}

TEST_F(LoggerTest, FirstUseMakesTheFileAlsoWithoutBytes) {
  Logger logger(path);
  put(logger, "");
  EXPECT_EQ(readFile(path), "");
}

TEST_F(LoggerTest, FirstUseWithoutBytesEmptiesAFileThatIsThere) {
  writeFile(path, "what was there before");
  Logger logger(path);
  put(logger, "");
  EXPECT_EQ(readFile(path), "");
}

TEST_F(LoggerTest, LaterUsesAppend) {
  Logger logger(path);
  put(logger, "one");
  put(logger, "");
  put(logger, "two");
  EXPECT_EQ(readFile(path), "onetwo");
}

TEST_F(LoggerTest, FlushesWithoutACloseBetweenThemAppend) {
  Logger logger(path);
  logger.m_buffer = {'a'};
  logger.flush();
  logger.flush();
  EXPECT_EQ(readFile(path), "aa");
}

TEST_F(LoggerTest, MissingDirectoriesAreMade) {
  const std::string deep = directory.file("some/deep/result");
  Logger logger(deep);
  put(logger, "bytes");
  EXPECT_EQ(readFile(deep), "bytes");
}

TEST_F(LoggerTest, FinishReturnsZero) {
  Logger logger(path);
  EXPECT_EQ(logger.finish(), 0);
}

TEST_F(LoggerTest, EmptyNameHasNoFileAndNoError) {
  const auto former = std::filesystem::current_path();
  std::filesystem::current_path(directory.path());
  Logger logger("");
  put(logger, "bytes");
  EXPECT_EQ(logger.finish(), 0);
  std::filesystem::current_path(former);
  EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
  EXPECT_EQ(log.errors(), Texts{});
}

TEST_F(LoggerTest, FileThatCannotBeMadeIsOneErrorNamingIt) {
  Logger logger(directory.path().string());
  put(logger, "bytes");
  put(logger, "bytes");
  EXPECT_EQ(
      log.errors(),
      (Texts{{1, "ERROR: Cannot create " + directory.path().string() + ": Is a directory\n"}}));
}

TEST_F(LoggerTest, DirectoryThatCannotBeMadeIsOneErrorNamingTheFile) {
  writeFile(path, "a file, not a directory");
  Logger logger(path + "/result");
  put(logger, "bytes");
  EXPECT_EQ(log.errors(),
            (Texts{{1, "ERROR: Cannot create " + path + "/result: Not a directory\n"}}));
  EXPECT_EQ(readFile(path), "a file, not a directory");
}

TEST_F(LoggerTest, FileThatCannotBeWrittenIsOneErrorNamingIt) {
  Logger logger("/dev/full");
  put(logger, "bytes");
  put(logger, "bytes");
  EXPECT_EQ(log.errors(), (Texts{{1, "ERROR: Cannot write /dev/full: No space left on device\n"}}));
}

TEST_F(LoggerTest, FileThatCannotBeMadeAtFirstIsMadeLater) {
  std::filesystem::create_directory(path);
  Logger logger(path);
  put(logger, "lost");
  std::filesystem::remove(path);
  put(logger, "kept");
  EXPECT_EQ(readFile(path), "kept");
}

TEST(Logger, FailureSaysNothingWhenErrorsDoNotShow) {
  const LogCapture log(PluginEnvironment::kQuiet);
  Logger logger("/dev/full");
  put(logger, "bytes");
  EXPECT_EQ(log.errors(), Texts{});
}

TEST(Logger, FailureWithoutAnEnvironmentIsNoCrash) {
  ASSERT_EQ(g_pluginEnvironment, nullptr);
  Logger logger("/dev/full");
  put(logger, "bytes");
}

/// Reads a pipe slowly, and interrupts a thread with a signal before each step.
class InterruptingReader {
 public:
  InterruptingReader(const std::string& path, pthread_t target)
      : m_thread([this, path, target] { run(path, target); }) {}
  std::string join() {
    m_thread.join();
    return m_bytes;
  }

 private:
  static void interrupt(pthread_t target) {
    std::this_thread::sleep_for(std::chrono::microseconds(200));
    ::pthread_kill(target, SIGUSR1);
  }

  void run(const std::string& path, pthread_t target) {
    for (int round = 0; round < 50; ++round) {
      interrupt(target);
    }
    const int descriptor = ::open(path.c_str(), O_RDONLY);
    std::array<char, 65536> chunk{};
    ssize_t count = ::read(descriptor, chunk.data(), chunk.size());
    while (count > 0) {
      m_bytes.append(chunk.data(), static_cast<std::size_t>(count));
      interrupt(target);
      count = ::read(descriptor, chunk.data(), chunk.size());
    }
    ::close(descriptor);
  }

  std::string m_bytes;
  std::thread m_thread;
};

TEST_F(LoggerTest, InterruptionsAndShortWritesLoseNothing) {
  struct sigaction action = {};
  action.sa_handler = [](int) {};
  ASSERT_EQ(::sigaction(SIGUSR1, &action, nullptr), 0);
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  std::string bytes;
  while (bytes.size() < 4 * 1024 * 1024) {
    bytes += std::to_string(bytes.size()) + "\n";
  }
  InterruptingReader reader(path, ::pthread_self());
  Logger logger(path);
  put(logger, bytes);
  EXPECT_TRUE(reader.join() == bytes);
  EXPECT_EQ(log.errors(), Texts{});
}

}  // namespace
