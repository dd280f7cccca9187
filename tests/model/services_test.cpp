#include "host/services.h"

#include <gtest/gtest.h>

namespace {

TEST(PwSnprintf, TextIsCutAtTheSizeLessOne) {
  char buffer[] = "xxxxxxxx";
  EXPECT_EQ(pw_snprintf(buffer, 4, "%s-%d", "ab", 17), 5);
  EXPECT_STREQ(buffer, "ab-");
  EXPECT_EQ(buffer[4], 'x');
}

TEST(PwSnprintf, TextThatFitsIsWhole) {
  char buffer[8];
  EXPECT_EQ(pw_snprintf(buffer, sizeof buffer, "%d", 17), 2);
  EXPECT_STREQ(buffer, "17");
}

TEST(PwSnprintf, SizeZeroWritesNothing) {
  char buffer[] = "x";
  EXPECT_EQ(pw_snprintf(buffer, 0, "%d", 17), 2);
  EXPECT_STREQ(buffer, "x");
}

TEST(PwStrncpy, TextIsCutAtTheSizeLessOne) {
  char buffer[] = "xxxxxxxx";
  EXPECT_EQ(pw_strncpy(buffer, "abcdef", 4), buffer);
  EXPECT_STREQ(buffer, "abc");
  EXPECT_EQ(buffer[4], 'x');
}

TEST(PwStrncpy, ShortTextEndsWithOneZeroByte) {
  char buffer[] = "xxxxxxxx";
  pw_strncpy(buffer, "ab", sizeof buffer);
  EXPECT_STREQ(buffer, "ab");
  EXPECT_EQ(buffer[3], 'x');
}

TEST(PwStrncpy, SourceIsNotReadBehindTheSize) {
  const char source[] = {'a', 'b', 'c'};
  char buffer[3];
  pw_strncpy(buffer, source, sizeof buffer);
  EXPECT_STREQ(buffer, "ab");
}

TEST(PwStrncpy, SizesZeroAndOneHoldNoText) {
  char buffer[] = "xy";
  pw_strncpy(buffer, "ab", 0);
  EXPECT_STREQ(buffer, "xy");
  pw_strncpy(buffer, "ab", 1);
  EXPECT_STREQ(buffer, "");
}

TEST(ResolveEntityName, DeviceGoesBeforeTheName) {
  EXPECT_EQ(pwr::resolveEntityName("name", "device", "tag"), "device");
}

TEST(ResolveEntityName, WithoutADeviceItIsTheName) {
  EXPECT_EQ(pwr::resolveEntityName("name", "", "tag"), "name");
}

}  // namespace
