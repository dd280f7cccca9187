// The engine of the text reports: how the report is put together.
#include <sys/resource.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "tests/support/sanitizers.h"
#include "tests/writers/text_writer_impl_fixture.h"
#include "writers/textwriter_plugin/report_text.h"

namespace {

namespace fs = std::filesystem;
using pwr::TableMessage;
using qumetra::test::readFile;
using qumetra::test::ReportWorld;
using qumetra::test::TextWriterImplTest;
using Texts = qumetra::test::RecordingSink::Texts;

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
  if (qumetra::test::kAddressSanitizer) {
    GTEST_SKIP() << "the sanitizers need descriptors of their own to look at types";
  }
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
