// A table as one flat list of columns.
#include <deque>
#include <string>

#include <gtest/gtest.h>

#include "tests/writers/table_world.h"
#include "writers/writer_plugins.h"

namespace {

using qumetra::test::absent;
using qumetra::test::failed;
using qumetra::test::present;
using qumetra::test::TableWorld;
using qumetra::test::unwritten;
using Texts = std::deque<std::string>;

class BareWriter : public WriterPlugin {
 public:
  BareWriter() : WriterPlugin("guid") {}
  int init(const std::string& /*name*/, bool /*continuous*/) override { return 0; }
  int fini() override { return 0; }
};

class TableCells : public ::testing::Test {
 protected:
  Texts titles() const {
    Texts texts;
    m_writer.getColumnTitles(m_table, texts);
    return texts;
  }

  Texts values() const {
    Texts texts;
    m_writer.getRowValues(m_table, texts);
    return texts;
  }

  std::string name(const pwr::EntityHandle* entity, const pwr::DataHandle* field) const {
    return m_writer.getFieldNameFromHandle(m_table, entity, field);
  }

  std::string value(const pwr::EntityHandle* entity, const pwr::DataHandle* field) const {
    return m_writer.getFieldValueFromHandle(m_table, entity, field);
  }

  /// Adds the field handles "f1" and "f2".
  void addTwoFields() {
    m_table.addFieldHandle(m_field);
    m_table.addFieldHandle(m_otherField);
  }

  TableWorld m_world;
  pwr::TableMessage m_table;
  BareWriter m_writer;
  const pwr::DataHandle* m_shared = m_world.column("shared");
  const pwr::DataHandle* m_field = m_world.column("f1");
  const pwr::DataHandle* m_otherField = m_world.column("f2");
  const pwr::EntityHandle* m_core = m_world.entity("core");
  const pwr::EntityHandle* m_package = m_world.entity("package");
};

// The lists.

TEST_F(TableCells, EmptyTableHasNoColumns) {
  EXPECT_TRUE(titles().empty());
  EXPECT_TRUE(values().empty());
}

TEST_F(TableCells, ListsAreAppendedTo) {
  m_table.addSharedHandle(m_shared);
  m_table.setCell(nullptr, m_shared, present("x"));
  Texts titles = {"before"};
  Texts values = {"before"};
  m_writer.getColumnTitles(m_table, titles);
  m_writer.getRowValues(m_table, values);
  EXPECT_EQ(titles, (Texts{"before", "shared"}));
  EXPECT_EQ(values, (Texts{"before", "x"}));
}

TEST_F(TableCells, WithoutEntitiesFieldsFollowTheSharedHandles) {
  m_table.addSharedHandle(m_shared);
  addTwoFields();
  m_table.setCell(nullptr, m_shared, present("s"));
  m_table.setCell(nullptr, m_field, present("1"));
  m_table.setCell(nullptr, m_otherField, present("2"));
  EXPECT_EQ(titles(), (Texts{"shared", "f1", "f2"}));
  EXPECT_EQ(values(), (Texts{"s", "1", "2"}));
}

TEST_F(TableCells, EntityIsTheOuterLoop) {
  m_table.addSharedHandle(m_shared);
  addTwoFields();
  m_table.addEntity(m_core);
  m_table.addEntity(m_package);
  m_table.setCell(nullptr, m_shared, present("s"));
  m_table.setCell(m_core, m_field, present("core 1"));
  m_table.setCell(m_core, m_otherField, present("core 2"));
  m_table.setCell(m_package, m_field, present("package 1"));
  m_table.setCell(m_package, m_otherField, present("package 2"));
  EXPECT_EQ(titles(), (Texts{"shared", "f1", "f2", "f1", "f2"}));
  EXPECT_EQ(values(), (Texts{"s", "core 1", "core 2", "package 1", "package 2"}));
}

TEST_F(TableCells, EntitiesComeInTheOrderOfTheirIds) {
  m_table.addFieldHandle(m_field);
  m_table.addEntity(m_package);
  m_table.addEntity(m_core);  // Made before the package, so its id is lower.
  EXPECT_EQ(titles(), (Texts{"core", "package"}));
}

TEST_F(TableCells, EntitiesWithoutFieldsGiveNoColumn) {
  m_table.addSharedHandle(m_shared);
  m_table.addEntity(m_core);
  m_table.addEntity(m_package);
  EXPECT_EQ(titles(), Texts{"shared"});
  EXPECT_EQ(values().size(), 1U);
}

TEST_F(TableCells, NullHandleGivesAnEmptyTitleAndAnInvalidCell) {
  m_table.addSharedHandle(nullptr);
  m_table.addFieldHandle(nullptr);
  EXPECT_EQ(titles(), (Texts{"", ""}));
  EXPECT_EQ(values(), (Texts{"Invalid", "Invalid"}));
}

TEST_F(TableCells, AbsentCellIsEmpty) {
  m_table.addSharedHandle(m_shared);
  m_table.setCell(nullptr, m_shared, absent());
  EXPECT_EQ(values(), Texts{""});
}

TEST_F(TableCells, UnreadableCellIsInvalid) {
  m_table.addSharedHandle(m_shared);
  m_table.setCell(nullptr, m_shared, unwritten());
  EXPECT_EQ(values(), Texts{"Invalid"});
}

TEST_F(TableCells, FailedReadShowsTheTextItLeftBehind) {
  m_table.addSharedHandle(m_shared);
  m_table.setCell(nullptr, m_shared, failed("broken"));
  EXPECT_EQ(values(), Texts{"broken"});
}

// The title of a pair.

TEST_F(TableCells, SingleFieldIsTitledByTheEntity) {
  m_table.addFieldHandle(m_field);
  EXPECT_EQ(name(m_core, m_field), "core");
}

TEST_F(TableCells, SeveralFieldsAreTitledByTheField) {
  addTwoFields();
  EXPECT_EQ(name(m_core, m_field), "f1");
}

TEST_F(TableCells, NoFieldInTheTableTitlesByTheField) { EXPECT_EQ(name(m_core, m_field), "f1"); }

TEST_F(TableCells, NullEntityIsTitledByTheFieldEvenIfItIsTheOnlyOne) {
  m_table.addFieldHandle(m_field);
  EXPECT_EQ(name(nullptr, m_field), "f1");
}

TEST_F(TableCells, NullFieldGivesTheEntityOrNothing) {
  EXPECT_EQ(name(m_core, nullptr), "");
  m_table.addFieldHandle(nullptr);
  EXPECT_EQ(name(m_core, nullptr), "core");
}

TEST_F(TableCells, NullEntityAndNullFieldGiveAnEmptyTitle) {
  EXPECT_EQ(name(nullptr, nullptr), "");
}

TEST_F(TableCells, UnitsOfAnAttributeStandDirectlyBehindItsName) {
  m_table.addFieldHandle(m_field);
  const pwr::Attribute* power = m_world.attribute("power", m_world.quantity(5, "mW"));
  EXPECT_EQ(name(power, m_field), "powermW");
}

TEST_F(TableCells, UnitsOfAnAttributeStandDirectlyBehindTheFieldsName) {
  addTwoFields();
  const pwr::Attribute* power = m_world.attribute("power", m_world.quantity(5, "mW"));
  EXPECT_EQ(name(power, m_field), "f1mW");
  EXPECT_EQ(name(power, nullptr), "mW");
}

TEST_F(TableCells, QuantityOfCodeZeroHasNoUnits) {
  m_table.addFieldHandle(m_field);
  const pwr::Attribute* power = m_world.attribute("power", m_world.quantity(0, "mW"));
  EXPECT_EQ(name(power, m_field), "power");
}

TEST_F(TableCells, AttributeWithoutQuantityHasNoUnits) {
  m_table.addFieldHandle(m_field);
  EXPECT_EQ(name(m_world.attribute("power", nullptr), m_field), "power");
}

TEST_F(TableCells, EntityOfAttributeTypeThatIsNoAttributeHasNoUnits) {
  m_table.addFieldHandle(m_field);
  const pwr::EntityHandle pretender(1, {.name = "pretender", .fieldName = {}, .header = {}},
                                    nullptr, pwr::DataHandle::kAttributeType);
  EXPECT_EQ(name(&pretender, m_field), "pretender");
}

// The cell of a pair.

TEST_F(TableCells, PairGivesTheCellOfEntityAndField) {
  m_table.setCell(m_core, m_field, present("own"));
  m_table.setCell(nullptr, m_field, present("common"));
  EXPECT_EQ(value(m_core, m_field), "own");
}

TEST_F(TableCells, AbsentPairIsEmptyAndDoesNotFallBack) {
  m_table.setCell(m_core, m_field, absent());
  m_table.setCell(nullptr, m_field, present("common"));
  EXPECT_EQ(value(m_core, m_field), "");
}

TEST_F(TableCells, UnreadablePairFallsBackOnTheCellWithoutEntity) {
  m_table.setCell(m_core, m_field, failed("broken"));
  m_table.setCell(nullptr, m_field, present("common"));
  EXPECT_EQ(value(m_core, m_field), "common");
}

TEST_F(TableCells, FallbackOnAnAbsentCellIsEmpty) {
  m_table.setCell(m_core, m_field, failed("broken"));
  m_table.setCell(nullptr, m_field, absent());
  EXPECT_EQ(value(m_core, m_field), "");
}

TEST_F(TableCells, FailedFallbackShowsTheTextThatStands) {
  m_table.setCell(m_core, m_field, failed("broken"));
  m_table.setCell(nullptr, m_field, unwritten());
  EXPECT_EQ(value(m_core, m_field), "broken");
  m_table.setCell(nullptr, m_field, failed("worse"));
  EXPECT_EQ(value(m_core, m_field), "worse");
}

TEST_F(TableCells, NullEntityGivesTheCellWithoutEntity) {
  m_table.setCell(nullptr, m_field, present("common"));
  EXPECT_EQ(value(nullptr, m_field), "common");
}

TEST_F(TableCells, NullFieldIsInvalid) {
  EXPECT_EQ(value(m_core, nullptr), "Invalid");
  EXPECT_EQ(value(nullptr, nullptr), "Invalid");
}

TEST_F(TableCells, PairThatTheTableDoesNotKnowIsInvalid) {
  EXPECT_EQ(value(m_core, m_field), "Invalid");
}

}  // namespace
