#include "client/src/common/pw_log.h"

#include <cerrno>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/log_capture.h"

namespace pwr {
namespace {

using qumetra::test::LogCapture;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr std::uint32_t kQuiet = PluginEnvironment::kQuiet;
constexpr std::uint32_t kErrors = PluginEnvironment::kErrors;
constexpr std::uint32_t kWarnings = PluginEnvironment::kWarnings;

/// Takes the environment away as long as it lives.
class NoEnvironment {
 public:
  NoEnvironment() { g_pluginEnvironment = nullptr; }
  NoEnvironment(const NoEnvironment&) = delete;
  NoEnvironment& operator=(const NoEnvironment&) = delete;
  ~NoEnvironment() { g_pluginEnvironment = m_former; }

 private:
  PluginEnvironment* m_former = g_pluginEnvironment;
};

TEST(LogNote, GoesToTheWarningSinkWhateverTheVerbosity) {
  const LogCapture log(kQuiet);
  logNote("Note: %s\n", "text");
  EXPECT_THAT(log.warnings(), ElementsAre(Pair(0, "Note: text\n")));
  EXPECT_THAT(log.errors(), IsEmpty());
}

TEST(LogFatal, GoesToTheErrorSinkWhateverTheVerbosity) {
  const LogCapture log(kQuiet);
  logFatal("FATAL: %d\n", 7);
  EXPECT_THAT(log.errors(), ElementsAre(Pair(0, "FATAL: 7\n")));
  EXPECT_THAT(log.warnings(), IsEmpty());
}

TEST(LogNote, IsSilentWithoutAnEnvironment) {
  const NoEnvironment none;
  logNote("Note\n");
  logFatal("FATAL\n");
  EXPECT_FALSE(plainWarningsShow());
}

TEST(LogPlainWarning, TellsWhetherItShows) {
  const LogCapture log(kErrors);
  EXPECT_FALSE(plainWarningsShow());
  g_pluginEnvironment->verbosity = kWarnings;
  EXPECT_TRUE(plainWarningsShow());
}

TEST(LogError, ShowsAboveVerbosityZero) {
  const LogCapture log(kErrors);
  logError("ERROR: %s %d\n", "disk", 7);
  EXPECT_THAT(log.errors(), ElementsAre(Pair(1, "ERROR: disk 7\n")));
}

TEST(LogError, IsSilentAtVerbosityZero) {
  const LogCapture log(kQuiet);
  logError("ERROR: %s\n", "disk");
  EXPECT_THAT(log.errors(), IsEmpty());
  EXPECT_EQ(log.quiet(), "");
}

TEST(LogError, LongTextsAreWhole) {
  const LogCapture log(kErrors);
  const std::string text(100'000, 'x');
  logError("%s", text.c_str());
  EXPECT_THAT(log.errors(), ElementsAre(Pair(1, text)));
}

TEST(LogPlainWarning, ShowsFromVerbosityTwo) {
  const LogCapture log(kWarnings);
  logPlainWarning("WARNING: %lu\n", 5UL);
  EXPECT_THAT(log.warnings(), ElementsAre(Pair(2, "WARNING: 5\n")));
  EXPECT_THAT(log.errors(), IsEmpty());
}

TEST(LogPlainWarning, IsSilentBelowVerbosityTwoWhateverTheTags) {
  LogCapture log(kErrors);
  log.environment().enabledTags.add(c_textWriterConditionalLogTag);
  logPlainWarning("WARNING\n");
  EXPECT_THAT(log.warnings(), IsEmpty());
}

TEST(LogTaggedWarning, ShowsFromVerbosityTwoWithoutTheTag) {
  const LogCapture log(kWarnings);
  logTaggedWarning("pmt-helper", "WARNING: %s\n", "x");
  EXPECT_THAT(log.warnings(), ElementsAre(Pair(2, "WARNING: x\n")));
}

TEST(LogTaggedWarning, ShowsAtVerbosityZeroWithTheTag) {
  LogCapture log(kQuiet);
  log.environment().enabledTags.add("text-writer-plugin");
  logTaggedWarning(c_textWriterConditionalLogTag, "WARNING: %s\n", "x");
  EXPECT_THAT(log.warnings(), ElementsAre(Pair(2, "WARNING: x\n")));
}

TEST(LogTaggedWarning, IsSilentWithAnotherTagOnly) {
  LogCapture log(kErrors);
  log.environment().enabledTags.add("text-writer-plugin");
  logTaggedWarning("pmt-helper", "WARNING\n");
  EXPECT_THAT(log.warnings(), IsEmpty());
}

TEST(WarningStream, BeginsWithTheLevelsDigit) {
  const LogCapture log(kWarnings);
  warningStream() << "text\n";
  EXPECT_EQ(log.streamedWarnings(), "2WARNING: text\n");
  EXPECT_EQ(log.quiet(), "");
  EXPECT_THAT(log.warnings(), IsEmpty());
}

TEST(WarningStream, BelowTheLevelTheRestGoesToTheQuietLogWithNothingInFront) {
  const LogCapture log(kErrors);
  warningStream() << "text\n";
  EXPECT_EQ(log.streamedWarnings(), "");
  EXPECT_EQ(log.quiet(), "text\n");
}

TEST(ErrorStream, BeginsWithTheLevelsDigit) {
  const LogCapture log(kErrors);
  errorStream() << "text\n";
  EXPECT_EQ(log.streamedErrors(), "1ERROR: text\n");
}

TEST(ErrorStream, BelowTheLevelTheRestGoesToTheQuietLogWithNothingInFront) {
  const LogCapture log(kQuiet);
  errorStream() << "text\n";
  EXPECT_EQ(log.streamedErrors(), "");
  EXPECT_EQ(log.quiet(), "text\n");
}

TEST(StreamErrnoWarning, TellsLabelNumberAndText) {
  const LogCapture log(kWarnings);
  errno = ENOENT;
  streamErrnoWarning("fread");
  EXPECT_EQ(log.streamedWarnings(), "2WARNING: fread: errnum=2: No such file or directory\n");
}

TEST(StreamErrnoWarning, BelowTheLevelTheLineGoesToTheQuietLog) {
  const LogCapture log(kErrors);
  errno = EACCES;
  streamErrnoWarning("fread");
  EXPECT_EQ(log.quiet(), "fread: errnum=13: Permission denied\n");
}

TEST(StreamErrnoError, TellsLabelNumberAndText) {
  const LogCapture log(kErrors);
  errno = ENOENT;
  streamErrnoError("fread");
  EXPECT_EQ(log.streamedErrors(), "1ERROR: fread: errnum=2: No such file or directory\n");
  EXPECT_EQ(log.streamedWarnings() + log.quiet(), "");
}

TEST(StreamErrnoError, AtVerbosityZeroTheLineGoesToTheQuietLog) {
  const LogCapture log(kQuiet);
  errno = EACCES;
  streamErrnoError("fread");
  EXPECT_EQ(log.streamedErrors(), "");
  EXPECT_EQ(log.quiet(), "fread: errnum=13: Permission denied\n");
}

/// A sink whose work changes errno, as writing to a file may.
class RestlessSink : public LogSink {
 public:
  RestlessSink() : LogSink(nullptr) {}
  void log(int, const char*) override { errno = EIO; }
};

TEST(LogIdioms, KeepErrno) {
  RestlessSink sink;
  PluginEnvironment environment(sink, sink, sink);
  environment.verbosity = kWarnings;
  PluginEnvironment* const former = g_pluginEnvironment;
  g_pluginEnvironment = &environment;
  errno = EBUSY;
  logError("%s", "a");
  logPlainWarning("%s", "a");
  logTaggedWarning("tag", "%s", "a");
  streamErrnoWarning("a");
  streamErrnoError("a");
  EXPECT_EQ(errno, EBUSY);
  g_pluginEnvironment = former;
}

TEST(LogIdioms, WithoutAnEnvironmentNothingIsSaid) {
  const NoEnvironment none;
  logError("%s", "a");
  logPlainWarning("%s", "a");
  logTaggedWarning("tag", "%s", "a");
  warningStream() << "a" << 1 << "\n";
  errorStream() << "a" << 1 << "\n";
  streamErrnoWarning("a");
  streamErrnoError("a");
  EXPECT_FALSE(warningStream().good());
}

}  // namespace
}  // namespace pwr
