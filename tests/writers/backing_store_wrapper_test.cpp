#include "writers/textwriter_plugin/backing_store_wrapper.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/disk_faults.h"
#include "tests/support/log_capture.h"
#include "tests/support/standard_error.h"
#include "tests/writers/flushed_table.h"

namespace {

using qumetra::test::flushed;
using qumetra::test::FullDisk;
using qumetra::test::LogCapture;
using qumetra::test::standardErrorOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;

constexpr const char* kColumnWarning =
    "WARNING: Trying to set data for a column 2 before adding it to the store.Columns added=2\n";

class Wrapper : public ::testing::Test {
 protected:
  /// A row with these cells in the first columns.
  void addRow(std::initializer_list<const char*> cells) {
    std::uint32_t column = 0;
    for (const char* cell : cells) {
      m_table.pushCell(cell, column++);
    }
    m_table.rowComplete();
  }

  qumetra::test::TempArea m_area;
  LogCapture m_log;
  BackingStoreWrapper m_table{"Title", "N/A"};
};

TEST_F(Wrapper, TableIsTitleColumnTitlesRowsAndAnEmptyLine) {
  m_table.addColumn("Time");
  m_table.addColumn("Value");
  addRow({"1000", "12345"});
  addRow({"2000", "67890"});
  const auto [result, text] = flushed(m_table);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(text,
            "Title\n"
            "Time, Value\n"
            "1000, 12345\n"
            "2000, 67890\n"
            "\n");
}

TEST_F(Wrapper, LeadingNewlineStandsBeforeTheTitle) {
  m_table.addColumn("Time");
  EXPECT_EQ(flushed(m_table, ",", true).text, "\nTitle\nTime\n\n");
}

TEST_F(Wrapper, TableWithoutRowsEndsAfterTheColumnTitles) {
  m_table.addColumn("Time");
  const auto [result, text] = flushed(m_table);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(text, "Title\nTime\n\n");
}

TEST_F(Wrapper, TableWithoutColumnsHasAnEmptyTitleRow) {
  EXPECT_EQ(flushed(m_table).text, "Title\n\n\n");
}

TEST_F(Wrapper, CellsAreRightJustified) {
  m_table.addColumn("Time");
  m_table.addColumn("Value");
  addRow({"1", "2"});
  EXPECT_EQ(flushed(m_table).text,
            "Title\n"
            "Time, Value\n"
            "   1,     2\n"
            "\n");
}

TEST_F(Wrapper, LongValueWidensItsColumnHeaderIncluded) {
  m_table.addColumn("T");
  m_table.addColumn("V");
  addRow({"1", "2"});
  addRow({"1000", "20000"});
  EXPECT_EQ(flushed(m_table).text,
            "Title\n"
            "   T,     V\n"
            "   1,     2\n"
            "1000, 20000\n"
            "\n");
}

TEST_F(Wrapper, VeryWideColumnIsPaddedInFull) {
  m_table.addColumn("T");
  m_table.addColumn("V");
  addRow({"1", "2"});
  const std::string wide(300, 'w');
  addRow({wide.c_str(), wide.c_str()});
  const std::string pad(299, ' ');
  EXPECT_EQ(flushed(m_table).text, "Title\n" + pad + "T, " + pad + "V\n" + pad + "1, " + pad +
                                       "2\n" + wide + ", " + wide + "\n\n");
}

TEST_F(Wrapper, DelimiterIsTheCallers) {
  m_table.addColumn("A");
  m_table.addColumn("B");
  addRow({"1", "2"});
  EXPECT_EQ(flushed(m_table, ";;").text, "Title\nA;; B\n1;; 2\n\n");
}

TEST_F(Wrapper, MissingTextOverflowsANarrowColumn) {
  m_table.addColumn("A");
  m_table.addColumn("B");
  addRow({"1"});
  EXPECT_EQ(flushed(m_table).text, "Title\nA, B\n1, N/A\n\n");
}

TEST_F(Wrapper, LateColumnIsFilledWithMissingTextInEarlierRows) {
  m_table.addColumn("A");
  addRow({"1"});
  addRow({"2"});
  m_table.addColumn("Late one");
  addRow({"3", "4"});
  EXPECT_EQ(flushed(m_table).text,
            "Title\n"
            "A, Late one\n"
            "1,      N/A\n"
            "2,      N/A\n"
            "3,        4\n"
            "\n");
}

TEST_F(Wrapper, RowOlderThanEveryColumnHasTheDelimiterBeforeItsFirstCellToo) {
  m_table.rowComplete();
  m_table.addColumn("Time");
  m_table.addColumn("B");
  EXPECT_EQ(flushed(m_table).text, "Title\nTime, B\n,  N/A, N/A\n\n");
}

TEST_F(Wrapper, CellOfOneNewlineEndsItsRow) {
  m_table.addColumn("A");
  m_table.addColumn("B");
  m_table.addColumn("C");
  addRow({"1", "\n", "3"});
  EXPECT_EQ(flushed(m_table).text,
            "Title\n"
            "A, B, C\n"
            "1, N/A, N/A\n"
            "3, N/A, N/A\n"
            "\n");
}

TEST_F(Wrapper, CellThatBeginsWithANewlineIsACell) {
  m_table.addColumn("A");
  addRow({"\nx"});
  EXPECT_EQ(flushed(m_table).text, "Title\n A\n\nx\n\n");
}

TEST_F(Wrapper, NothingIsQuoted) {
  m_table.addColumn("a,b");
  addRow({"\"1,5\""});
  EXPECT_EQ(flushed(m_table).text, "Title\n  a,b\n\"1,5\"\n\n");
}

TEST_F(Wrapper, EmptyCellIsNotAMissingOne) {
  m_table.addColumn("A");
  m_table.addColumn("B");
  addRow({"", ""});
  EXPECT_EQ(flushed(m_table).text, "Title\nA, B\n ,  \n\n");
}

TEST_F(Wrapper, LaterTextReplacesTheCellsEarlierOneButKeepsItsWidth) {
  m_table.addColumn("A");
  m_table.pushCell("first", 0);
  m_table.pushCell("2nd", 0);
  m_table.rowComplete();
  EXPECT_EQ(flushed(m_table).text, "Title\n    A\n  2nd\n\n");
}

TEST_F(Wrapper, CellsOfARowDoNotReachTheNext) {
  m_table.addColumn("A");
  m_table.addColumn("B");
  addRow({"1", "2"});
  addRow({"3"});
  EXPECT_EQ(flushed(m_table).text, "Title\nA, B\n1, 2\n3, N/A\n\n");
}

TEST_F(Wrapper, TextsEndAtAZeroByteButForTheFirstCell) {
  BackingStoreWrapper table(std::string("Ti\0tle", 6), "N/A");
  table.addColumn("A");
  table.addColumn("B");
  table.pushCell(std::string_view("1\0x", 3), 0);
  table.pushCell(std::string_view("2\0x", 3), 1);
  table.rowComplete();
  EXPECT_EQ(flushed(table).text, std::string("Ti\n  A,   B\n1\0x, 2\n\n", 20));
}

TEST_F(Wrapper, ColumnsCountFromZero) {
  EXPECT_EQ(m_table.addColumn("A"), 0);
  EXPECT_EQ(m_table.addColumn("B"), 1);
}

TEST_F(Wrapper, CellOfAnUnknownColumnWarnsAndFails) {
  m_table.addColumn("A");
  m_table.addColumn("B");
  EXPECT_EQ(m_table.pushCell("x", 2), 1);
  EXPECT_THAT(m_log.warnings(), ElementsAre(Pair(2, kColumnWarning)));
}

TEST_F(Wrapper, WarningsShowAtALowLevelWhenTheirTagIsOn) {
  LogCapture log(PluginEnvironment::kErrors);
  m_table.addColumn("A");
  m_table.addColumn("B");
  m_table.pushCell("x", 2);
  EXPECT_THAT(log.warnings(), IsEmpty());
  log.environment().enabledTags.add("text-writer-plugin");
  m_table.pushCell("x", 2);
  EXPECT_THAT(log.warnings(), ElementsAre(Pair(2, kColumnWarning)));
}

TEST_F(Wrapper, RowWithARefusedCellStillCompletes) {
  m_table.addColumn("A");
  addRow({"1", "refused"});
  EXPECT_EQ(flushed(m_table).text, "Title\nA\n1\n\n");
}

TEST_F(Wrapper, LinesAreTakenAndDropped) {
  m_table.addColumn("A");
  EXPECT_EQ(m_table.pushLine("a line"), 0);
  EXPECT_EQ(flushed(m_table).text, "Title\nA\n\n");
}

TEST_F(Wrapper, FullTableRefusesAColumnAndItsCells) {
  for (std::size_t i = 0; i < BackingStoreWrapper::kMaxColumns; ++i) {
    ASSERT_EQ(m_table.addColumn("c"), i);
  }
  EXPECT_EQ(m_table.addColumn("over"), BackingStoreWrapper::kNoColumn);
  EXPECT_THAT(m_log.warnings(),
              ElementsAre(Pair(
                  2, "WARNING: No room for column over: a table has at most 65535 columns\n")));
  EXPECT_EQ(m_table.pushCell("x", BackingStoreWrapper::kNoColumn), 1);
}

TEST_F(Wrapper, FlushWithoutAFileWarnsAndFails) {
  EXPECT_EQ(m_table.flush(nullptr, ",", false), 1);
  EXPECT_THAT(m_log.warnings(),
              ElementsAre(Pair(2, "WARNING: Please provide a valid output file to write\n")));
}

TEST_F(Wrapper, FlushFailsWhenTheOutputTakesNoMore) {
  const std::string wide(100'000, 'w');
  m_table.addColumn("A");
  m_table.pushCell(wide, 0);
  m_table.rowComplete();
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> full(std::fopen("/dev/full", "w"),
                                                             &std::fclose);
  EXPECT_EQ(m_table.flush(full.get(), ",", false), 1);
}

TEST_F(Wrapper, FlushedTableTakesMoreRows) {
  m_table.addColumn("A");
  addRow({"1"});
  EXPECT_EQ(flushed(m_table).text, "Title\nA\n1\n\n");
  addRow({"2"});
  EXPECT_EQ(flushed(m_table).text, "Title\nA\n1\n2\n\n");
}

TEST_F(Wrapper, TableOfManyBlocksIsWhole) {
  m_table.addColumn("Time");
  m_table.addColumn("Value");
  std::string expected = "Title\n  Time,  Value\n";
  for (int i = 100'000; i < 300'000; ++i) {
    const std::string number = std::to_string(i);
    addRow({number.c_str(), number.c_str()});
    expected += number + ", " + number + '\n';
  }
  EXPECT_TRUE(flushed(m_table).text == expected + '\n');
}

TEST_F(Wrapper, CellLongerThanABlockIsWhole) {
  const std::string huge(3 * 0x100000 + 17, 'h');
  m_table.addColumn("A");
  m_table.addColumn("B");
  for (int i = 0; i < 3; ++i) {
    m_table.pushCell("1", 0);
    m_table.pushCell(huge, 1);
    m_table.rowComplete();
  }
  const std::string row = "1, " + huge + '\n';
  const std::string text = flushed(m_table).text;
  EXPECT_TRUE(text ==
              "Title\nA, " + std::string(huge.size() - 1, ' ') + "B\n" + row + row + row + "\n");
}

TEST_F(Wrapper, RowsAreDroppedWhileTheDiskIsFullAndTakenAgainAfterwards) {
  const std::string wide(0x80000, 'w');
  m_table.addColumn("A");
  const auto addWide = [&](char mark) {
    m_table.pushCell(mark + wide, 0);
    m_table.rowComplete();
  };
  {
    const FullDisk full(0);
    addWide('1');
    addWide('2');  // The block is full before the row's end.
    addWide('3');
  }
  addWide('4');
  const std::string text = flushed(m_table).text;
  EXPECT_THAT(m_log.streamedWarnings(), StartsWith("2WARNING: write error while flushing"));
  EXPECT_TRUE(text == "Title\n" + std::string(wide.size(), ' ') + "A\n1" + wide + "\n2" + wide +
                          "\n4" + wide + "\n\n");
}

TEST_F(Wrapper, RowThatTheDiskCutsOffDoesNotKeepTheReportFromEnding) {
  const std::string wide(0x80000, 'w');
  m_table.addColumn("A");
  m_table.pushCell(wide, 0);
  m_table.rowComplete();
  {
    const FullDisk full(0);
    m_table.pushCell(wide, 0);
    m_table.rowComplete();
  }
  const std::string text = flushed(m_table).text;
  EXPECT_TRUE(text == "Title\n" + std::string(wide.size() - 1, ' ') + "A\n" + wide + "\n\n");
}

TEST_F(Wrapper, TableThatCannotBeReadShowsAsEmpty) {
  m_table.addColumn("A");
  for (int i = 0; i < 3; ++i) {
    m_table.pushCell(std::string(0x80000, 'w'), 0);
    m_table.rowComplete();
  }
  const FullDisk full(0);
  qumetra::test::FlushedTable table{};
  EXPECT_THAT(standardErrorOf([&] { table = flushed(m_table); }),
              StartsWith("ERROR flushing dirty buffer while rewinding!\n"));
  EXPECT_EQ(table.result, 0);
  EXPECT_TRUE(table.text == "Title\n" + std::string(0x7FFFF, ' ') + "A\n\n");
}

TEST(WrapperInit, WithoutAPlaceForItsStoreThrowsAText) {
  const qumetra::test::NoPlaceForTempFiles nowhere;
  const LogCapture log;
  EXPECT_THROW(BackingStoreWrapper("Title", "N/A"), const char*);
}

}  // namespace
