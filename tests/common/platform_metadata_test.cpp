#include "host/platform_metadata.h"

#include <cstring>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client/src/common/serializer.h"
#include "host/system_metadata.h"
#include "tests/support/log_capture.h"

namespace pwr {
namespace {

using Bytes = std::vector<std::uint8_t>;
using qumetra::test::LogCapture;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr std::uint32_t kNewTree = 0x07E90601;

/// Packs by hand what the code under test is to read or to have written.
class Packer {
 public:
  Packer& u8(std::uint8_t value) { return raw(&value, sizeof value); }
  Packer& u16(std::uint16_t value) { return raw(&value, sizeof value); }
  Packer& u32(std::uint32_t value) { return raw(&value, sizeof value); }
  Packer& real(float value) { return raw(&value, sizeof value); }
  Packer& text(const std::string& value) {
    u16(static_cast<std::uint16_t>(value.size()));
    return raw(value.data(), value.size());
  }
  const Bytes& bytes() const { return m_bytes; }

 private:
  Packer& raw(const void* source, std::size_t size) {
    const auto* first = static_cast<const std::uint8_t*>(source);
    m_bytes.insert(m_bytes.end(), first, first + size);
    return *this;
  }
  Bytes m_bytes;
};

Packer packedPlatform() {
  Packer packer;
  packer.text("name").text("desc").u16(2).text("s1").text("s2");
  packer.u32(2).text("a").text("1").text("b").text("2");
  return packer;
}

/// The processor's part up to its topology.
Packer packedProcessor() {
  Packer packer = packedPlatform();
  packer.u16(6).u16(151).u16(2).real(100.0F).real(400.5F).real(5000.0F).real(2100.0F);
  packer.u32(7).u32(0xdeadbeef);
  return packer;
}

void fill(PlatformMetadata& metadata) {
  metadata.m_name = "name";
  metadata.m_description = "desc";
  metadata.m_specifiers = {"s1", "s2"};
  metadata.m_values = {{"b", "2"}, {"a", "1"}};
}

void fillProcessor(CPUMetadata& cpu) {
  fill(cpu);
  cpu.m_family = 6;
  cpu.m_model = 151;
  cpu.m_stepping = 2;
  cpu.m_cpuWords = {100.0F, 400.5F, 5000.0F, 2100.0F, 7, 0xdeadbeef};
  cpu.m_topology.addThread({0, 1, 2, 3});
  cpu.m_topology.addThread({0, 1, 2, 4});
  cpu.m_topologyChanges.push_back({123456789, 4, true});
}

template <typename Metadata>
Bytes packedBy(const Metadata& metadata) {
  Serializer serializer(0);
  metadata.serializePlatformMetadata(serializer);
  return serializer.get_buffer();
}

Bytes cutTo(Bytes bytes, std::size_t size) {
  bytes.resize(size);
  return bytes;
}

TEST(PlatformMetadata, IsPackedFieldByField) {
  PlatformMetadata metadata;
  fill(metadata);
  EXPECT_EQ(packedBy(metadata), packedPlatform().bytes());
}

TEST(PlatformMetadata, IsReadBack) {
  Serializer serializer(packedPlatform().bytes());
  PlatformMetadata metadata;
  EXPECT_EQ(metadata.deserializePlatformMetadata(serializer), 0);
  EXPECT_EQ(metadata.m_name, "name");
  EXPECT_EQ(metadata.m_description, "desc");
  EXPECT_THAT(metadata.m_specifiers, ElementsAre("s1", "s2"));
  EXPECT_THAT(metadata.m_values, ElementsAre(Pair("a", "1"), Pair("b", "2")));
}

TEST(PlatformMetadata, EveryCutRecordFallsShort) {
  const Bytes whole = packedPlatform().bytes();
  for (std::size_t size = 0; size < whole.size(); ++size) {
    Serializer serializer(cutTo(whole, size));
    PlatformMetadata metadata;
    EXPECT_EQ(metadata.deserializePlatformMetadata(serializer), -1) << size;
    EXPECT_EQ(metadata.m_name, "") << size;
    EXPECT_THAT(metadata.m_specifiers, IsEmpty()) << size;
  }
}

TEST(PlatformMetadata, PairsReadBeforeAFaultStay) {
  Packer packer;
  packer.text("name").text("desc").u16(0).u32(3).text("a").text("new").text("b").text("2");
  Serializer serializer(packer.bytes());
  PlatformMetadata metadata;
  metadata.m_values = {{"a", "old"}, {"c", "3"}};
  EXPECT_EQ(metadata.deserializePlatformMetadata(serializer), -1);
  EXPECT_THAT(metadata.m_values, ElementsAre(Pair("a", "new"), Pair("b", "2"), Pair("c", "3")));
}

TEST(PlatformMetadata, WhatIsFilledKeepsItsNameDescriptionAndSpecifiers) {
  Serializer serializer(packedPlatform().bytes());
  PlatformMetadata metadata;
  metadata.m_name = "mine";
  metadata.m_specifiers = {"mine"};
  EXPECT_EQ(metadata.deserializePlatformMetadata(serializer), 0);
  EXPECT_EQ(metadata.m_name, "mine");
  EXPECT_EQ(metadata.m_description, "desc");
  EXPECT_THAT(metadata.m_specifiers, ElementsAre("mine"));
}

TEST(PlatformMetadata, ARecordWithAnEmptyTextCannotBeReadBack) {
  const auto status = [](const Packer& packer) {
    Serializer serializer(packer.bytes());
    return PlatformMetadata().deserializePlatformMetadata(serializer);
  };
  EXPECT_EQ(status(Packer().text("").text("d").u16(0).u32(0)), -1);
  EXPECT_EQ(status(Packer().text("n").text("").u16(0).u32(0)), -1);
  EXPECT_EQ(status(Packer().text("n").text("d").u16(1).text("").u32(0)), -1);
  EXPECT_EQ(status(Packer().text("n").text("d").u16(0).u32(1).text("k").text("")), -1);
  EXPECT_EQ(status(Packer().text("n").text("d").u16(0).u32(0)), 0);
}

TEST(PlatformMetadata, AHugeCountEndsWithTheBytes) {
  Packer packer;
  packer.text("n").text("d").u16(0).u32(0xffffffff).text("k").text("v");
  Serializer serializer(packer.bytes());
  PlatformMetadata metadata;
  EXPECT_EQ(metadata.deserializePlatformMetadata(serializer), -1);
  EXPECT_THAT(metadata.m_values, ElementsAre(Pair("k", "v")));
}

TEST(PlatformMetadata, NoMoreSpecifiersArePackedThanTheirCountCanTell) {
  PlatformMetadata metadata;
  fill(metadata);
  metadata.m_specifiers.assign(65536, "s");
  Serializer serializer(packedBy(metadata));
  PlatformMetadata read;
  EXPECT_EQ(read.deserializePlatformMetadata(serializer), 0);
  EXPECT_EQ(read.m_specifiers.size(), 65535U);
  EXPECT_EQ(read.m_values.size(), 2U);
}

TEST(PlatformMetadata, ACopyHoldsTheSame) {
  PlatformMetadata metadata;
  fill(metadata);
  metadata.m_id = 12;
  const PlatformMetadata copy(metadata);
  EXPECT_EQ(packedBy(copy), packedBy(metadata));
  EXPECT_EQ(copy.m_id, 12);
}

TEST(PlatformMetadata, GivesNoNameOfItsOwn) {
  PlatformMetadata metadata;
  SystemMetadata system;
  std::list<std::string> names{"old"};
  EXPECT_EQ(metadata.initAndGetValue_i(system, names), 0);
  EXPECT_THAT(names, ElementsAre("old", "N/A"));
  EXPECT_FALSE(metadata.shouldPrintMessageOnNoMatch());
}

TEST(CPUMetadata, IsPackedBehindThePlatform) {
  CPUMetadata cpu;
  fillProcessor(cpu);
  Serializer host(0);
  cpu.m_topology.serializeTree(host);
  cpu.m_topology.serializeHGS(host);
  const std::uint16_t changes = 1;
  host.write_to(&changes, sizeof changes);
  cpu.m_topologyChanges.front().serialize(host);

  Bytes expected = packedProcessor().bytes();
  const Bytes hostPart = host.get_buffer();
  expected.insert(expected.end(), hostPart.begin(), hostPart.end());
  EXPECT_EQ(packedBy(cpu), expected);
}

TEST(CPUMetadata, IsReadBackWithTheNewTreeFromItsVersionOn) {
  CPUMetadata cpu;
  fillProcessor(cpu);
  Serializer serializer(packedBy(cpu));
  CPUMetadata read;
  EXPECT_EQ(read.deserializePlatformMetadata(serializer, kNewTree), 0);
  EXPECT_EQ(packedBy(read), packedBy(cpu));
  EXPECT_EQ(read.m_topology.getNumModules(), 1U);
  EXPECT_EQ(read.m_topology.getNumThreads(), 2U);
  EXPECT_EQ(read.m_topologyChanges.size(), 1U);
}

/// A processor whose tree was written in the deprecated form: two threads, of package, core and id.
Bytes deprecatedRecord() {
  Packer packer = packedProcessor();
  packer.u32(2).u32(0).u32(2).u32(3).u32(0).u32(2).u32(4);
  packer.u16(0);
  return packer.bytes();
}

TEST(CPUMetadata, OneVersionBelowTheTreeIsReadInItsDeprecatedForm) {
  Serializer serializer(deprecatedRecord());
  CPUMetadata read;
  EXPECT_EQ(read.deserializePlatformMetadata(serializer, kNewTree - 1), 0);
  EXPECT_EQ(read.m_topology.getNumThreads(), 2U);
  EXPECT_EQ(read.m_topology.getNumModules(), 0U);
  EXPECT_EQ(read.m_model, 151);
  EXPECT_EQ(read.m_cpuWords.lastWord, 0xdeadbeefU);
}

TEST(CPUMetadata, TheVirtualFormAlwaysReadsTheDeprecatedTree) {
  Serializer serializer(deprecatedRecord());
  CPUMetadata read;
  PlatformMetadata& platform = read;
  EXPECT_EQ(platform.deserializePlatformMetadata(serializer), 0);
  EXPECT_EQ(read.m_topology.getNumThreads(), 2U);
}

TEST(CPUMetadata, EveryCutRecordIsAFailure) {
  CPUMetadata cpu;
  fillProcessor(cpu);
  const Bytes whole = packedBy(cpu);
  for (std::size_t size = 0; size < whole.size(); ++size) {
    Serializer serializer(cutTo(whole, size));
    CPUMetadata read;
    EXPECT_EQ(read.deserializePlatformMetadata(serializer, kNewTree), 1) << size;
  }
}

TEST(CPUMetadata, ChangesThatFallShortLeaveTheOldOnes) {
  CPUMetadata cpu;
  fillProcessor(cpu);
  Bytes bytes = packedBy(cpu);
  bytes.pop_back();
  Serializer serializer(bytes);
  CPUMetadata read;
  read.m_topologyChanges.push_back({1, 2, false});
  EXPECT_EQ(read.deserializePlatformMetadata(serializer, kNewTree), 1);
  EXPECT_EQ(read.m_topologyChanges.size(), 1U);
  EXPECT_EQ(read.m_topologyChanges.front().timestamp, 1U);
}

TEST(CPUMetadata, ACopyHoldsTheSame) {
  CPUMetadata cpu;
  fillProcessor(cpu);
  const CPUMetadata copy(cpu);
  EXPECT_EQ(packedBy(copy), packedBy(cpu));
}

TEST(TopTree, ACopyOutlivesItsOriginalAndPointsIntoItself) {
  auto original = std::make_unique<TopTree>();
  original->addThread({0, 1, 2, 3});
  original->addThread({1, std::nullopt, 5, 6});
  std::vector<const TNode*> before;
  original->getAllThreads(before);
  const TNode* const formerCore = before.front()->parent;
  TopTree copy(*original);
  std::vector<const TNode*> threads;
  copy.getAllThreads(threads);
  ASSERT_EQ(threads.size(), 2U);
  EXPECT_NE(threads[0]->parent, formerCore);
  original.reset();

  EXPECT_EQ(threads[0]->parent->id, 2U);
  EXPECT_EQ(threads[0]->parent->parent->id, 1U);
  EXPECT_EQ(threads[0]->parent->parent->parent->id, 0U);
  EXPECT_EQ(threads[0]->parent->parent->parent->parent, nullptr);
  EXPECT_EQ(threads[1]->parent->parent->id, 1U);
}

TEST(TopTree, ACopyGrowsOnItsOwn) {
  TopTree original;
  original.addThread({0, 1, 2, 3});
  TopTree copy(original);
  copy.addThread({0, 1, 2, 4});
  EXPECT_EQ(copy.getNumThreads(), 2U);
  EXPECT_EQ(copy.getNumCores(), 1U);
  EXPECT_EQ(original.getNumThreads(), 1U);
}

TEST(PCHMetadata, TheEnergyReportingEntriesAreItsConfiguration) {
  PCHMetadata pch;
  pch.m_values = {
      {"AXI_ENERGY-REPORTING", "0x1F"}, {"BXI_ENERGY-REPORTING", "12"}, {"MZL-WS-PCH-BUS", "0x80"}};
  EXPECT_THAT(pch.getEnergyReportingConfiguration(),
              ElementsAre(Pair("AXI", 31U), Pair("BXI", 12U)));
}

TEST(PCHMetadata, TheFirstPartOfAKeyCountsWhereverItsMarkStands) {
  PCHMetadata pch;
  pch.m_values = {{"ENERGY-REPORTING_X", "7"}};
  EXPECT_THAT(pch.getEnergyReportingConfiguration(), ElementsAre(Pair("ENERGY-REPORTING", 7U)));
}

TEST(PCHMetadata, KeysWithoutOneUnderlineAreIgnored) {
  PCHMetadata pch;
  pch.m_values = {{"ENERGY-REPORTING", "1"},
                  {"A_B_ENERGY-REPORTING", "2"},
                  {"_ENERGY-REPORTING", "3"},
                  {"A_OTHER", "4"}};
  EXPECT_THAT(pch.getEnergyReportingConfiguration(), IsEmpty());
}

TEST(PCHMetadata, AValueThatIsNoNumberIsAWarningAndZero) {
  const LogCapture log;
  PCHMetadata pch;
  pch.m_values = {{"A_ENERGY-REPORTING", "x"}};
  EXPECT_THAT(pch.getEnergyReportingConfiguration(), ElementsAre(Pair("A", 0U)));
  EXPECT_EQ(log.streamedWarnings(), "2WARNING: Failed to extract numeric value of x\n");
}

TEST(PCHMetadata, WithoutValuesTheConfigurationIsEmpty) {
  EXPECT_THAT(PCHMetadata().getEnergyReportingConfiguration(), IsEmpty());
}

TEST(PCHMetadata, ACopyHoldsTheSame) {
  PCHMetadata pch;
  fill(pch);
  const PCHMetadata copy(pch);
  EXPECT_EQ(packedBy(copy), packedBy(pch));
}

}  // namespace
}  // namespace pwr
