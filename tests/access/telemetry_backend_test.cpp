#include "qumetra/access/telemetry_backend.h"

#include <string>

#include <gtest/gtest.h>

#include "client/src/common/aggr_telem_operation.h"
#include "tests/support/temp_dir.h"

namespace qumetra::test {
namespace {

/// A tree with one device of two samples, 1 and 2.
class TelemetryTree : public ::testing::Test {
 protected:
  TelemetryTree() {
    add("telem3/guid", "0xABCD\n");
    add("telem3/size", "16\n");
    add("telem3/telem", std::string("\1\0\0\0\0\0\0\0\2\0\0\0\0\0\0\0", 16));
  }
  void add(const std::string& file, const std::string& bytes) {
    writeFile(m_root.file("class/corvane_pmt/" + file), bytes);
  }
  /// The sample, or nothing when it cannot be read.
  std::optional<unsigned long> sample(const pwr::AggrTelemCounterInfo& info) {
    TelemetryBackend backend(m_root.path().string());
    const BackendInUse inUse(backend);
    AggrTelemOperation operation("C", "F", info);
    unsigned long value = 0;
    return operation.read(value) == 0 ? std::optional(value) : std::nullopt;
  }

  TempDir m_root;
};

TEST_F(TelemetryTree, SamplesAreReadByTheirNumbers) {
  EXPECT_EQ(sample({0xABCD, 3, 0, ""}), 1U);
  EXPECT_EQ(sample({0xABCD, 3, 1, ""}), 2U);
}

TEST_F(TelemetryTree, WhatIsBehindTheLastSampleCannotBeRead) {
  EXPECT_EQ(sample({0xABCD, 3, 2, ""}), std::nullopt);
}

TEST_F(TelemetryTree, ASampleNumberThatWrapsAroundIsRefused) {
  EXPECT_EQ(sample({0xABCD, 3, std::uint64_t{1} << 61U, ""}), std::nullopt);
  EXPECT_EQ(sample({0xABCD, 3, ~std::uint64_t{0}, ""}), std::nullopt);
}

TEST_F(TelemetryTree, AnotherGuidIsRefused) { EXPECT_EQ(sample({0xABCE, 3, 0, ""}), std::nullopt); }

TEST_F(TelemetryTree, AMissingEndpointIsRefused) {
  EXPECT_EQ(sample({0xABCD, 4, 0, ""}), std::nullopt);
}

TEST_F(TelemetryTree, NothingIsWritten) {
  TelemetryBackend backend(m_root.path().string());
  EXPECT_FALSE(backend.write(AggrTelemOperation("C", "F", {0xABCD, 3, 0, ""}), "ANY"));
}

TEST_F(TelemetryTree, EndpointsAreListedById) {
  add("telem12/other", "");
  add("telemetry/guid", "1");
  add("telem70000/guid", "1");
  const auto endpoints = listTelemetryEndpoints(m_root.path().string());
  ASSERT_EQ(endpoints.size(), 2U);
  EXPECT_EQ(endpoints[0].id, 3);
  EXPECT_EQ(endpoints[0].guid, 0xABCDU);
  EXPECT_EQ(endpoints[0].sizeBytes, 16U);
  EXPECT_EQ(endpoints[1].id, 12);
  EXPECT_EQ(endpoints[1].guid, std::nullopt);
  EXPECT_EQ(endpoints[1].sizeBytes, std::nullopt);
}

TEST(TelemetryEndpoints, OfAMachineWithoutThemAreNone) {
  const TempDir empty;
  EXPECT_TRUE(listTelemetryEndpoints(empty.path().string()).empty());
}

}  // namespace
}  // namespace qumetra::test
