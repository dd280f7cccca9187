// The byte store without any directory for its file. The linker puts the function below in the
// place of the one that names the directory, since that one always names some.
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client/src/common/backing_store.h"
#include "tests/support/log_capture.h"

namespace wrapped {
std::string noDirectory() asm("__wrap__ZN3pwr22qm_temp_directory_pathB5cxx11Ev");
std::string noDirectory() { return ""; }
}  // namespace wrapped

namespace {

using testing::ElementsAre;
using testing::Pair;

TEST(BackingStoreWithoutDirectory, WarnsAndThrows) {
  const qumetra::test::LogCapture log;
  EXPECT_THROW(pwr::QMExtensibleBackingStore(4), const char*);
  EXPECT_THAT(log.warnings(), ElementsAre(Pair(2,
                                               "WARNING: couldn't prepare working directory for "
                                               "QMExtensibleBackingStore!\n")));
}

TEST(BackingStoreWithoutDirectory, WarnsAgainAtTheNextTry) {
  const qumetra::test::LogCapture log;
  EXPECT_THROW(pwr::QMExtensibleBackingStore(4), const char*);
  EXPECT_THROW(pwr::QMExtensibleBackingStore(4), const char*);
  EXPECT_EQ(log.warnings().size(), 2U);
}

}  // namespace
