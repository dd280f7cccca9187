#include "qumetra/collect/child_process.h"

#include <signal.h>
#include <stdlib.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qumetra/collect/collection.h"
#include "qumetra/collect/source_file.h"
#include "qumetra/collect/stop_signal.h"
#include "qumetra/collect/wake_up.h"
#include "tests/support/temp_dir.h"

namespace qumetra::test {
namespace {

int waitForEnd(ChildProcess& child) {
  StopSignal signal;
  while (!child.poll()) {
    waitFor(UINT64_MAX, signal, &child);
  }
  return *child.poll();
}

int statusOf(const std::vector<std::string>& command) {
  ChildProcess child(command);
  return waitForEnd(child);
}

/// The error that starting the command gives.
CommandError failureOf(const std::vector<std::string>& command) {
  try {
    const ChildProcess child(command);
  } catch (const CommandError& error) {
    return error;
  }
  ADD_FAILURE() << "started";
  return {"", 0};
}

TEST(ChildProcess, TheExitStatusIsTheCommands) {
  EXPECT_EQ(0, statusOf({"true"}));
  EXPECT_EQ(3, statusOf({"sh", "-c", "exit 3"}));
  EXPECT_EQ(255, statusOf({"sh", "-c", "exit 255"}));
}

TEST(ChildProcess, ASignalGives128AndItsNumber) {
  EXPECT_EQ(128 + SIGKILL, statusOf({"sh", "-c", "kill -KILL $$"}));
  EXPECT_EQ(128 + SIGTERM, statusOf({"sh", "-c", "kill -TERM $$"}));
}

TEST(ChildProcess, ACommandThatHasEndedIsInProcfsUntilItIsDestroyed) {
  std::string path;
  {
    ChildProcess child({"true"});
    waitForEnd(child);
    path = "/proc/" + std::to_string(child.pid()) + "/stat";
    EXPECT_THAT(readText(path).value_or(""), testing::HasSubstr("(true) Z "));
  }
  EXPECT_EQ(std::nullopt, readText(path));
}

TEST(ChildProcess, ArgumentsArriveAsTheyAre) {
  EXPECT_EQ(0, statusOf({"sh", "-c", "test \"$1\" = 'a  b' && test -z \"$2\" && test $# = 2", "sh",
                         "a  b", ""}));
}

TEST(ChildProcess, VariablesAreSetAndLeftOutAsTold) {
  ASSERT_EQ(0, ::setenv("QM_TEST_KEPT", "kept", 1));
  ASSERT_EQ(0, ::setenv("QM_TEST_GONE", "gone", 1));
  ASSERT_EQ(0, ::setenv("QM_TEST_NEW", "old", 1));
  ChildProcess child({"sh", "-c",
                      "test \"$QM_TEST_KEPT\" = kept && test -z \"${QM_TEST_GONE+x}\" && "
                      "test \"$QM_TEST_NEW\" = new"},
                     {{"QM_TEST_GONE", std::nullopt}, {"QM_TEST_NEW", "new"}});
  EXPECT_EQ(0, waitForEnd(child));
}

TEST(ChildProcess, TheLimitOfOpenFilesIsTheOneTold) {
  ChildProcess child({"sh", "-c", "test $(ulimit -S -n) = 61"}, {}, 61);
  EXPECT_EQ(0, waitForEnd(child));
}

TEST(ChildProcess, AMissingCommandIs127) {
  const CommandError error = failureOf({"no-such-command-at-all"});
  EXPECT_EQ(127, error.status());
  EXPECT_STREQ("no-such-command-at-all: cannot be run: No such file or directory", error.what());
}

TEST(ChildProcess, AnEmptyNameIs127) { EXPECT_EQ(127, failureOf({""}).status()); }

TEST(ChildProcess, AFileThatCannotBeRunIs126) {
  const TempDir directory;
  const std::string path = directory.file("plain");
  writeFile(path, "text");
  const CommandError error = failureOf({path});
  EXPECT_EQ(126, error.status());
  EXPECT_EQ(path + ": cannot be run: Permission denied", error.what());
}

TEST(ChildProcess, AFolderIs126) {
  const TempDir directory;
  EXPECT_EQ(126, failureOf({directory.path().string()}).status());
}

TEST(ChildProcess, ARunningCommandHasNoStatusAndEndsWhenTold) {
  ChildProcess child({"sleep", "1000"});
  EXPECT_EQ(std::nullopt, child.poll());
  child.terminate();
  EXPECT_EQ(128 + SIGTERM, waitForEnd(child));
  child.terminate();  // harmless once it has ended
}

TEST(ChildProcess, TheCommandStartsWithAnEmptySignalMask) {
  sigset_t terminate;
  sigset_t before;
  ::sigemptyset(&terminate);
  ::sigaddset(&terminate, SIGTERM);
  ASSERT_EQ(0, ::sigprocmask(SIG_BLOCK, &terminate, &before));
  ChildProcess child({"sleep", "1000"});
  ASSERT_EQ(0, ::sigprocmask(SIG_SETMASK, &before, nullptr));
  child.terminate();
  EXPECT_EQ(128 + SIGTERM, waitForEnd(child));
}

}  // namespace
}  // namespace qumetra::test
