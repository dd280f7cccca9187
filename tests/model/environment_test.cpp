#include "qumetra/model/environment.h"

#include <fcntl.h>
#include <unistd.h>

#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

namespace {

using qumetra::Environment;
using qumetra::LogEvent;
using Sink = LogEvent::Sink;

using Event = std::tuple<Sink, std::optional<int>, std::string>;
using Events = std::vector<Event>;

Environment::Listener into(Events& events) {
  return [&events](const LogEvent& event) {
    events.emplace_back(event.sink, event.level, event.text);
  };
}

constexpr std::optional<int> kNoLevel = std::nullopt;

TEST(Environment, IsThePluginEnvironmentWhileItLives) {
  ASSERT_EQ(g_pluginEnvironment, nullptr);
  {
    Environment environment;
    EXPECT_EQ(g_pluginEnvironment, &environment.plugin());
  }
  EXPECT_EQ(g_pluginEnvironment, nullptr);
}

TEST(Environment, RestoresTheFormerPluginEnvironment) {
  LogSink sink(nullptr);
  PluginEnvironment former(sink, sink, sink);
  g_pluginEnvironment = &former;
  { const Environment environment; }
  EXPECT_EQ(g_pluginEnvironment, &former);
  g_pluginEnvironment = nullptr;
}

TEST(Environment, ErrorsAndWarningsGoToStandardErrorAsTheyCome) {
  Environment environment;
  testing::internal::CaptureStderr();
  environment.plugin().errorLog.log(1, "ERROR: e\n");
  environment.plugin().warningLog.log(2, "WARNING: w\n");
  environment.plugin().errorLog << 1 << "ERROR";
  environment.plugin().warningLog << 2 << "WARNING"
                                  << ": " << 'x';
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "ERROR: e\nWARNING: w\n1ERROR2WARNING: x");
}

TEST(Environment, QuietTextGoesToTheListenerOnly) {
  Environment environment;
  Events events;
  environment.setListener(into(events));
  testing::internal::CaptureStderr();
  environment.plugin().quietLog << "quiet " << 7 << "\n";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(events, (Events{{Sink::Quiet, kNoLevel, "quiet 7"}}));
}

TEST(Environment, ListenerGetsEachLogCallWholeWithSinkAndLevel) {
  Environment environment;
  Events events;
  environment.setListener(into(events));
  environment.plugin().errorLog.log(1, "ERROR: two\nlines\n");
  environment.plugin().warningLog.log(0, "Note: n\n");
  EXPECT_EQ(events,
            (Events{{Sink::Error, 1, "ERROR: two\nlines\n"}, {Sink::Warning, 0, "Note: n\n"}}));
}

TEST(Environment, ListenerGetsInsertedTextLineByLineWithoutLevel) {
  Environment environment;
  Events events;
  environment.setListener(into(events));
  environment.plugin().warningLog << 2 << "WARNING"
                                  << ": "
                                  << "one\n\ntw";
  EXPECT_EQ(events,
            (Events{{Sink::Warning, kNoLevel, "2WARNING: one"}, {Sink::Warning, kNoLevel, ""}}));
  environment.plugin().warningLog << 'o' << '\n';
  EXPECT_EQ(events.back(), Event(Sink::Warning, kNoLevel, "two"));
}

TEST(Environment, LinesOfDifferentSinksDoNotMix) {
  Environment environment;
  Events events;
  environment.setListener(into(events));
  environment.plugin().errorLog << "err";
  environment.plugin().warningLog << "warn";
  environment.plugin().errorLog << "or\n";
  environment.plugin().warningLog << "ing\n";
  EXPECT_EQ(events,
            (Events{{Sink::Error, kNoLevel, "error"}, {Sink::Warning, kNoLevel, "warning"}}));
}

TEST(Environment, FinishLinesGivesWhatHasNoLineEndOnce) {
  Environment environment;
  Events events;
  environment.setListener(into(events));
  environment.plugin().errorLog << "open";
  EXPECT_EQ(events, Events{});
  environment.finishLines();
  environment.finishLines();
  EXPECT_EQ(events, (Events{{Sink::Error, kNoLevel, "open"}}));
}

TEST(Environment, EndGivesWhatHasNoLineEnd) {
  Events events;
  {
    Environment environment;
    environment.setListener(into(events));
    environment.plugin().quietLog << "open";
  }
  EXPECT_EQ(events, (Events{{Sink::Quiet, kNoLevel, "open"}}));
}

TEST(Environment, NewListenerGetsNothingFromBefore) {
  Environment environment;
  Events former;
  Events later;
  environment.setListener(into(former));
  environment.plugin().errorLog << "before";
  environment.setListener(into(later));
  environment.plugin().errorLog << "after\n";
  EXPECT_EQ(former, (Events{{Sink::Error, kNoLevel, "before"}}));
  EXPECT_EQ(later, (Events{{Sink::Error, kNoLevel, "after"}}));
}

TEST(Environment, NullEndsTheListening) {
  Environment environment;
  Events events;
  environment.setListener(into(events));
  environment.setListener(nullptr);
  environment.plugin().errorLog.log(1, "ERROR: e\n");
  environment.plugin().errorLog << "line\n";
  EXPECT_EQ(events, Events{});
}

TEST(Environment, ErrorListenerGetsWhatComesToTheErrorSinkBesideTheOther) {
  Environment environment;
  Events all;
  Events errors;
  environment.setListener(into(all));
  environment.setErrorListener(into(errors));
  environment.plugin().errorLog.log(1, "ERROR: e\n");
  environment.plugin().warningLog.log(2, "WARNING: w\n");
  environment.plugin().errorLog << "line\n";
  EXPECT_EQ(all.size(), 3U);
  EXPECT_EQ(errors, (Events{{Sink::Error, 1, "ERROR: e\n"}, {Sink::Error, kNoLevel, "line"}}));
  environment.setErrorListener(nullptr);
  environment.plugin().errorLog.log(1, "ERROR: e\n");
  EXPECT_EQ(all.size(), 4U);
  EXPECT_EQ(errors.size(), 2U);
}

TEST(Environment, HiddenErrorsAreHeardByTheErrorListenerOnly) {
  Environment environment;
  Events all;
  Events errors;
  environment.setListener(into(all));
  environment.setErrorListener(into(errors));
  environment.hideErrors();
  testing::internal::CaptureStderr();
  environment.plugin().errorLog.log(1, "ERROR: e\n");
  environment.plugin().errorLog << "line\n";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(all, Events{});
  EXPECT_EQ(errors.size(), 2U);
}

TEST(Environment, WhatIsNoErrorShowsWhereErrorsAreHidden) {
  Environment environment;
  environment.hideErrors();
  testing::internal::CaptureStderr();
  environment.plugin().errorLog.log(0, "FATAL: f\n");
  environment.plugin().warningLog.log(0, "Note: n\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "FATAL: f\nNote: n\n");
}

TEST(Environment, StandardErrorThatTakesNothingIsNoFailure) {
  Environment environment;
  Events events;
  environment.setListener(into(events));
  const int kept = ::dup(STDERR_FILENO);
  const int full = ::open("/dev/full", O_WRONLY);
  ASSERT_GE(::dup2(full, STDERR_FILENO), 0);
  environment.plugin().errorLog.log(1, "ERROR: e\n");
  environment.plugin().errorLog << "line\n";
  ::dup2(kept, STDERR_FILENO);
  ::close(full);
  ::close(kept);
  EXPECT_TRUE(environment.plugin().errorLog.good());
  EXPECT_EQ(events, (Events{{Sink::Error, 1, "ERROR: e\n"}, {Sink::Error, kNoLevel, "line"}}));
}

TEST(Environment, SinksAreGoodStreamsAlsoAfterEmptyTexts) {
  Environment environment;
  environment.plugin().errorLog.log(1, "");
  environment.plugin().quietLog << "" << std::flush;
  EXPECT_TRUE(environment.plugin().errorLog.good());
  EXPECT_TRUE(environment.plugin().quietLog.good());
}

}  // namespace
