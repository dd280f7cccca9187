#include "client/src/common/timer.h"

#include <chrono>
#include <thread>

#include <gtest/gtest.h>

namespace pwr {
namespace {

TEST(Timer, StoresMicrosecondsAtItsEnd) {
  double micros = -1;
  {
    const Timer timer(&micros);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(micros, -1);
  }
  EXPECT_GE(micros, 19'000);
  EXPECT_LT(micros, 20'000'000);
}

TEST(Timer, StartedAnewItMeasuresFromThereIntoItsNewResult) {
  double former = -1;
  double micros = -1;
  {
    Timer timer(&former);
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    timer.init_i("label", &micros);
  }
  EXPECT_EQ(former, -1);
  EXPECT_GE(micros, 0);
  EXPECT_LT(micros, 400'000);
}

TEST(Timer, NeedsNoResult) {
  const Timer labelled("label");
  const Timer withoutResult(static_cast<double*>(nullptr));
}

}  // namespace
}  // namespace pwr
