#include "qumetra/collect/summary_from_samples.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qumetra/collect/collection.h"
#include "qumetra/model/model.h"
#include "qumetra/recording/recording_reader.h"
#include "tests/collect/collection_fixture.h"
#include "tests/support/temp_dir.h"

namespace qumetra::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

/// Recordings of the machine of files, made shorter.
class SummaryFromSamplesTest : public CollectionTest {
 protected:
  SummaryFromSamplesTest() { collect(); }

  /// Cuts the recording behind the last line that begins like this.
  void cutBehindLast(const std::string& beginning) const {
    const std::string text = readFile(options.recordPath);
    const std::size_t line = text.rfind('\n' + beginning);
    ASSERT_NE(std::string::npos, line);
    writeFile(options.recordPath, text.substr(0, text.find('\n', line + 1) + 1));
  }
  void removeNote() const {
    std::string text = readFile(options.recordPath);
    const std::size_t line = text.find("{\"note\"");
    ASSERT_NE(std::string::npos, line);
    text.erase(line, text.find('\n', line) + 1 - line);
    writeFile(options.recordPath, text);
  }
  void replay() {
    SummaryFromSamples summary(m_model, sink);
    RecordingReader reader(options.recordPath, m_model, summary);
    reader.setNoteHandler([&](std::string_view text) { summary.note(text); });
    reader.readAll();
    summary.finish([this](const std::string& line) { told.push_back(line); });
  }

  Model m_model;
  KeepingSink sink;
  std::vector<std::string> told;
};

TEST_F(SummaryFromSamplesTest, ACutCollectionGetsTheTablesThatItsEndWouldHaveMade) {
  const std::vector<KeptTable> expected = Replay(options.recordPath).sink.tables;
  cutBehindLast("{\"sample\"");
  ASSERT_THAT(Replay(options.recordPath).sink.tables, IsEmpty());
  replay();
  ASSERT_EQ(expected.size(), sink.tables.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(expected[i].title, sink.tables[i].title);
    EXPECT_EQ(expected[i].id, sink.tables[i].id);
    EXPECT_EQ(expected[i].metricId, sink.tables[i].metricId);
    EXPECT_EQ(expected[i].type, sink.tables[i].type);
    EXPECT_EQ(expected[i].keyNames, sink.tables[i].keyNames);
    EXPECT_EQ(expected[i].fieldNames, sink.tables[i].fieldNames);
    EXPECT_EQ(expected[i].cells, sink.tables[i].cells);
    EXPECT_EQ(expected[i].notesAfter, sink.tables[i].notesAfter);
  }
}

TEST_F(SummaryFromSamplesTest, OneLineTellsItAndStandsInTheResults) {
  cutBehindLast("{\"sample\"");
  replay();
  const std::string line =
      "the collection did not end in order; the missing summary tables were made from its " +
      std::to_string(sink.samples.size()) + " samples";
  EXPECT_THAT(told, ElementsAre(line));
  EXPECT_THAT(sink.texts, ElementsAre("Warning: " + line));
}

TEST_F(SummaryFromSamplesTest, TablesThatAreThereStayAndTheOthersAreMade) {
  const std::vector<KeptTable> expected = Replay(options.recordPath).sink.tables;
  // CPU Time, a row per CPU and one of totals, comes first.
  const std::string text = readFile(options.recordPath);
  std::size_t end = 0;
  for (int line = 0; line < 4; ++line) {
    end = text.find('\n', text.find("\n{\"table\"", end) + 1);
  }
  writeFile(options.recordPath, text.substr(0, end + 1));
  ASSERT_EQ(4U, Replay(options.recordPath).sink.tables.size());
  replay();
  ASSERT_EQ(expected.size(), sink.tables.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(expected[i].title, sink.tables[i].title);
    EXPECT_EQ(expected[i].id, sink.tables[i].id);
    EXPECT_EQ(expected[i].cells, sink.tables[i].cells);
  }
  EXPECT_EQ(1U, told.size());
}

TEST_F(SummaryFromSamplesTest, ACollectionThatEndedPassesAsItIs) {
  const KeepingSink expected = Replay(options.recordPath).sink;
  replay();
  EXPECT_EQ(expected.tables.size(), sink.tables.size());
  EXPECT_EQ(expected.texts, sink.texts);
  EXPECT_THAT(told, IsEmpty());
}

TEST_F(SummaryFromSamplesTest, ARecordingOfOthersPassesAsItIs) {
  cutBehindLast("{\"sample\"");
  removeNote();
  replay();
  EXPECT_THAT(sink.samples, Not(IsEmpty()));
  EXPECT_THAT(sink.tables, IsEmpty());
  EXPECT_THAT(sink.texts, IsEmpty());
  EXPECT_THAT(told, IsEmpty());
}

TEST_F(SummaryFromSamplesTest, WithoutAnySampleThereIsNothingToMakeTablesFrom) {
  cutBehindLast("{\"container\"");
  replay();
  EXPECT_THAT(sink.tables, IsEmpty());
  EXPECT_THAT(told, IsEmpty());
}

}  // namespace
}  // namespace qumetra::test
