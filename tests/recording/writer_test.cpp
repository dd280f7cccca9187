// What the definitions of a written recording hold, and that reading it gives the same messages
// again.
#include <functional>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/quantity.h"
#include "tests/recording/writer_fixture.h"

namespace qumetra::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;

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

}  // namespace
}  // namespace qumetra::test
