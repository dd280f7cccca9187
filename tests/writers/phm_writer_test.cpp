// The frame of the PHM writer: its files, their groups, and the metadata file.
#include <gmock/gmock.h>

#include "tests/writers/phm_writer_fixture.h"

namespace qumetra::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* kMetadataTitle = "---------------\nMetric Metadata\n---------------\n";

/// A table of `sampledValue(1000).value(cpu0, value)`.
std::string tableOf(const std::string& value) {
  return "Metric\nUnits:\n"
         "Sample #, Continuous Time (usec), Duration (ms), CPU0\n"
         "       1,                   0.00,        100.00,    " +
         value + "\n\n";
}

class PhmFiles : public PhmWriter {
 protected:
  /// A sample of a metric of its own in `group`.
  void addTo(const std::string& group, std::uint32_t metricId, unsigned long value) {
    add(sampledValue(1000, metricId).group(group).value(m_cpu0, value));
  }
  std::vector<std::string> lastWarnings(std::size_t count) const {
    const std::vector<std::string> all = warnings();
    EXPECT_GE(all.size(), count);
    return {all.end() - static_cast<std::ptrdiff_t>(std::min(count, all.size())), all.end()};
  }
};

TEST_F(PhmFiles, InitMakesNoFile) {
  EXPECT_EQ(m_writer->init(m_area.file("results/out"), true), 0);
  EXPECT_FALSE(std::filesystem::exists(m_area.file("results")));
}

TEST_F(PhmFiles, CollectionWithoutMetricsLeavesTheMetadataFileOnly) {
  EXPECT_EQ(m_writer->fini(), 0);
  EXPECT_THAT(results(), ElementsAre("out_meta_phm.csv"));
  EXPECT_EQ(metadata(), std::string("\n") + kMetadataTitle);
}

TEST_F(PhmFiles, TextsStandAtTheHeadOfEveryFile) {
  EXPECT_EQ(m_writer->writeMessage(textOf("first")), 0);
  addTo("", 1, 5);
  addTo("g", 2, 6);
  EXPECT_EQ(m_writer->writeMessage(textOf("second\nline")), 0);
  const std::string head = "\n\nfirst\n\nsecond\nline\n";
  EXPECT_EQ(report(), head + tableOf("5"));
  EXPECT_EQ(result("out_g_phm.csv"), head + tableOf("6"));
  EXPECT_EQ(metadata(), head + kMetadataTitle);
}

TEST_F(PhmFiles, TablesOfAFileFollowWithoutAnExtraEmptyLine) {
  addTo("", 1, 5);
  addTo("", 2, 6);
  EXPECT_EQ(report(), "\n" + tableOf("5") + tableOf("6"));
}

TEST_F(PhmFiles, GroupNameIsKeptInLowerCaseWithoutThePrefix) {
  addTo("CPU", 1, 5);
  addTo("PmT-Memory", 2, 6);
  addTo("xpmt-y", 3, 7);
  EXPECT_EQ(m_writer->fini(), 0);
  EXPECT_THAT(results(), ElementsAre("out_cpu_phm.csv", "out_memory_phm.csv", "out_meta_phm.csv",
                                     "out_xpmt-y_phm.csv"));
}

TEST_F(PhmFiles, GroupsThatDifferInCaseOnlyAreTwoHandlesOnOnePathAndTheSecondOpenTruncates) {
  addTo("A", 1, 5);
  addTo("a", 2, 6);
  EXPECT_EQ(m_writer->fini(), 0);
  EXPECT_THAT(results(), ElementsAre("out_a_phm.csv", "out_meta_phm.csv"));
  EXPECT_EQ(result("out_a_phm.csv"), "\n" + tableOf("6"));
}

TEST_F(PhmFiles, GroupsThatDifferByThePrefixOnlyAreTwoHandlesOnOnePath) {
  addTo("PMT-a", 1, 5);
  addTo("pmt-A", 2, 6);
  EXPECT_EQ(m_writer->fini(), 0);
  EXPECT_THAT(results(), ElementsAre("out_a_phm.csv", "out_meta_phm.csv"));
  EXPECT_EQ(result("out_a_phm.csv"), "\n" + tableOf("6"));
}

TEST_F(PhmFiles, MetricsOfOneGroupShareItsFile) {
  addTo("g", 1, 5);
  addTo("g", 2, 6);
  EXPECT_EQ(m_writer->fini(), 0);
  EXPECT_EQ(result("out_g_phm.csv"), "\n" + tableOf("5") + tableOf("6"));
}

TEST_F(PhmFiles, BothResidencyTablesGoToTheFileOfTheGroup) {
  add(residency(1000).group("g").value(m_cpu0, 50'000));
  EXPECT_EQ(m_writer->fini(), 0);
  EXPECT_EQ(result("out_g_phm.csv"),
            "\nMetric : Residency Time\nUnits: (usec)\n"
            "Sample #, Continuous Time (usec), Duration (ms),     CPU0\n"
            "       1,                   0.00,        100.00, 25000.00\n\n"
            "Metric : Residency Percentage\nUnits: (%)\n"
            "Sample #, Continuous Time (usec), Duration (ms),  CPU0\n"
            "       1,                   0.00,        100.00, 25.00\n\n");
}

TEST_F(PhmFiles, GroupIsAssignedOnEveryCallSoTheLastOneCounts) {
  addTo("early", 1, 5);
  addTo("late", 1, 6);
  EXPECT_EQ(m_writer->fini(), 0);
  EXPECT_THAT(results(), ElementsAre("out_late_phm.csv", "out_meta_phm.csv"));
}

TEST_F(PhmFiles, GroupIsAssignedAlsoWhereTheStoreIsThere) {
  BackingStoreWrapper* store = m_writer->getStore("First", 1, "early", 0, "a");
  EXPECT_EQ(m_writer->getStore("Second", 1, "late", 0, "b"), store);
  EXPECT_EQ(m_writer->fini(), 0);
  EXPECT_EQ(result("out_late_phm.csv"), "\nFirst\n\n\n");
}

TEST_F(PhmFiles, SecondFiniWritesTheSameAgain) {
  addTo("", 1, 5);
  EXPECT_EQ(report(), "\n" + tableOf("5"));
  EXPECT_EQ(report(), "\n" + tableOf("5"));
}

TEST_F(PhmFiles, MetadataFileThatCannotBeMadeLeavesNoTables) {
  addTo("", 1, 5);
  std::filesystem::create_directories(m_area.file("results/out_meta_phm.csv"));
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(m_writer->fini(), 1);
  ::testing::internal::GetCapturedStderr();
  // The file services have told the reason before.
  EXPECT_THAT(
      lastWarnings(2),
      ElementsAre("WARNING: Could not create " + m_area.file("results/out_meta_phm.csv") + "\n",
                  "WARNING: PHM writer plugin could not flush metadata file\n"));
  EXPECT_THAT(results(), ElementsAre("out_meta_phm.csv"));
}

TEST_F(PhmFiles, FileThatCannotBeMadeEndsTheWalkAndKeepsWhatWasWritten) {
  addTo("", 1, 5);
  addTo("bad", 2, 6);
  addTo("", 3, 7);
  std::filesystem::create_directories(m_area.file("results/out_bad_phm.csv"));
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(m_writer->fini(), 1);
  ::testing::internal::GetCapturedStderr();
  EXPECT_THAT(lastWarnings(1), ElementsAre("WARNING: Could not create " +
                                           m_area.file("results/out_bad_phm.csv") + "\n"));
  EXPECT_EQ(result("out_phm.csv"), "\n" + tableOf("5"));
}

TEST_F(PhmFiles, WarningsOfThisWriterLookAtTheVerbosityAlone) {
  m_log.environment().verbosity = PluginEnvironment::kErrors;
  m_log.environment().enabledTags.add(kTag);
  std::filesystem::create_directories(m_area.file("results/out_meta_phm.csv"));
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(m_writer->fini(), 1);
  ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(add(event(1000).value(m_cpu0, 5)), 0);
  Sample rate = sampledValue(1000);
  rate.value(m_cpu0, text("x"));
  EXPECT_EQ(m_writer->writeSampledGeneric(
                rate.message(), 1, IntWriterV2::Calculations::InstantaneousRate, nullptr, "", ""),
            1);
  EXPECT_THAT(warnings(), IsEmpty());
}

TEST_F(PhmFiles, WarningsOfTheInheritedFrameLookAtTheTagToo) {
  m_log.environment().verbosity = PluginEnvironment::kErrors;
  m_log.environment().enabledTags.add(kTag);
  EXPECT_EQ(add(sampledValue(999)), 1);
  EXPECT_EQ(warnings().size(), 1U);
}

TEST_F(PhmFiles, FullDiskIsAnErrorForEachFileAndFails) {
  addTo("", 1, 5);
  const FullDisk full(20);
  EXPECT_EQ(m_writer->fini(), 1);
  EXPECT_THAT(m_log.errors(),
              ElementsAre(::testing::Pair(1, "ERROR: Could not write all of " +
                                                 m_area.file("results/out_meta_phm.csv") + "\n"),
                          ::testing::Pair(1, "ERROR: Could not write all of " +
                                                 m_area.file("results/out_phm.csv") + "\n")));
}

TEST_F(PhmFiles, StoreThatCannotBeMadeThrowsThroughAndLeavesNothing) {
  Sample sample = sampledValue(1000);
  sample.value(m_cpu0, 5);
  {
    const NoPlaceForTempFiles nowhere;
    EXPECT_THROW(add(sample), const char*);
  }
  EXPECT_EQ(m_writer->fini(), 0);
  EXPECT_THAT(results(), ElementsAre("out_meta_phm.csv"));
}

// The metadata file.

class PhmMetadata : public PhmWriter {
 protected:
  /// Ends the collection and returns the lines behind the title.
  std::string items() {
    EXPECT_EQ(m_writer->fini(), 0);
    const std::string head = std::string("\n") + kMetadataTitle;
    EXPECT_EQ(metadata().substr(0, head.size()), head);
    return metadata().substr(head.size());
  }
};

TEST_F(PhmMetadata, TitleStandsBetweenDashesOfItsLength) {
  EXPECT_EQ(m_writer->getTitleString("abc"), "---\nabc\n---");
  EXPECT_EQ(m_writer->getTitleString(""), "\n\n");
}

TEST_F(PhmMetadata, ListsTheColumnsOfTheFirstEntityOnly) {
  m_c6.addAttributeValue(&attribute("a"), number(6));
  Sample sample = sampledValue(1000);
  sample.declare(&m_cpu1, &m_c1).declare(&m_cpu0, &m_c1).declare(&m_cpu0, &m_c6).declare(&m_cpu0);
  add(sample.list(m_cpu0).list(m_cpu1).value(m_cpu0, 5, &m_c1));
  EXPECT_EQ(items(), "Metric,CPU0 C1,CPU0 C6 (6),\n");
}

TEST_F(PhmMetadata, MetadataValuesStandBeforeTheColumnsAndLinesByName) {
  Sample sample = sampledValue(1000);
  sample.metric.metadataValues = {text("x"), pwr::Data(1.5)};
  add(sample.named("b").declare(&m_cpu0, &m_c1).list(m_cpu0));
  Sample other = sampledValue(1000, 2);
  other.metric.metadataValues = {number(7)};
  add(other.named("a"));
  EXPECT_EQ(items(), "a,7,\nb,x,1.5,CPU0 C1,\n");
}

TEST_F(PhmMetadata, IsFrozenAtTheFirstAppearanceOfTheName) {
  Sample first = sampledValue(1000);
  first.metric.metadataValues = {number(1)};
  add(first);
  Sample second = sampledValue(1000, 2);
  second.metric.metadataValues = {number(2)};
  add(second);
  EXPECT_EQ(items(), "Metric,1,\n");
}

TEST_F(PhmMetadata, MetricWithNothingToTellHasNoLineAndMayTellLater) {
  Sample sample = sampledValue(1000);
  add(sample);
  sample.metric.metadataValues = {number(1)};
  add(sample);
  add(sampledValue(1000, 2).named("Other"));
  EXPECT_EQ(items(), "Metric,1,\n");
}

TEST_F(PhmMetadata, ColumnWithoutEntityIsListedByItsDescriptorAlone) {
  add(sampledValue(1000).declare(nullptr, &m_c6).declare(nullptr).list(m_cpu0));
  EXPECT_EQ(items(), "Metric,C6,\n");
}

TEST_F(PhmMetadata, EntitiesWithAnEmptyEntityListGiveNoColumnOfAnEntity) {
  add(sampledValue(1000).declare(&m_cpu0, &m_c1).declare(nullptr, &m_c6).value(m_cpu0, 5, &m_c1));
  EXPECT_EQ(items(), "Metric,C6,\n");
  EXPECT_THAT(result("out_phm.csv"), HasSubstr("Duration (ms), CPU0 C1\n"));
}

TEST_F(PhmMetadata, NullFirstEntityGivesNoColumnOfAnEntity) {
  Sample sample = sampledValue(1000);
  sample.metric.entityList.push_back(nullptr);
  add(sample.declare(&m_cpu0, &m_c1));
  EXPECT_EQ(items(), "");
}

TEST_F(PhmMetadata, TracedMetricsAreListedToo) {
  Sample sample = event(1000);
  sample.metric.metadataValues = {number(1)};
  add(sample);
  EXPECT_EQ(items(), "Metric,1,\n");
}

}  // namespace
}  // namespace qumetra::test
