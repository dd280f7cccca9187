
#include <gtest/gtest.h>

#include "host/environment.h"

namespace {

/// Keeps what arrives, and counts how often everything before was to be brought through.
class CountingBuffer : public std::stringbuf {
 public:
  int syncs = 0;

 protected:
  int sync() override {
    ++syncs;
    return 0;
  }
};

TEST(LogSink, LogWritesTheTextToTheStreamWhateverTheLevel) {
  std::stringbuf target;
  LogSink sink(&target);
  sink.log(LogSink::kNote, "note\n");
  sink.log(LogSink::kError, "error\n");
  sink.log(LogSink::kWarning, "warning\n");
  EXPECT_EQ(target.str(), "note\nerror\nwarning\n");
}

TEST(LogSink, LogBringsTheTextThroughAtOnce) {
  CountingBuffer target;
  LogSink sink(&target);
  sink.log(LogSink::kNote, "note\n");
  EXPECT_EQ(target.syncs, 1);
}

TEST(LogSink, InsertedTextGoesToTheStream) {
  std::stringbuf target;
  LogSink sink(&target);
  sink << 2 << "WARNING"
       << ": ";
  EXPECT_EQ(target.str(), "2WARNING: ");
}

TEST(LogSink, SinkWithoutATargetTakesEverythingAndDoesNotFail) {
  LogSink sink(nullptr);
  sink.log(LogSink::kError, "error\n");
  sink << "inserted " << 17 << std::endl;
  EXPECT_TRUE(sink.good());
}

}  // namespace
