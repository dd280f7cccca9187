#include <map>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "client/src/common/aggr_telem_immediate.h"
#include "client/src/common/aggr_telem_operation.h"
#include "host/configuration.h"
#include "host/operation_metadata.h"
#include "qumetra/access/memory_backend.h"

namespace {

using pwr::AggrTelemImmediate;
using qumetra::BackendInUse;
using qumetra::MemoryBackend;
using Pairs = std::vector<std::pair<std::string, std::string>>;
using Values = std::map<std::string, std::string>;
using Samples = std::map<unsigned short, unsigned long>;

AggrTelemOperation operation(const std::string& bitRange = "") {
  return {"COUNTER4", "ENERGY", {0xABCD, 3, 17, bitRange}};
}

std::unique_ptr<pwr::OperationMetadata> metadataOf(const HWOperation& described) {
  return std::unique_ptr<pwr::OperationMetadata>(described.getOperationMetadata());
}

TEST(TelemetryOperation, IsSetUpByItsConstructor) {
  const AggrTelemOperation made = operation("15:8");
  EXPECT_EQ(made.m_name, "AGGR-TELEM");
  EXPECT_EQ(made.getSize(), 8U);
  EXPECT_EQ(made.m_values, (Values{{"GUID", "43981"},
                                   {"ENDPOINT-ID", "3"},
                                   {"SAMPLE-ID", "17"},
                                   {"BIT-RANGE", "15:8"},
                                   {"COUNTER-NAME", "COUNTER4"},
                                   {"COUNTER-FIELD-NAME", "ENERGY"}}));
}

TEST(TelemetryOperation, AnEmptyBitRangeStaysUnset) {
  EXPECT_FALSE(operation().m_values.contains("BIT-RANGE"));
}

TEST(TelemetryOperation, AcceptsThirteenCategories) {
  AggrTelemOperation made = operation();
  EXPECT_EQ(made.m_categories.size(), 13U);
  for (const char* const category : {"SIZE", "ENTITY", "DESCRIPTOR", "COUNTER-NAME", "SAMPLE-ID",
                                     "ENDPOINT-ID", "GUID", "COUNTER-FIELD-NAME", "BIT-RANGE",
                                     "DESCRIPTION", "DATA-FORMAT", "SCALE-FACTOR", "DIVIDER"}) {
    EXPECT_EQ(made.set(category, "1"), 0) << category;
  }
}

TEST(TelemetryOperation, CanReadOnly) {
  EXPECT_TRUE(operation().isValidCommand_i(pwr::QMOpCommand::Read));
  EXPECT_FALSE(operation().isValidCommand_i(pwr::QMOpCommand::Write));
}

TEST(TelemetryOperation, CloneIsAPlainCopy) {
  const AggrTelemOperation original = operation("15:8");
  const std::unique_ptr<AggrTelemOperation> copy(original.clone());
  EXPECT_EQ(copy->m_values, original.m_values);
}

TEST(TelemetryMetadata, HasTheCounterNameForItsAddress) {
  EXPECT_EQ(metadataOf(operation())->m_address, "COUNTER4");
  EXPECT_EQ(metadataOf(operation())->m_operationName, "AGGR-TELEM");
  EXPECT_EQ(metadataOf(operation())->m_size, 8U);
}

TEST(TelemetryMetadata, HasItsPairsInOrderWithoutGuidAndSample) {
  AggrTelemOperation made = operation("15:8");
  for (const char* const category :
       {"DIVIDER", "SCALE-FACTOR", "DATA-FORMAT", "DESCRIPTION", "DESCRIPTOR", "ENTITY"}) {
    made.set(category, std::string("of ") + category);
  }
  EXPECT_EQ(metadataOf(made)->m_pairs, (Pairs{{"ENTITY", "of ENTITY"},
                                              {"DESCRIPTOR", "of DESCRIPTOR"},
                                              {"COUNTER-FIELD-NAME", "ENERGY"},
                                              {"BIT-RANGE", "15:8"},
                                              {"DESCRIPTION", "of DESCRIPTION"},
                                              {"DATA-FORMAT", "of DATA-FORMAT"},
                                              {"SCALE-FACTOR", "of SCALE-FACTOR"},
                                              {"DIVIDER", "of DIVIDER"},
                                              {"ENDPOINT-ID", "3"}}));
}

TEST(TelemetryMetadata, LeavesOutWhatHasNoValue) {
  EXPECT_EQ(metadataOf(operation())->m_pairs,
            (Pairs{{"COUNTER-FIELD-NAME", "ENERGY"}, {"ENDPOINT-ID", "3"}}));
}

TEST(TelemetryMetadata, WithoutACounterNameIsThatOfAnyAccess) {
  AggrTelemOperation made = operation("15:8");
  made.m_values.erase("COUNTER-NAME");
  EXPECT_EQ(metadataOf(made)->m_address, "0x0");
  EXPECT_TRUE(metadataOf(made)->m_pairs.empty());
}

/// A configuration with counters of feature "F", and samples in memory.
class Immediate : public ::testing::Test {
 protected:
  static void configure(const std::string& counter, std::uint16_t endpointId,
                        std::uint64_t sampleId) {
    pwr::QMConfigFileParser::instance()->addAggrTelemCounterInfo(
        "F", counter, "FIELD", {0x10, endpointId, sampleId, "63:0"});
  }

  MemoryBackend m_registers;
  BackendInUse m_inUse{m_registers};
};

TEST_F(Immediate, ReadsACounterWithOneEndpoint) {
  configure("ONE", 4, 2);
  m_registers.setSample(4, 2, 0x1122334455667788);
  AggrTelemImmediate counter("F", "ONE", "FIELD");
  unsigned long out = 0;
  EXPECT_EQ(counter.read(out), 0);
  EXPECT_EQ(out, 0x1122334455667788U);
}

TEST_F(Immediate, KeepsWhatItWasMadeFrom) {
  configure("ONE", 4, 2);
  const AggrTelemImmediate counter("F", "ONE", "FIELD");
  EXPECT_EQ(counter.m_feature, "F");
  EXPECT_EQ(counter.m_counterName, "ONE");
  EXPECT_EQ(counter.m_fieldName, "FIELD");
  ASSERT_EQ(counter.m_operations.size(), 1U);
  EXPECT_EQ(counter.m_operations[0].m_values.at("COUNTER-NAME"), "ONE");
  EXPECT_EQ(counter.m_operations[0].m_values.at("COUNTER-FIELD-NAME"), "FIELD");
}

TEST_F(Immediate, WithoutEndpointsReadsNothing) {
  AggrTelemImmediate counter("F", "NONE", "FIELD");
  unsigned long out = 5;
  Samples samples;
  EXPECT_EQ(counter.read(out), 1);
  EXPECT_EQ(out, 5U);
  EXPECT_EQ(counter.readFromMultiEndpoint(samples), 1);
}

TEST_F(Immediate, PlainReadRefusesSeveralEndpoints) {
  configure("TWO", 4, 2);
  configure("TWO", 5, 2);
  AggrTelemImmediate counter("F", "TWO", "FIELD");
  unsigned long out = 5;
  EXPECT_EQ(counter.read(out), 1);
  EXPECT_TRUE(m_registers.accesses().empty());
}

TEST_F(Immediate, AFailedReadIsOne) {
  configure("ONE", 4, 2);
  AggrTelemImmediate counter("F", "ONE", "FIELD");
  unsigned long out = 5;
  EXPECT_EQ(counter.read(out), 1);
  EXPECT_EQ(out, 5U);
}

TEST_F(Immediate, SeveralEndpointsAreReadIntoTheirIds) {
  configure("TWO", 4, 2);
  configure("TWO", 5, 3);
  m_registers.setSample(4, 2, 42);
  m_registers.setSample(5, 3, 53);
  Samples out;
  EXPECT_EQ(AggrTelemImmediate("F", "TWO", "FIELD").readFromMultiEndpoint(out), 0);
  EXPECT_EQ(out, (Samples{{4, 42}, {5, 53}}));
}

TEST_F(Immediate, OfTwoAtOneEndpointTheLaterValueStays) {
  configure("TWO", 4, 2);
  configure("TWO", 4, 3);
  m_registers.setSample(4, 2, 42);
  m_registers.setSample(4, 3, 43);
  Samples out;
  EXPECT_EQ(AggrTelemImmediate("F", "TWO", "FIELD").readFromMultiEndpoint(out), 0);
  EXPECT_EQ(out, (Samples{{4, 43}}));
}

TEST_F(Immediate, AFailureKeepsWhatWasReadBefore) {
  configure("TWO", 4, 2);
  configure("TWO", 5, 3);
  m_registers.setSample(4, 2, 42);
  Samples out;
  EXPECT_EQ(AggrTelemImmediate("F", "TWO", "FIELD").readFromMultiEndpoint(out), 1);
  EXPECT_EQ(out, (Samples{{4, 42}}));
}

TEST_F(Immediate, AnOperationWithoutEndpointIdFails) {
  configure("ONE", 4, 2);
  AggrTelemImmediate counter("F", "ONE", "FIELD");
  counter.m_operations[0].m_values.erase("ENDPOINT-ID");
  Samples out;
  EXPECT_EQ(counter.readFromMultiEndpoint(out), 1);
  EXPECT_TRUE(out.empty());
}

TEST_F(Immediate, MetadataIsThatOfTheFirstPlace) {
  configure("TWO", 4, 2);
  configure("TWO", 5, 3);
  const pwr::AggrTelemCounterInfo info =
      AggrTelemImmediate("F", "TWO", "FIELD").getCounterMetadata();
  EXPECT_EQ(info.guid, 0x10U);
  EXPECT_EQ(info.endpointId, 4);
  EXPECT_EQ(info.sampleId, 2U);
  EXPECT_EQ(info.bitRange, "63:0");
}

TEST_F(Immediate, MetadataWithoutEndpointsShowsItInTheSample) {
  const pwr::AggrTelemCounterInfo info =
      AggrTelemImmediate("F", "NONE", "FIELD").getCounterMetadata();
  EXPECT_EQ(info.guid, 0U);
  EXPECT_EQ(info.endpointId, 0);
  EXPECT_EQ(info.sampleId, 0xDEADBEEFU);
  EXPECT_EQ(info.bitRange, "");
}

}  // namespace
