// The automation summary: what its file holds after each kind of run.
#include <sys/resource.h>

#include <csignal>
#include <deque>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/messages.h"
#include "host/metric.h"
#include "host/system_metadata.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"
#include "tests/writers/table_world.h"
#include "writers/autowriter_plugin.h"

namespace {

using pwr::TableMessage;
using qumetra::test::addShared;
using qumetra::test::LogCapture;
using qumetra::test::makeTable;
using qumetra::test::readFile;
using qumetra::test::TableWorld;
using qumetra::test::TempDir;
using qumetra::test::writeFile;
using Texts = std::vector<std::string>;
using Handles = std::vector<const pwr::DataHandle*>;

constexpr const char* kFile = "Automation_Summary.csv";
constexpr const char* kError = "ERROR: Could not open automation summary file.\n";

/// Each test stands in a fresh directory.
class AutoWriterTest : public ::testing::Test {
 protected:
  AutoWriterTest() : m_formerDirectory(std::filesystem::current_path()) {
    std::filesystem::current_path(m_dir.path());
  }
  ~AutoWriterTest() override { std::filesystem::current_path(m_formerDirectory); }

  /// Gives the writer a title table with one shared column per text.
  int titleTable(const std::string& title, const Texts& columns) {
    m_columns.clear();
    for (const std::string& name : columns) {
      m_columns.push_back(m_world.column(name));
    }
    TableMessage table = makeTable(TableMessage::kTitleTable, title);
    addShared(table, m_columns);
    return m_writer.writeMessage(table);
  }

  /// Gives the writer a value table with one shared column per text.
  int row(const std::string& title, const Texts& cells) {
    Handles columns = m_columns;
    while (columns.size() < cells.size()) {
      columns.push_back(m_world.column("beyond"));
    }
    columns.resize(cells.size());
    TableMessage table = makeTable(TableMessage::kValueTable, title);
    addShared(table, columns, cells);
    return m_writer.writeMessage(table);
  }

  /// A whole run of another writer that has one more column per title.
  static int run(const std::string& name, const Texts& titles) {
    TableWorld world;
    AutoWriter writer;
    writer.init(name, false);
    for (const std::string& title : titles) {
      const Handles columns = {world.column("Key"), world.column(title)};
      TableMessage table = makeTable(TableMessage::kTitleTable, "T");
      addShared(table, columns);
      writer.writeMessage(table);
      TableMessage values = makeTable(TableMessage::kValueTable, "T");
      addShared(values, columns, {"k", "v"});
      writer.writeMessage(values);
    }
    return writer.fini();
  }

  /// Ends the run and gives what is in the file.
  std::string summary() {
    EXPECT_EQ(m_writer.fini(), 0);
    return readFile(m_dir.file(kFile));
  }

  TempDir m_dir;
  LogCapture m_log;
  AutoWriter m_writer;
  TableWorld m_world;
  Handles m_columns;

 private:
  std::filesystem::path m_formerDirectory;
};

// The columns of every run.

TEST_F(AutoWriterTest, InitAddsTheOutputName) {
  EXPECT_EQ(m_writer.init("run", false), 0);
  EXPECT_EQ(summary(), "Output_Name,\nrun,\n");
}

TEST_F(AutoWriterTest, ContinuousModeMakesNoDifference) {
  EXPECT_EQ(m_writer.init("run", true), 0);
  EXPECT_EQ(summary(), "Output_Name,\nrun,\n");
}

TEST_F(AutoWriterTest, NothingIsWrittenBeforeTheEnd) {
  m_writer.init("run", false);
  titleTable("T", {"Core", "Value"});
  row("T", {"0", "1"});
  EXPECT_TRUE(std::filesystem::is_empty(m_dir.path()));
}

TEST_F(AutoWriterTest, SecondInitAppendsAgain) {
  m_writer.init("first", false);
  m_writer.init("second", false);
  EXPECT_EQ(summary(), "Output_Name,Output_Name,\nfirst,second,\n");
}

TEST_F(AutoWriterTest, RunAfterTheEndKeepsTheColumnsOfTheOneBefore) {
  m_writer.init("first", false);
  ASSERT_EQ(m_writer.fini(), 0);
  m_writer.init("second", false);
  EXPECT_EQ(summary(), "Output_Name,\nfirst,\nOutput_Name,Output_Name,\nfirst,second,\n");
}

TEST_F(AutoWriterTest, SystemMessageAddsStartAndDuration) {
  pwr::SystemMetadata metadata;
  metadata.m_collectionStartTime = "Tue May  5 10:00:00 2026";
  metadata.m_collectionDurationSec = 12.5;
  pwr::SystemMessage message;
  message.m_metadata = &metadata;
  m_writer.init("run", false);
  EXPECT_EQ(m_writer.writeMessage(message), 0);
  EXPECT_EQ(summary(),
            "Output_Name,Collection_Time,Duration (sec),\n"
            "run,Tue May  5 10:00:00 2026,12.5,\n");
}

TEST_F(AutoWriterTest, DurationHasSixSignificantDigits) {
  pwr::SystemMetadata metadata;
  pwr::SystemMessage message;
  message.m_metadata = &metadata;
  for (const double seconds : {12.3456789, 1234567.0, 100.0}) {
    metadata.m_collectionDurationSec = seconds;
    m_writer.writeMessage(message);
  }
  EXPECT_TRUE(summary().ends_with("\n,12.3457,,1.23457e+06,,100,\n"));
}

TEST_F(AutoWriterTest, SystemMessageWithoutMetadataFailsAndAddsNothing) {
  m_writer.init("run", false);
  EXPECT_EQ(m_writer.writeMessage(pwr::SystemMessage()), 1);
  EXPECT_EQ(summary(), "Output_Name,\nrun,\n");
}

TEST_F(AutoWriterTest, TextsAndSamplesAreNotTaken) {
  m_writer.init("run", false);
  EXPECT_EQ(m_writer.writeMessage(pwr::TextMessage()), 0);
  EXPECT_EQ(m_writer.writeMessage(pwr::Metric()), 0);
  EXPECT_EQ(summary(), "Output_Name,\nrun,\n");
}

// Tables.

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
                                           "Summary - Sampled: Total Samples Received"));

// How many columns are the key.

struct KeyCase {
  const char* title;
  Texts columns;
  const char* header;
};

class KeyColumns : public AutoWriterTest, public ::testing::WithParamInterface<KeyCase> {};

/// Every cell is its column's title in front of a digit 1, so a key "a_a1" is column "a" alone.
TEST_P(KeyColumns, DependOnTheTitle) {
  Texts cells;
  for (const std::string& column : GetParam().columns) {
    cells.push_back(column + '1');
  }
  titleTable(GetParam().title, GetParam().columns);
  EXPECT_EQ(row(GetParam().title, cells), 0);
  const std::string text = summary();
  EXPECT_EQ(text.substr(0, text.find('\n')), GetParam().header);
}

constexpr const char* kDState = "ACPI D-State Summary: Residency (Percentage and Time)";
constexpr const char* kFState = "ACPI F-State Summary: Residency (Percentage and Time)";
constexpr const char* kRate = "Summary: Average Rate and Total";
constexpr const char* kTotal = "Summary: Total";

INSTANTIATE_TEST_SUITE_P(
    AnyOtherTitle, KeyColumns,
    ::testing::Values(KeyCase{"T", {"a", "b", "c"}, "T_a_a1_b,T_a_a1_c,"}, KeyCase{"T", {"a"}, ""},
                      // The difference of letters counts.
                      KeyCase{"Summary: total", {"a", "b"}, "Summary: total_a_a1_b,"}));

INSTANTIATE_TEST_SUITE_P(
    AcpiStates, KeyColumns,
    ::testing::Values(
        KeyCase{kDState,
                {"a", "b", "c", "d", "e", "f"},
                "ACPI D-State Summary: Residency (Percentage and Time)_a_a1_b_b1_c_c1_d_d1_e,"
                "ACPI D-State Summary: Residency (Percentage and Time)_a_a1_b_b1_c_c1_d_d1_f,"},
        KeyCase{kFState,
                {"a", "b", "c", "d", "e"},
                "ACPI F-State Summary: Residency (Percentage and Time)_a_a1_b_b1_c_c1_d_d1_e,"},
        KeyCase{kDState, {"a", "b", "c", "d"}, ""}, KeyCase{kDState, {"a", "b"}, ""},
        KeyCase{kFState, {"a"}, ""}));

INSTANTIATE_TEST_SUITE_P(
    AverageRateAndTotal, KeyColumns,
    ::testing::Values(KeyCase{kRate,
                              {"a", "b", "c", "d"},
                              "Summary: Average Rate and Total_a_a1_b_b1_c,"
                              "Summary: Average Rate and Total_a_a1_b_b1_d,"},
                      KeyCase{kRate,
                              {"a", "b"},
                              "Summary: Average Rate and Total__a,"
                              "Summary: Average Rate and Total__b,"},
                      KeyCase{kRate, {"a"}, "Summary: Average Rate and Total__a,"}));

INSTANTIATE_TEST_SUITE_P(
    Total, KeyColumns,
    ::testing::Values(KeyCase{kTotal, {"a", "b", "c"}, "Summary: Total_a_a1_b_b1_c,"},
                      KeyCase{kTotal, {"a"}, "Summary: Total__a,"}));

INSTANTIATE_TEST_SUITE_P(
    FirstOfTheTests, KeyColumns,
    ::testing::Values(KeyCase{"Summary: Total Summary: Average Rate and Total",
                              {"a", "b", "c"},
                              "Summary: Total Summary: Average Rate and Total_a_a1_b,"
                              "Summary: Total Summary: Average Rate and Total_a_a1_c,"},
                      KeyCase{
                          "Summary: Total ACPI F-State Summary: Residency (Percentage and Time)",
                          {"a", "b"},
                          ""}));

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

// Where the file stands.

TEST_F(AutoWriterTest, OnlyABackslashEndsADirectory) {
  m_writer.init(m_dir.file("sub\\dir\\run"), false);
  ASSERT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(readFile(m_dir.file("sub\\dir\\Automation_Summary.csv")),
            "Output_Name,\n" + m_dir.file("sub\\dir\\run") + ",\n");
}

TEST_F(AutoWriterTest, NameWithForwardSlashesPutsTheFileIntoTheCurrentDirectory) {
  std::filesystem::create_directory("sub");
  m_writer.init("sub/run", false);
  EXPECT_EQ(summary(), "Output_Name,\nsub/run,\n");
  EXPECT_TRUE(std::filesystem::is_empty("sub"));
}

// When a header is written.

TEST_F(AutoWriterTest, SecondRunWithEqualColumnsWritesItsLineOnly) {
  EXPECT_EQ(run("one", {"A"}), 0);
  EXPECT_EQ(run("two", {"A"}), 0);
  EXPECT_EQ(readFile(kFile), "Output_Name,T_Key_k_A,\none,v,\ntwo,v,\n");
}

TEST_F(AutoWriterTest, RunWithOtherColumnsWritesANewHeaderBelow) {
  run("one", {"A"});
  run("two", {"A", "B"});
  EXPECT_EQ(readFile(kFile),
            "Output_Name,T_Key_k_A,\none,v,\nOutput_Name,T_Key_k_A,T_Key_k_B,\ntwo,v,v,\n");
}

TEST_F(AutoWriterTest, LastHeaderDecides) {
  run("one", {"A"});
  run("two", {"B"});
  run("three", {"B"});
  run("four", {"A"});
  EXPECT_EQ(readFile(kFile),
            "Output_Name,T_Key_k_A,\none,v,\n"
            "Output_Name,T_Key_k_B,\ntwo,v,\nthree,v,\n"
            "Output_Name,T_Key_k_A,\nfour,v,\n");
}

TEST_F(AutoWriterTest, HeaderThatOnlyBeginsEqualIsAnotherHeader) {
  run("one", {"A", "B"});
  run("two", {"A"});
  EXPECT_EQ(readFile(kFile),
            "Output_Name,T_Key_k_A,T_Key_k_B,\none,v,v,\nOutput_Name,T_Key_k_A,\ntwo,v,\n");
}

TEST_F(AutoWriterTest, FileWithoutHeaderGetsOneBehindWhatItHolds) {
  writeFile(m_dir.file(kFile), "notes of a person\n Output_Name,\n");
  run("one", {});
  EXPECT_EQ(readFile(kFile), "notes of a person\n Output_Name,\nOutput_Name,\none,\n");
}

TEST_F(AutoWriterTest, DataLineThatBeginsAsAHeaderIsTakenForOne) {
  run("Output_Name_1", {});
  run("two", {});
  EXPECT_EQ(readFile(kFile), "Output_Name,\nOutput_Name_1,\nOutput_Name,\ntwo,\n");
}

TEST_F(AutoWriterTest, SuccessIsSilent) {
  run("one", {"A"});
  EXPECT_TRUE(m_log.errors().empty());
  EXPECT_TRUE(m_log.warnings().empty());
}

// What can go wrong at the end.

TEST_F(AutoWriterTest, FileThatCannotBeOpenedIsAnError) {
  std::filesystem::create_directory(kFile);
  EXPECT_EQ(run("one", {}), 1);
  EXPECT_EQ(m_log.errors(), (qumetra::test::RecordingSink::Texts{{LogSink::kError, kError}}));
  EXPECT_TRUE(m_log.warnings().empty());
}

TEST_F(AutoWriterTest, FileThatCannotBeOpenedIsSilentAtVerbosityZero) {
  m_log.environment().verbosity = PluginEnvironment::kQuiet;
  std::filesystem::create_directory(kFile);
  EXPECT_EQ(run("one", {}), 1);
  EXPECT_TRUE(m_log.errors().empty());
}

/// No file of this process grows past a size, as on a full disk, as long as this lives.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : m_formerHandler(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &m_formerLimit);
    const rlimit limit{bytes, m_formerLimit.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &m_formerLimit);
    std::signal(SIGXFSZ, m_formerHandler);
  }

 private:
  void (*m_formerHandler)(int);
  rlimit m_formerLimit{};
};

TEST_F(AutoWriterTest, FileThatTakesNoMoreIsAnErrorAndKeepsItsLines) {
  run("one", {});
  const std::string before = readFile(kFile);
  {
    const FileSizeLimit limit(before.size());
    EXPECT_EQ(run("two", {}), 1);
  }
  EXPECT_EQ(m_log.errors(), (qumetra::test::RecordingSink::Texts{{LogSink::kError, kError}}));
  EXPECT_EQ(readFile(kFile), before);
}

}  // namespace
