// The automation summary: which columns tables become.
#include <deque>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "host/messages.h"
#include "tests/writers/autowriter_fixture.h"

namespace {

using pwr::TableMessage;
using qumetra::test::addShared;
using qumetra::test::AutoWriterTest;
using qumetra::test::Handles;
using qumetra::test::makeTable;
using qumetra::test::Texts;

TEST_F(AutoWriterTest, EachValueCellBecomesAColumn) {
  m_writer.init("run", false);
  EXPECT_EQ(titleTable("T", {"Core", "C1", "C6"}), 0);
  EXPECT_EQ(row("T", {"0", "10", "20"}), 0);
  EXPECT_EQ(row("T", {"1", "30", "40"}), 0);
  EXPECT_EQ(summary(),
            "Output_Name,T_Core_0_C1,T_Core_0_C6,T_Core_1_C1,T_Core_1_C6,\n"
            "run,10,20,30,40,\n");
}

TEST_F(AutoWriterTest, TitleTableAddsNoColumn) {
  m_writer.init("run", false);
  titleTable("T", {"Core", "C1"});
  EXPECT_EQ(summary(), "Output_Name,\nrun,\n");
}

TEST_F(AutoWriterTest, KeyColumnWithoutTitleGivesItsCellOnly) {
  titleTable("T", {"", "C1"});
  row("T", {"Core 0", "10"});
  EXPECT_EQ(summary(), "T_Core 0_C1,\n10,\n");
}

TEST_F(AutoWriterTest, TitleTableOfTheSameTitleReplacesTheColumns) {
  titleTable("T", {"Core", "C1"});
  titleTable("T", {"Module", "C6"});
  EXPECT_EQ(row("T", {"0", "10"}), 0);
  EXPECT_EQ(summary(), "T_Module_0_C6,\n10,\n");
}

TEST_F(AutoWriterTest, ColumnsOfTheLastTitleTableServeTablesOfEveryTitle) {
  titleTable("T", {"Core", "C1"});
  EXPECT_EQ(row("Other", {"0", "10"}), 0);
  EXPECT_EQ(summary(), "Other_Core_0_C1,\n10,\n");
}

TEST_F(AutoWriterTest, TableOfAnotherTypeIsIgnored) {
  titleTable("T", {"Core", "C1"});
  TableMessage other = makeTable(2, "T");
  addShared(other, {m_world.column("Module")}, {"5"});
  EXPECT_EQ(m_writer.writeMessage(other), 0);
  row("T", {"0", "10"});
  EXPECT_EQ(summary(), "T_Core_0_C1,\n10,\n");
}

TEST_F(AutoWriterTest, ValueTableBeforeAnyTitleTableIsRefused) {
  EXPECT_EQ(row("T", {"0", "10"}), 1);
  EXPECT_EQ(summary(), "\n\n");
}

TEST_F(AutoWriterTest, ValueTableWithoutColumnsBeforeAnyTitleTableAddsNothing) {
  for (const char* title : {"T", "Summary: Total", "Summary: Average Rate and Total",
                            "ACPI D-State Summary: Residency (Percentage and Time)"}) {
    EXPECT_EQ(row(title, {}), 0) << title;
  }
  EXPECT_EQ(summary(), "\n\n");
}

TEST_F(AutoWriterTest, ValueTableOfAnotherLengthIsRefusedAndTheNextOneTaken) {
  titleTable("T", {"Core", "C1"});
  EXPECT_EQ(row("T", {"0"}), 1);
  EXPECT_EQ(row("T", {"0", "10", "20"}), 1);
  EXPECT_EQ(row("T", {"0", "10"}), 0);
  EXPECT_EQ(summary(), "T_Core_0_C1,\n10,\n");
}

TEST_F(AutoWriterTest, CommasAreNotEscaped) {
  titleTable("T", {"Core, Thread", "C1"});
  row("T", {"0,1", "10,5"});
  EXPECT_EQ(summary(), "T_Core, Thread_0,1_C1,\n10,5,\n");
}

TEST_F(AutoWriterTest, EntitiesAreTheOuterLoopOfTheColumns) {
  const Handles fields = {m_world.column("Time"), m_world.column("Count")};
  const auto* core = m_world.entity("core0", "Core");
  const auto* package = m_world.entity("package0", "Package");
  for (const std::uint8_t type : {TableMessage::kTitleTable, TableMessage::kValueTable}) {
    TableMessage table = makeTable(type, "T");
    addShared(table, {m_world.column("State")}, {"C6"});
    for (const auto* field : fields) {
      table.addFieldHandle(field);
      table.setCell(core, field, {TableMessage::Cell::State::Present, "c" + field->getName()});
      table.setCell(package, field, {TableMessage::Cell::State::Present, "p" + field->getName()});
    }
    table.addEntity(core);
    table.addEntity(package);
    EXPECT_EQ(m_writer.writeMessage(table), 0);
  }
  EXPECT_EQ(summary(),
            "T_State_C6_Core_Time,T_State_C6_Core_Count,"
            "T_State_C6_Package_Time,T_State_C6_Package_Count,\n"
            "cTime,cCount,pTime,pCount,\n");
}

// Which tables are ignored.

class IgnoredTitle : public AutoWriterTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(IgnoredTitle, LeavesColumnsAndValuesAlone) {
  const std::string ignored = std::string("Core ") + GetParam() + " (all)";
  titleTable("T", {"Core", "C1"});
  const Handles columns = m_columns;
  EXPECT_EQ(titleTable(ignored, {"Module", "C6", "C7"}), 0);
  EXPECT_EQ(row(ignored, {"0", "1"}), 0);
  EXPECT_EQ(row(ignored, {"0"}), 0);  // Of another length, which would be refused.
  m_columns = columns;
  EXPECT_EQ(row("T", {"0", "10"}), 0);
  EXPECT_EQ(summary(), "T_Core_0_C1,\n10,\n");
}

INSTANTIATE_TEST_SUITE_P(AutoWriter, IgnoredTitle,
                         ::testing::Values("Summary: Total Samples Received", "Summary: Counts",
                                           "Summary: Entry Counts",
                                           "Summary - Sampled: Total Samples Received"),
                         [](const auto& test) { return "Title" + std::to_string(test.index); });

// How many columns are the key.

constexpr const char* kDState = "ACPI D-State Summary: Residency (Percentage and Time)";
constexpr const char* kFState = "ACPI F-State Summary: Residency (Percentage and Time)";
constexpr const char* kRate = "Summary: Average Rate and Total";
constexpr const char* kTotal = "Summary: Total";

struct KeyCase {
  const char* name;
  std::string title;
  Texts columns;
  /// What follows the table's title in the header, column by column.
  Texts columnTitles;
};

void PrintTo(const KeyCase& keyCase, std::ostream* out) { *out << keyCase.title; }

class KeyColumns : public AutoWriterTest, public ::testing::WithParamInterface<KeyCase> {};

/// Every cell is its column's title with a digit 1 behind it, so a key "a_a1" is column "a" alone.
TEST_P(KeyColumns, DependOnTheTitle) {
  const KeyCase& expected = GetParam();
  Texts cells;
  for (const std::string& column : expected.columns) {
    cells.push_back(column + '1');
  }
  std::string header;
  for (const std::string& columnTitle : expected.columnTitles) {
    header += expected.title + columnTitle + ',';
  }
  titleTable(expected.title, expected.columns);
  EXPECT_EQ(row(expected.title, cells), 0);
  const std::string text = summary();
  EXPECT_EQ(text.substr(0, text.find('\n')), header);
}

INSTANTIATE_TEST_SUITE_P(
    AutoWriter, KeyColumns,
    ::testing::Values(
        KeyCase{"OneOfAnyTitle", "T", {"a", "b", "c"}, {"_a_a1_b", "_a_a1_c"}},
        KeyCase{"NoValuesInATableOfOneColumn", "T", {"a"}, {}},
        KeyCase{"SmallLetterMakesAnotherTitle",
                "Summary: total",
                {"a", "b", "c"},
                {"_a_a1_b", "_a_a1_c"}},
        KeyCase{"FourOfDStates",
                kDState,
                {"a", "b", "c", "d", "e", "f"},
                {"_a_a1_b_b1_c_c1_d_d1_e", "_a_a1_b_b1_c_c1_d_d1_f"}},
        KeyCase{"FourOfFStates", kFState, {"a", "b", "c", "d", "e"}, {"_a_a1_b_b1_c_c1_d_d1_e"}},
        KeyCase{"AllFourOfDStates", kDState, {"a", "b", "c", "d"}, {}},
        KeyCase{"NoMoreThanThereAreOfDStates", kDState, {"a", "b"}, {}},
        KeyCase{"NoMoreThanThereAreOfFStates", kFState, {"a"}, {}},
        KeyCase{"AllButTwoOfRates", kRate, {"a", "b", "c", "d"}, {"_a_a1_b_b1_c", "_a_a1_b_b1_d"}},
        KeyCase{"NoneOfTwoColumnsOfRates", kRate, {"a", "b"}, {"__a", "__b"}},
        KeyCase{"NoneOfOneColumnOfRates", kRate, {"a"}, {"__a"}},
        KeyCase{"AllButOneOfTotals", kTotal, {"a", "b", "c"}, {"_a_a1_b_b1_c"}},
        KeyCase{"NoneOfOneColumnOfTotals", kTotal, {"a"}, {"__a"}},
        KeyCase{"RatesComeBeforeTotals",
                "Summary: Total Summary: Average Rate and Total",
                {"a", "b", "c"},
                {"_a_a1_b", "_a_a1_c"}},
        KeyCase{"AcpiStatesComeBeforeTotals", std::string(kTotal) + kFState, {"a", "b"}, {}}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(AutoWriterTest, PieceBehindAnEmptyKeyGetsNoSeparator) {
  titleTable(kTotal, {"", "Core", "Time"});
  row(kTotal, {"", "0", "10"});
  EXPECT_EQ(summary(), "Summary: Total_Core_0_Time,\n10,\n");
}

TEST_F(AutoWriterTest, EmptyPieceBehindAKeyStillGetsItsSeparator) {
  titleTable(kTotal, {"Core", "", "Time"});
  row(kTotal, {"0", "", "10"});
  EXPECT_EQ(summary(), "Summary: Total_Core_0__Time,\n10,\n");
}

TEST_F(AutoWriterTest, RowWhoseKeyBeginsWithTotalIsDropped) {
  titleTable("T", {"Total", "C1"});
  EXPECT_EQ(row("T", {"0", "10"}), 0);
  EXPECT_EQ(summary(), "\n\n");
}

TEST_F(AutoWriterTest, RowOfTotalsIsDroppedWhenItsFirstKeyColumnHasNoTitle) {
  titleTable(kTotal, {"", "Core", "Time"});
  row(kTotal, {"Total", "0", "10"});
  row(kTotal, {"Sum", "0", "20"});
  EXPECT_EQ(summary(), "Summary: Total_Sum_Core_0_Time,\n20,\n");
}

TEST_F(AutoWriterTest, KeyThatIsTotalAloneIsKept) {
  titleTable("T", {"", "C1"});
  row("T", {"Total", "10"});
  EXPECT_EQ(summary(), "T_Total_C1,\n10,\n");
}

// The titles of the columns of entities.

class AutoWriterTitles : public AutoWriterTest {
 protected:
  std::deque<std::string> titles(const TableMessage& table) const {
    std::deque<std::string> titles;
    m_writer.getColumnTitles(table, titles);
    return titles;
  }
};

TEST_F(AutoWriterTitles, EntitysFieldNameStandsInFront) {
  TableMessage table;
  table.addFieldHandle(m_world.column("Time"));
  table.addEntity(m_world.entity("core0", "Core"));
  EXPECT_EQ(titles(table), std::deque<std::string>{"Core_core0"});
}

TEST_F(AutoWriterTitles, FieldNameThatIsContainedIsNotRepeated) {
  TableMessage table;
  table.addFieldHandle(m_world.column("Time"));
  table.addEntity(m_world.entity("my Core 0", "Core"));
  table.addEntity(m_world.entity("module", ""));
  EXPECT_EQ(titles(table), (std::deque<std::string>{"my Core 0", "module"}));
}

TEST_F(AutoWriterTitles, FieldNameIsLookedForInTheUnitsToo) {
  TableMessage table;
  table.addFieldHandle(m_world.column("Time"));
  table.addEntity(m_world.attribute("power", m_world.quantity(5, "mW"), "rmW"));
  EXPECT_EQ(titles(table), std::deque<std::string>{"powermW"});
}

TEST_F(AutoWriterTitles, SharedHandlesAndFieldsWithoutEntitiesKeepTheirNames) {
  TableMessage table;
  addShared(table, {m_world.column("State"), nullptr});
  table.addFieldHandle(m_world.column("Time"));
  EXPECT_EQ(titles(table), (std::deque<std::string>{"State", "", "Time"}));
}

/// A host's table that has a null among its entities.
class TableWithNullEntity : public TableMessage {
 public:
  EntityMap::const_iterator entitiesBegin() const override { return m_nulls.begin(); }
  EntityMap::const_iterator entitiesEnd() const override { return m_nulls.end(); }

 private:
  EntityMap m_nulls = {{1, nullptr}};
};

TEST_F(AutoWriterTitles, NullEntityGivesTheFieldsName) {
  TableWithNullEntity table;
  table.addFieldHandle(m_world.column("Time"));
  table.addEntity(m_world.entity("counted", "Core"));
  EXPECT_EQ(titles(table), std::deque<std::string>{"Time"});
}

// Tables about a metric.

TEST_F(AutoWriterTest, ContainerWithoutTableSucceeds) {
  EXPECT_EQ(m_writer.writeMessage(pwr::MetricContainerInfoMessage()), 0);
  EXPECT_EQ(summary(), "\n\n");
}

TEST_F(AutoWriterTest, TableOfAContainerIsTakenAsAnyOther) {
  titleTable("T", {"Core", "C1"});
  TableMessage table = makeTable(TableMessage::kValueTable, "T");
  addShared(table, m_columns, {"0", "10"});
  pwr::MetricContainerInfoMessage message;
  message.metricInfoTable = &table;
  EXPECT_EQ(m_writer.writeMessage(message), 0);
  EXPECT_EQ(summary(), "T_Core_0_C1,\n10,\n");
}

TEST_F(AutoWriterTest, TableOfAContainerThatIsRefusedFailsTheContainer) {
  TableMessage table = makeTable(TableMessage::kValueTable, "T");
  addShared(table, {m_world.column("Core")}, {"0"});
  pwr::MetricContainerInfoMessage message;
  message.metricInfoTable = &table;
  EXPECT_EQ(m_writer.writeMessage(message), 1);
}

}  // namespace
