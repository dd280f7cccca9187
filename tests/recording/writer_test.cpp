// What a recording that was written holds, and that reading it gives the same messages again.
#include <sys/resource.h>

#include <cmath>
#include <csignal>
#include <functional>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/configuration.h"
#include "host/platform_metadata.h"
#include "host/quantity.h"
#include "qumetra/recording/recording_writer.h"
#include "tests/recording/reading.h"

namespace qumetra::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;

std::vector<std::string> linesOf(const std::string& bytes) {
  std::vector<std::string> lines;
  std::size_t at = 0;
  for (std::size_t end = bytes.find('\n'); end != std::string::npos; end = bytes.find('\n', at)) {
    lines.push_back(bytes.substr(at, end - at));
    at = end + 1;
  }
  EXPECT_EQ(at, bytes.size()) << "the last line has its end";
  return lines;
}

class Writer : public ::testing::Test {
 protected:
  std::string path() const { return directory.file("w"); }
  /// Ends the recording and returns its lines behind the first record.
  std::vector<std::string> written() {
    EXPECT_EQ(writer.close(), "");
    std::vector<std::string> lines = linesOf(readFile(path()));
    EXPECT_EQ(lines.at(0), kFirstRecord);
    lines.erase(lines.begin());
    return lines;
  }
  /// Ends the recording, and reads it again in a fresh world.
  std::vector<std::string> readAgain() {
    EXPECT_EQ(writer.close(), "");
    Reading again;
    EXPECT_EQ(again.readPath(path()), "");
    return again.messages();
  }
  /// Delivers a sample of one element.
  void sampleOf(const pwr::EntityHandle& entity, const pwr::Data& value) {
    const pwr::DataElement element(&entity, nullptr, nullptr, value, 0, nullptr);
    metric.setData({0, {&element}});
    writer.sample(metric);
    metric.setData({});
  }

  TempDir directory;
  Model model;
  pwr::Metric metric;
  RecordingWriter writer{path()};
};

/// The messages of a recording, and those of what was written while it was delivered.
void expectRoundTrip(const std::string& name) {
  const TempDir directory;
  std::vector<std::string> first;
  {
    RecordingWriter writer(directory.file("w"));
    Reading reading;
    reading.second = &writer;
    ASSERT_EQ(reading.readPath(std::string(QUMETRA_RECORDINGS "/") + name), "");
    ASSERT_EQ(writer.close(), "");
    first = reading.messages();
  }
  Reading again;
  ASSERT_EQ(again.readPath(directory.file("w")), "");
  ASSERT_EQ(again.messages().size(), first.size());
  for (std::size_t i = 0; i < first.size(); ++i) {
    EXPECT_EQ(again.messages()[i], first[i]) << "message " << i;
  }
}

TEST(RoundTrip, OfEveryKindOfRecordGivesTheSameMessages) { expectRoundTrip("all_kinds.qmrec"); }
TEST(RoundTrip, OfResidenciesGivesTheSameMessages) { expectRoundTrip("residency.qmrec"); }
TEST(RoundTrip, OfTablesGivesTheSameMessages) { expectRoundTrip("summary_table.qmrec"); }

TEST_F(Writer, DefinesEachObjectBeforeItsFirstUseAndOnce) {
  pwr::Quantity& rate = model.addQuantity({.code = 9, .name = "Rate", .id = 2});
  pwr::Quantity& count = model.addQuantity({.code = 5, .name = "Count", .units = "n", .id = 1});
  count.setRateConversion(&rate, 0.5);
  const auto& package = model.addEntity({.name = "Package", .id = 3});
  const auto& core = model.addEntity({.name = "Core", .fieldName = "c", .id = 4}, &package);
  metric.metricId = 7;
  metric.quantity = &count;
  sampleOf(core, pwr::Data(1.5));
  sampleOf(core, pwr::Data(2UL));

  EXPECT_THAT(
      written(),
      ElementsAre(
          R"({"quantity":{"ref":"q1","id":2,"code":9,"name":"Rate"}})",
          R"({"quantity":{"ref":"q2","id":1,"code":5,"name":"Count","units":"n","rate":{"quantity":"q1","factor":0.5}}})",
          R"({"metric":{"ref":"m1","metricId":7,"quantity":"q2"}})",
          R"({"entity":{"ref":"e1","id":3,"name":"Package"}})",
          R"({"entity":{"ref":"e2","id":4,"name":"Core","fieldName":"c","parent":"e1"}})",
          R"({"sample":{"metric":"m1","elements":[{"entity":"e2","value":{"real":1.5}}]}})",
          R"({"sample":{"metric":"m1","elements":[{"entity":"e2","value":{"uint":2}}]}})"));
}

TEST_F(Writer, RecognisesTheKindOfEachHandle) {
  const auto& attribute = model.addAttribute({.name = "a", .id = 1}, pwr::AttributeType::Info);
  const auto& entity = model.addEntity({.name = "e", .id = 2});
  for (const pwr::DataHandle* handle : std::initializer_list<const pwr::DataHandle*>{
           &attribute, &model.addDescriptor({.name = "d", .id = 3}),
           &model.addNameValuePair({.name = "n", .id = 4}, "info", "desc", 5),
           &model.addProcess({.name = "p", .id = 5}, 1, 2, "/p", {3, 4}),
           &model.addThread({.name = "t", .id = 6}, 1, 2, {3, 4}),
           &model.addColumnHandle({.name = "h", .id = 7}, 3, {&attribute})}) {
    sampleOf(entity, pwr::Data::fromHandle(handle));
  }
  std::vector<std::string> definitions = written();
  std::erase_if(definitions, [](const std::string& line) { return line.starts_with("{\"sample"); });
  EXPECT_THAT(
      definitions,
      ElementsAre(
          R"({"metric":{"ref":"m1","metricId":0}})", R"({"entity":{"ref":"e1","id":2,"name":"e"}})",
          R"({"attribute":{"ref":"a1","id":1,"name":"a","kind":5}})",
          R"({"descriptor":{"ref":"d1","id":3,"name":"d"}})",
          R"({"nameValuePair":{"ref":"n1","id":4,"name":"n","infoName":"info","valueDesc":"desc","value":5}})",
          R"({"process":{"ref":"p1","id":5,"name":"p","pid":1,"parentPid":2,"path":"/p","startTime":3,"endTime":4}})",
          R"({"thread":{"ref":"t1","id":6,"name":"t","tid":1,"pid":2,"startTime":3,"endTime":4}})",
          R"({"handle":{"ref":"h1","id":7,"name":"h","type":3,"expectedAttributes":["a1"]}})"));
}

TEST_F(Writer, NumbersAreAsShortAsCanBe) {
  const auto& entity = model.addEntity({.id = 1});
  for (const double value : {0.1, -0.0, 1e22, 5e-324, 1.0 / 3}) {
    sampleOf(entity, pwr::Data(value));
  }
  const auto lines = written();
  std::string numbers;
  for (const std::string& line : lines) {
    const std::size_t at = line.find("\"real\":");
    numbers +=
        at == std::string::npos ? "" : line.substr(at + 7, line.find('}', at) - at - 7) + ' ';
  }
  EXPECT_EQ(numbers, "0.1 -0 1e+22 5e-324 0.3333333333333333 ");
}

TEST_F(Writer, RealsThatAreNoNumbersAreTexts) {
  const auto& entity = model.addEntity({.id = 1});
  sampleOf(entity, pwr::Data::fromRealRange({-HUGE_VAL, HUGE_VAL}));
  sampleOf(entity, pwr::Data(std::numeric_limits<double>::quiet_NaN()));
  const auto lines = written();
  EXPECT_THAT(lines.at(2), HasSubstr(R"({"realRange":["-inf","inf"]})"));
  EXPECT_THAT(lines.at(3), HasSubstr(R"({"real":"nan"})"));
}

TEST_F(Writer, FloatsAreAsShortAsCanBe) {
  pwr::SystemMetadata& metadata = model.addSystemMetadata();
  metadata.m_timestampFrequency = 24.1F;
  pwr::SystemMessage message;
  message.m_metadata = &metadata;
  writer.system(message);
  EXPECT_THAT(written().at(0), HasSubstr(R"("timestampFrequency":24.1})"));
}

TEST_F(Writer, BytesThatAreNotUtf8BecomeLoneSurrogates) {
  pwr::TextMessage message;
  message.setMessage(std::string("\0\x01\n\t\r\"\\ \x7f \xc3\xa4 \xc3 \xed\xb2\x80 \xf5", 20));
  writer.text(message);
  EXPECT_THAT(
      written(),
      ElementsAre("{\"text\":{\"message\":\"\\u0000\\u0001\\n\\t\\r\\\"\\\\ \x7f \xc3\xa4 \\udcc3 "
                  "\\udced\\udcb2\\udc80 \\udcf5\"}}"));
}

// Circles

TEST_F(Writer, EntityWhoseAttributeRefersToItselfGetsItsAttributesLater) {
  const auto& attribute = model.addAttribute({.name = "a", .id = 1}, pwr::AttributeType::Data);
  pwr::EntityHandle& entity = model.addEntity({.name = "e", .id = 2});
  entity.addAttributeValue(&attribute, pwr::Data::fromHandle(&entity));
  sampleOf(entity, pwr::Data());
  const auto lines = written();
  EXPECT_EQ(lines.at(2), R"({"entity":{"ref":"e1","id":2,"name":"e"}})");
  EXPECT_EQ(lines.at(3), R"({"attributes":{"of":"e1","attributes":[["a1",{"handle":"e1"}]]}})");
}

TEST_F(Writer, CircleThroughParentsAttributesAndColumnsIsDefinedInOrder) {
  pwr::EntityHandle& parent = model.addEntity({.name = "p", .id = 2});
  pwr::Attribute& attribute =
      model.addAttribute({.name = "a", .id = 1}, pwr::AttributeType::Data, nullptr, &parent);
  pwr::EntityHandle& child = model.addEntity({.name = "c", .id = 3}, &parent);
  const auto& column = model.addColumnHandle({.name = "h", .id = 4}, 1, {&attribute});
  parent.addAttributeValue(&attribute, pwr::Data::fromHandle(&child));
  attribute.addAttributeValue(&attribute, pwr::Data::fromHandle(&column));
  child.addAttributeValue(&attribute, pwr::Data::fromHandle(&parent));
  sampleOf(child, pwr::Data::fromHandle(&column));

  MessageDump expected;
  const pwr::DataElement element(&child, nullptr, nullptr, pwr::Data::fromHandle(&column), 0,
                                 nullptr);
  metric.setData({0, {&element}});
  expected.sample(metric);
  const auto messages = readAgain();
  // Records of attributes come as messages too; the sample is the last.
  EXPECT_EQ(messages.back(), expected.messages().at(0));
}

TEST_F(Writer, QuantitiesWhoseRatesGoRoundAreCut) {
  pwr::Quantity& first = model.addQuantity({.name = "first", .id = 1});
  pwr::Quantity& second = model.addQuantity({.name = "second", .id = 2});
  first.setRateConversion(&second, 2);
  second.setRateConversion(&first, 3);
  metric.quantity = &first;
  writer.sample(metric);
  const auto lines = written();
  EXPECT_EQ(lines.at(0), R"({"quantity":{"ref":"q1","id":2,"name":"second"}})");
  EXPECT_THAT(lines.at(1), HasSubstr(R"("rate":{"quantity":"q1","factor":2})"));
}

// Ids

TEST_F(Writer, IdDrawnAtRunTimeIsReplacedByAHighOne) {
  const auto& entity = model.addEntity({.name = "e", .id = 1});
  const pwr::Attribute* made = pwr::Attribute::create("made", nullptr, pwr::AttributeType::Info);
  ASSERT_GE(made->getId(), Model::kFirstReservedId);
  sampleOf(entity, pwr::Data::fromHandle(made));
  EXPECT_THAT(
      written(),
      ::testing::Contains(
          R"({"attribute":{"ref":"a1","id":18446744069414584320,"name":"made","kind":5}})"));
}

TEST_F(Writer, CopyOfAnObjectIsTheSameObject) {
  const auto& entity = model.addEntity({.name = "e", .id = 1});
  const pwr::EntityHandle copy(entity);
  sampleOf(entity, pwr::Data());
  sampleOf(copy, pwr::Data());
  const auto lines = written();
  EXPECT_EQ(lines.at(2), lines.at(3));
  EXPECT_THAT(lines, SizeIs(4));
}

TEST_F(Writer, InfoKeysAreDefinedWhereTheyHaveAnObject) {
  const auto& entity = model.addEntity({.name = "e", .id = 1});
  model.addAttribute({.name = "a", .id = 2}, pwr::AttributeType::Data);
  const pwr::DynamicAttributeValueManager info({{2, pwr::Data(3UL)}, {99, pwr::Data(4UL)}});
  const pwr::DataElement element(&entity, nullptr, nullptr, pwr::Data(), 0, &info);
  metric.setData({0, {&element}});
  writer.sample(metric);
  const auto lines = written();
  EXPECT_EQ(lines.at(2), R"({"attribute":{"ref":"a1","id":2,"name":"a","kind":1}})");
  EXPECT_THAT(lines.at(3), HasSubstr(R"("info":[["a1",{"uint":3}],[99,{"uint":4}]])"));
}

// Metrics

TEST_F(Writer, ChangedDescriptionIsANewDefinitionAndAKnownOneIsNot) {
  metric.metricId = 1;
  writer.sample(metric);
  metric.states.push_back(pwr::Data(0.0));
  writer.sample(metric);
  metric.states.back() = pwr::Data(-0.0);
  writer.sample(metric);
  writer.sample(metric);
  metric.states.clear();
  writer.sample(metric);
  EXPECT_THAT(
      written(),
      ElementsAre(R"({"metric":{"ref":"m1","metricId":1}})", R"({"sample":{"metric":"m1"}})",
                  R"({"metric":{"ref":"m2","metricId":1,"states":[{"real":0}]}})",
                  R"({"sample":{"metric":"m2"}})",
                  R"({"metric":{"ref":"m3","metricId":1,"states":[{"real":-0}]}})",
                  R"({"sample":{"metric":"m3"}})", R"({"sample":{"metric":"m3"}})",
                  R"({"sample":{"metric":"m1"}})"));
}

TEST_F(Writer, MetricsAreToldApartByWhatTheySayNotByWhereTheyAre) {
  for (const char* name : {"one", "two", "one"}) {
    metric.name = name;
    writer.sample(metric);
  }
  EXPECT_THAT(written(), SizeIs(5));
}

TEST_F(Writer, EachMemberOfADescriptionCounts) {
  const auto& entity = model.addEntity({.name = "e", .id = 1});
  const auto& handle = model.addColumnHandle({.name = "h", .id = 2}, 1);
  const auto& quantity = model.addQuantity({.name = "q", .id = 3});
  const std::vector<std::function<void()>> changes = {
      [] {},
      [&] { metric.name = "n"; },
      [&] { metric.quantity = &quantity; },
      [&] { metric.entities.emplace_back(&entity, nullptr); },
      [&] { metric.states.push_back(pwr::Data(std::string("s"))); },
      [&] { metric.states.back() = pwr::Data(std::string("t")); },
      [&] { metric.states.back() = pwr::Data::fromInt(1); },
      [&] { metric.states.back() = pwr::Data::fromHandle(&handle); },
      [&] {
        metric.states.back() = pwr::Data::fromIntRange({1, 2});
      },
      [&] {
        metric.states.back() = pwr::Data::fromIntRange({1, 3});
      },
      [&] { metric.featureName = "f"; },
      [&] { metric.groupName = "g"; },
      [&] { metric.entityList.push_back(&entity); },
      [&] { metric.metadataValues.emplace_back(1UL); },
      [&] { metric.valueHandle = &handle; },
      [&] { metric.descriptorTitleHandle = &handle; },
      [&] { metric.entityTitleHandle = &handle; },
      [&] { metric.writeEntityAttributes = true; },
      [&] { metric.tableClass = pwr::TableClass::UserWakelock; },
      [&] { metric.metricType = pwr::Metric::TRACED_EVENT; },
      [&] { metric.metricId = 4; },
  };
  for (const auto& change : changes) {
    change();
    writer.sample(metric);
  }
  std::size_t definitions = 0;
  for (const std::string& line : written()) {
    definitions += line.starts_with("{\"metric\"") ? 1 : 0;
  }
  EXPECT_EQ(definitions, changes.size());
}

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
  RecordingWriter writer("/nowhere/w");
  EXPECT_EQ(writer.error(), "/nowhere/w: No such file or directory");
  writer.note("dropped");
  writer.sync();
  EXPECT_EQ(writer.close(), "/nowhere/w: No such file or directory");
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
  std::signal(SIGXFSZ, SIG_IGN);
  const rlimit limit{1000, RLIM_INFINITY};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  RecordingWriter writer(directory.file("w"));
  writer.note(std::string(2000, 'x'));
  EXPECT_EQ(writer.close(), directory.file("w") + ": File too large");
  EXPECT_EQ(readFile(directory.file("w")).size(), 1000U);
}

}  // namespace
}  // namespace qumetra::test
