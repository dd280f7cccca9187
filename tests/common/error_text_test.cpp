#include "client/src/common/error_text.h"

#include <array>
#include <cerrno>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/log_capture.h"

namespace pwr {
namespace {

using qumetra::test::LogCapture;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr const char* kFailedCopy =
    "WARNING: SNPRINTF_S failed, when handling strerror_r returned char *, which(strerror_r) was "
    "used to get description of previous error\n";

TEST(PwStrerror, GivesTheSystemsText) {
  const LogCapture log;
  std::array<char, 64> buffer{};
  pw_strerror(ENOENT, buffer.data(), buffer.size());
  EXPECT_STREQ(buffer.data(), "No such file or directory");
  EXPECT_THAT(log.warnings(), IsEmpty());
}

TEST(PwStrerror, ATextThatJustFitsIsWhole) {
  const LogCapture log;
  std::array<char, 26> buffer{};
  pw_strerror(ENOENT, buffer.data(), buffer.size());
  EXPECT_STREQ(buffer.data(), "No such file or directory");
  EXPECT_THAT(log.warnings(), IsEmpty());
}

TEST(PwStrerror, ATextThatDoesNotFitWarnsAndLeavesAnEmptyBuffer) {
  const LogCapture log;
  std::array<char, 25> buffer{'x'};
  pw_strerror(ENOENT, buffer.data(), buffer.size());
  EXPECT_STREQ(buffer.data(), "");
  EXPECT_THAT(log.warnings(), ElementsAre(Pair(2, kFailedCopy)));
}

TEST(PwStrerror, WithoutABufferItWarnsAndWritesNothing) {
  const LogCapture log;
  pw_strerror(ENOENT, nullptr, 10);
  char untouched = 'x';
  pw_strerror(ENOENT, &untouched, 0);
  EXPECT_EQ(untouched, 'x');
  EXPECT_THAT(log.warnings(), ElementsAre(Pair(2, kFailedCopy), Pair(2, kFailedCopy)));
}

TEST(PwStrerror, KeepsErrno) {
  const LogCapture log;
  char tooSmall = 'x';
  errno = EBUSY;
  pw_strerror(99999, &tooSmall, 1);
  EXPECT_EQ(errno, EBUSY);
}

TEST(ErrorText, GivesTheSystemsText) {
  EXPECT_EQ(errorText(EACCES), "Permission denied");
  EXPECT_EQ(errorText(99999), "Unknown error 99999");
}

}  // namespace
}  // namespace pwr
