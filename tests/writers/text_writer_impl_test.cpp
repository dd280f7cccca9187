// The engine of the text reports: how tables become cells, and how the report is put together.
#include "writers/textwriter_plugin/text_writer_impl.h"

#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <limits>
#include <list>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/writers/report_world.h"
#include "tests/writers/spill_test_support.h"
#include "writers/textwriter_plugin/report_text.h"

namespace {

namespace fs = std::filesystem;
using pwr::TableMessage;
using qumetra::test::absent;
using qumetra::test::failed;
using qumetra::test::flushed;
using qumetra::test::LogCapture;
using qumetra::test::makeTable;
using qumetra::test::present;
using qumetra::test::readFile;
using qumetra::test::ReportWorld;
using qumetra::test::SpillDir;
using qumetra::test::unwritten;
using Texts = qumetra::test::RecordingSink::Texts;

class TextWriterImplTest : public ::testing::Test {
 protected:
  TextWriterImplTest() {
    m_impl.m_metricOrder = &m_order;
    m_impl.m_featureMetrics = &m_features;
  }

  std::string base() const { return m_dir.file("result"); }
  std::string path() const { return base() + ".csv"; }

  /// Lets `step` store rows of `table`, and returns them as they would stand in the report.
  template <typename Step>
  std::string rowsOf(const TableMessage& table, Step step, std::uint32_t startColumn = 0) {
    TempFileManager manager(TextWriterImpl::countColumns(table, startColumn));
    step(manager);
    const std::string report = flushed(manager, "|").second;
    return report.substr(1, report.size() - 2);
  }

  std::string headersOf(const TableMessage& table, std::uint32_t startColumn = 0) {
    return rowsOf(
        table,
        [&](TempFileManager& manager) {
          EXPECT_EQ(m_impl.handleFieldHeaders(table, manager, startColumn), 0);
        },
        startColumn);
  }

  std::string namesOf(const TableMessage& table) {
    return rowsOf(table, [&](TempFileManager& manager) {
      EXPECT_EQ(m_impl.handleFieldMetadata(table, manager, 0), 0);
    });
  }

  std::string dataOf(const TableMessage& table, int expectedResult = 0) {
    return rowsOf(table, [&](TempFileManager& manager) {
      EXPECT_EQ(m_impl.handleData(table, nullptr, manager, 0), expectedResult);
    });
  }

  /// One shared column, two fields and two entities; every text tells its place.
  TableMessage grid() {
    TableMessage table = makeTable(TableMessage::kValueTable, "Grid");
    const auto* shared = m_world.column("S", "HS");
    m_fields = {m_world.column("F1", "H1"), m_world.column("F2", "H2")};
    m_entities = {m_world.entity("a"), m_world.entity("b")};
    table.setHasFieldHeaders(true);
    table.addSharedHandle(shared);
    table.setCell(nullptr, shared, present("s"));
    for (const auto* entity : m_entities) {
      table.addEntity(entity);
    }
    for (const auto* field : m_fields) {
      table.addFieldHandle(field);
      for (const auto* entity : m_entities) {
        table.setCell(entity, field, present(entity->getName() + field->getFieldName()));
      }
    }
    return table;
  }

  LogCapture m_log;
  SpillDir m_dir;
  ReportWorld m_world;
  std::vector<const pwr::DataHandle*> m_fields;
  std::vector<const pwr::EntityHandle*> m_entities;
  TextWriterImpl::MetricOrder m_order;
  TextWriterImpl::FeatureMetrics m_features;
  TextWriterImpl m_impl{", ", ".csv"};
};

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

TEST_F(TextWriterImplTest, InitMakesTheDirectoriesOfItsFile) {
  EXPECT_EQ(m_impl.init(m_dir.file("deep/down/result")), 0);
  EXPECT_EQ(m_impl.m_outputPath, m_dir.file("deep/down/result.csv"));
  EXPECT_TRUE(fs::exists(m_dir.file("deep/down/result.csv")));
}

TEST_F(TextWriterImplTest, InitThatCannotMakeItsFileWarnsAndFails) {
  fs::create_directory(path());
  EXPECT_EQ(m_impl.init(base()), 1);
  EXPECT_EQ(m_log.warnings().back(),
            std::make_pair(2, "WARNING: Could not create " + path() + "\n"));
}

TEST_F(TextWriterImplTest, InitForgetsTheCollectionBefore) {
  m_impl.init(base());
  bool isNew = false;
  m_impl.getTempFile(5, isNew, 1);
  m_impl.getTempMetricInfoFile(grid(), isNew, 0);
  m_impl.m_tableNotes[1] = m_impl.m_containerNotes[1] = nullptr;
  m_impl.m_containerNames[1] = "name";
  m_impl.init(base());
  EXPECT_TRUE(m_impl.m_tables.empty());
  EXPECT_TRUE(m_impl.m_metricInfoTables.empty());
  EXPECT_TRUE(m_impl.m_tableNotes.empty());
  EXPECT_TRUE(m_impl.m_containerNotes.empty());
  EXPECT_TRUE(m_impl.m_containerNames.empty());
  EXPECT_TRUE(fs::is_empty(m_dir.path()));
}

TEST_F(TextWriterImplTest, FiniKeepsTempFilesUntilTheNextInit) {
  m_impl.init(base());
  bool isNew = false;
  m_impl.getTempFile(5, isNew, 1);
  EXPECT_EQ(m_impl.fini(), 0);
  EXPECT_FALSE(fs::is_empty(m_dir.path()));
}

TEST_F(TextWriterImplTest, FiniWithoutInitWarnsAndFails) {
  EXPECT_EQ(m_impl.fini(), 1);
  EXPECT_EQ(m_log.warnings(), Texts({{2, "WARNING: Output file does not exist!\n"}}));
}

TEST_F(TextWriterImplTest, SecondFiniWarnsAndFails) {
  m_impl.init(base());
  EXPECT_EQ(m_impl.fini(), 0);
  EXPECT_EQ(m_impl.fini(), 1);
  EXPECT_EQ(m_log.warnings(), Texts({{2, "WARNING: Output file does not exist!\n"}}));
}

TEST_F(TextWriterImplTest, FiniWithoutMetricOrderWarnsAndFails) {
  m_impl.m_metricOrder = nullptr;
  m_impl.init(base());
  EXPECT_EQ(m_impl.fini(), 1);
  EXPECT_EQ(m_log.warnings(),
            Texts({{2, "WARNING: Metric ordering information does not exist. Cannot proceed!\n"}}));
}

TEST_F(TextWriterImplTest, ConditionalWarningsShowByTheirTagAlone) {
  m_log.environment().verbosity = 1;
  m_impl.fini();
  EXPECT_TRUE(m_log.warnings().empty());
  m_log.environment().enabledTags.add("text-writer-plugin");
  m_impl.fini();
  EXPECT_EQ(m_log.warnings().size(), 1U);
}

TEST_F(TextWriterImplTest, MissingConfigurationIsAnErrorAndTheReportGoesOn) {
  m_order = {3};
  m_impl.init(base());
  EXPECT_EQ(m_impl.fini(), 0);
  EXPECT_EQ(m_log.errors(), Texts({{1,
                                    "ERROR: No entries present for metrics in the output config "
                                    "file. Shouldn't happen!\n"}}));
  EXPECT_EQ(m_order, TextWriterImpl::MetricOrder({3}));
}

TEST_F(TextWriterImplTest, FullDiskUnderTheReportIsAnErrorAndStillZero) {
  fs::create_symlink("/dev/full", m_dir.file("full"));
  m_impl.init(base());
  m_impl.m_outputFile.reset(std::fopen(m_dir.file("full").c_str(), "w"));
  ReportWorld::setOrder({{"f"}, {}, {}});
  bool isNew = false;
  m_impl.getTempFile(TextWriterImpl::kTextKey, isNew, 1);
  EXPECT_EQ(m_impl.fini(), 0);
  EXPECT_EQ(m_log.errors(),
            Texts({{1, "ERROR: Could not write all of the results to " + path() + "\n"}}));
}

TEST_F(TextWriterImplTest, HeadingIsWrittenOnceForEqualNeighbours) {
  m_order = {7, 7};
  ReportWorld::setOrder({{"f"}, {}, {}});
  m_impl.init(base());
  m_impl.m_containerNames[7] = "Heading";
  bool isNew = false;
  m_impl.getTempFile(TextWriterImpl::combineIds(7, 1), isNew, 1).m_title = "Table";
  EXPECT_EQ(m_impl.fini(), 0);
  EXPECT_EQ(readFile(path()), "Heading\n\nTable\n\nTable\n\n");
}

TEST_F(TextWriterImplTest, FirstMetricOfAllOnesHasNoHeading) {
  // It equals the number that stands for "no metric before".
  const auto metric = std::numeric_limits<std::uint32_t>::max();
  m_order = {metric};
  ReportWorld::setOrder({{"f"}, {}, {}});
  m_impl.init(base());
  m_impl.m_containerNames[metric] = "Heading";
  EXPECT_EQ(m_impl.fini(), 0);
  EXPECT_EQ(readFile(path()), "");
}

TEST_F(TextWriterImplTest, RemarksOfAMetricsOwnPlacesWriteNothing) {
  m_impl.init(base());
  const NotesEntry entry(1, m_world.notes({{0, {"before"}}, {1, {"after"}}}));
  processPreMetricTextNotes(m_impl.m_outputFile.get(), entry);
  processPostMetricTextNotes(m_impl.m_outputFile.get(), entry);
  m_impl.fini();
  EXPECT_EQ(readFile(path()), "");
}

TEST_F(TextWriterImplTest, RemarksAreParagraphsByPlacement) {
  m_impl.init(base());
  std::FILE* out = m_impl.m_outputFile.get();
  const NotesEntry entry(1, m_world.notes({{0, {"one", "two"}}, {1, {"after"}}, {2, {"never"}}}));
  processPreTableTextNotes(out, entry);
  processPostTableTextNotes(out, entry);
  processPreTableTextNotes(out, NotesEntry(1, m_world.notes({{1, {"elsewhere"}}})));
  processPostTableTextNotes(out, NotesEntry(1, nullptr));
  processMetricContainerHeader(out, "Heading");
  m_impl.fini();
  EXPECT_EQ(readFile(path()), "one\n\ntwo\n\nafter\n\nHeading\n\n");
}

TEST_F(TextWriterImplTest, RulesAreHyphens) {
  EXPECT_EQ(TextWriterImpl::getDelimiter(3), "---");
  EXPECT_EQ(TextWriterImpl::getDelimiter(0), "");
}

TEST_F(TextWriterImplTest, TablesBeyondTheLimitOfOpenFilesHaveTitlesOnly) {
  ReportWorld::setOrder({{"f"}, {}, {}});
  m_order = {1};
  m_impl.init(base());
  const TableMessage table = m_world.table(1, 1, "Table", "cell");
  const int free = ::dup(0);
  ::close(free);
  rlimit former = {};
  ::getrlimit(RLIMIT_NOFILE, &former);
  const rlimit limit = {static_cast<rlim_t>(free) + 1, former.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
  for (std::uint32_t id = 1; id <= 3; ++id) {
    bool isNew = false;
    TempFileManager& manager = m_impl.getTempFile(TextWriterImpl::combineIds(1, id), isNew, 1);
    m_impl.handleTitle(table, manager);
    EXPECT_EQ(m_impl.handleFieldMetadata(table, manager, 0), 0);
    EXPECT_EQ(m_impl.handleData(table, nullptr, manager, 0), 0);
  }
  EXPECT_EQ(m_impl.fini(), 0);
  ::setrlimit(RLIMIT_NOFILE, &former);
  EXPECT_EQ(readFile(path()), "Table\nc   \n-   \ncell\n\nTable\n\nTable\n\n");
  ASSERT_EQ(m_log.errors().size(), 1U);
  EXPECT_NE(m_log.errors()[0].second.find("Too many open file handles"), std::string::npos);
}

}  // namespace
