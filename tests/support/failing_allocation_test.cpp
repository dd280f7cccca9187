#include "tests/support/failing_allocation.h"

#include <future>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/logger.h"
#include "tests/support/log_capture.h"

namespace qumetra::test {
namespace {

/// Called by name: an allocation that nobody uses may be left out, one by call may not.
void allocate() { ::operator delete(::operator new(100)); }

TEST(FailingAllocation, FailsOnceBehindTheOnesItLetsPass) {
  const FailingAllocation failing(2);
  EXPECT_NO_THROW(allocate());
  EXPECT_NO_THROW(allocate());
  EXPECT_FALSE(failing.happened());
  EXPECT_THROW(allocate(), std::bad_alloc);
  EXPECT_TRUE(failing.happened());
  EXPECT_NO_THROW(allocate());
}

TEST(FailingAllocation, NothrowFormReturnsNull) {
  const FailingAllocation failing(0);
  EXPECT_EQ(::operator new(100, std::nothrow), nullptr);
  EXPECT_TRUE(failing.happened());
}

TEST(FailingAllocation, EndsWithItsLife) {
  { const FailingAllocation failing(0); }
  EXPECT_NO_THROW(allocate());
}

TEST(FailingAllocation, SharedLibrariesFailToo) {
  const LogCapture log;
  const std::string name(100, 'n');
  const FailingAllocation failing(0);
  EXPECT_THROW(static_cast<void>(g_pluginEnvironment->getFileOutputHandle(name.c_str())),
               std::bad_alloc);
}

TEST(FailingAllocation, OtherThreadsAreLeftAlone) {
  std::promise<void> armed;
  std::future<void> other = std::async(std::launch::async, [start = armed.get_future().share()] {
    start.wait();
    allocate();
  });
  const FailingAllocation failing(0);
  armed.set_value();
  EXPECT_NO_THROW(other.get());
  EXPECT_FALSE(failing.happened());
}

TEST(FailingAllocation, EveryOneOfAnActionFailsOnce) {
  int done = 0;
  std::vector<int> doneBeforeFailure;
  const auto action = [&done] {
    try {
      for (done = 0; done < 2; ++done) {
        allocate();
      }
    } catch (const std::bad_alloc&) {
    }
  };
  std::vector<bool> failures;
  failEachAllocation([&done] { done = 7; }, action,
                     [&](bool failed) {
                       failures.push_back(failed);
                       doneBeforeFailure.push_back(done);
                     });
  EXPECT_EQ(doneBeforeFailure, (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(failures, (std::vector<bool>{true, true, false}));
}

}  // namespace
}  // namespace qumetra::test
