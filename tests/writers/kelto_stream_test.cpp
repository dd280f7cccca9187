// Stores, refusals, and what becomes a result file.
#include <unistd.h>

#include <filesystem>

#include "tests/support/sanitizers.h"
#include "tests/writers/kelto_fixture.h"

namespace {

using qumetra::test::FullDisk;
using qumetra::test::hex;
using qumetra::test::KeltoTest;
using qumetra::test::kNoResult;
using qumetra::test::NoPlaceForTempFiles;
using qumetra::test::notSupported;
using qumetra::test::OpenKeltoWriter;
using qumetra::test::writeFile;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kMagic = "\x00\x00\x00\x08\xFA\xDE\xDE\xAD";
const std::string kMagicRecord(kMagic, 8);

class KeltoStream : public KeltoTest {};

// The end of a run.

TEST_F(KeltoStream, RunWithoutSystemMessageMakesNoFile) {
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_THAT(warnings(), ElementsAre("Failed to obtain a system metadata message.\n"));
  EXPECT_THAT(notes(), ElementsAre(kNoResult));
  EXPECT_FALSE(std::filesystem::exists(resultPath()));
}

TEST_F(KeltoStream, RunWithoutMetricIsWrittenAndWithdrawn) {
  ASSERT_EQ(deliverSystem(), 0);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_THAT(warnings(), IsEmpty());
  EXPECT_THAT(notes(), ElementsAre(kNoResult));
  EXPECT_FALSE(std::filesystem::exists(resultPath()));
}

TEST_F(KeltoStream, ResultIsTheStoresInAscendingId) {
  deliverSystem();
  ASSERT_EQ(deliverPlain(2000), 0);
  m_metric.metricId = 5;
  m_metric.name = "Other";
  ASSERT_EQ(deliverPlain(2000), 0);
  const std::string expected = stream(kSystem) + kMagicRecord + stream(5) + stream(kMetric);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(hex(result()), hex(expected));
  EXPECT_THAT(m_log.warnings(), IsEmpty());
}

TEST_F(KeltoStream, SystemStreamIsFramedByMagicRecords) {
  deliverSystem();
  deliverPlain(2000);
  const std::size_t systemSize = stream(kSystem).size();
  m_writer.fini();
  EXPECT_EQ(hex(result().substr(0, 8)), "00 00 00 08 fa de de ad ");
  EXPECT_EQ(hex(result().substr(systemSize, 8)), "00 00 00 08 fa de de ad ");
}

TEST_F(KeltoStream, StoresAreReleasedAtTheEnd) {
  deliverSystem();
  deliverPlain(2000);
  m_writer.fini();
  EXPECT_TRUE(m_writer.impl->stores.empty());
  EXPECT_TRUE(std::filesystem::is_empty(m_area.spillPath()));
}

TEST_F(KeltoStream, SystemMessageThatSortsBehindAMetricStandsBehindIt) {
  pwr::SystemMessage message;
  message.m_id = 100;
  message.m_metadata = &m_metadata;
  m_writer.writeMessage(message);
  deliverPlain(2000);
  const std::string first = stream(kMetric);
  m_writer.fini();
  EXPECT_EQ(result().substr(0, first.size()), first);
}

TEST_F(KeltoStream, StoreLongerThanABlockIsWhole) {
  deliverSystem();
  deliverPlain(2000);
  const std::string block(700'000, 'x');
  for (int i = 0; i < 4; ++i) {
    m_writer.writeRecord(kMetric, block.data(), static_cast<std::uint32_t>(block.size()));
  }
  const std::string expected = stream(kSystem) + kMagicRecord + stream(kMetric);
  m_writer.fini();
  EXPECT_TRUE(result() == expected);
}

TEST_F(KeltoStream, FailedFlushOfStatesMakesNeitherFileNorNote) {
  deliverSystem();
  deliverPlain(2000);
  m_writer.handleProcessInfo(&process(1, "a", 10), true);
  refuse(kSystem);
  EXPECT_EQ(m_writer.fini(), 1);
  EXPECT_THAT(warnings(),
              ElementsAre("Unable to write process record.\n", "Unable to re-handle process.\n",
                          "Failed to flush stored states.\n"));
  EXPECT_THAT(notes(), IsEmpty());
  EXPECT_FALSE(m_writer.impl->valid);
  EXPECT_FALSE(std::filesystem::exists(resultPath()));
}

TEST_F(KeltoStream, FailedFlushOfThreadsTellsSo) {
  deliverSystem();
  m_writer.handleThreadInfo(&thread(1, 1, 10), true);
  refuse(kSystem);
  EXPECT_EQ(m_writer.fini(), 1);
  EXPECT_THAT(warnings(),
              ElementsAre("Unable to write process record.\n", "Unable to re-handle thread.\n",
                          "Failed to flush stored states.\n"));
}

TEST_F(KeltoStream, FailedClosingMagicRecordMakesNeitherFileNorNote) {
  deliverSystem();
  deliverPlain(2000);
  refuse(kSystem);
  EXPECT_EQ(m_writer.fini(), 1);
  EXPECT_THAT(warnings(), ElementsAre("Failed to write magic record.\n"));
  EXPECT_THAT(notes(), IsEmpty());
  EXPECT_FALSE(m_writer.impl->valid);
  EXPECT_FALSE(std::filesystem::exists(resultPath()));
}

TEST_F(KeltoStream, FailedEndIsSilentBelowWarnings) {
  deliverSystem();
  refuse(kSystem);
  m_log.environment().verbosity = PluginEnvironment::kErrors;
  EXPECT_EQ(m_writer.fini(), 1);
  EXPECT_FALSE(m_writer.impl->valid);
  EXPECT_THAT(m_log.warnings(), IsEmpty());
}

TEST_F(KeltoStream, StoresOfAFailedEndOutliveTheWriter) {
  std::string path;
  {
    OpenKeltoWriter writer;
    writer.init(m_area.file("other"), false);
    pwr::SystemMessage message;
    message.m_metadata = &m_metadata;
    writer.writeMessage(message);
    path = writer.impl->stores.begin()->second->store->path();
    writer.setInvalidTempFile(0);
    ASSERT_EQ(writer.fini(), 1);
  }
  EXPECT_TRUE(std::filesystem::exists(path));
}

TEST_F(KeltoStream, PathThatCannotBeMadeFailsTheEnd) {
  m_writer.init(m_area.file("file") + "/run", false);
  writeFile(m_area.file("file"), "");
  deliverSystem();
  deliverPlain(2000);
  EXPECT_EQ(m_writer.fini(), 1);
  EXPECT_EQ(warnings().back(), "Could not create " + m_area.file("file") + "/run.pwr\n");
  EXPECT_EQ(m_writer.impl->stores.size(), 2U);
  EXPECT_THAT(notes(), IsEmpty());
}

TEST_F(KeltoStream, FileThatCannotBeRemovedIsAnErrorAndNoFailure) {
  deliverSystem();
  m_writer.impl->outputPath = m_area.file("gone.pwr");
  m_writer.impl->outputFile = std::fopen(m_area.file("gone.pwr").c_str(), "wb");
  KeltoWriterImpl::m_wasFileOpened = true;
  std::filesystem::remove(m_area.file("gone.pwr"));
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_THAT(m_log.errors(), ElementsAre(std::pair(
                                  1, "ERROR: Failed to remove the .pwr result file \"" +
                                         m_area.file("gone.pwr") + "\", the file is unusable.\n")));
  EXPECT_THAT(notes(), IsEmpty());
}

TEST_F(KeltoStream, SecondRunInAProcessMakesNoFileAndSaysSo) {
  deliverSystem();
  deliverPlain(2000);
  ASSERT_EQ(m_writer.fini(), 0);
  const std::string first = result();
  OpenKeltoWriter second;
  second.init(m_area.file("second"), false);
  pwr::SystemMessage message;
  message.m_id = kSystem;
  message.m_metadata = &m_metadata;
  second.writeMessage(message);
  m_target = &second;
  deliverPlain(2000);
  EXPECT_EQ(second.fini(), 0);
  EXPECT_FALSE(std::filesystem::exists(m_area.file("second.pwr")));
  EXPECT_THAT(notes(), ElementsAre(kNoResult));
  EXPECT_EQ(result(), first);
}

TEST_F(KeltoStream, SecondRunOfOneWriterDoesNotCrash) {
  deliverSystem();
  deliverPlain(2000);
  ASSERT_EQ(m_writer.fini(), 0);
  m_writer.init(m_area.file("second"), false);
  deliverSystem();
  deliverPlain(3000);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_FALSE(std::filesystem::exists(m_area.file("second.pwr")));
}

TEST_F(KeltoStream, InitIgnoresContinuousMode) {
  EXPECT_EQ(m_writer.init("base", true), 0);
  EXPECT_EQ(m_writer.impl->outputPath, "base.pwr");
}

// Refused metrics.

TEST_F(KeltoStream, UnsupportedMetricsAreNamedBeforeTheResultIsWithdrawn) {
  deliverSystem();
  m_metric.name = "CPU PkgC Dbg 1";
  EXPECT_EQ(deliverPlain(2000), 1);
  m_metric.metricId = 8;
  m_metric.name = "C-State Debug";
  EXPECT_EQ(deliverPlain(2000), 1);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_THAT(notes(), ElementsAre(notSupported("CPU PkgC Dbg 1"), notSupported("C-State Debug"),
                                   kNoResult));
  EXPECT_FALSE(std::filesystem::exists(resultPath()));
}

class KeltoUnsupportedName : public KeltoStream,
                             public ::testing::WithParamInterface<const char*> {};

TEST_P(KeltoUnsupportedName, RefusesItsMetric) {
  deliverSystem();
  m_metric.name = std::string("A ") + GetParam() + " B";
  EXPECT_EQ(deliverPlain(2000), 1);
  EXPECT_FALSE(m_writer.impl->findStore(kMetric)->active);
}

INSTANTIATE_TEST_SUITE_P(All, KeltoUnsupportedName,
                         ::testing::Values("CPU PkgC Dbg", "C-State Debug", "TypeC Subsystem",
                                           "S0ix Substate Requirements",
                                           "Discrete Graphics HBM Bandwidth",
                                           "Discrete Graphics Cross Tile Hops"));

TEST_F(KeltoStream, OneBadSampleTakesTheWholeMetricOut) {
  deliverSystem();
  for (std::uint64_t i = 0; i < 99; ++i) {
    ASSERT_EQ(deliverPlain(2000 + i), 0);
  }
  EXPECT_EQ(deliverPlain(2000), 1);
  EXPECT_EQ(deliverPlain(3000), 1);
  const std::string expected = stream(kSystem) + kMagicRecord;
  m_writer.fini();
  EXPECT_EQ(hex(result()), hex(expected));
  EXPECT_THAT(notes(), ElementsAre(notSupported("Metric")));
}

TEST_F(KeltoStream, RefusedMetricStillCountsAsData) {
  deliverSystem();
  deliverPlain(2000);
  refuse(kMetric);
  m_writer.fini();
  EXPECT_TRUE(std::filesystem::exists(resultPath()));
}

TEST_F(KeltoStream, MetricKnownByItsRefusalIsNamedInTheNote) {
  deliverSystem();
  m_metric.name = "TypeC Subsystem";
  deliverPlain(2000);
  EXPECT_EQ(m_writer.impl->findStore(kMetric)->name, "TypeC Subsystem");
}

TEST_F(KeltoStream, StoreMadeBeforeItsNameKeepsTheFallback) {
  deliverSystem();
  refuse(kMetric);
  deliverPlain(2000);
  EXPECT_EQ(m_writer.metricNames[kMetric], "Metric");
  m_writer.fini();
  EXPECT_THAT(notes(), ElementsAre(notSupported("unknown_metric 7"), kNoResult));
}

TEST_F(KeltoStream, NameOfARefusedMetricIsStillKept) {
  deliverSystem();
  m_metric.name = "C-State Debug";
  deliverPlain(2000);
  EXPECT_EQ(m_writer.metricNames[kMetric], "C-State Debug");
}

TEST_F(KeltoStream, NotesShowInAQuietRun) {
  m_log.environment().verbosity = PluginEnvironment::kQuiet;
  deliverSystem();
  m_metric.name = "C-State Debug";
  deliverPlain(2000);
  m_writer.fini();
  EXPECT_THAT(notes(), ElementsAre(notSupported("C-State Debug"), kNoResult));
}

TEST_F(KeltoStream, SampleBeforeTheSystemMessageRefusesItsMetric) {
  EXPECT_EQ(deliverPlain(2000), 1);
  EXPECT_THAT(warnings(), ElementsAre("Invalid TSC value for 'Metric' sample. TSC: 2000\n"));
  deliverSystem();
  EXPECT_EQ(deliverPlain(3000), 1);
  EXPECT_EQ(m_writer.impl->stores.size(), 2U);
}

TEST_F(KeltoStream, SecondSystemMessageOpensAStreamOfItsOwn) {
  deliverSystem();
  const std::string first = stream(kSystem);
  m_metadata.m_firstTimestamp = 5000;
  pwr::SystemMessage message;
  message.m_id = 2;
  message.m_metadata = &m_metadata;
  EXPECT_EQ(m_writer.writeMessage(message), 0);
  EXPECT_EQ(stream(kSystem), first);
  // Magic, collection, system, hardware, marker, threshold and the six metric types; their kind has
  // been declared.
  EXPECT_EQ(records(2).size(), 6U + 6U);
  EXPECT_EQ(deliverPlain(4999), 1);
  m_metric.metricId = 8;
  EXPECT_EQ(deliverPlain(5001), 0);
}

// Records on their way into a store.

TEST_F(KeltoStream, AbandonedResultTakesNoRecordAndSaysNothing) {
  m_writer.impl->valid = false;
  EXPECT_EQ(m_writer.writeRecord(3, "abc", 3), 1);
  EXPECT_THAT(m_log.warnings(), IsEmpty());
  EXPECT_TRUE(m_writer.impl->stores.empty());
}

TEST_F(KeltoStream, RefusedMetricTakesNoRecord) {
  m_writer.writeRecord(3, "abc", 3);
  refuse(3);
  EXPECT_EQ(m_writer.writeRecord(3, "def", 3), 1);
  EXPECT_EQ(stream(3), "abc");
}

TEST_F(KeltoStream, InactiveStoreTakesBytesForNothing) {
  KeltoBackingStoreManager* const manager = m_writer.impl->getBackingStore("name", 3);
  manager->active = false;
  EXPECT_EQ(manager->pushBuffer_i("abc", 3), 0);
  EXPECT_EQ(manager->store->size(), 0U);
}

TEST_F(KeltoStream, StoreThatCannotBeMadeAbandonsTheResult) {
  const NoPlaceForTempFiles nowhere;
  EXPECT_EQ(m_writer.writeRecord(3, "abc", 3), 1);
  EXPECT_FALSE(m_writer.impl->valid);
}

TEST_F(KeltoStream, RefusalWithoutAStoreAbandonsTheResult) {
  const NoPlaceForTempFiles nowhere;
  refuse(3);
  EXPECT_FALSE(m_writer.impl->valid);
}

TEST_F(KeltoStream, FullTempDiskFailsTheRecord) {
  leaveRoom(3, 2);
  const FullDisk full(0);
  EXPECT_EQ(m_writer.writeRecord(3, "abc", 3), 1);
  EXPECT_EQ(warnings().back(),
            "Failed to write to tmp file " + m_writer.impl->findStore(3)->store->path() + "\n");
}

TEST_F(KeltoStream, FullTempDiskRefusesTheMetric) {
  deliverSystem();
  deliverPlain(2000);
  leaveRoom(kMetric, 2);
  const FullDisk full(0);
  EXPECT_EQ(deliverPlain(3000), 1);
  EXPECT_EQ(warnings().back(), "Unable to write a 'Metric:7' record. TSC: 3000\n");
  EXPECT_FALSE(m_writer.impl->findStore(kMetric)->active);
}

// Stores on their way into the file.

TEST_F(KeltoStream, FlushAppendsTheStoreAndSucceeds) {
  m_writer.writeRecord(3, "record", 6);
  std::FILE* const file = std::fopen(m_area.file("out").c_str(), "wb");
  std::fputs("head ", file);
  EXPECT_EQ(m_writer.impl->findStore(3)->flush(file), 0);
  std::fclose(file);
  EXPECT_EQ(qumetra::test::readFile(m_area.file("out")), "head record");
}

TEST_F(KeltoStream, NoFileToFlushToIsAFailure) {
  EXPECT_EQ(m_writer.impl->getBackingStore("name", 3)->flush(nullptr), 1);
  EXPECT_THAT(m_log.warnings(), IsEmpty());
}

/// A store whose temp file has lost its end leaves a hole, and what stands before and behind it
/// stays.
TEST_F(KeltoStream, StoreThatCannotBeReadLeavesNothingOfItself) {
  deliverSystem();
  deliverPlain(2000);
  const std::string block(1'500'000, 'x');
  m_writer.writeRecord(8, block.data(), static_cast<std::uint32_t>(block.size()));
  m_writer.writeRecord(9, "behind", 6);
  const std::string expected = stream(kSystem) + kMagicRecord + stream(kMetric) + "behind";
  stream(8);
  const std::string path = m_writer.impl->findStore(8)->store->path();
  ASSERT_EQ(::truncate(path.c_str(), 1'200'000), 0);
  EXPECT_EQ(m_writer.fini(), 0);
  EXPECT_EQ(warnings().back(), "Failed to read from backing store '" + path + "'. \n");
  EXPECT_TRUE(result() == expected);
}

TEST_F(KeltoStream, FullDiskLeavesAHoleAndTheFileStays) {
  deliverSystem();
  deliverPlain(2000);
  const std::string path = m_writer.impl->findStore(kMetric)->store->path();
  const std::size_t systemSize = stream(kSystem).size() + 8;
  stream(kMetric);
  {
    const FullDisk full(systemSize);
    EXPECT_EQ(m_writer.fini(), 0);
  }
  EXPECT_THAT(warnings(), Contains("Failed to write backing store '" + path +
                                   "' buffer to main output file. \n"));
  ASSERT_EQ(m_log.errors().size(), 1U);
  EXPECT_EQ(m_log.errors()[0].second, "ERROR: Could not write all of " + resultPath() + "\n");
  EXPECT_EQ(std::filesystem::file_size(resultPath()), systemSize);
}

TEST_F(KeltoStream, NoMemoryForTheCopyTellsItsSize) {
  if (qumetra::test::kAddressSanitizer) {
    GTEST_SKIP() << "the sanitizer ends a program without memory";
  }
  KeltoBackingStoreManager* const manager = m_writer.impl->getBackingStore("name", 3);
  const std::string block(0x100000, 'x');
  manager->pushBuffer_i(block.data(), 0x100000);
  std::FILE* const file = std::fopen(m_area.file("out").c_str(), "wb");
  rlimit former{};
  ::getrlimit(RLIMIT_AS, &former);
  const rlimit none{0, former.rlim_max};
  ::setrlimit(RLIMIT_AS, &none);
  const int status = manager->flush(file);
  ::setrlimit(RLIMIT_AS, &former);
  std::fclose(file);
  EXPECT_EQ(status, 1);
  EXPECT_THAT(warnings(), ElementsAre("Failed to allocate buffer of size 1048576\n"));
}

}  // namespace
