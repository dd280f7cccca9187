// The order of the virtual operations of requirements, operations and their descriptions, which
// hosts are built against.
#include <string>

#include <gtest/gtest.h>

#include "client/src/common/operations.h"
#include "client/src/common/plugin_requirements.h"
#include "host/operation.h"
#include "host/operation_metadata.h"
#include "tests/support/object_layout.h"
#include "tests/support/slots.h"

namespace pwr {
namespace {

using qumetra::test::OneMore;
using qumetra::test::slotOf;

using WriteText = int (HWOperation::*)(const std::string&);
using WriteEntity = int (HWOperation::*)(const EntityHandle*);

/// The number of slots in the table of a class.
template <typename Class>
int slotCount() {
  return slotOf(&OneMore<Class>::next);
}

TEST(RequirementSlots, EvaluationFollowsTheDestructors) {
  EXPECT_EQ(slotOf(&PluginRequirement::isPluginRequirementSatisfied_i), 2);
}

TEST(RequirementSlots, NoRequirementAddsOne) {
  EXPECT_EQ(slotCount<FMSPluginRequirement>(), 3);
  EXPECT_EQ(slotCount<SCUPluginRequirement>(), 3);
  EXPECT_EQ(slotCount<OSNamePluginRequirement>(), 3);
  EXPECT_EQ(slotCount<EnergyReportingPluginRequirement>(), 3);
  EXPECT_EQ(slotCount<IGFXPresentPluginRequirement>(), 3);
  EXPECT_EQ(slotCount<CPUIDRequirement>(), 3);
  EXPECT_EQ(slotCount<PCHPluginRequirement>(), 3);
  EXPECT_EQ(slotCount<VTIODisablePluginRequirement>(), 3);
  EXPECT_EQ(slotCount<MetricEnabledRequirement>(), 3);
  EXPECT_EQ(slotCount<PluginRequirementGroup>(), 3);
}

TEST(OperationSlots, OperationsFollowTheDestructorsInTheirOrder) {
  EXPECT_EQ(slotOf(&Operation::set), 2);
  EXPECT_EQ(slotOf(&Operation::getOperationMetadata), 3);
  EXPECT_EQ(slotOf(&Operation::clone), 4);
  EXPECT_EQ(slotOf(&Operation::canSetCategory), 5);
  EXPECT_EQ(slotOf(&Operation::isValidCommand_i), 6);
  EXPECT_EQ(slotCount<Operation>(), 7);
}

TEST(OperationSlots, HardwareOperationsContinueThem) {
  EXPECT_EQ(slotOf(&HWOperation::setSize), 7);
  EXPECT_EQ(slotOf(&HWOperation::getSize), 8);
  EXPECT_EQ(slotOf(static_cast<WriteText>(&HWOperation::write)), 9);
  EXPECT_EQ(slotOf(static_cast<WriteEntity>(&HWOperation::write)), 10);
  EXPECT_EQ(slotCount<HWOperation>(), 11);
}

TEST(OperationSlots, ConcreteOperationsAddNone) {
  EXPECT_EQ(slotCount<PCIOperation>(), 11);
  EXPECT_EQ(slotCount<MMIOOperation>(), 11);
  EXPECT_EQ(slotCount<AggrTelemOperation>(), 11);
}

TEST(OperationMetadataSlots, PackingFollowsThePluginId) {
  EXPECT_EQ(slotOf(&HWOperationMetadata::getPluginID), 2);
  EXPECT_EQ(slotOf(&HWOperationMetadata::serialize_i), 3);
  EXPECT_EQ(slotOf(&HWOperationMetadata::deserialize_i), 4);
  EXPECT_EQ(slotCount<HWOperationMetadata>(), 5);
}

TEST(OperationMetadataSlots, HardwareMetadataAddsNoField) {
  EXPECT_EQ(sizeof(HWOperationMetadata), sizeof(OperationMetadata));
}

template <typename Object, typename Member>
std::ptrdiff_t offsetIn(const Object& object, const Member& member) {
  return reinterpret_cast<const char*>(&member) - reinterpret_cast<const char*>(&object);
}

TEST(OperationFieldOrder, RequirementBeginsWithItsName) {
  const MetricEnabledRequirement requirement;
  EXPECT_EQ(offsetIn(requirement, requirement.m_name), 8);
  EXPECT_EQ(offsetIn(requirement, requirement.m_negate), 40);
}

TEST(OperationFieldOrder, OperationHasItsMembersInOrder) {
  const PCIOperation operation;
  EXPECT_EQ(offsetIn(operation, operation.m_name), 8);
  EXPECT_EQ(offsetIn(operation, operation.m_initValue), 40);
  EXPECT_EQ(offsetIn(operation, operation.m_categories), 72);
  EXPECT_LT(offsetIn(operation, operation.m_categories),
            offsetIn(operation, operation.m_requirements));
  EXPECT_LT(offsetIn(operation, operation.m_requirements), offsetIn(operation, operation.m_values));
  EXPECT_LT(offsetIn(operation, operation.m_values), offsetIn(operation, operation.m_buffer));
  EXPECT_LT(offsetIn(operation, operation.m_buffer), offsetIn(operation, operation.m_defaultSize));
}

TEST(OperationFieldOrder, MetadataHasItsMembersInOrder) {
  const HWOperationMetadata metadata("", "", 0);
  EXPECT_EQ(offsetIn(metadata, metadata.m_kind), 8);
  EXPECT_EQ(offsetIn(metadata, metadata.m_initValue), 16);
  EXPECT_EQ(offsetIn(metadata, metadata.m_operationName), 48);
  EXPECT_EQ(offsetIn(metadata, metadata.m_size), 80);
  EXPECT_EQ(offsetIn(metadata, metadata.m_address), 88);
  EXPECT_EQ(offsetIn(metadata, metadata.m_pairs), 120);
}

TEST(OperationFieldOrder, OnlyMemoryMappedOperationsAddAField) {
  EXPECT_EQ(sizeof(PCIOperation), sizeof(HWOperation));
  EXPECT_EQ(sizeof(AggrTelemOperation), sizeof(HWOperation));
  EXPECT_EQ(sizeof(MMIOOperation), sizeof(HWOperation) + sizeof(PWSet<std::string>));
}

TEST(OperationFieldOrder, FormatIsThreeBytes) { EXPECT_EQ(sizeof(qm_qformat), 3U); }

}  // namespace
}  // namespace pwr
