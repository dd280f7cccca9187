// The faults of a recording that its records have together: what stands first, what stands twice.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/recording/reading.h"

namespace qumetra::test {
namespace {

TEST(FirstRecord, MustBeTheRecordings) {
  Reading reading;
  EXPECT_EQ(reading.readBytes("\n{\"text\":{}}\n"),
            "r:2: text: a record before the first; expected {\"recording\":{\"version\":1}} as the "
            "first record");
}

TEST(FirstRecord, MustHaveAKnownVersion) {
  Reading reading;
  EXPECT_EQ(reading.readBytes("{\"recording\":{\"version\":2}}\n"),
            "r:1: recording.version: unknown version 2; expected 1");
}

TEST(FirstRecord, MustHaveAVersion) {
  Reading reading;
  EXPECT_EQ(reading.readBytes("{\"recording\":{}}\n"),
            "r:1: recording: no member \"version\"; expected one");
}

TEST(FirstRecord, MustHaveNothingElse) {
  Reading reading;
  EXPECT_EQ(reading.readBytes("{\"recording\":{\"version\":1,\"tool\":\"x\"}}\n"),
            "r:1: recording.tool: an unknown member; expected none of this name");
}

TEST(FirstRecord, IsMissingInAnEmptyFile) {
  Reading reading;
  EXPECT_EQ(reading.readBytes(""),
            "r:1: the end of the file; expected {\"recording\":{\"version\":1}} as the first "
            "record");
}

TEST(FirstRecord, MayBeInterrupted) {
  Reading reading;
  EXPECT_EQ(reading.readBytes("{\"recor"), "");
  EXPECT_EQ(reading.warnings().size(), 1U);
}

TEST(SecondConfig, IsAFault) {
  Reading reading;
  EXPECT_EQ(reading.readLines({R"({"config":{}})", R"({"config":{}})"}),
            "r:3: config: a record given twice; expected it at most once");
}

TEST(LateConfig, IsAFaultBehindEveryKindOfMessage) {
  for (const char* message : {R"({"system":{}})", R"({"text":{}})", R"({"headerText":{}})",
                              R"({"idMessage":{}})", R"({"table":{}})", R"({"container":{}})",
                              R"({"flush":{"metadata":{}}})", R"({"sample":{"metric":"m"}})"}) {
    Reading reading;
    EXPECT_EQ(
        reading.readLines({R"({"metric":{"ref":"m","metricId":1}})", message, R"({"config":{}})"}),
        "r:4: config: a record behind the first message; expected it before")
        << message;
  }
}

TEST(LoneSurrogate, IsAnErrorAlsoInAWholeLastLineWithoutALineEnd) {
  Reading reading;
  EXPECT_THAT(reading.readBytes(kFirstRecord + "\n{\"text\":{\"message\":\"\\ud800\"}}"),
              ::testing::HasSubstr("r:2: a lone surrogate at byte 21"));
}

TEST(DefaultId, ThatAnEarlierObjectHasIsAFault) {
  Reading reading;
  EXPECT_THAT(
      reading.readLines({R"({"entity":{"ref":"a","id":1073741824}})", R"({"entity":{"ref":"b"}})"}),
      ::testing::HasSubstr("r:3: entity.ref: id 1073741824 is used already"));
}

}  // namespace
}  // namespace qumetra::test
