#include "host/attributes.h"

#include <vector>

#include <gtest/gtest.h>

#include "host/handles.h"
#include "qumetra/model/model.h"

namespace {

using qumetra::Model;

unsigned long uintOf(const pwr::Data& data) {
  unsigned long value = 0;
  EXPECT_EQ(data.toUInt(value), 0);
  return value;
}

std::vector<unsigned long> valuesOf(const pwr::AttributeValueManager& manager) {
  std::vector<unsigned long> values;
  for (const auto& [attribute, value] : manager) {
    values.push_back(uintOf(value));
  }
  return values;
}

TEST(AttributeValueManager, ValuesStandInTheOrderInWhichTheyWereAdded) {
  Model model;
  const auto& later = model.addAttribute({"later"}, pwr::AttributeType::Info);
  const auto& earlier = model.addAttribute({"earlier"}, pwr::AttributeType::Info);
  pwr::AttributeValueManager manager;
  manager.addAttributeValue(&earlier, pwr::Data(1UL));
  manager.addAttributeValue(&later, pwr::Data(2UL));
  manager.addAttributeValue(nullptr, pwr::Data(3UL));
  EXPECT_EQ(valuesOf(manager), (std::vector<unsigned long>{1, 2, 3}));
  EXPECT_EQ(manager.begin()->first, &earlier);
  EXPECT_EQ(manager.getAttributeCount(), 3U);
}

TEST(AttributeValueManager, AttributeAddedAgainIsASecondEntry) {
  Model model;
  const auto& attribute = model.addAttribute({"a"}, pwr::AttributeType::Data);
  pwr::AttributeValueManager manager;
  manager.addAttributeValue(&attribute, pwr::Data(1UL));
  manager.addAttributeValue(&attribute, pwr::Data(2UL));
  EXPECT_EQ(valuesOf(manager), (std::vector<unsigned long>{1, 2}));
}

TEST(AttributeValueManager, SetReplacesAllValues) {
  pwr::AttributeValueManager manager;
  manager.addAttributeValue(nullptr, pwr::Data(1UL));
  manager.setAttributeValues({{nullptr, pwr::Data(7UL)}, {nullptr, pwr::Data(8UL)}});
  EXPECT_EQ(valuesOf(manager), (std::vector<unsigned long>{7, 8}));
}

TEST(AttributeValueManager, CopyIsIndependentOfItsOriginal) {
  pwr::AttributeValueManager original;
  original.addAttributeValue(nullptr, pwr::Data(1UL));
  const pwr::AttributeValueManager copy(original);
  original.addAttributeValue(nullptr, pwr::Data(2UL));
  EXPECT_EQ(valuesOf(copy), (std::vector<unsigned long>{1}));
}

TEST(DynamicAttributeValueManager, ValuesStandInTheOrderOfTheirIds) {
  const pwr::DynamicAttributeValueManager manager(
      {{9, pwr::Data(90UL)}, {2, pwr::Data(20UL)}, {5, pwr::Data(50UL)}});
  std::vector<std::uint64_t> ids;
  for (const auto& [id, value] : manager) {
    EXPECT_EQ(uintOf(value), id * 10);
    ids.push_back(id);
  }
  EXPECT_EQ(ids, (std::vector<std::uint64_t>{2, 5, 9}));
}

TEST(DynamicAttributeValueManager, EmptyManagerHasNoValues) {
  const pwr::DynamicAttributeValueManager manager;
  EXPECT_EQ(manager.begin(), manager.end());
}

TEST(ExpectedAttributeManager, AttributesAreAContiguousRangeInColumnOrder) {
  Model model;
  const auto& first = model.addAttribute({"first"}, pwr::AttributeType::Data);
  const auto& second = model.addAttribute({"second"}, pwr::AttributeType::Data);
  const pwr::ExpectedAttributeManager manager({&second, &first});
  ASSERT_EQ(manager.getAttributeCount(), 2U);
  EXPECT_EQ(manager.begin()[0], &second);
  EXPECT_EQ(manager.begin()[1], &first);
  EXPECT_EQ(manager.end() - manager.begin(), 2);
}

TEST(ExpectedAttributeManager, EmptyManagerIsAnEmptyRange) {
  const pwr::ExpectedAttributeManager manager;
  EXPECT_EQ(manager.begin(), manager.end());
  EXPECT_EQ(manager.getAttributeCount(), 0U);
}

}  // namespace
