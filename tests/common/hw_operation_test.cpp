#include "client/src/common/hw_operation.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "client/src/common/mmio_operation.h"
#include "client/src/common/pci_operation.h"
#include "client/src/common/serializer.h"
#include "host/handles.h"
#include "host/operation_metadata.h"
#include "qumetra/model/access_backend.h"
#include "qumetra/model/model.h"
#include "tests/support/log_capture.h"

namespace {

using qumetra::BackendInUse;
using qumetra::test::LogCapture;
using qumetra::test::RecordingSink;
using Bytes = std::vector<std::uint8_t>;
using Pairs = std::vector<std::pair<std::string, std::string>>;

constexpr const char* kNoAddress = "WARNING: Unable to retrieve operation address\n";

/// An operation that adds nothing to its base.
class PlainOperation : public HWOperation {
 public:
  using HWOperation::HWOperation;
  PlainOperation* clone() const override {
    return std::make_unique<PlainOperation>(*this).release();
  }
};

/// Brings the bytes it was given, however many were asked for, and notes the targets.
class BytesBackend : public qumetra::AccessBackend {
 public:
  explicit BytesBackend(std::optional<Bytes> bytes) : m_bytes(std::move(bytes)) {}
  std::optional<Bytes> read(const HWOperation& /*operation*/, const std::string& target) override {
    m_targets.push_back(target);
    return m_bytes;
  }
  using AccessBackend::write;
  bool write(const HWOperation& /*operation*/, const std::string& target) override {
    m_targets.push_back(target);
    return m_bytes.has_value();
  }

  std::optional<Bytes> m_bytes;
  std::vector<std::string> m_targets;
};

/// What a read of 64 bits gives when the host brings `bytes` for `size`.
unsigned long readLong(const Bytes& bytes, unsigned int size = 8) {
  BytesBackend backend(bytes);
  const BackendInUse inUse(backend);
  PlainOperation operation("X", size);
  unsigned long out = ~0UL;
  EXPECT_EQ(operation.read(out), 0);
  return out;
}

unsigned int readInt(const Bytes& bytes, unsigned int size) {
  BytesBackend backend(bytes);
  const BackendInUse inUse(backend);
  PlainOperation operation("X", size);
  unsigned int out = ~0U;
  EXPECT_EQ(operation.read(out), 0);
  return out;
}

std::unique_ptr<pwr::OperationMetadata> metadataOf(const HWOperation& operation) {
  return std::unique_ptr<pwr::OperationMetadata>(operation.getOperationMetadata());
}

TEST(HardwareOperation, InitValueStartsAsTheName) {
  const PlainOperation operation("NAME", 4);
  EXPECT_EQ(operation.m_name, "NAME");
  EXPECT_EQ(operation.m_initValue, "NAME");
  EXPECT_TRUE(operation.m_requirements.empty());
}

TEST(HardwareOperation, AcceptsSizeEntityAndDescriptor) {
  PlainOperation operation("X", 4);
  EXPECT_EQ(operation.m_categories.size(), 3U);
  for (const char* const category : {"SIZE", "ENTITY", "DESCRIPTOR"}) {
    EXPECT_EQ(operation.set(category, "1"), 0) << category;
  }
}

TEST(HardwareOperation, WithAnAddressAcceptsAndHasIt) {
  const PlainOperation operation("X", 18446744073709551615UL, 4);
  EXPECT_EQ(operation.m_categories.size(), 4U);
  EXPECT_EQ(operation.m_values.at("ADDRESS"), "18446744073709551615");
  EXPECT_EQ(operation.getAddress(), 18446744073709551615UL);
}

TEST(HardwareOperation, UnknownCategoryIsRefusedWithAWarningAndChangesNothing) {
  const LogCapture log;
  PlainOperation operation("X", 4);
  EXPECT_EQ(operation.set("VALUE", "1"), -1);
  EXPECT_TRUE(operation.m_values.empty());
  EXPECT_EQ(log.warnings(), (RecordingSink::Texts{{2, "WARNING: Key VALUE is invalid!\n"}}));
}

TEST(HardwareOperation, BelowVerbosityTwoARefusalIsSilent) {
  const LogCapture log(PluginEnvironment::kErrors);
  PlainOperation operation("X", 4);
  EXPECT_EQ(operation.set("VALUE", "1"), -1);
  EXPECT_TRUE(log.warnings().empty());
}

TEST(HardwareOperation, LaterValueReplacesAnEarlierOne) {
  PlainOperation operation("X", 4);
  operation.set("ENTITY", "a");
  operation.set("ENTITY", "b");
  EXPECT_EQ(operation.m_values, (std::map<std::string, std::string>{{"ENTITY", "b"}}));
}

TEST(HardwareOperation, SetSizeLeavesTheDefaultSize) {
  PlainOperation operation("X", 4);
  EXPECT_EQ(operation.getSize(), 4U);
  EXPECT_EQ(operation.setSize(8), 0);
  EXPECT_EQ(operation.getSize(), 8U);
  EXPECT_EQ(operation.m_defaultSize, 4U);
  EXPECT_EQ(operation.m_values.at("SIZE"), "8");
}

TEST(HardwareOperation, BadSizeIsZero) {
  const LogCapture log;
  PlainOperation operation("X", 4);
  operation.set("SIZE", "wide");
  EXPECT_EQ(operation.getSize(), 0U);
  EXPECT_EQ(log.streamedWarnings(), "2WARNING: Failed to extract numeric value of wide\n");
}

/// Refuses every category although it accepts them.
class ClosedOperation : public PlainOperation {
 public:
  using PlainOperation::PlainOperation;
  bool canSetCategory(const std::string& /*category*/) const override { return false; }
};

TEST(HardwareOperation, SetSizeReturnsZeroAlsoWhenItWasRefused) {
  const LogCapture log;
  ClosedOperation operation("X", 4);
  EXPECT_EQ(operation.setSize(8), 0);
  EXPECT_EQ(operation.getSize(), 4U);
  EXPECT_EQ(log.warnings().size(), 1U);
}

TEST(HardwareOperation, GetReadsNumbersOfThreeWidths) {
  PlainOperation operation("X", 4);
  operation.set("ENTITY", "0xFFFF");
  unsigned long wide = 0;
  unsigned int middle = 0;
  unsigned short narrow = 0;
  EXPECT_TRUE(operation.get("ENTITY", wide));
  EXPECT_TRUE(operation.get("ENTITY", middle));
  EXPECT_TRUE(operation.get("ENTITY", narrow));
  EXPECT_EQ(wide, 0xFFFFU);
  EXPECT_EQ(middle, 0xFFFFU);
  EXPECT_EQ(narrow, 0xFFFFU);
}

TEST(HardwareOperation, GetTakesANumberThatIsTooWideForABadOne) {
  const LogCapture log;
  PlainOperation operation("X", 4);
  operation.set("ENTITY", "65536");
  unsigned short narrow = 1;
  EXPECT_TRUE(operation.get("ENTITY", narrow));
  EXPECT_EQ(narrow, 0U);
}

TEST(HardwareOperation, GetWithoutAValueLeavesTheNumberAlone) {
  const PlainOperation operation("X", 4);
  unsigned int number = 5;
  EXPECT_FALSE(operation.get("ENTITY", number));
  EXPECT_EQ(number, 5U);
}

TEST(HardwareOperation, MissingAddressIsAWarningAndZero) {
  const LogCapture log;
  EXPECT_EQ(PlainOperation("X", 4).getAddress(), 0U);
  EXPECT_EQ(log.warnings(), (RecordingSink::Texts{{2, kNoAddress}}));
}

TEST(HardwareOperation, CanReadOnly) {
  const PlainOperation operation("X", 4);
  EXPECT_TRUE(operation.isValidCommand_i(pwr::QMOpCommand::Read));
  EXPECT_FALSE(operation.isValidCommand_i(pwr::QMOpCommand::Write));
  EXPECT_FALSE(operation.isValidCommand_i(pwr::QMOpCommand::None));
}

TEST(HardwareRead, EightBytesAreTheWholeNumber) {
  EXPECT_EQ(readLong({1, 2, 3, 4, 5, 6, 7, 8}), 0x0807060504030201UL);
}

TEST(HardwareRead, FourBytesIntoALongAreZeroExtended) {
  EXPECT_EQ(readLong({1, 2, 3, 0xFF}, 4), 0xFF030201UL);
}

TEST(HardwareRead, OfSixteenBytesALongTakesTheFirstEight) {
  EXPECT_EQ(readLong({1, 2, 3, 4, 5, 6, 7, 8, 9, 9, 9, 9, 9, 9, 9, 9}, 16), 0x0807060504030201UL);
}

TEST(HardwareRead, NoBytesAreZero) {
  EXPECT_EQ(readLong({}), 0U);
  EXPECT_EQ(readInt({}, 4), 0U);
}

TEST(HardwareRead, AnIntTakesNoMoreThanTheSize) {
  EXPECT_EQ(readInt({1, 2, 3, 4}, 4), 0x04030201U);
  EXPECT_EQ(readInt({1, 2, 3, 4}, 2), 0x0201U);
  EXPECT_EQ(readInt({1, 2, 3, 4, 5, 6, 7, 8}, 8), 0x04030201U);
}

TEST(HardwareRead, AnIntTakesNoMoreThanTheBytesThatCame) {
  EXPECT_EQ(readInt({1, 2}, 4), 0x0201U);
  EXPECT_EQ(readInt({1, 2}, 4000000000U), 0x0201U);
}

TEST(HardwareRead, FailureLeavesTheNumberAlone) {
  BytesBackend backend(std::nullopt);
  const BackendInUse inUse(backend);
  PlainOperation operation("X", 4);
  unsigned long wide = 5;
  unsigned int narrow = 6;
  EXPECT_EQ(operation.read(wide), -1);
  EXPECT_EQ(operation.read(narrow), -1);
  EXPECT_EQ(wide, 5U);
  EXPECT_EQ(narrow, 6U);
}

TEST(HardwareRead, GoesToAnyTarget) {
  BytesBackend backend(Bytes{1});
  const BackendInUse inUse(backend);
  PlainOperation operation("X", 4);
  unsigned long wide = 0;
  unsigned int narrow = 0;
  operation.read(wide);
  operation.read(narrow);
  EXPECT_EQ(backend.m_targets, (std::vector<std::string>{"ANY", "ANY"}));
}

TEST(HardwareWrite, GoesToTheTargetAndReturnsWhatTheDispatchSays) {
  BytesBackend backend(Bytes{});
  const BackendInUse inUse(backend);
  PlainOperation operation("X", 4);
  EXPECT_EQ(operation.write("place"), 0);
  EXPECT_EQ(backend.m_targets, std::vector<std::string>{"place"});
  backend.m_bytes.reset();
  EXPECT_NE(operation.write("place"), 0);
}

TEST(HardwareWrite, AtAnEntityGoesToItsName) {
  qumetra::Model model;
  const pwr::EntityHandle& entity = model.addEntity({.name = "Core 0"});
  BytesBackend backend(Bytes{});
  const BackendInUse inUse(backend);
  PlainOperation operation("X", 4);
  EXPECT_EQ(operation.write(&entity), 0);
  EXPECT_EQ(backend.m_targets, std::vector<std::string>{"Core 0"});
}

TEST(Dispatch, WithoutABackendEveryAccessFails) {
  PlainOperation operation("X", 4);
  unsigned long out = 0;
  EXPECT_EQ(operation.read(out), -1);
  EXPECT_NE(operation.write("ANY"), 0);
}

TEST(Dispatch, NullsAreRefused) {
  BytesBackend backend(Bytes{});
  const BackendInUse inUse(backend);
  PlainOperation operation("X", 4);
  EXPECT_NE(pwr::Operation::dispatchRead(nullptr, "ANY"), 0);
  EXPECT_NE(pwr::Operation::dispatchWrite(nullptr, "ANY"), 0);
  const pwr::EntityHandle* const noEntity = nullptr;
  EXPECT_NE(operation.write(noEntity), 0);
}

TEST(Dispatch, TheFormerBackendComesBack) {
  BytesBackend outer(Bytes{1});
  BytesBackend inner(Bytes{2});
  const BackendInUse outerInUse(outer);
  { const BackendInUse innerInUse(inner); }
  PlainOperation operation("X", 1);
  unsigned long out = 0;
  EXPECT_EQ(operation.read(out), 0);
  EXPECT_EQ(out, 1U);
}

TEST(OperationMetadata, HasNameInitValueSizeAndHexadecimalAddress) {
  PlainOperation operation("NAME", 0xABCDEF, 4);
  operation.m_initValue = "INIT";
  const auto metadata = metadataOf(operation);
  EXPECT_EQ(metadata->m_kind, 3U);
  EXPECT_EQ(metadata->m_operationName, "NAME");
  EXPECT_EQ(metadata->m_initValue, "INIT");
  EXPECT_EQ(metadata->m_size, 4U);
  EXPECT_EQ(metadata->m_address, "0xabcdef");
  EXPECT_EQ(metadata->getPluginID(), 0xFFFFFFFFU);
}

TEST(OperationMetadata, TheWidestAddressFits) {
  EXPECT_EQ(metadataOf(PlainOperation("X", ~0UL, 4))->m_address, "0xffffffffffffffff");
}

TEST(OperationMetadata, SetSizeCounts) {
  PlainOperation operation("X", 1UL, 4);
  operation.setSize(16);
  EXPECT_EQ(metadataOf(operation)->m_size, 16U);
}

TEST(OperationMetadata, WithoutEntityAndDescriptorThereAreNoPairs) {
  EXPECT_TRUE(metadataOf(PlainOperation("X", 1UL, 4))->m_pairs.empty());
}

TEST(OperationMetadata, EntityStandsBeforeDescriptor) {
  PlainOperation operation("X", 1UL, 4);
  operation.set("DESCRIPTOR", "d");
  operation.set("ENTITY", "e");
  EXPECT_EQ(metadataOf(operation)->m_pairs, (Pairs{{"ENTITY", "e"}, {"DESCRIPTOR", "d"}}));
}

TEST(OperationMetadata, WithoutAddressLogsOnceAndHasAddressZero) {
  const LogCapture log;
  const auto metadata = metadataOf(PlainOperation("X", 4));
  EXPECT_EQ(metadata->m_address, "0x0");
  EXPECT_EQ(log.warnings(), (RecordingSink::Texts{{2, kNoAddress}}));
}

TEST(OperationMetadata, KeysMayRepeat) {
  const auto metadata = metadataOf(PlainOperation("X", 1UL, 4));
  metadata->addValue("k", "1");
  metadata->addValue("k", "2");
  EXPECT_EQ(metadata->m_pairs, (Pairs{{"k", "1"}, {"k", "2"}}));
}

TEST(OperationMetadata, IsASnapshot) {
  PlainOperation operation("X", 1UL, 4);
  const auto metadata = metadataOf(operation);
  operation.set("ADDRESS", "2");
  EXPECT_EQ(metadata->m_address, "0x1");
}

TEST(OperationClone, CopiesEverythingAndIsFreeOfItsOriginal) {
  PlainOperation operation("X", 1UL, 4);
  operation.m_initValue = "I";
  operation.m_buffer = {1, 2};
  const std::unique_ptr<PlainOperation> copy(operation.clone());
  operation.set("ADDRESS", "2");
  EXPECT_EQ(copy->m_name, "X");
  EXPECT_EQ(copy->m_initValue, "I");
  EXPECT_EQ(copy->m_buffer, (Bytes{1, 2}));
  EXPECT_EQ(copy->m_defaultSize, 4U);
  EXPECT_EQ(copy->getAddress(), 1U);
}

}  // namespace
