#include "host/topology.h"

#include <cstdint>
#include <cstring>
#include <ctime>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "client/src/common/serializer.h"

namespace {

using pwr::Serializer;
using pwr::ThreadLocation;
using pwr::TNode;
using pwr::TopTree;
using Bytes = std::vector<std::uint8_t>;

/// "package/module/core/thread" of each thread in order; "-" where there is no module.
std::vector<std::string> threadsOf(const TopTree& tree) {
  std::vector<const TNode*> threads;
  tree.getAllThreads(threads);
  std::vector<std::string> texts;
  for (const TNode* const thread : threads) {
    const TNode* above = thread->parent->parent;
    std::string module = "-";
    if (above->kind == TNode::kModule) {
      module = std::to_string(above->id);
      above = above->parent;
    }
    EXPECT_EQ(above->parent, nullptr);
    texts.push_back(std::to_string(above->id) + "/" + module + "/" +
                    std::to_string(thread->parent->id) + "/" + std::to_string(thread->id));
  }
  return texts;
}

void fill(TopTree& tree, const std::vector<ThreadLocation>& locations) {
  for (const ThreadLocation& location : locations) {
    tree.addThread(location);
  }
}

/// Two packages whose cores have equal numbers, one of them with modules.
const std::vector<ThreadLocation> kMixed = {
    {0, 3, 1, 0}, {0, 3, 1, 1}, {0, 4, 1, 2}, {1, {}, 1, 3}, {1, {}, 2, 4}};
const std::vector<std::string> kMixedTexts = {"0/3/1/0", "0/3/1/1", "0/4/1/2", "1/-/1/3",
                                              "1/-/2/4"};

void appendNumber(Bytes& bytes, std::uint32_t number) {
  const auto* const start = reinterpret_cast<const std::uint8_t*>(&number);
  bytes.insert(bytes.end(), start, start + sizeof number);
}

Serializer serializerOf(const Bytes& bytes) {
  Serializer serializer(0);
  serializer.write_to(bytes.data(), bytes.size());
  return serializer;
}

Bytes bytesOf(Serializer& serializer) {
  const auto buffer = serializer.get_buffer();
  Bytes bytes(buffer.size());
  if (!bytes.empty()) {
    std::memcpy(bytes.data(), buffer.data(), bytes.size());
  }
  return bytes;
}

Bytes packed(const TopTree& tree) {
  Serializer serializer(0);
  tree.serializeTree(serializer);
  return bytesOf(serializer);
}

TEST(TopTree, EmptyTreeHasNoNodes) {
  const TopTree tree;
  EXPECT_EQ(tree.getNumPackages(), 0U);
  EXPECT_EQ(tree.getNumThreads(), 0U);
  EXPECT_TRUE(threadsOf(tree).empty());
}

TEST(TopTree, ThreadsComeInTheOrderInWhichTheyWereAdded) {
  TopTree tree;
  fill(tree, {{0, {}, 1, 7}, {0, {}, 0, 3}, {0, {}, 1, 5}});
  EXPECT_EQ(threadsOf(tree), (std::vector<std::string>{"0/-/1/7", "0/-/0/3", "0/-/1/5"}));
}

TEST(TopTree, WithoutModulesCoresStandUnderTheirPackage) {
  TopTree tree;
  fill(tree, {{0, {}, 0, 0}, {0, {}, 0, 1}, {0, {}, 1, 2}});
  EXPECT_EQ(tree.getNumPackages(), 1U);
  EXPECT_EQ(tree.getNumModules(), 0U);
  EXPECT_EQ(tree.getNumCores(), 2U);
  EXPECT_EQ(tree.getNumThreads(), 3U);
}

TEST(TopTree, EqualCoreNumbersInDifferentPackagesAreDifferentCores) {
  TopTree tree;
  fill(tree, {{0, {}, 0, 0}, {1, {}, 0, 1}});
  EXPECT_EQ(tree.getNumPackages(), 2U);
  EXPECT_EQ(tree.getNumCores(), 2U);
  EXPECT_EQ(threadsOf(tree), (std::vector<std::string>{"0/-/0/0", "1/-/0/1"}));
}

TEST(TopTree, EqualModuleNumbersInDifferentPackagesAreDifferentModules) {
  TopTree tree;
  fill(tree, {{0, 5, 0, 0}, {1, 5, 0, 1}});
  EXPECT_EQ(tree.getNumModules(), 2U);
  EXPECT_EQ(threadsOf(tree), (std::vector<std::string>{"0/5/0/0", "1/5/0/1"}));
}

TEST(TopTree, EqualCoreNumbersInDifferentModulesAreDifferentCores) {
  TopTree tree;
  fill(tree, kMixed);
  EXPECT_EQ(tree.getNumPackages(), 2U);
  EXPECT_EQ(tree.getNumModules(), 2U);
  EXPECT_EQ(tree.getNumCores(), 4U);
  EXPECT_EQ(tree.getNumThreads(), 5U);
  EXPECT_EQ(threadsOf(tree), kMixedTexts);
}

TEST(TopTree, CoreOfAPackageIsNoCoreOfItsModule) {
  TopTree tree;
  fill(tree, {{0, {}, 0, 0}, {0, 0, 0, 1}});
  EXPECT_EQ(tree.getNumCores(), 2U);
}

TEST(TopTree, ManyPackagesAreAddedCopiedAndReadQuickly) {
  constexpr std::uint32_t kThreads = 100'000;
  const std::clock_t start = std::clock();
  TopTree tree;
  for (std::uint32_t i = 0; i < kThreads; ++i) {
    tree.addThread({i, {}, 0, i});
  }
  TopTree copy(tree);
  copy.addThread({0, {}, 0, kThreads});
  Serializer serializer(0);
  copy.serializeTree(serializer);
  TopTree read;
  EXPECT_EQ(read.deserializeTree(serializer), 0);
  // Looking through all packages for each thread would take minutes.
  EXPECT_LT(std::clock() - start, 10 * CLOCKS_PER_SEC);
  EXPECT_EQ(read.getNumPackages(), kThreads);
  EXPECT_EQ(read.getNumCores(), kThreads);
  EXPECT_EQ(read.getNumThreads(), kThreads + 1);
}

TEST(TopTree, AReusedTreeKnowsNothingOfItsFormerNodes) {
  TopTree tree;
  fill(tree, {{0, 3, 1, 0}});
  TopTree one;
  fill(one, {{0, 3, 1, 7}});
  Serializer serializer = serializerOf(packed(one));
  EXPECT_EQ(tree.deserializeTree(serializer), 0);
  EXPECT_EQ(threadsOf(tree), (std::vector<std::string>{"0/3/1/7"}));
  EXPECT_EQ(tree.getNumPackages(), 1U);
  EXPECT_EQ(tree.getNumCores(), 1U);
}

TEST(TopTree, NodeKindsHaveTheirNames) {
  const std::vector<std::string> names(std::begin(pwr::s_top_node_types),
                                       std::end(pwr::s_top_node_types));
  EXPECT_EQ(names, (std::vector<std::string>{"NONE", "Package", "Module", "Core", "Thread", "SOC",
                                             "Die", "Tile", "NULL"}));
  EXPECT_EQ(pwr::s_top_node_types[TNode::kPackage], "Package");
  EXPECT_EQ(pwr::s_top_node_types[TNode::kThread], "Thread");
}

TEST(TopTree, ThreadsAreAppendedToWhatTheCallerHas) {
  TopTree tree;
  fill(tree, {{0, {}, 0, 0}});
  std::vector<const TNode*> threads{nullptr};
  tree.getAllThreads(threads);
  ASSERT_EQ(threads.size(), 2U);
  EXPECT_EQ(threads[1]->kind, TNode::kThread);
}

TEST(TopTree, PackedTreeComesBackWithItsModules) {
  TopTree tree;
  fill(tree, kMixed);
  Serializer serializer = serializerOf(packed(tree));
  TopTree read;
  EXPECT_EQ(read.deserializeTree(serializer), 0);
  EXPECT_EQ(threadsOf(read), kMixedTexts);
  EXPECT_EQ(read.getNumCores(), 4U);
}

TEST(TopTree, PackedThreadsHaveAFixedWidth) {
  TopTree tree;
  fill(tree, {{0, {}, 2, 3}});
  Bytes expected;
  appendNumber(expected, 1);  // threads
  appendNumber(expected, 0);  // package
  expected.push_back(0);      // no module
  appendNumber(expected, 0);
  appendNumber(expected, 2);  // core
  appendNumber(expected, 3);  // thread
  EXPECT_EQ(packed(tree), expected);
}

TEST(TopTree, ReadingReplacesWhatTheTreeHolds) {
  Serializer serializer = serializerOf(packed(TopTree()));
  TopTree tree;
  fill(tree, kMixed);
  EXPECT_EQ(tree.deserializeTree(serializer), 0);
  EXPECT_EQ(tree.getNumPackages(), 0U);
}

TEST(TopTree, EveryTruncatedTreeIsAFailureThatLeavesTheTreeEmpty) {
  TopTree tree;
  fill(tree, kMixed);
  const Bytes whole = packed(tree);
  for (std::size_t size = 0; size < whole.size(); ++size) {
    Serializer serializer = serializerOf({whole.begin(), whole.begin() + static_cast<long>(size)});
    TopTree read;
    fill(read, kMixed);
    EXPECT_EQ(read.deserializeTree(serializer), 1) << size;
    EXPECT_EQ(read.getNumPackages(), 0U) << size;
  }
}

TEST(TopTree, CountThatNoBytesFollowIsAFailure) {
  Bytes bytes;
  appendNumber(bytes, 0xFFFFFFFF);
  Serializer serializer = serializerOf(bytes);
  TopTree tree;
  EXPECT_EQ(tree.deserializeTree(serializer), 1);
}

Bytes deprecatedBytes() {
  Bytes bytes;
  appendNumber(bytes, 2);
  for (const std::uint32_t number : {0U, 4U, 7U, 1U, 4U, 8U}) {
    appendNumber(bytes, number);
  }
  return bytes;
}

TEST(TopTree, DeprecatedFormHasPackageCoreAndThreadOnly) {
  Serializer serializer = serializerOf(deprecatedBytes());
  TopTree tree;
  EXPECT_EQ(tree.deserializeTreeDeprecated(serializer), 0);
  EXPECT_EQ(threadsOf(tree), (std::vector<std::string>{"0/-/4/7", "1/-/4/8"}));
  EXPECT_EQ(tree.getNumModules(), 0U);
}

TEST(TopTree, EveryTruncatedDeprecatedTreeIsAFailureThatLeavesTheTreeEmpty) {
  const Bytes whole = deprecatedBytes();
  for (std::size_t size = 0; size < whole.size(); ++size) {
    Serializer serializer = serializerOf({whole.begin(), whole.begin() + static_cast<long>(size)});
    TopTree tree;
    EXPECT_EQ(tree.deserializeTreeDeprecated(serializer), 1) << size;
    EXPECT_EQ(tree.getNumPackages(), 0U) << size;
  }
}

TEST(TopTree, SchedulingGuidanceHasNoBytes) {
  TopTree tree;
  fill(tree, kMixed);
  Serializer serializer(0);
  tree.serializeHGS(serializer);
  EXPECT_TRUE(serializer.empty());
  EXPECT_EQ(tree.deserializeHGS(serializer), 0);
  EXPECT_EQ(tree.getNumThreads(), 5U);
}

TEST(TopologyChange, PackedChangeComesBack) {
  const pwr::TopologyChange change{0x123456789ABCDEF0, 17, true};
  Serializer serializer(0);
  change.serialize(serializer);
  EXPECT_EQ(serializer.size(), 13U);
  pwr::TopologyChange read;
  EXPECT_EQ(read.deserialize(serializer), 0);
  EXPECT_EQ(read.timestamp, change.timestamp);
  EXPECT_EQ(read.threadId, 17U);
  EXPECT_TRUE(read.online);
}

TEST(TopologyChange, EveryTruncatedChangeIsAFailureThatLeavesTheRecordAlone) {
  Serializer whole(0);
  pwr::TopologyChange{1, 2, true}.serialize(whole);
  const Bytes bytes = bytesOf(whole);
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    Serializer serializer = serializerOf({bytes.begin(), bytes.begin() + static_cast<long>(size)});
    pwr::TopologyChange change{7, 8, false};
    EXPECT_EQ(change.deserialize(serializer), 1) << size;
    EXPECT_EQ(change.timestamp, 7U) << size;
    EXPECT_EQ(change.threadId, 8U) << size;
  }
}

}  // namespace
