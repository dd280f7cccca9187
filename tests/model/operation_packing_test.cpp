#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "client/src/common/hw_operation_metadata.h"
#include "client/src/common/serializer.h"

namespace qumetra::test {
namespace {

using pwr::Serializer;
using Pairs = std::vector<std::pair<std::string, std::string>>;

HWOperationMetadata sample() {
  HWOperationMetadata metadata("init", "PCI", 4);
  metadata.m_address = "0x10";
  metadata.addValue("ENTITY", "");
  metadata.addValue("K", std::string(70000, 'v'));
  return metadata;
}

void append(Serializer& serializer, std::uint32_t number) {
  serializer.write_to(&number, sizeof number);
}

TEST(OperationPacking, WhatWasPackedIsReadBack) {
  Serializer serializer(0);
  sample().serialize_i(serializer);
  HWOperationMetadata read("", "", 0);
  EXPECT_EQ(read.deserialize_i(serializer, 0), 0);
  EXPECT_EQ(read.m_initValue, "init");
  EXPECT_EQ(read.m_operationName, "PCI");
  EXPECT_EQ(read.m_size, 4U);
  EXPECT_EQ(read.m_address, "0x10");
  EXPECT_EQ(read.m_pairs, (Pairs{{"ENTITY", ""}, {"K", std::string(70000, 'v')}}));
}

TEST(OperationPacking, BeginsWithTheKindAndTheInitValuesLength) {
  Serializer serializer(0);
  sample().serialize_i(serializer);
  std::uint32_t head[2] = {};
  ASSERT_EQ(serializer.read_from(head, sizeof head), sizeof head);
  EXPECT_EQ(head[0], 3U);
  EXPECT_EQ(head[1], 4U);
}

TEST(OperationPacking, EveryCutIsRefusedAndChangesNothing) {
  HWOperationMetadata small("i", "n", 4);
  small.addValue("k", "v");
  Serializer whole(0);
  small.serialize_i(whole);
  std::string bytes(whole.size(), '\0');
  ASSERT_EQ(whole.read_from(bytes.data(), bytes.size()), bytes.size());
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    Serializer cut(0);
    cut.write_to(bytes.data(), length);
    HWOperationMetadata read("old", "", 7);
    EXPECT_EQ(read.deserialize_i(cut, 0), 1) << length;
    EXPECT_EQ(read.m_initValue, "old");
    EXPECT_EQ(read.m_size, 7U);
  }
}

TEST(OperationPacking, AnotherKindIsRefused) {
  Serializer serializer(0);
  for (const std::uint32_t number : {4U, 0U, 0U, 4U, 0U, 0U}) {
    append(serializer, number);
  }
  HWOperationMetadata read("", "", 0);
  EXPECT_EQ(read.deserialize_i(serializer, 0), 1);
}

TEST(OperationPacking, ALengthBeyondTheBytesIsRefused) {
  Serializer serializer(0);
  append(serializer, 3);
  append(serializer, 0xFFFFFFFF);
  HWOperationMetadata read("", "", 0);
  EXPECT_EQ(read.deserialize_i(serializer, 0), 1);
}

TEST(OperationPacking, ACountBeyondTheBytesIsRefused) {
  Serializer serializer(0);
  for (const std::uint32_t number : {3U, 0U, 0U, 4U, 0U, 0xFFFFFFFFU}) {
    append(serializer, number);
  }
  HWOperationMetadata read("", "", 0);
  EXPECT_EQ(read.deserialize_i(serializer, 0), 1);
  EXPECT_TRUE(read.m_pairs.empty());
}

}  // namespace
}  // namespace qumetra::test
