#include "qumetra/run/run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qumetra/run/call_log.h"
#include "qumetra/run/writer_library.h"
#include "tests/run/fake_library.h"
#include "tests/support/log_capture.h"

namespace qumetra::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

/// In a fixture, the plain name is GoogleTest's.
using WriterRun = Run;

/// A run of some of the fake writers.
class RunTest : public ::testing::Test {
 protected:
  /// Makes the run and forgets the calls before it.
  WriterRun& make(const std::vector<std::string>& writers, bool continuous = false) {
    m_run = std::make_unique<WriterRun>(
        m_library, RunOptions{.writers = writers, .base = "out/x", .continuous = continuous});
    fakeCalls().clear();
    return *m_run;
  }
  /// The same, started, with the calls of `init` forgotten.
  WriterRun& started(const std::vector<std::string>& writers, bool continuous = false) {
    make(writers, continuous).start();
    fakeCalls().clear();
    return *m_run;
  }

  pwr::SystemMessage systemMessage() {
    m_metadata.m_hostName = "host";
    m_metadata.m_firstTimestamp = 42;
    pwr::SystemMessage message;
    message.m_metadata = &m_metadata;
    return message;
  }

  LogCapture m_log;
  pwr::SystemMetadata m_metadata;
  WriterLibrary m_library{QM_FAKE_WRITERS};
  std::unique_ptr<WriterRun> m_run;
};

TEST_F(RunTest, UnknownWriterNameListsTheKnownOnes) {
  try {
    make({"first", "wrong"});
    FAIL() << "no error";
  } catch (const RunError& error) {
    EXPECT_STREQ(
        "unknown writer \"wrong\"; known are first, badinit, badfini, throws, throwsptr, logs, "
        "last, and all for every one",
        error.what());
  }
}

TEST_F(RunTest, EmptyWriterNameIsUnknown) { EXPECT_THROW(make({""}), RunError); }

TEST_F(RunTest, AllStandsForEveryWriterOnce) {
  EXPECT_THAT(make({"last", "all", "first"}).writerNames(),
              ElementsAre("first", "badinit", "badfini", "throws", "throwsptr", "logs", "last"));
}

TEST_F(RunTest, OrderIsTheLibrarysAndDuplicatesCollapse) {
  EXPECT_THAT(make({"last", "first", "last"}).writerNames(), ElementsAre("first", "last"));
}

TEST_F(RunTest, InitGetsBaseAndContinuousModeInOrder) {
  make({"last", "first"}, true).start();
  EXPECT_THAT(fakeCalls(), ElementsAre("first.init(out/x,true)", "last.init(out/x,true)"));
}

TEST_F(RunTest, StartTwiceStartsTheWritersOnce) {
  WriterRun& run = make({"first"});
  run.start();
  run.start();
  EXPECT_THAT(fakeCalls(), ElementsAre("first.init(out/x,false)"));
}

TEST_F(RunTest, FirstMessageStartsARunThatWasNotStarted) {
  make({"first"}).system(systemMessage());
  EXPECT_THAT(fakeCalls(),
              ElementsAre("first.init(out/x,false)", "first.reset(0,42,host)", "first.system"));
}

TEST_F(RunTest, EveryWriterGetsAMessageBeforeTheNextMessage) {
  WriterRun& run = started({"first", "last"});
  run.sample(pwr::Metric());
  run.table(pwr::TableMessage());
  EXPECT_THAT(fakeCalls(), ElementsAre("first.sample", "last.sample", "first.table", "last.table"));
}

TEST_F(RunTest, EveryKindOfMessageReachesItsOverload) {
  WriterRun& run = started({"first"});
  pwr::HeaderTextMessage header;
  header.setMessage("head");
  run.text(header);
  run.id(pwr::IdMessage());
  run.container(pwr::MetricContainerInfoMessage());
  EXPECT_THAT(fakeCalls(), ElementsAre("first.text(head)", "first.id", "first.container"));
}

TEST_F(RunTest, WritersAreResetJustBeforeTheFirstSystemMessageOnly) {
  WriterRun& run = started({"first"});
  run.system(systemMessage());
  run.system(systemMessage());
  EXPECT_THAT(fakeCalls(), ElementsAre("first.reset(0,42,host)", "first.system", "first.system"));
}

TEST_F(RunTest, RefusedResetIsAProblemAndTheRunGoesOn) {
  WriterRun& run = started({"throws"});
  run.system(systemMessage());
  EXPECT_THAT(run.problems(), ElementsAre("writer throws: reset was refused"));
  EXPECT_THAT(fakeCalls(), ElementsAre("throws.system"));
  EXPECT_EQ(0, run.finish());
}

TEST_F(RunTest, SystemMessageWithoutMetadataResetsNothing) {
  WriterRun& run = started({"first"});
  run.system(pwr::SystemMessage());
  EXPECT_THAT(fakeCalls(), ElementsAre("first.system"));
}

TEST_F(RunTest, TelemetryDeviceResetIsToldAtOnce) {
  WriterRun& run = started({"first"});
  run.telemetryDeviceReset(3, 99, m_metadata);
  EXPECT_THAT(fakeCalls(), ElementsAre("first.pmtDevReset(3,99)"));
}

TEST_F(RunTest, FlushIsSkippedUnlessTheRunIsContinuous) {
  started({"first"}).flush(m_metadata);
  EXPECT_THAT(fakeCalls(), IsEmpty());
}

TEST_F(RunTest, FlushReachesEveryWriterOfAContinuousRun) {
  WriterRun& run = started({"first", "last"}, true);
  run.flush(m_metadata);
  EXPECT_THAT(fakeCalls(), ElementsAre("first.flush", "last.flush"));
}

TEST_F(RunTest, ResultsOfMessagesAndFlushesDoNotAlterTheRun) {
  WriterRun& run = started({"logs"}, true);
  run.text(pwr::TextMessage());
  run.flush(m_metadata);
  EXPECT_EQ(0, run.finish());
  EXPECT_THAT(run.problems(), IsEmpty());
}

TEST_F(RunTest, WriterWhoseInitFailedGetsItsFiniOnly) {
  WriterRun& run = make({"badinit"}, true);
  EXPECT_EQ(1, run.start());
  run.system(systemMessage());
  run.sample(pwr::Metric());
  run.flush(m_metadata);
  run.telemetryDeviceReset(0, 0, m_metadata);
  EXPECT_EQ(1, run.finish());
  EXPECT_THAT(fakeCalls(), ElementsAre("badinit.init(out/x,true)", "badinit.fini"));
  EXPECT_THAT(run.problems(), ElementsAre("writer badinit: init failed"));
}

TEST_F(RunTest, FailedInitOfOneWriterLeavesTheOthersAlone) {
  WriterRun& run = started({"all"});
  run.sample(pwr::Metric());
  EXPECT_THAT(fakeCalls(), Contains("last.sample"));
  EXPECT_THAT(fakeCalls(), Not(Contains("badinit.sample")));
}

TEST_F(RunTest, FailedFiniIsTheStatusAndTheOtherWritersAreFinishedToo) {
  WriterRun& run = started({"badfini", "last"});
  EXPECT_EQ(1, run.finish());
  EXPECT_THAT(fakeCalls(), ElementsAre("badfini.fini", "last.fini"));
  EXPECT_THAT(run.problems(), ElementsAre("writer badfini: fini failed"));
}

TEST_F(RunTest, FinishTwiceFinishesTheWritersOnce) {
  WriterRun& run = started({"badfini"});
  run.finish();
  EXPECT_EQ(1, run.finish());
  EXPECT_THAT(fakeCalls(), ElementsAre("badfini.fini"));
}

TEST_F(RunTest, FinishWithoutStartCallsNothing) {
  EXPECT_EQ(0, make({"badfini"}).finish());
  EXPECT_THAT(fakeCalls(), IsEmpty());
}

TEST_F(RunTest, RunThatGoesAwayIsFinished) {
  started({"first"});
  m_run.reset();
  EXPECT_THAT(fakeCalls(), ElementsAre("first.fini"));
}

TEST_F(RunTest, ThrownExceptionIsToldOnceAndTheOthersGetTheMessage) {
  WriterRun& run = started({"throws", "last"});
  run.sample(pwr::Metric());
  run.sample(pwr::Metric());
  EXPECT_THAT(fakeCalls(), ElementsAre("last.sample", "last.sample"));
  EXPECT_THAT(run.problems(), ElementsAre("writer throws: sample threw: no room"));
  EXPECT_EQ(0, run.finish());
}

TEST_F(RunTest, ThrownCharacterPointerInFiniIsAFailure) {
  WriterRun& run = started({"throwsptr"});
  EXPECT_EQ(1, run.finish());
  EXPECT_THAT(run.problems(), ElementsAre("writer throwsptr: fini threw: store failed",
                                          "writer throwsptr: fini failed"));
}

TEST_F(RunTest, ThrownNumberIsCaughtToo) {
  WriterRun& run = started({"throwsptr"});
  run.sample(pwr::Metric());
  EXPECT_THAT(run.problems(), ElementsAre("writer throwsptr: sample threw: something that has no "
                                          "text"));
}

TEST_F(RunTest, CountsSamplesOncePerMessage) {
  WriterRun& run = started({"first", "last"});
  run.sample(pwr::Metric());
  run.sample(pwr::Metric());
  EXPECT_EQ(2U, run.samplesDelivered());
}

TEST_F(RunTest, ResultFilesAreBaseAndSuffix) {
  const std::vector<OutputFile> files = make({"first", "last"}).resultFiles();
  ASSERT_EQ(2U, files.size());
  EXPECT_EQ("out/x.first", files[0].path);
  EXPECT_EQ("out/x.last", files[1].path);
}

}  // namespace
}  // namespace qumetra::test
