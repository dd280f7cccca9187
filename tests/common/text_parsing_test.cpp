#include "client/src/common/text_parsing.h"

#include <stdlib.h>

#include <limits>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/log_capture.h"

namespace pwr {
namespace {

using qumetra::test::LogCapture;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr const char* kVariable = "QUMETRA_TEST_SWITCH";

bool switchedBy(const char* value) {
  ::setenv(kVariable, value, 1);
  const bool isOn = check_env(kVariable);
  ::unsetenv(kVariable);
  return isOn;
}

TEST(CheckEnv, IsTrueForTheSingleLetterOnly) {
  EXPECT_TRUE(switchedBy("Y"));
  EXPECT_TRUE(switchedBy("y"));
}

TEST(CheckEnv, IsFalseForAnythingElse) {
  for (const char* value : {"Yes", "yy", "Y ", " Y", "1", "0", "n", "true", ""}) {
    EXPECT_FALSE(switchedBy(value)) << value;
  }
}

TEST(CheckEnv, IsFalseForAnUnsetName) {
  ::unsetenv(kVariable);
  EXPECT_FALSE(check_env(kVariable));
}

TEST(CheckEnv, ANullNameIsAWarning) {
  const LogCapture log;
  EXPECT_FALSE(check_env(nullptr));
  EXPECT_THAT(log.warnings(), ElementsAre(Pair(2, "WARNING: NULL name passed to check_env!\n")));
}

TEST(GetRequiredToken, CountsFromOneToTheLast) {
  const LogCapture log;
  EXPECT_EQ(get_required_token("a b c", 1, 3), "a");
  EXPECT_EQ(get_required_token("a b c", 3, 3), "c");
  EXPECT_EQ(get_required_token("a,b", 2, 2, ","), "b");
  EXPECT_THAT(log.warnings(), IsEmpty());
}

TEST(GetRequiredToken, AnIndexAboveTheNumberExpectedIsAWarning) {
  const LogCapture log;
  EXPECT_EQ(get_required_token("a b c", 4, 3), "");
  EXPECT_THAT(log.warnings(), ElementsAre(Pair(2, "WARNING: tok_num = 4, max_num_toks = 3\n")));
}

TEST(GetRequiredToken, AnIndexBelowOneIsAWarningToo) {
  const LogCapture log;
  EXPECT_EQ(get_required_token("a b c", 0, 3), "");
  EXPECT_EQ(get_required_token("a b c", -1, 3), "");
  EXPECT_EQ(get_required_token("", 0, 0), "");
  EXPECT_THAT(log.warnings(), ElementsAre(Pair(2, "WARNING: tok_num = 0, max_num_toks = 3\n"),
                                          Pair(2, "WARNING: tok_num = -1, max_num_toks = 3\n"),
                                          Pair(2, "WARNING: tok_num = 0, max_num_toks = 0\n")));
}

TEST(GetRequiredToken, AnotherNumberOfTokensIsAWarning) {
  const LogCapture log;
  EXPECT_EQ(get_required_token("a b", 1, 3), "");
  EXPECT_EQ(get_required_token("a b c d", 1, 3), "");
  EXPECT_THAT(log.warnings(), ElementsAre(Pair(2, "WARNING: invalid # toks = 2 (expected 3)\n"),
                                          Pair(2, "WARNING: invalid # toks = 4 (expected 3)\n")));
}

TEST(GetNextToken, CutsAtTheFirstDelimiter) {
  std::string rest = "a::b::";
  std::string token;
  EXPECT_EQ(getNextToken(token, rest, "::", false), 0);
  EXPECT_EQ(token, "a");
  EXPECT_EQ(rest, "b::");
  EXPECT_EQ(getNextToken(token, rest, "::", true), 0);
  EXPECT_EQ(token, "b");
  EXPECT_EQ(rest, "");
}

TEST(GetNextToken, WithoutADelimiterTakesAll) {
  std::string rest = "abc";
  std::string token;
  EXPECT_EQ(getNextToken(token, rest, ",", false), 0);
  EXPECT_EQ(token, "abc");
  EXPECT_EQ(rest, "");
}

TEST(GetNextToken, OfNothingIsAllOnesAndKeepsTheToken) {
  std::string rest;
  std::string token = "old";
  EXPECT_EQ(getNextToken(token, rest, ",", false), -1);
  EXPECT_EQ(token, "old");
}

TEST(GetNextToken, AnEmptyDelimiterIsNowhereSoThatWalksEnd) {
  std::string rest = "abc";
  std::string token;
  EXPECT_EQ(getNextToken(token, rest, "", false), 0);
  EXPECT_EQ(token, "abc");
  EXPECT_EQ(rest, "");
}

TEST(IsNumber, IsTrueForDecimalsFractionsHexadecimalsAndNegatives) {
  for (const char* text : {"0", "12", "1.5", ".5", "-7", "-1.5", "0x1F", "0Xab", "-0x1", "0x1.8"}) {
    EXPECT_TRUE(isNumber(text)) << text;
  }
}

TEST(IsNumber, IsTrueForPointsAloneSinceTheyAreNotCounted) {
  for (const char* text : {".", "..", "-.", "1.2.3", "0x."}) {
    EXPECT_TRUE(isNumber(text)) << text;
  }
}

TEST(IsNumber, IsFalseForTheBarePrefixWhoseLetterIsNoDigit) {
  EXPECT_FALSE(isNumber("0x"));
  EXPECT_FALSE(isNumber("0X"));
  EXPECT_FALSE(isNumber("-0x"));
}

TEST(IsNumber, IsFalseForOtherTexts) {
  for (const char* text : {"", "-", "--1", "1-", "a", "1a", "0xg", "+1", " 1", "1e5", "\xff"}) {
    EXPECT_FALSE(isNumber(text)) << text;
  }
}

TEST(ExtractNumberI, DigitsAreDecimalAndAllElseHexadecimal) {
  EXPECT_EQ(extract_number_i("10"), 10U);
  EXPECT_EQ(extract_number_i("0x10"), 16U);
  EXPECT_EQ(extract_number_i("1a"), 26U);
  EXPECT_EQ(extract_number_i("10 "), 16U);
  EXPECT_EQ(extract_number_i("0X10"), 16U);
}

TEST(ExtractNumberI, WithoutANumberIsZero) {
  EXPECT_EQ(extract_number_i(""), 0U);
  EXPECT_EQ(extract_number_i("xyz"), 0U);
}

TEST(ExtractNumberI, TooLargeIsTheLargest) {
  EXPECT_EQ(extract_number_i("99999999999999999999"), std::numeric_limits<unsigned long>::max());
}

TEST(ExtractNumber, ThePrefixMakesHexadecimal) {
  const LogCapture log;
  EXPECT_EQ(extractNumber("0x1F", false), 31U);
  EXPECT_EQ(extractNumber("0X1f", false), 31U);
  EXPECT_EQ(extractNumber("10", false), 10U);
  EXPECT_EQ(extractNumber("010", false), 10U);
  EXPECT_EQ(extractNumber("4294967295", false), 4294967295U);
  EXPECT_EQ(log.streamedWarnings(), "");
}

TEST(ExtractNumber, WithTheFlagAnyOtherCharacterMakesHexadecimalToo) {
  const LogCapture log;
  EXPECT_EQ(extractNumber("1f", true), 31U);
  EXPECT_EQ(extractNumber("10", true), 10U);
  EXPECT_EQ(extractNumber("10h", true), 16U);
  EXPECT_EQ(extractNumber("10h", false), 10U);
  EXPECT_EQ(log.streamedWarnings(), "");
}

TEST(ExtractNumber, AFailedReadIsAStreamWarningAndZero) {
  const LogCapture log;
  EXPECT_EQ(extractNumber("xyz", false), 0U);
  EXPECT_EQ(log.streamedWarnings(), "2WARNING: Failed to extract numeric value of xyz\n");
}

TEST(ExtractNumber, BelowVerbosityTwoTheTextGoesToTheQuietLog) {
  const LogCapture log(PluginEnvironment::kErrors);
  EXPECT_EQ(extractNumber("", false), 0U);
  EXPECT_EQ(log.quiet(), "Failed to extract numeric value of \n");
}

TEST(ExtractNumber, TooLargeAndTheBarePrefixAreFailedReads) {
  const LogCapture log;
  EXPECT_EQ(extractNumber("4294967296", false), 0U);
  EXPECT_EQ(extractNumber("0x", false), 0U);
  EXPECT_EQ(log.streamedWarnings(),
            "2WARNING: Failed to extract numeric value of 4294967296\n"
            "2WARNING: Failed to extract numeric value of 0x\n");
}

TEST(GetUniqueIDFor, CountsEachNameFromZero) {
  EXPECT_EQ(getUniqueIDFor("first"), 0U);
  EXPECT_EQ(getUniqueIDFor("first"), 1U);
  EXPECT_EQ(getUniqueIDFor("second"), 0U);
}

TEST(GetUniqueName, SharesItsCountersWithTheIds) {
  EXPECT_EQ(getUniqueName("shared"), "shared-0");
  EXPECT_EQ(getUniqueIDFor("shared"), 1U);
  EXPECT_EQ(getUniqueName("shared"), "shared-2");
}

TEST(CaseOfText, OnlyLettersChange) {
  EXPECT_EQ(getUpperCaseString("aZ9-\xe4"), "AZ9-\xe4");
  EXPECT_EQ(getLowerCaseString("aZ9-\xc4"), "az9-\xc4");
  EXPECT_EQ(getUpperCaseString(""), "");
}

TEST(ConvertToTitle, TheVeryFirstLetterBecomesLowerCaseAsAnyOther) {
  EXPECT_EQ(convertToTitle("CPU CORE state"), "cpu Core State");
}

TEST(ConvertToTitle, AWordFollowsABlankOnly) {
  EXPECT_EQ(convertToTitle(" a-b  c\td"), " A-b  C\td");
  EXPECT_EQ(convertToTitle(""), "");
}

TEST(GetMetricTag, IsUpperCaseWithDashes) { EXPECT_EQ(getMetricTag("a b  c_d"), "A-B--C_D"); }

TEST(GetCounterNameFromMsgTag, IsTheSecondToken) {
  EXPECT_EQ(getCounterNameFromMsgTag("a_b_c"), "b");
  EXPECT_EQ(getCounterNameFromMsgTag("_a__b"), "b");
  EXPECT_EQ(getCounterNameFromMsgTag("a_"), "");
  EXPECT_EQ(getCounterNameFromMsgTag(""), "");
}

TEST(GetCounterNameFromInitValue, IncludesTheStartMarkButNotTheEndMark) {
  EXPECT_EQ(getCounterNameFromInitValue("xNAME=a;b;", ";", "NAME="), "NAME=a");
}

TEST(GetCounterNameFromInitValue, LooksForTheEndBehindTheStartMark) {
  EXPECT_EQ(getCounterNameFromInitValue(";<a;b", ";", "<"), "<a");
  EXPECT_EQ(getCounterNameFromInitValue("#a#b", "#", "#"), "#a");
}

TEST(GetCounterNameFromInitValue, IsEmptyWithoutEitherMark) {
  EXPECT_EQ(getCounterNameFromInitValue("a;b", ";", "<"), "");
  EXPECT_EQ(getCounterNameFromInitValue("<ab", ";", "<"), "");
  EXPECT_EQ(getCounterNameFromInitValue("", ";", "<"), "");
}

struct Free {
  void operator()(char* text) const { std::free(text); }
};
using Copy = std::unique_ptr<char, Free>;

TEST(Strndup, CopiesUpToTheLength) {
  EXPECT_STREQ(Copy(pwr::strndup("abc", 2)).get(), "ab");
  EXPECT_STREQ(Copy(pwr::strndup("abc", 0)).get(), "");
  EXPECT_STREQ(Copy(qm_strndup("abc", 3)).get(), "abc");
}

TEST(Strndup, TheBlockHasTheWholeLengthThoughTheTextIsShorter) {
  const Copy copy(pwr::strndup("abc", 100));
  EXPECT_STREQ(copy.get(), "abc");
  copy.get()[100] = 'x';
  EXPECT_EQ(copy.get()[100], 'x');
}

TEST(Strndup, ANullTextIsAnEmptyOne) {
  EXPECT_STREQ(Copy(pwr::strndup(nullptr, 5)).get(), "");
  EXPECT_STREQ(Copy(qm_strndup(nullptr, 0)).get(), "");
}

TEST(Strndup, TheLargestLengthGivesNull) {
  EXPECT_EQ(pwr::strndup("abc", std::numeric_limits<std::size_t>::max()), nullptr);
  EXPECT_EQ(qm_strndup(nullptr, std::numeric_limits<std::size_t>::max()), nullptr);
}

}  // namespace
}  // namespace pwr
