#include "qumetra/run/resource_limits.h"

#include <sys/resource.h>

#include <gtest/gtest.h>

namespace qumetra::test {
namespace {

TEST(ResourceLimits, LimitOfOpenFilesIsRaisedToTheHardLimit) {
  rlimit limit{};
  ASSERT_EQ(0, ::getrlimit(RLIMIT_NOFILE, &limit));
  const rlimit lowered{64, limit.rlim_max};
  ASSERT_EQ(0, ::setrlimit(RLIMIT_NOFILE, &lowered));
  EXPECT_EQ(limit.rlim_max, raiseOpenFileLimit());
  ASSERT_EQ(0, ::getrlimit(RLIMIT_NOFILE, &limit));
  EXPECT_EQ(limit.rlim_max, limit.rlim_cur);
}

}  // namespace
}  // namespace qumetra::test
