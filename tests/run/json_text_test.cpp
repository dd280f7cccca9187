#include "qumetra/run/json_text.h"

#include <gtest/gtest.h>

namespace qumetra::test {
namespace {

std::string json(std::string_view text) {
  std::string out;
  appendJsonText(out, text);
  return out;
}

TEST(JsonText, AppendsBehindWhatIsThere) {
  std::string out = "x";
  appendJsonText(out, "y");
  EXPECT_EQ("x\"y\"", out);
}

TEST(JsonText, QuotesAndBackslashesAreEscaped) { EXPECT_EQ(R"("a\"b\\c/")", json(R"(a"b\c/)")); }

TEST(JsonText, ControlCharactersAreEscaped) {
  using namespace std::string_view_literals;
  EXPECT_EQ(R"("\n\t\r\u0000\u001f")", json("\n\t\r\0\x1f"sv));
}

TEST(JsonText, ValidUtf8StaysAsItIs) {
  EXPECT_EQ("\"\u00e9\u20ac\U0001F600\uD7FF\U0010FFFF\"",
            json("\u00e9\u20ac\U0001F600\uD7FF\U0010FFFF"));
}

TEST(JsonText, ByteThatIsNoUtf8IsALoneSurrogate) {
  EXPECT_EQ(R"("a\udc80\udcffb")", json("a\x80\xff"
                                        "b"));
}

TEST(JsonText, TruncatedCharacterIsByteByByte) { EXPECT_EQ(R"("\udce2\udc82")", json("\xe2\x82")); }

TEST(JsonText, BrokenCharacterKeepsWhatFollows) {
  EXPECT_EQ("\"\\udce2\\udc82A\"", json("\xe2\x82"
                                        "A"));
}

TEST(JsonText, OverlongFormsAreNotValid) {
  EXPECT_EQ(R"("\udcc0\udc80")", json("\xc0\x80"));
  EXPECT_EQ(R"("\udce0\udc9f\udcbf")", json("\xe0\x9f\xbf"));
  EXPECT_EQ(R"("\udcf0\udc8f\udcbf\udcbf")", json("\xf0\x8f\xbf\xbf"));
}

TEST(JsonText, SurrogatesInUtf8AreNotValid) {
  EXPECT_EQ(R"("\udced\udca0\udc80")", json("\xed\xa0\x80"));
}

TEST(JsonText, NumbersAboveUnicodeAreNotValid) {
  EXPECT_EQ(R"("\udcf4\udc90\udc80\udc80")", json("\xf4\x90\x80\x80"));
}

}  // namespace
}  // namespace qumetra::test
