#include "client/src/common/tokenizer.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace pwr {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Tokenizer, RunsOfDelimitersMakeNoEmptyTokens) {
  const Tokenizer tokenizer("  one  two  ", " ");
  EXPECT_THAT(tokenizer.get_all_tokens(), ElementsAre("one", "two"));
  EXPECT_EQ(tokenizer.get_num_tokens(), 2U);
}

TEST(Tokenizer, EachCharacterOfTheSetDelimits) {
  EXPECT_THAT(Tokenizer("a,b;c", ";,").get_all_tokens(), ElementsAre("a", "b", "c"));
}

TEST(Tokenizer, NullDelimitersGiveNoTokens) {
  Tokenizer tokenizer("a b", nullptr);
  EXPECT_THAT(tokenizer.get_all_tokens(), IsEmpty());
  EXPECT_EQ(tokenizer.get_next_token(), nullptr);
  EXPECT_EQ(tokenizer.str_get_next_token(), "");
}

TEST(Tokenizer, AnEmptyTextGivesNoTokens) {
  Tokenizer tokenizer("", ",");
  EXPECT_EQ(tokenizer.get_num_tokens(), 0U);
  EXPECT_EQ(tokenizer.get_next_token(), nullptr);
  EXPECT_THAT(tokenizer.get_all_tokens(" "), IsEmpty());
}

TEST(Tokenizer, TheWalkBeginsAtTheStartAfterTheConstructorCutAll) {
  Tokenizer tokenizer("a,b", ",");
  EXPECT_STREQ(tokenizer.get_next_token(), "a");
  EXPECT_STREQ(tokenizer.get_next_token(), "b");
}

TEST(Tokenizer, AfterTheLastTokenComesNullForEver) {
  Tokenizer tokenizer("a,", ",");
  EXPECT_STREQ(tokenizer.get_next_token(), "a");
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(tokenizer.get_next_token(), nullptr);
    EXPECT_EQ(tokenizer.get_next_token(" "), nullptr);
    EXPECT_EQ(tokenizer.str_get_next_token(), "");
  }
}

TEST(Tokenizer, DelimitersGivenToACallServeForItOnly) {
  Tokenizer tokenizer("key=a,b,c=d", ",");
  EXPECT_STREQ(tokenizer.get_next_token("="), "key");
  EXPECT_STREQ(tokenizer.get_next_token(), "=a");
  EXPECT_EQ(tokenizer.str_get_next_token(), "b");
  EXPECT_STREQ(tokenizer.get_next_token("=,"), "c");
  EXPECT_STREQ(tokenizer.get_next_token("=,"), "d");
}

TEST(Tokenizer, NullDelimitersOfACallGiveNull) {
  Tokenizer tokenizer("a b", " ");
  EXPECT_EQ(tokenizer.get_next_token(nullptr), nullptr);
  EXPECT_STREQ(tokenizer.get_next_token(), "a");
}

TEST(Tokenizer, OtherDelimitersCutTheWholeTextAndKeepTheWalk) {
  Tokenizer tokenizer("a.b c.d", " ");
  EXPECT_STREQ(tokenizer.get_next_token(), "a.b");
  EXPECT_THAT(tokenizer.get_all_tokens("."), ElementsAre("a", "b c", "d"));
  EXPECT_STREQ(tokenizer.get_next_token(), "c.d");
  EXPECT_THAT(tokenizer.get_all_tokens(), ElementsAre("a.b", "c.d"));
}

TEST(Tokenizer, TheSameDelimiterPointerGivesTheConstructorsTokens) {
  std::string delimiters = ",";
  const Tokenizer tokenizer("a,b;c", delimiters.c_str());
  delimiters[0] = ';';
  EXPECT_THAT(tokenizer.get_all_tokens(delimiters.c_str()), ElementsAre("a", "b;c"));
}

TEST(Tokenizer, ANullPointerInPlaceOfOtherDelimitersGivesNoTokens) {
  const Tokenizer tokenizer("a,b", ",");
  EXPECT_THAT(tokenizer.get_all_tokens(nullptr), IsEmpty());
}

TEST(Tokenizer, WithoutAnyDelimiterTheTextIsOneToken) {
  EXPECT_THAT(Tokenizer("a b", "").get_all_tokens(), ElementsAre("a b"));
}

}  // namespace
}  // namespace pwr
