// The order of the virtual operations and of the fields, which hosts are built against.
#include "tests/support/slots.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/object_layout.h"
#include "writers/continuous_writer/cont_writer.h"
#include "writers/json_plugin.h"
#include "writers/phmwriter_text_plugin/phm_writer.h"
#include "writers/qmjson_plugin/qmjson_writer.h"
#include "writers/textwriter_plugin/int_writer.h"
#include "writers/textwriter_plugin/summary_writer.h"
#include "writers/writer_plugins.h"

namespace {

using qumetra::test::kDestructorSlots;
using qumetra::test::offsetIn;
using qumetra::test::OneMore;
using qumetra::test::slotOf;

template <typename Message>
int writeMessageSlot() {
  using WriteMessage = int (WriterPlugin::*)(const Message&);
  return slotOf(static_cast<WriteMessage>(&WriterPlugin::writeMessage));
}

TEST(PluginSlots, DestructorStandsFirst) { EXPECT_EQ(slotOf(&Plugin::getVersion), 2); }

TEST(PluginSlots, OperationsFollowInTheirOrder) {
  EXPECT_EQ(slotOf(&Plugin::getVersion), 2);
  EXPECT_EQ(slotOf(&Plugin::handleBroadcastOption), 3);
  EXPECT_EQ(slotOf(&Plugin::reset), 4);
  EXPECT_EQ(slotOf(&Plugin::pmtDevReset), 5);
  EXPECT_EQ(slotOf(&Plugin::addCapability), 6);
  EXPECT_EQ(slotOf(&Plugin::notifyCommandlineParamsSet_i), 7);
}

TEST(WriterPluginSlots, RefusalOfASecondCapabilityTakesThePluginsSlot) {
  EXPECT_EQ(slotOf(&WriterPlugin::addCapability), 6);
}

TEST(WriterPluginSlots, LifeOfACollectionFollowsThePlugin) {
  EXPECT_EQ(slotOf(&WriterPlugin::init), 8);
  EXPECT_EQ(slotOf(&WriterPlugin::fini), 9);
  EXPECT_EQ(slotOf(&WriterPlugin::flushContinuousResults), 10);
}

TEST(WriterPluginSlots, MessagesFollowInTheirOrder) {
  EXPECT_EQ(writeMessageSlot<pwr::TableMessage>(), 11);
  EXPECT_EQ(writeMessageSlot<pwr::TextMessage>(), 12);
  EXPECT_EQ(writeMessageSlot<pwr::SystemMessage>(), 13);
  EXPECT_EQ(writeMessageSlot<pwr::IdMessage>(), 14);
  EXPECT_EQ(writeMessageSlot<pwr::Metric>(), 15);
  EXPECT_EQ(writeMessageSlot<pwr::MetricContainerInfoMessage>(), 16);
}

TEST(WriterPluginSlots, TableCellsComeLast) {
  EXPECT_EQ(slotOf(&WriterPlugin::getColumnTitles), 17);
  EXPECT_EQ(slotOf(&WriterPlugin::getRowValues), 18);
}

TEST(WriterPluginSlots, FieldOperationsAreNotVirtual) {
  EXPECT_EQ(slotOf(&WriterPlugin::getFieldNameFromHandle), -1);
  EXPECT_EQ(slotOf(&WriterPlugin::getFieldValueFromHandle), -1);
}

TEST(WriterPluginSlots, NextOperationOfAWriterTakesSlotNineteen) {
  EXPECT_EQ(slotOf(&OneMore<WriterPlugin>::next), 19);
}

TEST(IntWriterSlots, TablesFollowTheWritersOperations) {
  EXPECT_EQ(slotOf(&IntWriterV2::writeSampledGeneric), 19);
  EXPECT_EQ(slotOf(&IntWriterV2::writeTracedMetric), 20);
  EXPECT_EQ(slotOf(&OneMore<IntWriterV2>::next), 21);
}

TEST(IntWriterSlots, FrontEndsAndServicesAreNotVirtual) {
  EXPECT_EQ(slotOf(&IntWriterV2::writeSampledDeltaMetric), -1);
  EXPECT_EQ(slotOf(&IntWriterV2::writeSampledResidencyMetric), -1);
  EXPECT_EQ(slotOf(&IntWriterV2::convertTicksToTime), -1);
  EXPECT_EQ(slotOf(&IntWriterV2::getStore), -1);
}

TEST(PhmTextWriterSlots, TablesTakeTheTraceWritersSlotsAndNothingFollows) {
  EXPECT_EQ(slotOf(&PhmTextWriter::init), 8);
  EXPECT_EQ(slotOf(&PhmTextWriter::fini), 9);
  EXPECT_EQ(slotOf(&PhmTextWriter::writeSampledGeneric), 19);
  EXPECT_EQ(slotOf(&PhmTextWriter::writeTracedMetric), 20);
  EXPECT_EQ(slotOf(&PhmTextWriter::flushMetaData), -1);
  EXPECT_EQ(slotOf(&PhmTextWriter::getStore), -1);
}

TEST(WriterPluginSlots, SummaryWriterAddsNone) {
  EXPECT_EQ(slotOf(&OneMore<SummaryWriter>::next), 19);
}

TEST(WriterPluginSlots, JsonWritersAddNone) {
  EXPECT_EQ(slotOf(&OneMore<QMJSONWriter>::next), 19);
  EXPECT_EQ(slotOf(&OneMore<JSONWriter>::next), 19);
}

TEST(ContinuousSlots, FlushFollowsTheDestructor) {
  EXPECT_EQ(slotOf(&OneMore<ContinuousWriter>::next), kDestructorSlots);
  EXPECT_EQ(slotOf(&ContWriter::flushContinuousResults), kDestructorSlots);
  EXPECT_EQ(slotOf(&OneMore<ContWriter>::next), kDestructorSlots + 1);
}

TEST(PluginCapabilitySlots, DestructorIsAllThereIs) {
  EXPECT_EQ(slotOf(&OneMore<pwr::PluginCapability>::next), kDestructorSlots);
  EXPECT_EQ(slotOf(&OneMore<pwr::WriterPluginCapability>::next), kDestructorSlots);
}

TEST(FieldOrder, PluginBeginsWithItsIdBehindTheTable) {
  const Plugin plugin("guid");
  EXPECT_EQ(offsetIn(plugin, plugin.m_id), 8);
  EXPECT_EQ(offsetIn(plugin, plugin.m_guid), 16);
  EXPECT_EQ(offsetIn(plugin, plugin.m_capabilities), 48);
  EXPECT_EQ(offsetIn(plugin, plugin.m_name), 72);
}

TEST(FieldOrder, WriterAddsNoField) { EXPECT_EQ(sizeof(WriterPlugin), sizeof(Plugin)); }

TEST(FieldOrder, CapabilityBeginsWithItsNameBehindTheTable) {
  const pwr::PluginCapability capability("name", "description", false);
  EXPECT_EQ(offsetIn(capability, capability.m_name), 8);
  EXPECT_EQ(offsetIn(capability, capability.m_description), 40);
  EXPECT_EQ(offsetIn(capability, capability.m_plugin), 72);
  EXPECT_EQ(offsetIn(capability, capability.m_options), 80);
  EXPECT_EQ(offsetIn(capability, capability.m_flags), 128);
  EXPECT_EQ(offsetIn(capability, capability.m_requirements), 136);
}

TEST(FieldOrder, WritersCapabilityAddsItsClassesAndThenItsSuffix) {
  const pwr::WriterPluginCapability capability({}, "name", "description", ".csv", false);
  EXPECT_EQ(offsetIn(capability, capability.m_tableClasses), sizeof(pwr::PluginCapability));
  EXPECT_EQ(offsetIn(capability, capability.m_fileSuffix),
            sizeof(pwr::PluginCapability) + sizeof capability.m_tableClasses);
}

/// A trace writer that shows where its members stand.
class OpenedIntWriter : public IntWriterV2 {
 public:
  std::vector<std::ptrdiff_t> offsets() const {
    return {offsetIn(*this, fileSuffix),
            offsetIn(*this, outputPath),
            offsetIn(*this, outputFile),
            offsetIn(*this, timestampFrequency),
            offsetIn(*this, durationPrecision),
            offsetIn(*this, globalStartTimestamp),
            offsetIn(*this, tables),
            offsetIn(*this, doTimelineTsc),
            offsetIn(*this, doTimelineResidencyTicks),
            offsetIn(*this, residencyViews)};
  }
};

TEST(FieldOrder, IntWriterBeginsWithItsSuffixBehindTheFrame) {
  const std::vector<std::ptrdiff_t> offsets = OpenedIntWriter().offsets();
  EXPECT_EQ(offsets.front(), static_cast<std::ptrdiff_t>(sizeof(WriterPlugin)));
  EXPECT_TRUE(std::is_sorted(offsets.begin(), offsets.end()));
}

TEST(FieldOrder, ListHoldsCountThenArray) {
  EXPECT_EQ(offsetof(PluginList, count), 0U);
  EXPECT_EQ(sizeof(PluginList::count), 4U);
  EXPECT_EQ(offsetof(PluginList, plugins), 8U);
}

}  // namespace
