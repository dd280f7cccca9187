// The order of the virtual operations, which hosts are built against.
//
// A pointer to a virtual member function holds 1 + 8 * slot in the Itanium C++ ABI, where a virtual
// destructor takes two slots. So the tests need no call and no object.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <string>

#include <gtest/gtest.h>

#include "writers/continuous_writer/cont_writer.h"
#include "writers/json_plugin.h"
#include "writers/qmjson_plugin/qmjson_writer.h"
#include "writers/textwriter_plugin/summary_writer.h"
#include "writers/writer_plugins.h"

namespace {

#if !defined(__x86_64__)
#error "Pointers to member functions are laid out otherwise here."
#endif

constexpr int kDestructorSlots = 2;

/// The slot of a virtual operation, counted from 0; -1 for an operation that is not virtual.
template <typename MemberFunction>
int slotOf(MemberFunction function) {
  std::uintptr_t value = 0;
  static_assert(sizeof(function) >= sizeof(value));
  std::memcpy(&value, &function, sizeof(value));
  if (value % 2 == 0) {
    return -1;  // The address of a function.
  }
  return static_cast<int>((value - 1) / sizeof(void*));
}

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

/// Adds one slot behind those of its base.
template <typename Base>
class OneMore : public Base {
 public:
  virtual void next() {}
};

TEST(WriterPluginSlots, NextOperationOfAWriterTakesSlotNineteen) {
  EXPECT_EQ(slotOf(&OneMore<WriterPlugin>::next), 19);
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

/// Where a member stands in its object, in bytes.
template <typename Object, typename Member>
std::ptrdiff_t offsetIn(const Object& object, const Member& member) {
  return reinterpret_cast<const char*>(&member) - reinterpret_cast<const char*>(&object);
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

TEST(FieldOrder, ListHoldsCountThenArray) {
  EXPECT_EQ(offsetof(PluginList, count), 0U);
  EXPECT_EQ(sizeof(PluginList::count), 4U);
  EXPECT_EQ(offsetof(PluginList, plugins), 8U);
}

}  // namespace
