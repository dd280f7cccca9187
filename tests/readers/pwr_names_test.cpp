#include "qumetra/readers/pwr_names.h"

#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/readers/pwr_bytes.h"

namespace qumetra::test {
namespace {

using testing::Pointee;

/// The names that the records of the bytes declare.
PwrNames namesOf(const std::string& bytes) {
  PwrNames names;
  for (const PwrRecord& record : readPwr(bytes).records) {
    names.learn(record);
  }
  return names;
}

TEST(PwrNames, EveryKindOfNodeHasNumbersOfItsOwn) {
  const std::vector<std::pair<PwrNamed, std::string>> kinds{
      {PwrNamed::TabGroup, "tab_group"},
      {PwrNamed::TimelineGroup, "timeline_group"},
      {PwrNamed::Quantity, "quantity"},
      {PwrNamed::Entity, "entity"},
      {PwrNamed::Field, "field"},
      {PwrNamed::Color, "color"},
      {PwrNamed::NameId, "nameid_attribute"}};
  std::string bytes;
  for (const auto& [kind, name] : kinds) {
    bytes += infoBytes(name, 7, "of " + name);
  }
  const PwrNames names = namesOf(bytes);
  for (const auto& [kind, name] : kinds) {
    EXPECT_THAT(names.find({kind, 7}), Pointee("of " + name));
    EXPECT_EQ(names.find({kind, 8}), nullptr);
    EXPECT_EQ(pwrNamedText(kind), name);
  }
}

TEST(PwrNames, MetricIsKnownByItsId) {
  EXPECT_THAT(namesOf(fromHex(kMetricHex)).find({PwrNamed::Metric, 30}),
              Pointee(std::string("ab")));
}

TEST(PwrNames, PackageIsKnownByItsUid) {
  EXPECT_THAT(namesOf(fromHex(kPackageHex)).find({PwrNamed::Package, 10042}),
              Pointee(std::string("p")));
}

TEST(PwrNames, NodesAreKnownByTheirShortNames) {
  EXPECT_THAT(namesOf(fromHex(kInfoHex)).find({PwrNamed::Entity, 300}), Pointee(std::string("C")));
}

TEST(PwrNames, LastDeclarationCounts) {
  EXPECT_THAT(namesOf(infoBytes("field", 7, "one") + infoBytes("field", 7, "two"))
                  .find({PwrNamed::Field, 7}),
              Pointee(std::string("two")));
}

TEST(PwrNames, NodesThatNumberKindsDeclareNoUid) {
  EXPECT_EQ(pwrNodeKind("info_type"), std::nullopt);
  EXPECT_EQ(pwrNodeKind("metric_type"), std::nullopt);
  EXPECT_EQ(pwrNodeKind("metric"), std::nullopt);
}

TEST(PwrNames, AttributesReferByTheLow32Bits) {
  EXPECT_EQ(pwrReferredUid({PwrAttributeId::Entity, 0x100000007}), (PwrUid{PwrNamed::Entity, 7}));
  EXPECT_EQ(pwrReferredUid({PwrAttributeId::Duration, 7}), std::nullopt);
}

TEST(PwrNames, AttributesHaveNames) {
  EXPECT_STREQ(pwrAttributeName(PwrAttributeId::Metric), "metric");
  EXPECT_STREQ(pwrAttributeName(PwrAttributeId::CallStackFrame), "call_stack_frame");
  EXPECT_STREQ(pwrAttributeName(PwrAttributeId::Real), "real");
  EXPECT_STREQ(pwrAttributeName(PwrAttributeId::Duration), "duration");
  EXPECT_STREQ(pwrAttributeName(PwrAttributeId{19}), "unknown");
}

}  // namespace
}  // namespace qumetra::test
