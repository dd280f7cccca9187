// Nodes of the tree of names: kinds, entities, states and colours. Bytes are worked out by hand.
#include <cstdlib>

#include "tests/writers/kelto_metadata_fixture.h"

namespace {

using qumetra::test::hex;
using qumetra::test::KeltoMetadata;
using qumetra::test::Node;
using qumetra::test::number;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::uint64_t kNone = 0xFFFFFFFF;

// The record.

TEST_F(KeltoMetadata, InfoRecord) {
  EXPECT_EQ(m_writer.writeInfoMetadataHelper("kind", 0x01020304, "long", "sh", "d",
                                             0x1112131415161718, 0x2122232425262728, 0x31323334),
            0);
  EXPECT_EQ(hex(added()),
            "10 00 40 02 "
            "00 00 00 00 00 00 00 00 "
            "2c 00 48 00 07 00 02 00 "  // size 44, type 72, sub-type 7, version 2
            "04 03 02 01 "              // kind
            "18 17 16 15 "              // value
            "34 33 32 31 "              // parent
            "28 27 26 25 "              // uid
            "04 00 02 00 04 00 01 00 "  // lengths
            "6c 6f 6e 67 73 68 6b 69 6e 64 64 00 ");
}

TEST_F(KeltoMetadata, InfoRecordWithoutParent) {
  writeNode("x");
  EXPECT_EQ(hex(added().substr(28, 4)), "ff ff ff ff ");
}

TEST_F(KeltoMetadata, LegacyRecordsAreOfVersionOne) {
  m_writer.legacy = true;
  writeNode("x");
  EXPECT_EQ(hex(added().substr(18, 2)), "01 00 ");
}

TEST_F(KeltoMetadata, LegacyComesFromTheEnvironment) {
  ::setenv("PW_ENABLE_LEGACY_KELTO", "y", 1);
  EXPECT_TRUE(qumetra::test::OpenKeltoWriter().legacy);
  ::setenv("PW_ENABLE_LEGACY_KELTO", "yes", 1);
  EXPECT_FALSE(qumetra::test::OpenKeltoWriter().legacy);
  ::unsetenv("PW_ENABLE_LEGACY_KELTO");
  EXPECT_FALSE(qumetra::test::OpenKeltoWriter().legacy);
}

// Texts at their limits.

TEST_F(KeltoMetadata, NodeTextOf399CharactersIsWritten) {
  EXPECT_EQ(writeNode(std::string(398, 'x')), 0);
  EXPECT_EQ(added().size(), 44U + 400);
  EXPECT_EQ(number(added(), 12, 2), 432U);
}

TEST_F(KeltoMetadata, NodeTextOf400CharactersIsRefused) {
  EXPECT_EQ(writeNode(std::string(399, 'x')), 1);
  EXPECT_EQ(added(), "");
  EXPECT_THAT(warnings(), ElementsAre("Info names string too long\n"));
}

TEST_F(KeltoMetadata, NodeThatWasTooLongCountsAsWrittenTheSecondTime) {
  writeNode(std::string(399, 'x'));
  EXPECT_EQ(writeNode(std::string(399, 'x')), 0);
  EXPECT_EQ(warnings().size(), 1U);
  EXPECT_EQ(added(), "");
}

TEST_F(KeltoMetadata, SameNodeIsWrittenOnce) {
  writeNode("x");
  const std::string once = added();
  EXPECT_EQ(writeNode("x"), 0);
  EXPECT_EQ(added(), once);
  writeNode("x", 10);
  EXPECT_EQ(added().size(), 2 * once.size());
}

TEST_F(KeltoMetadata, NodeIsKnownByAllThatMakesItUp) {
  m_writer.writeInfoMetadataHelper("kind", 3, "long", "sh", "d", 5, ~std::uint64_t{0}, -1);
  const std::string key =
      "infotype:kind_longname:long_shortname:sh_description:d_value:5_uid:18446744073709551615_"
      "parent_uid:-1";
  ASSERT_TRUE(m_writer.infoRecordIds.contains(key));
  EXPECT_EQ(m_writer.infoRecordIds.at(key), 5);
}

// Kinds.

TEST_F(KeltoMetadata, KindsAreNumberedInOrderOfFirstNeed) {
  EXPECT_EQ(m_writer.getInfoTypeMetadataId("b"), 2U);
  EXPECT_EQ(m_writer.getInfoTypeMetadataId("a"), 3U);
  EXPECT_EQ(m_writer.getInfoTypeMetadataId("b"), 2U);
  EXPECT_THAT(kinds(), ElementsAre("metric_type", "b", "a"));
}

TEST_F(KeltoMetadata, FailedKindLeavesAHoleInTheNumbers) {
  EXPECT_EQ(m_writer.getInfoTypeMetadataId(std::string(190, 'k')), ~std::uint64_t{0});
  EXPECT_THAT(warnings(), ElementsAre("Info names string too long\n",
                                      "Failed to write info type metadata for '" +
                                          std::string(190, 'k') + "'.\n"));
  EXPECT_EQ(m_writer.getInfoTypeMetadataId("a"), 3U);
}

// Entities.

TEST_F(KeltoMetadata, ParentStandsBeforeItsChild) {
  pwr::EntityHandle& package = entity("Package");
  pwr::EntityHandle& core = entity("Core", &package);
  EXPECT_EQ(m_writer.writeEntityMetadataTopology(&core), 0);
  const std::vector<Node> found = nodes("entity");
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0].longName, "Package");
  EXPECT_EQ(found[0].parent, kNone);
  EXPECT_EQ(found[1].longName, "Core");
  EXPECT_EQ(found[1].shortName, "Core");
  EXPECT_EQ(found[1].description, "entity_id");
  EXPECT_EQ(found[1].parent, package.getId());
  EXPECT_EQ(found[1].uid, core.getId());
  EXPECT_EQ(found[1].value, core.getId());
}

TEST_F(KeltoMetadata, EntityIsWrittenOnce) {
  pwr::EntityHandle& core = entity("Core");
  m_writer.writeEntityMetadataTopology(&core);
  m_writer.writeEntityMetadataTopology(&core);
  EXPECT_EQ(nodes("entity").size(), 1U);
}

TEST_F(KeltoMetadata, UnnamedEntityIsNA) {
  pwr::EntityHandle& unnamed = entity("");
  m_writer.writeEntityMetadataTopology(&unnamed);
  EXPECT_EQ(nodes("entity")[0].longName, "NA");
  EXPECT_TRUE(m_writer.entityParents.contains("NA_" + std::to_string(unnamed.getId())));
}

TEST_F(KeltoMetadata, EntityThatTurnsUpWithAnotherParentIsRefused) {
  EXPECT_EQ(m_writer.writeEntityMetadata("E", "E", 5, ~std::uint64_t{0}), 0);
  EXPECT_EQ(m_writer.writeEntityMetadata("E", "E", 5, ~std::uint64_t{0}), 0);
  EXPECT_EQ(m_writer.writeEntityMetadata("E", "E", 5, 6), 1);
  EXPECT_THAT(warnings(), ElementsAre("The saved parent entity id '18446744073709551615' for "
                                      "entity 'E' doesn't match the new parent entity id '6'.\n"));
}

TEST_F(KeltoMetadata, EntityThatHasItsNameAndIdFromItsParentIsRefused) {
  const pwr::EntityHandle parent(5, {"E", "", ""}, nullptr);
  const pwr::EntityHandle child(5, {"E", "", ""}, &parent);
  const pwr::EntityHandle grandchild(6, {"G", "", ""}, &child);
  EXPECT_EQ(m_writer.writeEntityMetadataTopology(&grandchild), 1);
  EXPECT_THAT(warnings(),
              ElementsAre("The saved parent entity id '18446744073709551615' for entity 'E' "
                          "doesn't match the new parent entity id '5'.\n",
                          "Failed to write entity 'E' metadata.\n",
                          "Failed to write parent entity metadata for entity 'G'.\n"));
}

TEST_F(KeltoMetadata, EntityTreeWithoutARootIsRefused) {
  struct Circle {
    pwr::EntityHandle a;
    pwr::EntityHandle b;
    Circle() : a(5, {"A", "", ""}, &b), b(6, {"B", "", ""}, &a) {}
  };
  const Circle circle;
  EXPECT_EQ(m_writer.writeEntityMetadataTopology(&circle.a), 1);
  EXPECT_THAT(warnings(), ElementsAre("Failed to write parent entity metadata for entity 'A'.\n"));
}

TEST_F(KeltoMetadata, DeepEntityTreeIsWritten) {
  const pwr::EntityHandle* deepest = nullptr;
  for (int i = 0; i < 50'000; ++i) {
    deepest = &entity("E", deepest);
  }
  EXPECT_EQ(m_writer.writeEntityMetadataTopology(deepest), 0);
  EXPECT_EQ(m_writer.entityParents.size(), 50'000U);
}

TEST_F(KeltoMetadata, EntityThatCouldNotBeWrittenIsTriedAgain) {
  pwr::EntityHandle& core = entity(std::string(200, 'e'));
  EXPECT_EQ(m_writer.writeEntityMetadataTopology(&core), 0);
  EXPECT_THAT(warnings(), ElementsAre("Info names string too long\n"));
  EXPECT_TRUE(m_writer.entityParents.empty());
  EXPECT_EQ(m_writer.writeEntityMetadataTopology(&core), 0);
  EXPECT_EQ(m_writer.entityParents.size(), 1U);
  EXPECT_THAT(nodes("entity"), IsEmpty());
}

TEST_F(KeltoMetadata, EntityWithoutItsKindFails) {
  refuse(kSystem);
  EXPECT_EQ(m_writer.writeEntityMetadataTopology(&entity("E")), 1);
  EXPECT_THAT(warnings(), ElementsAre("Failed to write info type metadata for 'entity'.\n",
                                      "Failed to write entity 'E' metadata.\n"));
}

// States.

TEST_F(KeltoMetadata, StateIsAFieldWithTheDescriptorsId) {
  std::uint64_t id = 77;
  EXPECT_EQ(m_writer.writeStateMetadata("C6", "C6", id), 0);
  const Node field = nodes("field").back();
  EXPECT_EQ(field.longName, "C6");
  EXPECT_EQ(field.shortName, "C6");
  EXPECT_EQ(field.description, "field_id");
  EXPECT_EQ(field.value, 77U);
  EXPECT_EQ(field.uid, 77U);
  EXPECT_EQ(field.parent, kNone);
}

TEST_F(KeltoMetadata, StateKeepsItsFirstId) {
  std::uint64_t id = 77;
  m_writer.writeStateMetadata("C6", "C6", id);
  id = 78;
  EXPECT_EQ(m_writer.writeStateMetadata("C6", "C6", id), 0);
  EXPECT_EQ(id, 77U);
  EXPECT_EQ(nodes("field").size(), 1U);
}

TEST_F(KeltoMetadata, StateThatCouldNotBeWrittenIsNoFailure) {
  std::uint64_t id = 77;
  const std::string name(200, 's');
  EXPECT_EQ(m_writer.writeStateMetadata(name, name, id), 0);
  EXPECT_TRUE(m_writer.fieldIds.empty());
  EXPECT_EQ(id, 77U);
}

TEST_F(KeltoMetadata, StateWithoutItsKindFails) {
  refuse(kSystem);
  std::uint64_t id = 77;
  EXPECT_EQ(m_writer.writeStateMetadata("C6", "C6", id), 1);
}

TEST_F(KeltoMetadata, ColorNodeTellsBothColors) {
  EXPECT_EQ(m_writer.writeStateColorMetadata("C6"), 0);
  const Node color = nodes("color").back();
  EXPECT_EQ(color.longName, "1,150,0|1,150,0");
  EXPECT_EQ(color.shortName, "C6");
  EXPECT_EQ(color.description, "color_id");
  EXPECT_EQ(color.value, color.uid);
  EXPECT_EQ(color.parent, kNone);
  EXPECT_EQ(static_cast<std::uint64_t>(m_writer.colorIds["C6"]), color.uid);
}

TEST_F(KeltoMetadata, ColorIsWrittenOnce) {
  m_writer.writeStateColorMetadata("unknown state");
  m_writer.writeStateColorMetadata("unknown state");
  EXPECT_EQ(nodes("color").size(), 1U);
}

TEST_F(KeltoMetadata, ColorThatCouldNotBeWrittenFails) {
  EXPECT_EQ(m_writer.writeStateColorMetadata("C6" + std::string(380, 's')), 1);
  refuse(kSystem);
  EXPECT_EQ(m_writer.writeStateColorMetadata("C6"), 1);
}

// Keys.

TEST_F(KeltoMetadata, NameIdKeyIsNameAndId) {
  EXPECT_EQ(m_writer.getNameIdKey("name", ~std::uint64_t{0}), "name_18446744073709551615");
}

TEST_F(KeltoMetadata, UniqueIdIsDrawnOncePerKey) {
  const std::uint64_t first = m_writer.getUniqueId("a");
  EXPECT_EQ(m_writer.getUniqueId("b"), first + 1);
  EXPECT_EQ(m_writer.getUniqueId("a"), first);
}

}  // namespace
