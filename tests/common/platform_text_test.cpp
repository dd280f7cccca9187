#include "client/src/common/platform_text.h"

#include <array>
#include <cstring>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace pwr {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(CPUName, IsThePartBehindTheLastDashOfThePiece) {
  EXPECT_EQ(getCPUNameFromPlatformString("X,FMS=6-151-AX,Y-Z"), "AX");
  EXPECT_EQ(getCPUNameFromPlatformString("FMS=AX"), "AX");
  EXPECT_EQ(getCPUNameFromPlatformString("FMS=6-"), "");
}

TEST(CPUName, OfAnEmptyPieceIsEmpty) {
  EXPECT_EQ(getCPUNameFromPlatformString("FMS=,AX"), "");
  EXPECT_EQ(getCPUNameFromPlatformString("FMS="), "");
}

TEST(CPUName, WithoutTheMarkIsReadFromTheFourthCharacter) {
  EXPECT_EQ(getCPUNameFromPlatformString("abcdef,ghi"), "def");
  EXPECT_EQ(getCPUNameFromPlatformString("ab-d-ef"), "ef");
  EXPECT_EQ(getCPUNameFromPlatformString("abc,ef"), "");
}

TEST(CPUName, OfATextThatEndsBeforeTheFourthCharacterIsEmpty) {
  for (const char* text : {"", "a", "ab", "abc"}) {
    EXPECT_EQ(getCPUNameFromPlatformString(text), "") << text;
  }
}

TEST(SpecifierList, IsSplitAtCommas) {
  EXPECT_THAT(getSpecifierListFromPlatformString("FMS=6,,B"), ElementsAre("FMS=6", "B"));
  EXPECT_THAT(getSpecifierListFromPlatformString(""), IsEmpty());
}

/// The models of family 6 for which `belongs` is true.
template <typename Function>
std::set<int> modelsOf(Function belongs) {
  std::set<int> models;
  for (int model = 0; model < 256; ++model) {
    if (belongs(static_cast<std::uint8_t>(6), static_cast<std::uint8_t>(model))) {
      models.insert(model);
    }
    for (const std::uint8_t family : std::initializer_list<std::uint8_t>{0, 5, 7, 15, 255}) {
      EXPECT_FALSE(belongs(family, static_cast<std::uint8_t>(model))) << model;
    }
  }
  return models;
}

TEST(ProcessorModels, OfEachKindAreThese) {
  EXPECT_THAT(modelsOf(isTRV), ElementsAre(60, 63, 69, 70));
  EXPECT_THAT(modelsOf(isSprig),
              ElementsAre(55, 74, 76, 87, 90, 92, 93, 95, 101, 110, 119, 122, 134));
  EXPECT_THAT(modelsOf(isHybrid), ElementsAre(138, 151, 154, 170, 172, 183, 186, 190, 191, 215));
}

TEST(ProcessorModels, QD1IsToldByItsSteppingToo) {
  for (int stepping = 0; stepping < 256; ++stepping) {
    const auto models = modelsOf([stepping](std::uint8_t family, std::uint8_t model) {
      return isQD1(family, model, static_cast<std::uint8_t>(stepping));
    });
    EXPECT_EQ(models, stepping == 9 ? std::set<int>{92} : std::set<int>{}) << stepping;
  }
}

TEST(Cpuid, LeafZeroNamesTheMakerThatTheSystemNames) {
  std::uint32_t a = 0;
  std::uint32_t b = 0;
  std::uint32_t c = 0;
  std::uint32_t d = 0;
  getCpuid(0, a, b, c, d);
  std::array<std::uint32_t, 3> words{b, d, c};
  std::string maker(sizeof words, '\0');
  std::memcpy(maker.data(), words.data(), sizeof words);
  std::ifstream info("/proc/cpuinfo");
  const std::string known((std::istreambuf_iterator<char>(info)), {});
  EXPECT_NE(known.find(maker), std::string::npos) << maker;
  EXPECT_GT(a, 0U);
}

TEST(PCIAddress, PacksBusAndDevice) {
  EXPECT_EQ(getPCIAddress(0, 0), 0x100000f0U);
  EXPECT_EQ(getPCIAddress(1, 2), 0x100102f0U);
  EXPECT_EQ(getPCIAddress(0x1ff, 0), 0x10ff00f0U);
  EXPECT_EQ(getPCIAddress(0, 0x1ff), 0x1000fff0U);
}

TEST(FormatedPCIBDF, IsBusDeviceAndFunctionInDecimal) {
  EXPECT_EQ(getFormatedPCIBDF(0), "0:0:0");
  EXPECT_EQ(getFormatedPCIBDF(0xffff), "255:31:7");
  EXPECT_EQ(getFormatedPCIBDF(0x541f), "31:20:2");
}

}  // namespace
}  // namespace pwr
