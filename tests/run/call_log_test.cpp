#include "qumetra/run/call_log.h"

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qumetra/model/environment.h"
#include "qumetra/run/run.h"
#include "qumetra/run/writer_library.h"
#include "tests/support/temp_dir.h"

namespace qumetra::test {
namespace {

/// In a fixture, the plain name is GoogleTest's.
using WriterRun = Run;

class CallLogTest : public ::testing::Test {
 protected:
  std::string content() const { return readFile(m_path); }

  TempDir m_directory;
  std::string m_path = m_directory.file("calls.jsonl");
  Environment m_environment;
};

/// What the log says of one call that succeeded.
std::string line(const std::string& writer, const std::string& call) {
  return R"({"writer":")" + writer + R"(","call":")" + call + R"(","status":0})" + '\n';
}

TEST_F(CallLogTest, TouchesNothingBeforeItIsStarted) {
  CallLog log(m_path);
  log.call("sum", "init", 0);
  EXPECT_FALSE(std::filesystem::exists(m_path));
}

TEST_F(CallLogTest, WritesOneObjectPerCall) {
  CallLog log(m_path);
  log.start(m_environment);
  log.call("sum", "init", 0);
  log.call("phm-csv", "sample", 1);
  EXPECT_EQ(R"({"writer":"sum","call":"init","status":0})"
            "\n"
            R"({"writer":"phm-csv","call":"sample","status":1})"
            "\n",
            content());
}

TEST_F(CallLogTest, EachLineIsInTheFileWhenTheCallReturns) {
  CallLog log(m_path);
  log.start(m_environment);
  log.call("sum", "init", 0);
  EXPECT_EQ(line("sum", "init"), content());
}

TEST_F(CallLogTest, TruncatesAnOlderLog) {
  writeFile(m_path, "old\n");
  CallLog log(m_path);
  log.start(m_environment);
  EXPECT_EQ("", content());
}

TEST_F(CallLogTest, LogCallHasSinkLevelAndWholeText) {
  CallLog log(m_path);
  log.start(m_environment);
  m_environment.plugin().errorLog.log(LogSink::kError, "ERROR: \"x\"\n");
  m_environment.plugin().warningLog.log(LogSink::kNote, "Note\n");
  EXPECT_EQ(R"({"log":{"sink":"error","level":1,"text":"ERROR: \"x\"\n"}})"
            "\n"
            R"({"log":{"sink":"warning","level":0,"text":"Note\n"}})"
            "\n",
            content());
}

TEST_F(CallLogTest, InsertedTextComesByLineWithTheLevelNull) {
  CallLog log(m_path);
  log.start(m_environment);
  m_environment.plugin().quietLog << "half";
  EXPECT_EQ("", content());
  m_environment.plugin().quietLog << " line\n";
  EXPECT_EQ(R"({"log":{"sink":"quiet","level":null,"text":"half line"}})"
            "\n",
            content());
}

TEST_F(CallLogTest, UnfinishedLineComesAtTheEnd) {
  CallLog log(m_path);
  log.start(m_environment);
  m_environment.plugin().quietLog << "half";
  EXPECT_EQ("", log.close());
  EXPECT_EQ(R"({"log":{"sink":"quiet","level":null,"text":"half"}})"
            "\n",
            content());
}

TEST_F(CallLogTest, NothingIsTakenAfterTheEnd) {
  CallLog log(m_path);
  log.start(m_environment);
  log.close();
  m_environment.plugin().quietLog << "late\n";
  log.call("sum", "fini", 0);
  EXPECT_EQ("", content());
}

TEST_F(CallLogTest, FileThatCannotBeMadeIsTheError) {
  CallLog log("/proc/calls.jsonl");
  log.start(m_environment);
  EXPECT_EQ("/proc/calls.jsonl: No such file or directory", log.error());
  EXPECT_EQ(log.error(), log.close());
}

TEST_F(CallLogTest, FailureToWriteSticks) {
  CallLog log("/dev/full");
  log.start(m_environment);
  log.call("sum", "init", 0);
  log.call("sum", "fini", 0);
  EXPECT_EQ("/dev/full: No space left on device", log.error());
  EXPECT_EQ("/dev/full: No space left on device", log.close());
}

TEST_F(CallLogTest, WhatACallLogsStandsBeforeTheCallItself) {
  WriterLibrary library(QM_FAKE_WRITERS);
  CallLog log(m_path);
  WriterRun run(library, {.writers = {"logs"}, .base = "x"}, &log);
  run.start();
  log.start(m_environment);
  run.text(pwr::TextMessage());
  log.close();
  EXPECT_EQ(R"({"log":{"sink":"error","level":1,"text":"ERROR: \udcff\n"}})"
            "\n"
            R"({"log":{"sink":"warning","level":null,"text":"2WARNING: half line"}})"
            "\n"
            R"({"log":{"sink":"quiet","level":null,"text":"quiet"}})"
            "\n"
            R"({"writer":"logs","call":"text","status":1})"
            "\n",
            content());
}

TEST_F(CallLogTest, NamesEveryCallThatAWriterGetsInOrder) {
  WriterLibrary library(QM_FAKE_WRITERS);
  CallLog log(m_path);
  log.start(m_environment);
  WriterRun run(library, {.writers = {"first"}, .base = "x", .continuous = true}, &log);
  pwr::SystemMetadata metadata;
  pwr::SystemMessage system;
  system.m_metadata = &metadata;
  run.start();
  run.system(system);
  run.text(pwr::TextMessage());
  run.text(pwr::HeaderTextMessage());
  run.id(pwr::IdMessage());
  run.sample(pwr::Metric());
  run.table(pwr::TableMessage());
  run.container(pwr::MetricContainerInfoMessage());
  run.finish();
  EXPECT_EQ(line("first", "init") + line("first", "system") + line("first", "text") +
                line("first", "headerText") + line("first", "idMessage") + line("first", "sample") +
                line("first", "table") + line("first", "container") + line("first", "fini"),
            content());
}

TEST_F(CallLogTest, FlushHasItsResultAsStatus) {
  WriterLibrary library(QM_FAKE_WRITERS);
  CallLog log(m_path);
  WriterRun run(library, {.writers = {"first"}, .base = "x", .continuous = true}, &log);
  run.start();
  log.start(m_environment);
  run.flush(pwr::SystemMetadata());
  EXPECT_EQ(R"({"writer":"first","call":"flush","status":1})"
            "\n",
            content());
}

TEST_F(CallLogTest, CallThatThrewHasStatusOne) {
  WriterLibrary library(QM_FAKE_WRITERS);
  CallLog log(m_path);
  WriterRun run(library, {.writers = {"throws"}, .base = "x"}, &log);
  run.start();
  log.start(m_environment);
  run.sample(pwr::Metric());
  EXPECT_EQ(R"({"writer":"throws","call":"sample","status":1})"
            "\n",
            content());
}

TEST_F(CallLogTest, FailedInitIsFollowedByFiniOnly) {
  WriterLibrary library(QM_FAKE_WRITERS);
  CallLog log(m_path);
  log.start(m_environment);
  WriterRun run(library, {.writers = {"badinit"}, .base = "x"}, &log);
  run.start();
  run.sample(pwr::Metric());
  run.finish();
  EXPECT_EQ(R"({"writer":"badinit","call":"init","status":1})"
            "\n" +
                line("badinit", "fini"),
            content());
}

}  // namespace
}  // namespace qumetra::test
