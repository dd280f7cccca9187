// The summary report as a host sees it: messages in, `<output name>.csv` out.
#include "writers/textwriter_plugin/summary_writer.h"

#include <sys/resource.h>

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "host/messages.h"
#include "tests/writers/report_world.h"
#include "tests/writers/spill_test_support.h"

namespace {

namespace fs = std::filesystem;
using pwr::TableMessage;
using qumetra::test::failed;
using qumetra::test::LogCapture;
using qumetra::test::makeTable;
using qumetra::test::present;
using qumetra::test::readFile;
using qumetra::test::reportOf;
using qumetra::test::ReportWorld;
using qumetra::test::SpillDir;

/// The most memory that this process has held resident, in KiB.
long peakMemory() {
  rusage usage = {};
  ::getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

class SummaryWriterTest : public ::testing::Test {
 protected:
  SummaryWriterTest() {
    ReportWorld::setOrder({{"feature"}, {}, {}});
    EXPECT_EQ(m_writer.init(base(), false), 0);
  }

  std::string base() const { return m_dir.file("result"); }

  int write(const pwr::WriterMessage& message) {
    if (const auto* table = dynamic_cast<const TableMessage*>(&message)) {
      return m_writer.writeMessage(*table);
    }
    if (const auto* text = dynamic_cast<const pwr::TextMessage*>(&message)) {
      return m_writer.writeMessage(*text);
    }
    return m_writer.writeMessage(dynamic_cast<const pwr::MetricContainerInfoMessage&>(message));
  }

  template <typename Message>
  int text(const std::string& text) {
    Message message;
    message.setMessage(text);
    return write(message);
  }

  /// A one-column table with the cell `cell`.
  int table(std::uint32_t metricId, std::uint32_t id, const std::string& title,
            const std::string& cell) {
    return write(m_world.table(metricId, id, title, cell));
  }

  int name(std::uint32_t metricId, const std::string& containerName,
           const pwr::TextNotes* notes = nullptr) {
    pwr::MetricContainerInfoMessage message;
    message.metricId = metricId;
    message.containerName = containerName;
    message.textNotes = notes;
    return write(message);
  }

  int feature(std::uint32_t metricId, const std::string& featureName,
              const std::string& metricName) {
    pwr::MetricContainerInfoMessage message;
    message.metricId = metricId;
    message.featureName = featureName;
    message.metricName = metricName;
    return write(message);
  }

  int infoTable(std::uint32_t metricId, const TableMessage& table,
                const std::string& containerName = "") {
    pwr::MetricContainerInfoMessage message;
    message.metricId = metricId;
    message.containerName = containerName;
    message.metricInfoTable = &table;
    return write(message);
  }

  /// Ends the collection and reads the report.
  std::string report() {
    EXPECT_EQ(m_writer.fini(), 0);
    return readFile(base() + ".csv");
  }

  LogCapture m_log;
  SpillDir m_dir;
  ReportWorld m_world;
  SummaryWriter m_writer;
};

TEST_F(SummaryWriterTest, RunWithoutMessagesGivesAnEmptyReport) { EXPECT_EQ(report(), ""); }

TEST_F(SummaryWriterTest, TextsAloneGiveASingleBlock) {
  EXPECT_EQ(text<pwr::TextMessage>("short"), 0);
  EXPECT_EQ(text<pwr::TextMessage>("a longer text"), 0);
  EXPECT_EQ(report(), "\nshort        \na longer text\n\n");
}

TEST_F(SummaryWriterTest, HeaderTextsComeFirstHoweverTheyArrive) {
  text<pwr::TextMessage>("text 1");
  text<pwr::HeaderTextMessage>("header 1");
  text<pwr::TextMessage>("text 2");
  text<pwr::HeaderTextMessage>("header 2");
  EXPECT_EQ(report(), "\nheader 1\nheader 2\n\n\ntext 1\ntext 2\n\n");
}

TEST_F(SummaryWriterTest, TableHasTitleNamesRulesRowsAndAnEmptyLine) {
  EXPECT_EQ(table(1, 1, "Title", "cell"), 0);
  EXPECT_EQ(report(), "Title\nc   \n-   \ncell\n\n");
}

TEST_F(SummaryWriterTest, TitleTableAnnouncesColumnsAndHasNoRow) {
  TableMessage announced = m_world.table(1, 1, "Title", "not shown");
  announced.setTableMessageType(TableMessage::kTitleTable);
  EXPECT_EQ(write(announced), 0);
  EXPECT_EQ(report(), "Title\nc\n-\n\n");
}

TEST_F(SummaryWriterTest, ValueTableWithoutTitleTableBringsTitleHeadersAndNames) {
  TableMessage values = makeTable(TableMessage::kValueTable, "Power");
  const auto* column = m_world.column("Name", "Header");
  values.setQuantity(m_world.quantity("W"));
  values.setHasFieldHeaders(true);
  values.addSharedHandle(column);
  values.setCell(nullptr, column, present("1.5"));
  EXPECT_EQ(write(values), 0);
  EXPECT_EQ(report(), "Power (units = W)\nHeader\nName  \n----  \n1.5   \n\n");
}

TEST_F(SummaryWriterTest, RowsOfATableKeepItsFirstTitle) {
  table(1, 1, "First", "a");
  table(1, 1, "Second", "b");
  EXPECT_EQ(report(), "First\nc\n-\na\nb\n\n");
}

TEST_F(SummaryWriterTest, SkippedTableIsNotInTheReport) {
  TableMessage skipped = m_world.table(1, 1, "Skipped", "a");
  skipped.setSkipped(true);
  EXPECT_EQ(write(skipped), 0);
  EXPECT_EQ(report(), "");
}

TEST_F(SummaryWriterTest, EqualTableIdsOfTwoMetricsAreTwoTables) {
  table(1, 5, "One", "a");
  table(2, 5, "Two", "b");
  EXPECT_EQ(report(), reportOf("One", "a") + reportOf("Two", "b"));
}

TEST_F(SummaryWriterTest, MetricZeroIsLikeAnyOther) {
  table(3, 1, "Three", "a");
  table(0, 1, "Zero", "b");
  EXPECT_EQ(report(), reportOf("Three", "a") + reportOf("Zero", "b"));
}

TEST_F(SummaryWriterTest, TablesOfAMetricStandInTheOrderOfTheirIds) {
  table(1, 9, "Nine", "a");
  table(2, 1, "Other", "b");
  table(1, 3, "Three", "c");
  EXPECT_EQ(report(), reportOf("Three", "c") + reportOf("Nine", "a") + reportOf("Other", "b"));
}

TEST_F(SummaryWriterTest, UnreadableCellFailsItsMessageAndIsShownAsInvalid) {
  TableMessage values = m_world.table(1, 1, "T", "a");
  values.setCell(nullptr, *values.sharedHandlesBegin(), failed("x"));
  EXPECT_EQ(write(values), 1);
  EXPECT_EQ(report(), reportOf("T", "Invalid"));
}

TEST_F(SummaryWriterTest, LaterTableWithMoreColumnsLosesNoCell) {
  table(1, 1, "T", "a");
  TableMessage wider = makeTable(TableMessage::kValueTable, "T");
  wider.m_metricId = wider.m_id = 1;
  qumetra::test::addShared(wider, {m_world.column("x"), m_world.column("y")}, {"left", "right"});
  EXPECT_EQ(write(wider), 0);
  EXPECT_EQ(report(), "T\nc   \n-   \na   \nleft\nright\n\n");
}

TEST_F(SummaryWriterTest, TableWithoutColumnsMayBeFollowedByOneWithThem) {
  TableMessage empty = makeTable(TableMessage::kTitleTable, "T");
  empty.m_metricId = empty.m_id = 1;
  EXPECT_EQ(write(empty), 0);
  EXPECT_EQ(table(1, 1, "T", "a"), 0);
  EXPECT_EQ(report(), "T\na, \n");
}

TEST_F(SummaryWriterTest, ContainerNameStandsAboveItsMetricsTables) {
  table(1, 1, "One", "a");
  table(2, 1, "Two", "b");
  EXPECT_EQ(name(2, "Second"), 0);
  EXPECT_EQ(report(), reportOf("One", "a") + "Second\n\n" + reportOf("Two", "b"));
}

TEST_F(SummaryWriterTest, ContainerWithoutTableIsNotInTheReport) {
  name(2, "Nothing here");
  EXPECT_EQ(report(), "");
}

TEST_F(SummaryWriterTest, ContainerNotesFrameTheTablesOfANamedContainer) {
  name(1, "Name", m_world.notes({{0, {"before"}}, {1, {"after"}}}));
  table(1, 1, "T", "a");
  EXPECT_EQ(report(), "Name\n\nbefore\n\n" + reportOf("T", "a") + "after\n\n");
}

TEST_F(SummaryWriterTest, WithoutANameOnlyTheNotesAfterTheTablesAreWritten) {
  name(1, "", m_world.notes({{0, {"before"}}, {1, {"after"}}}));
  table(1, 1, "T", "a");
  EXPECT_EQ(report(), reportOf("T", "a") + "after\n\n");
}

TEST_F(SummaryWriterTest, MetricInfoTablesStandBeforeTheTables) {
  table(1, 1, "T", "a");
  EXPECT_EQ(infoTable(1, m_world.table(1, 2, "Info", "i"), "Name"), 0);
  EXPECT_EQ(report(), "Name\n\n" + reportOf("Info", "i") + reportOf("T", "a"));
}

TEST_F(SummaryWriterTest, MetricInfoTableWithoutAContainerNameIsNotInTheReport) {
  table(1, 1, "T", "a");
  EXPECT_EQ(infoTable(1, m_world.table(1, 2, "Info", "i")), 0);
  EXPECT_EQ(report(), reportOf("T", "a"));
}

TEST_F(SummaryWriterTest, MetricInfoTableAloneBringsItsMetricIntoTheReport) {
  infoTable(1, m_world.table(1, 2, "Info", "i"), "Name");
  EXPECT_EQ(report(), "Name\n\n" + reportOf("Info", "i"));
}

TEST_F(SummaryWriterTest, MetricInfoTableWithAnUnreadableCellIsTaken) {
  TableMessage info = m_world.table(1, 2, "Info", "i");
  info.setCell(nullptr, *info.sharedHandlesBegin(), failed("x"));
  EXPECT_EQ(infoTable(1, info, "Name"), 0);
  EXPECT_EQ(report(), "Name\n\n" + reportOf("Info", "Invalid"));
}

TEST_F(SummaryWriterTest, TableNotesFrameTheirTable) {
  TableMessage first = m_world.table(1, 1, "T", "a");
  first.setTextNotes(m_world.notes({{0, {"b1", "b2"}}, {1, {"after"}}}));
  write(first);
  table(1, 2, "U", "b");
  EXPECT_EQ(report(), "b1\n\nb2\n\n" + reportOf("T", "a") + "after\n\n" + reportOf("U", "b"));
}

TEST_F(SummaryWriterTest, TableNotesGoByTheTableIdAloneAndShowUnderOtherMetricsToo) {
  TableMessage first = m_world.table(1, 5, "T", "a");
  first.setTextNotes(m_world.notes({{0, {"note"}}}));
  write(first);
  table(2, 5, "U", "b");
  EXPECT_EQ(report(), "note\n\n" + reportOf("T", "a") + "note\n\n" + reportOf("U", "b"));
}

TEST_F(SummaryWriterTest, ConfiguredMetricsComeFirstInConfiguredOrder) {
  ReportWorld::setOrder({{"g", "f"}, {}, {{"f", {"f1", "f2"}}, {"g", {"g1"}}}});
  table(1, 1, "Other", "a");
  table(2, 1, "f2", "b");
  table(3, 1, "f1", "c");
  table(4, 1, "g1", "d");
  table(5, 1, "Last", "e");
  feature(2, "f", "f2");
  feature(3, "f", "f1");
  feature(4, "g", "g1");
  EXPECT_EQ(report(), reportOf("g1", "d") + reportOf("f1", "c") + reportOf("f2", "b") +
                          reportOf("Other", "a") + reportOf("Last", "e"));
}

TEST_F(SummaryWriterTest, PrefixesServeWhenThereIsNoFeatureOrder) {
  ReportWorld::setOrder({{}, {"f"}, {{"f", {"f1"}}}});
  table(1, 1, "Other", "a");
  table(3, 1, "f1", "c");
  feature(3, "f", "f1");
  EXPECT_EQ(report(), reportOf("f1", "c") + reportOf("Other", "a"));
}

TEST_F(SummaryWriterTest, ConfiguredMetricThatNeverReportedContributesNothing) {
  ReportWorld::setOrder({{"f"}, {}, {{"f", {"never", "f1"}}}});
  table(2, 1, "Other", "a");
  table(3, 1, "f1", "c");
  feature(3, "f", "f1");
  feature(9, "f", "never");
  EXPECT_EQ(report(), reportOf("f1", "c") + reportOf("Other", "a"));
}

TEST_F(SummaryWriterTest, UnknownConfiguredPairMovesMetricZeroToTheFront) {
  ReportWorld::setOrder({{"f"}, {}, {{"f", {"unknown"}}}});
  table(2, 1, "Two", "a");
  table(0, 1, "Zero", "b");
  EXPECT_EQ(report(), reportOf("Zero", "b") + reportOf("Two", "a"));
}

TEST_F(SummaryWriterTest, MetricIsMovedOnceThoughItIsConfiguredTwice) {
  ReportWorld::setOrder({{"f"}, {}, {{"f", {"f1", "f2", "f1"}}}});
  table(1, 1, "f2", "a");
  table(2, 1, "f1", "b");
  feature(1, "f", "f2");
  feature(2, "f", "f1");
  EXPECT_EQ(report(), reportOf("f1", "b") + reportOf("f2", "a"));
}

TEST_F(SummaryWriterTest, FeatureOrMetricNameAloneIsNotNoted) {
  ReportWorld::setOrder({{"f"}, {}, {{"f", {"", "m"}}, {"", {"m"}}}});
  table(1, 1, "One", "a");
  table(2, 1, "Two", "b");
  feature(2, "f", "");
  feature(2, "", "m");
  EXPECT_EQ(report(), reportOf("One", "a") + reportOf("Two", "b"));
}

TEST_F(SummaryWriterTest, ConsoleRunIsEchoedAndStillWritesItsFile) {
  const fs::path former = fs::current_path();
  fs::current_path(m_dir.file(""));
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(m_writer.init("console", false), 0);
  text<pwr::HeaderTextMessage>("header");
  text<pwr::TextMessage>("text");
  name(1, "Name");
  table(1, 1, "T", "a");
  infoTable(1, m_world.table(1, 2, "Info", "i"));
  EXPECT_EQ(m_writer.fini(), 0);
  const std::string echoed = ::testing::internal::GetCapturedStdout();
  const std::string blocks = "\nheader\n\n\ntext\n\n";
  const std::string tables = reportOf("Info", "i") + reportOf("T", "a");
  // Headings are not part of a table, and only tables are echoed.
  EXPECT_EQ(echoed, blocks + tables);
  EXPECT_EQ(readFile("console.csv"), blocks + "Name\n\n" + tables);
  fs::current_path(former);
}

TEST_F(SummaryWriterTest, OnlyTheExactNameIsTheConsole) {
  for (const char* name : {"consol", "console2", "Console"}) {
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(m_writer.init(m_dir.file(name), false), 0);
    table(1, 1, "T", "a");
    m_writer.fini();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "") << name;
  }
}

TEST_F(SummaryWriterTest, SecondCollectionStartsAfresh) {
  ReportWorld::setOrder({{"f"}, {}, {{"f", {"f1"}}}});
  feature(2, "f", "f1");
  name(1, "Name");
  table(1, 1, "T", "a");
  table(2, 1, "Old", "a");
  text<pwr::TextMessage>("text");
  report();
  EXPECT_EQ(m_writer.init(base(), false), 0);
  table(1, 1, "New", "b");
  table(2, 1, "Newer", "b");
  EXPECT_EQ(report(), reportOf("New", "b") + reportOf("Newer", "b"));
}

TEST_F(SummaryWriterTest, SecondFiniFails) {
  report();
  EXPECT_EQ(m_writer.fini(), 1);
  EXPECT_EQ(m_log.warnings().back().second, "WARNING: Output file does not exist!\n");
}

TEST_F(SummaryWriterTest, ContinuousRunGivesTheSameReport) {
  EXPECT_EQ(m_writer.init(base(), true), 0);
  table(1, 1, "T", "a");
  EXPECT_EQ(report(), reportOf("T", "a"));
}

TEST_F(SummaryWriterTest, MessagesAreTakenThoughNoTempFileCanBeMade) {
  TempFileManager::s_nextTempFileId = 1;
  fs::create_directories(m_dir.path() + "_qmet_1.tmp");
  fs::create_directories(m_dir.path() + "_qmet_2.tmp");
  EXPECT_EQ(table(1, 1, "T", "a"), 0);
  EXPECT_EQ(text<pwr::TextMessage>("text"), 0);
  EXPECT_EQ(report(), "\n\nT\n\n");
}

TEST_F(SummaryWriterTest, TenMillionCellsHoldLittleMemory) {
  constexpr int kColumns = 100;
  TableMessage row = makeTable(TableMessage::kValueTable, "T");
  for (int i = 0; i < kColumns; ++i) {
    qumetra::test::addShared(row, {m_world.column("c")}, {"1234"});
  }
  write(row);
  const long before = peakMemory();
  for (int i = 1; i < 10000000 / kColumns; ++i) {
    ASSERT_EQ(m_writer.writeMessage(row), 0);
  }
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_LT(peakMemory() - before, 64 * 1024);
  EXPECT_GT(fs::file_size(base() + ".csv"), 50000000U);
}

}  // namespace
