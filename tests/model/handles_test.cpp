#include "host/handles.h"

#include <memory>

#include <gtest/gtest.h>

#include "host/quantity.h"
#include "qumetra/model/model.h"

namespace {

using pwr::DataHandle;
using qumetra::Model;

const DataHandle* found(std::uint64_t id) {
  const DataHandle* handle = nullptr;
  return DataHandle::get(id, handle) == 0 ? handle : nullptr;
}

void expectNotFound(std::uint64_t id) {
  const DataHandle other(1, {}, DataHandle::kOtherType);
  const DataHandle* handle = &other;
  EXPECT_EQ(DataHandle::get(id, handle), 1);
  EXPECT_EQ(handle, nullptr);
}

TEST(DataHandle, GivesWhatItWasMadeFrom) {
  const DataHandle handle(5, {"name", "field", "header"}, 17);
  EXPECT_EQ(handle.getId(), 5U);
  EXPECT_EQ(handle.getName(), "name");
  EXPECT_EQ(handle.getFieldName(), "field");
  EXPECT_EQ(handle.getHeader(), "header");
  EXPECT_EQ(handle.getHandleType(), 17U);
}

TEST(DataHandle, QualifiedNameIsTheName) {
  EXPECT_EQ(DataHandle(5, {"name", "field", "header"}, 1).getQualifiedName(), "name");
}

TEST(DataHandle, DiagnosticNameTellsHandlesOfOneNameApart) {
  EXPECT_EQ(DataHandle(5, {"name", "", ""}, 1).getDiagnosticName(), "name #5");
}

TEST(DataHandle, CopyKeepsIdTextsAndType) {
  const DataHandle handle(5, {"name", "field", "header"}, 17);
  const DataHandle copy(handle);
  EXPECT_EQ(copy.getId(), 5U);
  EXPECT_EQ(copy.getFieldName(), "field");
  EXPECT_EQ(copy.getHandleType(), 17U);
}

TEST(DataHandle, EveryHandleOfTheModelIsFoundById) {
  Model model;
  const DataHandle* const handles[] = {
      &model.addEntity({"entity"}),
      &model.addAttribute({"attribute"}, pwr::AttributeType::Data),
      &model.addDescriptor({"descriptor"}),
      &model.addNameValuePair({"pair"}, "", "", 0),
      &model.addProcess({"process"}, 1, 0, "", {}),
      &model.addThread({"thread"}, 1, 1, {}),
      &model.addColumnHandle({"handle"}, 3),
  };
  for (const DataHandle* const handle : handles) {
    EXPECT_EQ(found(handle->getId()), handle) << handle->getName();
  }
}

TEST(DataHandle, QuantitiesAreNotFoundById) {
  Model model;
  expectNotFound(model.addQuantity({}).getId());
  expectNotFound(pwr::Quantity::time()->getId());
}

TEST(DataHandle, UnknownIdGivesNull) { expectNotFound(4711); }

TEST(DataHandle, IdZeroAndTheLargestIdAreIdsLikeAllOthers) {
  Model model;
  const auto& zero = model.addEntity({.name = "zero", .id = 0});
  const auto& largest = model.addEntity({.name = "largest", .id = ~std::uint64_t{0}});
  EXPECT_EQ(found(0), &zero);
  EXPECT_EQ(found(~std::uint64_t{0}), &largest);
}

TEST(DataHandle, NothingOfAModelIsFoundAfterItsEnd) {
  auto model = std::make_unique<Model>();
  model->addEntity({.name = "e", .id = 1});
  ASSERT_NE(found(1), nullptr);
  model.reset();
  expectNotFound(1);
}

TEST(DataHandle, CopiesAreNotFoundInPlaceOfTheirOriginals) {
  Model model;
  const auto& entity = model.addEntity({"e"});
  const pwr::EntityHandle copy(entity);
  EXPECT_EQ(copy.getId(), entity.getId());
  EXPECT_EQ(found(copy.getId()), &entity);
}

TEST(EntityHandle, QualifiedNameJoinsTheNamesFromTheRootDown) {
  Model model;
  const auto& package = model.addEntity({"Package 0"});
  const auto& core = model.addEntity({"Core 1"}, &package);
  const auto& thread = model.addEntity({"Thread 3"}, &core);
  EXPECT_EQ(package.getQualifiedName(), "Package 0");
  EXPECT_EQ(thread.getQualifiedName(), "Package 0/Core 1/Thread 3");
  EXPECT_EQ(thread.getParent(), &core);
}

TEST(EntityHandle, QualifiedNameLeavesEmptyNamesOut) {
  Model model;
  const auto& root = model.addEntity({""});
  const auto& package = model.addEntity({"Package"}, &root);
  const auto& hidden = model.addEntity({""}, &package);
  const auto& core = model.addEntity({"Core"}, &hidden);
  EXPECT_EQ(root.getQualifiedName(), "");
  EXPECT_EQ(hidden.getQualifiedName(), "Package");
  EXPECT_EQ(core.getQualifiedName(), "Package/Core");
}

TEST(EntityHandle, QualifiedNameOfAVeryDeepTreeIsComplete) {
  constexpr std::size_t kDepth = 200000;
  Model model;
  const pwr::EntityHandle* entity = nullptr;
  for (std::size_t level = 0; level < kDepth; ++level) {
    entity = &model.addEntity({"n"}, entity);
  }
  EXPECT_EQ(entity->getQualifiedName().size(), 2 * kDepth - 1);
}

TEST(EntityHandle, CopyKeepsIdParentAndAttributes) {
  Model model;
  const auto& parent = model.addEntity({"parent"});
  auto& entity = model.addEntity({"e"}, &parent);
  entity.addAttributeValue(nullptr, pwr::Data(1UL));
  const pwr::EntityHandle copy(entity);
  EXPECT_EQ(copy.getId(), entity.getId());
  EXPECT_EQ(copy.getQualifiedName(), "parent/e");
  EXPECT_EQ(copy.getAttributeCount(), 1U);
}

TEST(Attribute, HasItsKindQuantityAndQualifiedName) {
  Model model;
  const auto& parent = model.addEntity({"parent"});
  const auto& attribute =
      model.addAttribute({"a"}, pwr::AttributeType::Process, pwr::Quantity::time(), &parent);
  EXPECT_EQ(attribute.getAttributeType(), pwr::AttributeType::Process);
  EXPECT_EQ(attribute.m_quantity, pwr::Quantity::time());
  EXPECT_EQ(attribute.getQualifiedName(), "parent/a");
}

TEST(Attribute, CopyKeepsIdKindAndQuantity) {
  Model model;
  const auto& attribute =
      model.addAttribute({"a"}, pwr::AttributeType::Thread, pwr::Quantity::time());
  const pwr::Attribute copy(attribute);
  EXPECT_EQ(copy.getId(), attribute.getId());
  EXPECT_EQ(copy.getAttributeType(), pwr::AttributeType::Thread);
  EXPECT_EQ(copy.m_quantity, pwr::Quantity::time());
}

TEST(Attribute, CreateTakesNameQuantityAndKind) {
  const auto* const made =
      pwr::Attribute::create("made", pwr::Quantity::time(), pwr::AttributeType::Info);
  EXPECT_EQ(made->getName(), "made");
  EXPECT_EQ(made->getFieldName(), "made");
  EXPECT_EQ(made->getHeader(), "");
  EXPECT_EQ(made->getHandleType(), 0U);
  EXPECT_EQ(made->getAttributeType(), pwr::AttributeType::Info);
  EXPECT_EQ(made->m_quantity, pwr::Quantity::time());
}

TEST(Attribute, CreateMakesANewAttributeForANameUsedBefore) {
  const auto* const first = pwr::Attribute::create("same", nullptr, pwr::AttributeType::Info);
  const auto* const second = pwr::Attribute::create("same", nullptr, pwr::AttributeType::Info);
  EXPECT_NE(first, second);
  EXPECT_EQ(second->getId(), first->getId() + 1);
}

TEST(Attribute, CreatedOneIsFoundByIdAlsoWhenModelsComeAndGo) {
  const auto* const before = pwr::Attribute::create("a", nullptr, pwr::AttributeType::Info);
  const pwr::Attribute* during = nullptr;
  {
    const Model model;
    during = pwr::Attribute::create("b", nullptr, pwr::AttributeType::Info);
  }
  EXPECT_EQ(found(before->getId()), before);
  EXPECT_EQ(found(during->getId()), during);
}

TEST(DataDescriptor, HasTheTypeOfDescriptors) {
  Model model;
  EXPECT_EQ(model.addDescriptor({"C6"}).getHandleType(), 9U);
}

TEST(DataDescriptor, CreateTakesNameAndFieldNameFromItsBuilder) {
  pwr::DataDescriptor* const made = pwr::DataDescriptor::create({"name", "field"});
  EXPECT_EQ(made->getName(), "name");
  EXPECT_EQ(made->getFieldName(), "field");
  EXPECT_EQ(made->getHeader(), "");
  EXPECT_EQ(made->getHandleType(), 9U);
  EXPECT_EQ(found(made->getId()), made);
}

TEST(DataDescriptor, CreateDrawsTheNextId) {
  const auto before = pwr::Attribute::create("a", nullptr, pwr::AttributeType::Info)->getId();
  EXPECT_EQ(pwr::DataDescriptor::create({"d", "d"})->getId(), before + 1);
}

TEST(DataDescriptor, CopyKeepsIdAndAttributes) {
  pwr::DataDescriptor* const made = pwr::DataDescriptor::create({"name", "field"});
  made->addAttributeValue(nullptr, pwr::Data(1UL));
  const pwr::DataDescriptor copy(*made);
  EXPECT_EQ(copy.getId(), made->getId());
  EXPECT_EQ(copy.getAttributeCount(), 1U);
}

TEST(NameValuePair, GivesItsTextsAndValue) {
  Model model;
  const auto& pair = model.addNameValuePair({"name"}, "info", "description", 42);
  EXPECT_EQ(pair.getInfoName(), "info");
  EXPECT_EQ(pair.getValueDesc(), "description");
  EXPECT_EQ(pair.getValue(), 42U);
  EXPECT_EQ(pair.getHandleType(), 1U);
}

TEST(Process, GivesItsNumbersAndItsEndOnceItIsKnown) {
  Model model;
  auto& process = model.addProcess({"name"}, 100, 1, "/bin/name", {.startTime = 5});
  EXPECT_EQ(process.getPid(), 100U);
  EXPECT_EQ(process.getParentPid(), 1U);
  EXPECT_EQ(process.getPath(), "/bin/name");
  EXPECT_EQ(process.getStartTime(), 5U);
  EXPECT_EQ(process.getEndTime(), 0U);
  process.setEndTime(9);
  EXPECT_EQ(process.getEndTime(), 9U);
  EXPECT_EQ(process.getStartTime(), 5U);
}

TEST(Thread, GivesItsNumbersAndItsEndOnceItIsKnown) {
  Model model;
  auto& thread = model.addThread({"name"}, 101, 100, {.startTime = 5, .endTime = 6});
  EXPECT_EQ(thread.getTid(), 101U);
  EXPECT_EQ(thread.getPid(), 100U);
  EXPECT_EQ(thread.getStartTime(), 5U);
  EXPECT_EQ(thread.getEndTime(), 6U);
  thread.setEndTime(9);
  EXPECT_EQ(thread.getEndTime(), 9U);
}

TEST(ColumnHandle, ExpectedAttributesAreFoundByCastFromTheHandle) {
  Model model;
  const auto& attribute = model.addAttribute({"a"}, pwr::AttributeType::Data);
  const DataHandle& handle = model.addColumnHandle({"column"}, 12, {&attribute});
  const auto* const expected = dynamic_cast<const pwr::ExpectedAttributeManager*>(&handle);
  ASSERT_NE(expected, nullptr);
  ASSERT_EQ(expected->getAttributeCount(), 1U);
  EXPECT_EQ(*expected->begin(), &attribute);
  EXPECT_EQ(handle.getHandleType(), 12U);
}

}  // namespace
