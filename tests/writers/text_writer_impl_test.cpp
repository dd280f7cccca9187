// The engine of the text reports: how tables become cells.
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "tests/writers/text_writer_impl_fixture.h"

namespace {

using pwr::TableMessage;
using qumetra::test::absent;
using qumetra::test::failed;
using qumetra::test::makeTable;
using qumetra::test::present;
using qumetra::test::TextWriterImplTest;
using qumetra::test::unwritten;

TEST_F(TextWriterImplTest, KeyHasTheMetricInItsHighHalf) {
  const std::uint64_t key = TextWriterImpl::combineIds(0xFEDCBA98U, 0x87654321U);
  EXPECT_EQ(key, 0xFEDCBA9887654321U);
  EXPECT_EQ(TextWriterImpl::extractMetricIdFromCombinedId(key), 0xFEDCBA98U);
  EXPECT_EQ(TextWriterImpl::extractTableIdFromCombinedId(key), 0x87654321U);
}

TEST_F(TextWriterImplTest, FieldsCountOncePerEntityOrOnce) {
  EXPECT_EQ(TextWriterImpl::countColumns(2, 3, 4, 5), 19);
  EXPECT_EQ(TextWriterImpl::countColumns(2, 3, 0, 0), 5);
  EXPECT_EQ(TextWriterImpl::countColumns(grid(), 0), 5);
  EXPECT_EQ(TextWriterImpl::countColumns(0x7FFFFFFE, 1, 1, 0), 0x7FFFFFFF);
}

TEST_F(TextWriterImplTest, ColumnsBeyond32BitsEndTheProcess) {
  const char* text = "writers/textwriter_plugin/text_writer_impl: assertion failed";
  EXPECT_DEATH(TextWriterImpl::countColumns(0, 65536, 65536, 0), text);
  EXPECT_DEATH(TextWriterImpl::countColumns(0x7FFFFFFF, 1, 0, 0), text);
  EXPECT_DEATH(TextWriterImpl::countColumns(0, 0, 0, 0x80000000U), text);
}

TEST_F(TextWriterImplTest, TitleGetsTheUnitsOfItsQuantity) {
  TableMessage table = makeTable(TableMessage::kTitleTable, "Power");
  TempFileManager manager(1);
  manager.m_rowCounter = manager.m_cellCounter = 5;
  EXPECT_EQ(m_impl.handleTitle(table, manager), 0);
  EXPECT_EQ(manager.m_title, "Power");
  table.setQuantity(m_world.quantity("W"));
  m_impl.handleTitle(table, manager);
  EXPECT_EQ(manager.m_title, "Power (units = W)");
  table.setQuantity(m_world.quantity(""));
  m_impl.handleTitle(table, manager);
  EXPECT_EQ(manager.m_title, "Power");
  EXPECT_EQ(manager.m_rowCounter + manager.m_cellCounter, 0U);
}

TEST_F(TextWriterImplTest, HeaderRowHasTheEntityOutermost) {
  EXPECT_EQ(headersOf(grid()), "HS|H1|H2|H1|H2\n");
}

TEST_F(TextWriterImplTest, NamesAndRulesHaveTheFieldOutermostUnlikeTheHeaderRow) {
  EXPECT_EQ(namesOf(grid()),
            "S|a F1|b F1|a F2|b F2\n"
            "-|----|----|----|----\n");
}

TEST_F(TextWriterImplTest, CellsHaveTheFieldOutermostUnlikeTheHeaderRow) {
  EXPECT_EQ(dataOf(grid()), "s|aF1|bF1|aF2|bF2\n");
}

TEST_F(TextWriterImplTest, HeaderRowIsWrittenOnlyForATableWithHeaders) {
  TableMessage table = grid();
  table.setHasFieldHeaders(false);
  EXPECT_EQ(headersOf(table), "");
}

TEST_F(TextWriterImplTest, HeaderRowBeginsWithItsEmptyColumns) {
  EXPECT_EQ(headersOf(grid(), 2), "||HS|H1|H2|H1|H2\n");
}

TEST_F(TextWriterImplTest, TableWithoutEntitiesHasEachFieldOnce) {
  TableMessage table = makeTable(TableMessage::kValueTable, "Flat");
  const auto* field = m_world.column("F", "H");
  table.setHasFieldHeaders(true);
  table.addFieldHandle(field);
  table.setCell(nullptr, field, present("value"));
  EXPECT_EQ(headersOf(table), "H\n");
  EXPECT_EQ(namesOf(table), "F\n-\n");
  EXPECT_EQ(dataOf(table), "value\n");
}

TEST_F(TextWriterImplTest, NameOfAColumnHasTheQualifiedNameOfItsEntity) {
  TableMessage table = makeTable(TableMessage::kValueTable, "T");
  const auto* package = m_world.entity("package");
  table.addEntity(m_world.entity("core", package));
  table.addFieldHandle(m_world.column("Field"));
  EXPECT_EQ(namesOf(table),
            "package/core Field\n"
            "------------------\n");
}

TEST_F(TextWriterImplTest, EmptyNameHasAnEmptyRule) {
  TableMessage table = makeTable(TableMessage::kValueTable, "T");
  table.addSharedHandle(m_world.column(""));
  table.addSharedHandle(m_world.column("b"));
  EXPECT_EQ(namesOf(table), "|b\n|-\n");
}

TEST_F(TextWriterImplTest, EntitiesStandInTheOrderOfTheirIds) {
  TableMessage table = grid();
  TableMessage turned = makeTable(TableMessage::kValueTable, "Turned");
  turned.addFieldHandle(m_fields[0]);
  turned.addEntity(m_entities[1]);
  turned.addEntity(m_entities[0]);
  EXPECT_EQ(namesOf(turned), "a F1|b F1\n----|----\n");
}

TEST_F(TextWriterImplTest, UnreadableCellIsInvalidAndAbsentOneEmpty) {
  TableMessage table = grid();
  table.setCell(m_entities[0], m_fields[0], failed("left behind"));
  table.setCell(m_entities[1], m_fields[0], absent());
  table.setCell(m_entities[0], m_fields[1], unwritten());
  EXPECT_EQ(dataOf(table, 1), "s|Invalid||Invalid|bF2\n");
}

TEST_F(TextWriterImplTest, UnreadableSharedCellIsInvalid) {
  TableMessage table = grid();
  table.setCell(nullptr, *table.sharedHandlesBegin(), failed("x"));
  EXPECT_EQ(dataOf(table, 1), "Invalid|aF1|bF1|aF2|bF2\n");
}

TEST_F(TextWriterImplTest, CellsOfAnEntityGoToItsOwnFile) {
  const TableMessage table = grid();
  TempFileManager manager(5);
  EXPECT_EQ(m_impl.handleData(table, m_entities[1], manager, 0), 0);
  ASSERT_EQ(manager.m_entityFiles.size(), 1U);
  EXPECT_EQ(manager.m_entityFiles.begin()->first, m_entities[1]->getId());
  EXPECT_EQ(manager.m_file.length(), 0U);
}

TEST_F(TextWriterImplTest, DataStartsAtItsColumn) {
  TempFileManager manager(6);
  m_impl.handleData(grid(), nullptr, manager, 1);
  EXPECT_EQ(manager.m_columnWidths, std::vector<std::int32_t>({0, 1, 3, 3, 3, 3}));
}

TEST_F(TextWriterImplTest, NullHandlesHaveNoNameAndNoHeader) {
  TableMessage table = grid();
  table.addSharedHandle(nullptr);
  table.addFieldHandle(nullptr);
  EXPECT_EQ(headersOf(table), "HS||H1|H2||H1|H2|\n");
  EXPECT_EQ(namesOf(table),
            "S||a F1|b F1|a F2|b F2|a |b \n"
            "-||----|----|----|----|--|--\n");
  EXPECT_EQ(dataOf(table, 1), "s|Invalid|aF1|bF1|aF2|bF2|Invalid|Invalid\n");
}

TEST_F(TextWriterImplTest, NullHandlesOfATableWithoutEntitiesAreSafeToo) {
  TableMessage table = makeTable(TableMessage::kValueTable, "T");
  table.setHasFieldHeaders(true);
  table.addFieldHandle(nullptr);
  table.addSharedHandle(nullptr);
  EXPECT_EQ(headersOf(table), "|\n");
  EXPECT_EQ(namesOf(table), "|\n|\n");
  EXPECT_EQ(dataOf(table, 1), "Invalid|Invalid\n");
}

TEST_F(TextWriterImplTest, TempFileIsMadeOncePerKey) {
  bool isNew = false;
  TempFileManager& first = m_impl.getTempFile(5, isNew, 3);
  EXPECT_TRUE(isNew);
  TempFileManager& again = m_impl.getTempFile(5, isNew, 9);
  EXPECT_FALSE(isNew);
  EXPECT_EQ(&first, &again);
  EXPECT_EQ(first.m_columnWidths.size(), 3U);
}

TEST_F(TextWriterImplTest, TablesAboutMetricsAreKeptApart) {
  TableMessage table = grid();
  table.m_metricId = 2;
  table.m_id = 3;
  bool isNew = false;
  const TempFileManager& info = m_impl.getTempMetricInfoFile(table, isNew, 4);
  EXPECT_TRUE(isNew);
  EXPECT_EQ(info.m_columnWidths.size(), 9U);
  EXPECT_TRUE(m_impl.m_tables.empty());
  EXPECT_EQ(m_impl.m_metricInfoTables.begin()->first, 0x200000003U);
  m_impl.getTempMetricInfoFile(table, isNew, 4);
  EXPECT_FALSE(isNew);
}

}  // namespace
