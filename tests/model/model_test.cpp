#include "qumetra/model/model.h"

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

namespace {

using qumetra::IdError;
using qumetra::Model;

TEST(Model, DefaultIdsCountUpInTheOrderOfDefinitionsWithoutId) {
  Model model;
  EXPECT_EQ(model.addQuantity({}).getId(), 0x40000000U);
  EXPECT_EQ(model.addEntity({"e"}).getId(), 0x40000001U);
  EXPECT_EQ(model.addEntity({.name = "told", .id = 7}).getId(), 7U);
  EXPECT_EQ(model.addDescriptor({"d"}).getId(), 0x40000002U);
}

TEST(Model, IdUsedTwiceIsAnError) {
  Model model;
  model.addEntity({.name = "a", .id = 7});
  EXPECT_THROW(model.addDescriptor({.name = "b", .id = 7}), IdError);
}

TEST(Model, QuantitiesAndHandlesShareTheirIds) {
  Model model;
  model.addQuantity({.id = 7});
  EXPECT_THROW(model.addEntity({.name = "e", .id = 7}), IdError);
  model.addEntity({.name = "e", .id = 8});
  EXPECT_THROW(model.addQuantity({.id = 8}), IdError);
}

TEST(Model, IdsOfObjectsMadeAtRunTimeAreReserved) {
  Model model;
  EXPECT_THROW(model.addEntity({.name = "e", .id = 0x60000000}), IdError);
  EXPECT_THROW(model.addQuantity({.id = 0x7FFFFFFF}), IdError);
  EXPECT_EQ(model.addEntity({.name = "e", .id = 0x5FFFFFFF}).getId(), 0x5FFFFFFFU);
  EXPECT_EQ(model.addEntity({.name = "e", .id = 0x80000000}).getId(), 0x80000000U);
}

TEST(Model, IdErrorsSayWhichIdAndWhy) {
  Model model;
  model.addEntity({.name = "e", .id = 7});
  try {
    model.addEntity({.name = "f", .id = 7});
    FAIL();
  } catch (const IdError& error) {
    EXPECT_STREQ(error.what(), "id 7 is used already");
  }
  try {
    model.addEntity({.name = "f", .id = 0x60000000});
    FAIL();
  } catch (const IdError& error) {
    EXPECT_STREQ(error.what(), "id 1610612736 is reserved for objects made at run time");
  }
}

TEST(Model, DefaultIdThatIsTakenIsAnError) {
  Model model;
  model.addEntity({.name = "told", .id = 0x40000000});
  EXPECT_THROW(model.addEntity({"default"}), IdError);
}

TEST(Model, FailedAddsDoNotAdvanceTheDefaultIds) {
  Model model;
  model.addEntity({.name = "told", .id = 0x40000001});
  EXPECT_THROW(model.addEntity({.name = "again", .id = 0x40000001}), IdError);
  EXPECT_EQ(model.addEntity({"first"}).getId(), 0x40000000U);
  EXPECT_THROW(model.addEntity({"default"}), IdError);
  EXPECT_THROW(model.addEntity({"default"}), IdError);
}

TEST(Model, FailedAddLeavesTheFormerObjectToBeFound) {
  Model model;
  const auto& former = model.addEntity({.name = "former", .id = 7});
  EXPECT_THROW(model.addEntity({.name = "later", .id = 7}), IdError);
  const pwr::DataHandle* handle = nullptr;
  EXPECT_EQ(pwr::DataHandle::get(7, handle), 0);
  EXPECT_EQ(handle, &former);
}

TEST(Model, FieldNameIsTheNameUnlessItIsTold) {
  Model model;
  EXPECT_EQ(model.addEntity({"name"}).getFieldName(), "name");
  EXPECT_EQ(model.addEntity({.name = "name", .fieldName = "field"}).getFieldName(), "field");
  EXPECT_EQ(model.addEntity({.name = "name", .fieldName = ""}).getFieldName(), "");
}

TEST(Model, HeaderIsEmptyUnlessItIsTold) {
  Model model;
  EXPECT_EQ(model.addEntity({"name"}).getHeader(), "");
  EXPECT_EQ(model.addEntity({.name = "name", .header = "header"}).getHeader(), "header");
}

std::string titleOf(const qumetra::QuantitySpec& spec) {
  Model model;
  std::string title;
  model.addQuantity(spec).toTitleString(title);
  return title;
}

TEST(Model, QuantityTitleIsNameAndUnitsUnlessItIsTold) {
  EXPECT_EQ(titleOf({.name = "Energy", .units = "mJ"}), "Energy (mJ)");
  EXPECT_EQ(titleOf({.name = "Count"}), "Count");
  EXPECT_EQ(titleOf({.name = "Energy", .units = "mJ", .title = "used"}), "used");
  EXPECT_EQ(titleOf({.name = "Energy", .units = "mJ", .title = ""}), "");
}

TEST(Model, HandleTypesFollowTheKindOfObject) {
  Model model;
  EXPECT_EQ(model.addAttribute({"a"}, pwr::AttributeType::Data).getHandleType(), 0U);
  EXPECT_EQ(model.addDescriptor({"d"}).getHandleType(), 9U);
  EXPECT_EQ(model.addColumnHandle({"h"}, 23).getHandleType(), 23U);
  EXPECT_EQ(model.addEntity({"e"}).getHandleType(), 1U);
  EXPECT_EQ(model.addNameValuePair({"n"}, "", "", 0).getHandleType(), 1U);
  EXPECT_EQ(model.addProcess({"p"}, 0, 0, "", {}).getHandleType(), 1U);
  EXPECT_EQ(model.addThread({"t"}, 0, 0, {}).getHandleType(), 1U);
}

TEST(Model, WhatWasAddedStaysWhereItIs) {
  Model model;
  auto& metric = model.addMetric();
  metric.name = "metric";
  auto& metadata = model.addSystemMetadata();
  metadata.m_hostName = "host";
  const auto& notes = model.addNotes({{0, {"before"}}});
  auto& cpu = model.addCpuMetadata();
  cpu.m_name = "cpu";
  for (int index = 0; index < 1000; ++index) {
    model.addMetric();
    model.addSystemMetadata();
    model.addNotes({});
    model.addPlatformMetadata();
    model.addPchMetadata();
  }
  EXPECT_EQ(metric.name, "metric");
  EXPECT_EQ(metadata.m_hostName, "host");
  EXPECT_EQ(notes.at(0).front(), "before");
  EXPECT_EQ(cpu.m_name, "cpu");
}

TEST(Model, EveryMetricIsAnObjectOfItsOwn) {
  Model model;
  EXPECT_NE(&model.addMetric(), &model.addMetric());
}

TEST(Model, NeitherSeedsNorCallsTheRandomNumbers) {
  std::srand(5);
  const int expected = std::rand();
  std::srand(5);
  Model model;
  model.addEntity({"e"});
  pwr::Attribute::create("a", nullptr, pwr::AttributeType::Info);
  pwr::Quantity::time();
  EXPECT_EQ(std::rand(), expected);
}

}  // namespace
