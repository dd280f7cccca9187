#include "qumetra/collect/signals.h"

#include <signal.h>
#include <unistd.h>

#include <cstdlib>

#include <gtest/gtest.h>

#include "qumetra/collect/stop_signal.h"

namespace qumetra::test {
namespace {

class SignalWatchTest : public ::testing::Test {
 protected:
  StopSignal m_stop;
};

TEST_F(SignalWatchTest, FirstInterruptIsAStopRequest) {
  const SignalWatch watch(m_stop);
  EXPECT_FALSE(m_stop.stopRequested());
  EXPECT_EQ(0, watch.stopSignalNumber());
  ::raise(SIGINT);
  EXPECT_TRUE(m_stop.stopRequested());
  EXPECT_EQ(SIGINT, watch.stopSignalNumber());
}

TEST_F(SignalWatchTest, TerminationIsAStopRequestToo) {
  const SignalWatch watch(m_stop);
  ::raise(SIGTERM);
  EXPECT_TRUE(m_stop.stopRequested());
  EXPECT_EQ(SIGTERM, watch.stopSignalNumber());
}

TEST_F(SignalWatchTest, HangUpIsAStopRequestToo) {
  const SignalWatch watch(m_stop);
  ::raise(SIGHUP);
  EXPECT_TRUE(m_stop.stopRequested());
  EXPECT_EQ(SIGHUP, watch.stopSignalNumber());
}

TEST_F(SignalWatchTest, SecondHangUpLeavesAtOnce) {
  const auto leave = [this] {
    const SignalWatch watch(m_stop);
    ::raise(SIGHUP);
    ::raise(SIGHUP);
    ::_exit(0);
  };
  EXPECT_EXIT(leave(), ::testing::ExitedWithCode(128 + SIGHUP), "");
}

TEST_F(SignalWatchTest, IgnoredInterruptAndHangUpStayIgnored) {
  for (const int number : {SIGINT, SIGHUP}) {
    const auto former = ::signal(number, SIG_IGN);
    {
      const SignalWatch watch(m_stop);
      ::raise(number);
    }
    EXPECT_EQ(SIG_IGN, ::signal(number, former));
  }
  EXPECT_FALSE(m_stop.stopRequested());
}

TEST_F(SignalWatchTest, User1IsAFlushRequestAndNoStop) {
  const SignalWatch watch(m_stop);
  ::raise(SIGUSR1);
  EXPECT_TRUE(m_stop.takeFlushRequest());
  EXPECT_FALSE(m_stop.stopRequested());
}

TEST_F(SignalWatchTest, FormerActionsAreRestored) {
  ::signal(SIGUSR1, SIG_IGN);
  { const SignalWatch watch(m_stop); }
  EXPECT_EQ(SIG_IGN, ::signal(SIGUSR1, SIG_DFL));
}

TEST_F(SignalWatchTest, SecondSignalLeavesAtOnceWithLastWordsAndItsStatus) {
  const auto leave = [this] {
    SignalWatch watch(m_stop);
    watch.setLastWords("kept in /tmp/x");
    ::raise(SIGINT);
    ::raise(SIGTERM);
    ::_exit(0);
  };
  EXPECT_EXIT(leave(), ::testing::ExitedWithCode(128 + SIGTERM), "^kept in /tmp/x\n$");
}

TEST_F(SignalWatchTest, NothingIsToldWithoutLastWords) {
  const auto leave = [this] {
    const SignalWatch watch(m_stop);
    ::raise(SIGINT);
    ::raise(SIGINT);
    ::_exit(0);
  };
  EXPECT_EXIT(leave(), ::testing::ExitedWithCode(128 + SIGINT), "^$");
}

TEST_F(SignalWatchTest, LongLastWordsAreCut) {
  const auto leave = [this] {
    SignalWatch watch(m_stop);
    watch.setLastWords(std::string(10000, 'x'));
    ::raise(SIGINT);
    ::raise(SIGINT);
  };
  EXPECT_EXIT(leave(), ::testing::ExitedWithCode(128 + SIGINT), "^x+\n$");
}

TEST_F(SignalWatchTest, AbortTellsTheLastWordsAndDiesByTheSignal) {
  const auto crash = [this] {
    SignalWatch watch(m_stop);
    watch.setLastWords("kept in /tmp/x");
    std::abort();
  };
  EXPECT_EXIT(crash(), ::testing::KilledBySignal(SIGABRT), "^kept in /tmp/x\n");
}

TEST_F(SignalWatchTest, CrashSignalSentFromOutsideKillsToo) {
  const auto crash = [this] {
    SignalWatch watch(m_stop);
    watch.setLastWords("kept in /tmp/x");
    // Not what a sanitizer put in before.
    ::raise(SIGFPE);
    ::_exit(0);
  };
  ::signal(SIGFPE, SIG_DFL);
  EXPECT_EXIT(crash(), ::testing::KilledBySignal(SIGFPE), "^kept in /tmp/x\n");
}

}  // namespace
}  // namespace qumetra::test
