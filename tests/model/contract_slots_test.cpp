// The places of virtual operations in their tables. Hosts and writers that were built apart meet
// there, so a place may never change.
#include <array>
#include <cstddef>
#include <cstring>

#include <gtest/gtest.h>

#include "host/environment.h"
#include "host/handles.h"
#include "host/logger.h"
#include "host/messages.h"
#include "host/platform_metadata.h"
#include "host/table.h"

namespace {

/// The index of a virtual operation in its table, the two destructors being 0 and 1. In the Itanium
/// ABI a pointer to a virtual member is one more than the offset of its slot, and an adjustment.
template <typename Member>
std::ptrdiff_t slotOf(Member member) {
  std::array<std::ptrdiff_t, 2> words{};
  static_assert(sizeof member == sizeof words);
  std::memcpy(words.data(), &member, sizeof member);
  EXPECT_EQ(words[0] % 8, 1) << "not a virtual operation";
  EXPECT_EQ(words[1], 0) << "not in the first table";
  return (words[0] - 1) / 8;
}

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

TEST(ContractSlots, TextStandsRightBehindTheMessageId) {
  // Readers of other builds look at the fields directly.
  const pwr::HeaderTextMessage message;
  const auto* const start = reinterpret_cast<const char*>(&message);
  EXPECT_EQ(reinterpret_cast<const char*>(&message.m_id) - start, 8);
  EXPECT_EQ(reinterpret_cast<const char*>(&message.m_message) - start, 16);
}

}  // namespace
