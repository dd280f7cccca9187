// How changes, tables and the rest are written, and what becomes of failures.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/configuration.h"
#include "qumetra/recording/block_file.h"
#include "tests/recording/writer_fixture.h"
#include "tests/support/disk_faults.h"

namespace qumetra::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;

// Changes

TEST_F(Writer, ChangesOfUnknownObjectsAreNotWritten) {
  writer.ended(model.addProcess({.name = "p"}, 1, 0, "", {}));
  writer.attributesChanged(model.addEntity({.name = "e"}));
  writer.metadataChanged(model.addSystemMetadata());
  EXPECT_THAT(written(), SizeIs(0));
}

TEST_F(Writer, ChangedAttributesAndEndsOfKnownObjectsAreRecords) {
  pwr::Attribute& attribute = model.addAttribute({.name = "a", .id = 1}, pwr::AttributeType::Data);
  pwr::Thread& thread = model.addThread({.name = "t", .id = 2}, 1, 1, {});
  sampleOf(attribute, pwr::Data::fromHandle(&thread));
  attribute.addAttributeValue(nullptr, pwr::Data::fromTag(9));
  writer.attributesChanged(attribute);
  thread.setEndTime(77);
  writer.ended(thread);
  const auto lines = written();
  EXPECT_EQ(lines.at(4), R"({"attributes":{"of":"a1","attributes":[[null,{"tag":9}]]}})");
  EXPECT_EQ(lines.at(5), R"({"ended":{"of":"t1","endTime":77}})");
}

class MetadataWriting : public Writer {
 protected:
  MetadataWriting() {
    metadata.m_hostName = "host";
    message.m_metadata = &metadata;
  }

  pwr::SystemMetadata& metadata = model.addSystemMetadata();
  pwr::SystemMessage message;
};

TEST_F(MetadataWriting, ChangeRecordHoldsTheChangedMembersOnly) {
  writer.system(message);
  metadata.m_lastTimestamp = 9;
  metadata.m_hostName = "";
  writer.metadataChanged(metadata);
  writer.metadataChanged(metadata);
  const auto lines = written();
  EXPECT_THAT(lines, SizeIs(2));
  EXPECT_EQ(lines.at(1), R"({"metadata":{"hostName":"","lastTimestamp":9}})");
}

TEST_F(MetadataWriting, FlushOfTheLastMetadataRefersToIt) {
  writer.system(message);
  writer.flush(metadata);
  metadata.m_lastTimestamp = 9;
  writer.flush(metadata);
  pwr::SystemMetadata other;
  other.m_osName = "OS";
  writer.flush(other);
  auto lines = written();
  lines.erase(lines.begin());
  EXPECT_THAT(lines, ElementsAre(R"({"flush":{}})", R"({"metadata":{"lastTimestamp":9}})",
                                 R"({"flush":{}})", R"({"flush":{"metadata":{"osName":"OS"}}})"));
}

TEST_F(MetadataWriting, FirstSystemRecordCanBeWrittenAnew) {
  writer.system(message);
  pwr::TextMessage text;
  writer.text(text);
  metadata.m_lastTimestamp = 18446744073709551615U;
  metadata.m_platformName = std::string(1000, 'x');
  EXPECT_TRUE(writer.rewriteSystem(message));
  writer.text(text);
  MessageDump expected;
  expected.system(message);
  const auto messages = readAgain();
  ASSERT_THAT(messages, SizeIs(3));
  EXPECT_EQ(messages.at(0), expected.messages().at(0));
}

TEST_F(MetadataWriting, SystemRecordWrittenAnewIsWhatLaterChangesAreComparedWith) {
  writer.system(message);
  metadata.m_lastTimestamp = 5;
  EXPECT_TRUE(writer.rewriteSystem(message));
  writer.metadataChanged(metadata);
  EXPECT_THAT(written(), SizeIs(1));
}

TEST_F(MetadataWriting, SystemRecordWrittenAnewHoldsBehindEarlierChangesToo) {
  writer.system(message);
  metadata.m_lastTimestamp = 5;
  metadata.m_osName = "OS";
  writer.flush(metadata);
  metadata.m_lastTimestamp = 9;
  EXPECT_TRUE(writer.rewriteSystem(message));
  const auto lines = written();
  EXPECT_THAT(lines.at(0), HasSubstr(R"("lastTimestamp":9)"));
  EXPECT_EQ(lines.back(), R"({"metadata":{"lastTimestamp":9}})");
}

TEST_F(MetadataWriting, SystemRecordThatDoesNotFitStaysAsItIs) {
  writer.system(message);
  const std::string before = written().at(0);
  metadata.m_platformName = std::string(10'000, 'x');
  EXPECT_FALSE(writer.rewriteSystem(message));
  EXPECT_EQ(linesOf(readFile(path())).at(1), before);
}

TEST_F(MetadataWriting, WithoutASystemRecordNothingIsWrittenAnew) {
  EXPECT_FALSE(writer.rewriteSystem(message));
  EXPECT_THAT(written(), SizeIs(0));
}

TEST_F(MetadataWriting, PlatformEntriesOfAWrongClassAreNull) {
  metadata.m_platformMetadata = {{1, &model.addPlatformMetadata()}, {2, nullptr}};
  writer.system(message);
  EXPECT_THAT(written().at(0),
              HasSubstr(R"("platform":[{"type":1,"null":true},{"type":2,"null":true}])"));
}

// Tables

TEST_F(Writer, TableTellsEveryStateOfACellApart) {
  using Cell = pwr::TableMessage::Cell;
  const auto& first = model.addColumnHandle({.name = "a", .id = 1}, 1);
  const auto& second = model.addColumnHandle({.name = "b", .id = 2}, 1);
  const auto& entity = model.addEntity({.name = "e", .id = 3});
  pwr::TableMessage table;
  table.setTableMessageType(pwr::TableMessage::kValueTable);
  table.addSharedHandle(&first);
  table.addSharedHandle(nullptr);
  table.addFieldHandle(&first);
  table.addFieldHandle(&second);
  table.addEntity(&entity);
  table.setCell(nullptr, &first, {Cell::State::Failed, "?"});
  table.setCell(nullptr, nullptr, {Cell::State::Present, "of null"});
  table.setCell(&entity, &first, {Cell::State::Absent, ""});
  writer.table(table);
  EXPECT_THAT(
      written(),
      ElementsAre(
          R"({"handle":{"ref":"h1","id":1,"name":"a","type":1}})",
          R"({"handle":{"ref":"h2","id":2,"name":"b","type":1}})",
          R"({"entity":{"ref":"e1","id":3,"name":"e"}})",
          R"({"table":{"type":1,"shared":["h1",null],"fields":["h1","h2"],"entities":["e1"],"sharedCells":[{"error":"?"},"of null"],"fieldCells":[[null],[]]}})"));
}

TEST_F(Writer, CellsBesideAnUnwrittenOneAreExtraCells) {
  using Cell = pwr::TableMessage::Cell;
  const auto& first = model.addColumnHandle({.name = "a", .id = 1}, 1);
  const auto& second = model.addColumnHandle({.name = "b", .id = 2}, 1);
  pwr::TableMessage table;
  table.addSharedHandle(&first);
  table.addSharedHandle(&second);
  table.setCell(nullptr, &second, {Cell::State::Present, "x"});
  writer.table(table);
  EXPECT_EQ(written().at(2),
            R"({"table":{"shared":["h1","h2"],"sharedCells":[],"extraCells":[[null,"h2","x"]]}})");
}

// Configuration, notes, failures

TEST_F(Writer, ConfigHoldsTheWholeOrder) {
  pwr::WriterInterfaceConfigFileParser::instance()->setOrder(
      {{"b", "a"}, {"CPU"}, {{"a", {"x"}}, {"z", {}}}});
  writer.config();
  EXPECT_THAT(
      written(),
      ElementsAre(
          R"({"config":{"featureOrder":["b","a"],"featurePrefixes":["CPU"],"metricOrder":{"a":["x"],"z":[]}}})"));
}

TEST_F(Writer, NotesAreRecords) {
  writer.note("a\nb");
  EXPECT_THAT(written(), ElementsAre(R"({"note":{"text":"a\nb"}})"));
}

TEST_F(Writer, SyncBringsEverythingToTheFile) {
  writer.note("kept");
  writer.sync();
  EXPECT_THAT(linesOf(readFile(path())), SizeIs(2));
}

TEST_F(Writer, ClosingTwiceIsHarmless) {
  EXPECT_EQ(writer.close(), "");
  EXPECT_EQ(writer.close(), "");
}

TEST(FailingWriter, FileThatCannotBeMadeIsTheFirstFailureAndSticks) {
  RecordingWriter writer("/proc/w");
  EXPECT_EQ(writer.error(), "/proc/w: No such file or directory");
  writer.note("dropped");
  writer.sync();
  EXPECT_EQ(writer.close(), "/proc/w: No such file or directory");
}

TEST(FailingWriter, FullDiskIsAFailure) {
  RecordingWriter writer("/dev/full");
  EXPECT_EQ(writer.error(), "");
  writer.sync();
  EXPECT_EQ(writer.error(), "/dev/full: No space left on device");
  EXPECT_EQ(writer.close(), "/dev/full: No space left on device");
}

TEST(FailingWriter, KeepsWhatWasWrittenBeforeTheLimitOfTheFileSize) {
  const TempDir directory;
  const FullDisk full(1000);
  RecordingWriter writer(directory.file("w"));
  writer.note(std::string(2000, 'x'));
  EXPECT_EQ(writer.close(), directory.file("w") + ": File too large");
  EXPECT_EQ(readFile(directory.file("w")).size(), 1000U);
}

TEST(FailingWriter, FileThatAnotherWriterHasOpenIsLeftAsItIs) {
  const TempDir directory;
  const std::string path = directory.file("w");
  RecordingWriter first(path);
  first.note("first");
  first.sync();
  RecordingWriter second(path);
  EXPECT_EQ(second.error(), path + ": is being written by another process");
  second.note("second");
  EXPECT_EQ(second.close(), path + ": is being written by another process");
  first.note("more");
  EXPECT_EQ(first.close(), "");
  EXPECT_THAT(readFile(path), ::testing::EndsWith("\"first\"}}\n{\"note\":{\"text\":\"more\"}}\n"));
}

TEST(FailingWriter, FileIsFreeOnceItsWriterHasClosedIt) {
  const TempDir directory;
  const std::string path = directory.file("w");
  RecordingWriter first(path);
  first.note(std::string(500, 'x'));
  EXPECT_TRUE(isBeingWritten(path));
  EXPECT_EQ(first.close(), "");
  EXPECT_FALSE(isBeingWritten(path));
  RecordingWriter second(path);
  EXPECT_EQ(second.close(), "");
  EXPECT_LT(readFile(path).size(), 100U) << "the former content is gone";
}

TEST(FailingWriter, FileThatIsNotThereIsNotBeingWritten) {
  EXPECT_FALSE(isBeingWritten("/nowhere/w"));
}

}  // namespace
}  // namespace qumetra::test
