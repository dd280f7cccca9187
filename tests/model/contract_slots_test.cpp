// The places of virtual operations in their tables and of fields in their objects. Hosts and
// writers that were built apart meet there, so a place may never change.
#include <gtest/gtest.h>

#include "host/environment.h"
#include "host/handles.h"
#include "host/logger.h"
#include "host/messages.h"
#include "host/metric.h"
#include "host/platform_metadata.h"
#include "host/system_metadata.h"
#include "host/table.h"
#include "tests/support/object_layout.h"

namespace {

using qumetra::test::offsetIn;
using qumetra::test::slotOf;
using qumetra::test::standInOrder;

TEST(ContractSlots, MessageTypeFollowsTheDestructors) {
  EXPECT_EQ(slotOf(&pwr::WriterMessage::getMessageType), 2);
}

TEST(ContractSlots, QualifiedNameFollowsOneHostSlot) {
  EXPECT_EQ(slotOf(&pwr::DataHandle::getDiagnosticName), 2);
  EXPECT_EQ(slotOf(&pwr::DataHandle::getQualifiedName), 3);
}

TEST(ContractSlots, EntityKeepsThePlaceOfTheQualifiedName) {
  EXPECT_EQ(slotOf(&pwr::EntityHandle::getQualifiedName), 3);
}

TEST(ContractSlots, LogIsTheSixthSlotOfASink) { EXPECT_EQ(slotOf(&LogSink::log), 5); }

TEST(ContractSlots, FinishFlushAndCloseStandNextToEachOther) {
  EXPECT_EQ(slotOf(&pwr::Logger::flush), slotOf(&pwr::Logger::finish) + 1);
  EXPECT_EQ(slotOf(&pwr::Logger::close), slotOf(&pwr::Logger::finish) + 2);
}

TEST(ContractSlots, TableOperationsFollowTheMessageType) {
  using pwr::TableMessage;
  EXPECT_EQ(slotOf(&TableMessage::getMessageType), 2);
  EXPECT_EQ(slotOf(&TableMessage::mustBeSkipped), 3);
  EXPECT_EQ(slotOf(&TableMessage::hostSlot1), 4);
  EXPECT_EQ(slotOf(&TableMessage::hostSlot2), 5);
  EXPECT_EQ(slotOf(&TableMessage::hostSlot3), 6);
  EXPECT_EQ(slotOf(&TableMessage::hostSlot4), 7);
  EXPECT_EQ(slotOf(&TableMessage::sharedHandlesBegin), 8);
  EXPECT_EQ(slotOf(&TableMessage::sharedHandlesEnd), 9);
  EXPECT_EQ(slotOf(&TableMessage::fieldHandlesBegin), 10);
  EXPECT_EQ(slotOf(&TableMessage::fieldHandlesEnd), 11);
  EXPECT_EQ(slotOf(&TableMessage::entitiesBegin), 12);
  EXPECT_EQ(slotOf(&TableMessage::entitiesEnd), 13);
}

TEST(ContractSlots, PlatformOperationsFollowTheDestructors) {
  using pwr::PlatformMetadata;
  EXPECT_EQ(slotOf(&PlatformMetadata::getPlatformNames), 2);
  EXPECT_EQ(slotOf(&PlatformMetadata::shouldPrintMessageOnNoMatch), 3);
  EXPECT_EQ(slotOf(&PlatformMetadata::serializePlatformMetadata), 4);
  EXPECT_EQ(slotOf(&PlatformMetadata::deserializePlatformMetadata), 5);
  EXPECT_EQ(slotOf(&PlatformMetadata::initAndGetValue_i), 6);
}

// Readers of other builds look at fields directly.

TEST(ContractFields, TextStandsRightBehindTheMessageId) {
  const pwr::HeaderTextMessage message;
  EXPECT_EQ(offsetIn(message, message.m_id), 8);
  EXPECT_EQ(offsetIn(message, message.m_message), 16);
}

TEST(ContractFields, ContainerInformationStandsInItsOrder) {
  const pwr::MetricContainerInfoMessage message;
  EXPECT_TRUE(standInOrder(message, message.m_id, message.metricId, message.textNotes,
                           message.containerName, message.metricInfoTable, message.featureName,
                           message.metricName, message.residencyView));
}

TEST(ContractFields, MetricStandsInItsOrder) {
  const pwr::Metric metric;
  EXPECT_TRUE(standInOrder(metric, metric.m_id, metric.name, metric.quantity, metric.metricId,
                           metric.entities, metric.states, metric.featureName, metric.groupName,
                           metric.entityList, metric.metadataValues, metric.valueHandle,
                           metric.descriptorTitleHandle, metric.entityTitleHandle,
                           metric.writeEntityAttributes, metric.tableClass, metric.metricType));
}

TEST(ContractFields, SystemMetadataBeginsWithItsWordAndStandsInItsOrder) {
  const pwr::SystemMetadata metadata;
  EXPECT_EQ(offsetIn(metadata, metadata.m_scuWord), 0);
  EXPECT_TRUE(standInOrder(
      metadata, metadata.m_scuWord, metadata.m_platformName, metadata.m_hostName, metadata.m_osName,
      metadata.m_osType, metadata.m_osVersion, metadata.m_toolVersion, metadata.m_driverVersion,
      metadata.m_collectorArguments, metadata.m_osBuildNumber, metadata.m_timestampFrequency,
      metadata.m_firstTimestamp, metadata.m_lastTimestamp, metadata.m_timerResolution,
      metadata.m_timeDisplayResolution, metadata.m_hasIntegratedGraphics, metadata.m_secureSignIn,
      metadata.m_platformMetadata));
}

TEST(ContractFields, VersionIsARecordOf32Bits) {
  const pwr::VersionRecord version;
  EXPECT_EQ(sizeof version, 4U);
  EXPECT_EQ(offsetIn(version, version.major), 0);
  EXPECT_EQ(offsetIn(version, version.minor), 2);
  EXPECT_EQ(offsetIn(version, version.third), 3);
}

TEST(ContractFields, PlatformBeginsWithItsNameBehindTheTable) {
  const pwr::PlatformMetadata platform;
  EXPECT_EQ(offsetIn(platform, platform.m_name), 8);
  EXPECT_EQ(offsetIn(platform, platform.m_description), 40);
  EXPECT_EQ(offsetIn(platform, platform.m_specifiers), 72);
  EXPECT_EQ(offsetIn(platform, platform.m_values), 96);
  EXPECT_EQ(offsetIn(platform, platform.m_id), 144);
}

TEST(ContractFields, ProcessorStandsBehindThePlatformInItsOrder) {
  const pwr::CPUMetadata cpu;
  EXPECT_TRUE(standInOrder(cpu, cpu.m_id, cpu.m_family, cpu.m_model, cpu.m_stepping, cpu.m_cpuWords,
                           cpu.m_topology, cpu.m_topologyChanges));
}

TEST(ContractFields, ProcessorsWordsAreSixOf32Bits) {
  const pwr::CPUWords words;
  EXPECT_EQ(sizeof words, 24U);
  EXPECT_EQ(offsetIn(words, words.busFrequencyMHz), 0);
  EXPECT_EQ(offsetIn(words, words.lowFrequencyMHz), 4);
  EXPECT_EQ(offsetIn(words, words.highFrequencyMHz), 8);
  EXPECT_EQ(offsetIn(words, words.cpuFrequencyMHz), 12);
  EXPECT_EQ(offsetIn(words, words.platformId), 16);
  EXPECT_EQ(offsetIn(words, words.lastWord), 20);
}

}  // namespace
