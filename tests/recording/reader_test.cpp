// What a recording gives, record by record.
#include <cmath>
#include <deque>
#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/configuration.h"
#include "host/platform_metadata.h"
#include "host/quantity.h"
#include "tests/recording/reading.h"

namespace qumetra::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// Keeps copies of what single tests look at more closely than the dump does.
class Keeper : public MessageSink {
 public:
  void system(const pwr::SystemMessage& message) override {
    metadata = message.m_metadata;
    allMetadata.push_back(metadata);
  }
  void text(const pwr::TextMessage& message) override { texts.push_back(message.m_message); }
  void id(const pwr::IdMessage& /*message*/) override {}
  void sample(const pwr::Metric& metric) override {
    lastMetric = &metric;
    for (const pwr::DataElement* element : metric.getData().elements) {
      values.push_back(*element->getValue());
      infoIds.emplace_back();
      if (element->getAdditionalInfo() == nullptr) {
        continue;
      }
      infoIds.back().emplace();
      for (const auto& [id, value] : *element->getAdditionalInfo()) {
        infoIds.back()->push_back(id);
      }
    }
  }
  void table(const pwr::TableMessage& table) override { tables.push_back(describe(table)); }
  void container(const pwr::MetricContainerInfoMessage& message) override {
    notes.push_back(message.textNotes);
  }
  void flush(const pwr::SystemMetadata& given) override { flushed.push_back(&given); }

  const pwr::SystemMetadata* metadata = nullptr;
  std::vector<const pwr::SystemMetadata*> allMetadata;
  const pwr::Metric* lastMetric = nullptr;
  std::vector<std::string> texts;
  std::vector<pwr::Data> values;
  std::vector<std::optional<std::vector<std::uint64_t>>> infoIds;
  std::vector<std::string> tables;
  std::vector<const pwr::TextNotes*> notes;
  std::vector<const pwr::SystemMetadata*> flushed;
};

class Reader : public ::testing::Test {
 protected:
  Reader() { reading.second = &kept; }

  /// The only text of a recording whose JSON string is `json`.
  std::string textOf(const std::string& json) {
    EXPECT_EQ(reading.readLines({R"({"text":{"message":")" + json + R"("}})"}), "");
    return kept.texts.at(0);
  }
  /// The only value of a recording.
  pwr::Data valueOf(const std::string& json) {
    EXPECT_EQ(reading.readLines({R"({"metric":{"ref":"m","metricId":1}})",
                                 R"({"entity":{"ref":"e","id":5,"name":"thing"}})",
                                 R"({"sample":{"metric":"m","elements":[{"entity":"e","value":)" +
                                     json + "}]}}"}),
              "");
    return kept.values.at(0);
  }
  double realOf(const std::string& json) {
    double real = 0;
    EXPECT_EQ(valueOf(R"({"real":)" + json + "}").toReal(real), 0);
    return real;
  }

  Reading reading;
  Keeper kept;
};

TEST_F(Reader, DeliversEveryKindOfMessageInOrder) {
  EXPECT_EQ(reading.readPath(QUMETRA_RECORDINGS "/all_kinds.qmrec"), "");

  std::vector<std::string> kinds;
  for (const std::string& message : reading.messages()) {
    kinds.push_back(message.substr(0, message.find(' ')));
  }
  EXPECT_THAT(kinds,
              ElementsAre("system", "text", "text", "id", "sample", "sample", "sample", "table",
                          "table", "table", "container", "container", "attributes", "attributes",
                          "attributes", "ended", "ended", "metadata", "flush", "flush", "text"));
  EXPECT_EQ(reading.samplesRead(), 3U);
  EXPECT_THAT(reading.warnings(), IsEmpty());
}

TEST_F(Reader, EveryRecordingForOthersCanBeRead) {
  EXPECT_EQ(reading.readPath(QUMETRA_RECORDINGS "/residency.qmrec"), "");
  Reading table;
  EXPECT_EQ(table.readPath(QUMETRA_RECORDINGS "/summary_table.qmrec"), "");
}

TEST_F(Reader, SkipsEmptyLinesCarriageReturnsAndNotes) {
  EXPECT_EQ(reading.readBytes("\n\r\n{\"note\":{}}\r\n" + kFirstRecord +
                              "\r\n\n{\"note\":{\"text\":\"n\"}}\n{\"text\":{\"message\":\"a\"}}\r"
                              "\n"),
            "");
  EXPECT_THAT(reading.messages(), ElementsAre("text 2 0 a"));
}

TEST_F(Reader, LastWholeLineNeedsNoLineEnd) {
  EXPECT_EQ(reading.readBytes(kFirstRecord + "\n{\"text\":{\"message\":\"a\"}}"), "");
  EXPECT_THAT(reading.messages(), ElementsAre("text 2 0 a"));
  EXPECT_THAT(reading.warnings(), IsEmpty());
}

TEST_F(Reader, InterruptedLastLineIsAWarningAndAllBeforeItCounts) {
  EXPECT_EQ(reading.readBytes(kFirstRecord + "\n{\"text\":{\"message\":\"a\"}}\n{\"text\":{\"me"),
            "");
  EXPECT_THAT(reading.messages(), ElementsAre("text 2 0 a"));
  EXPECT_THAT(reading.warnings(),
              ElementsAre("r:3: the recording was interrupted here; all before it counts"));
}

TEST_F(Reader, LineInterruptedWithinACharacterIsAWarning) {
  EXPECT_EQ(reading.readBytes(kFirstRecord + "\n{\"text\":{\"message\":\"\xc3"), "");
  EXPECT_EQ(reading.warnings().size(), 1U);
}

TEST_F(Reader, LastLineThatIsNoObjectIsAWarning) {
  EXPECT_EQ(reading.readBytes(kFirstRecord + "\n12"), "");
  EXPECT_EQ(reading.warnings().size(), 1U);
}

TEST_F(Reader, FaultInAWholeLastLineIsAnErrorThoughItHasNoLineEnd) {
  EXPECT_THAT(reading.readBytes(kFirstRecord + "\n{\"unheard\":{}}"), HasSubstr("r:2: unheard: "));
  EXPECT_THAT(reading.warnings(), IsEmpty());
}

TEST_F(Reader, MessagesBeforeAFaultAreDelivered) {
  EXPECT_THAT(reading.readLines({R"({"text":{"message":"a"}})", "{}", R"({"text":{}})"}),
              HasSubstr("r:3: "));
  EXPECT_THAT(reading.messages(), ElementsAre("text 2 0 a"));
}

TEST_F(Reader, ReadingEndsForGoodAfterAFault) {
  const TempDir directory;
  writeFile(directory.file("r"), kFirstRecord + "\n{}\n{\"text\":{}}\n");
  RecordingReader reader(directory.file("r"), reading.model(), kept);
  EXPECT_TRUE(reader.readLine());
  EXPECT_THROW(reader.readLine(), RecordingError);
  EXPECT_FALSE(reader.readLine());
  EXPECT_THAT(kept.texts, IsEmpty());
}

TEST_F(Reader, TellsHowFarItIs) {
  const TempDir directory;
  writeFile(directory.file("r"), kFirstRecord + "\r\n\n{\"text\":{}}");
  RecordingReader reader(directory.file("r"), reading.model(), kept);
  EXPECT_EQ(reader.sizeBytes(), kFirstRecord.size() + 3 + 11);
  EXPECT_EQ(reader.bytesRead(), 0U);
  EXPECT_TRUE(reader.readLine());
  EXPECT_EQ(reader.bytesRead(), kFirstRecord.size() + 2);
  reader.readAll();
  EXPECT_EQ(reader.bytesRead(), reader.sizeBytes());
}

TEST_F(Reader, FileThatIsNotThereIsAnError) {
  EXPECT_EQ(reading.readPath("/nowhere/r"), "/nowhere/r: No such file or directory");
}

TEST_F(Reader, DirectoryIsAnError) { EXPECT_EQ(reading.readPath("/"), "/: Is a directory"); }

TEST_F(Reader, LinesMayBeLongerThanAnyBuffer) {
  const std::string longText(3'000'000, 'x');
  EXPECT_EQ(textOf(longText), longText);
}

// Texts

TEST_F(Reader, EscapedZeroIsAZeroByte) { EXPECT_EQ(textOf(R"(a\u0000b)"), std::string("a\0b", 3)); }

TEST_F(Reader, LoneLowSurrogateStandsForItsByte) {
  EXPECT_EQ(textOf(R"(\udc80-\uDCfF-\udc80)"), "\x80-\xff-\x80");
}

TEST_F(Reader, SurrogatePairIsOneCharacterThoughItsSecondHalfCouldStandForAByte) {
  EXPECT_EQ(textOf(R"(\ud83d\ude00\ud83d\udc80)"), "\xf0\x9f\x98\x80\xf0\x9f\x92\x80");
}

TEST_F(Reader, SurrogateBehindAPairStandsForItsByte) {
  EXPECT_EQ(textOf(R"(\ud83d\ude00\udc80)"), "\xf0\x9f\x98\x80\x80");
}

TEST_F(Reader, EscapedBackslashBeforeUMakesNoSurrogate) {
  EXPECT_EQ(textOf(R"(\\udc80\\\udc80)"), "\\udc80\\\x80");
}

TEST_F(Reader, MemberNamesMayHoldBytesToo) {
  EXPECT_EQ(reading.readLines({R"({"config":{"metricOrder":{"\udcfe":["m"]}}})"}), "");
  std::deque<std::string> metrics;
  EXPECT_TRUE(
      pwr::WriterInterfaceConfigFileParser::instance()->getMetricOrderForFeature(metrics, "\xfe"));
}

// Numbers and values

TEST_F(Reader, NanIsAText) { EXPECT_TRUE(std::isnan(realOf(R"("nan")"))); }

TEST_F(Reader, InfinityIsAText) { EXPECT_EQ(realOf(R"("inf")"), HUGE_VAL); }

TEST_F(Reader, NegativeInfinityIsAText) { EXPECT_EQ(realOf(R"("-inf")"), -HUGE_VAL); }

TEST_F(Reader, RealKeepsTheSignOfAZeroWithoutAPoint) { EXPECT_TRUE(std::signbit(realOf("-0"))); }

TEST_F(Reader, RealMayBeAnIntegerLargerThan64Bits) {
  EXPECT_EQ(realOf("36893488147419103232"), 36893488147419103232.0);
}

TEST_F(Reader, RealIsTheNearestDouble) {
  EXPECT_EQ(realOf("2.2250738585072011e-308"), 0x0.fffffffffffffp-1022);
}

TEST_F(Reader, RealTooSmallForADoubleIsZero) {
  EXPECT_EQ(realOf("0." + std::string(400, '0') + "1"), 0.0);
}

TEST_F(Reader, RealTooSmallForADoubleKeepsItsSign) { EXPECT_TRUE(std::signbit(realOf("-1e-400"))); }

TEST_F(Reader, AbsentValueHasTagZero) {
  EXPECT_EQ(
      reading.readLines({R"({"metric":{"ref":"m","metricId":1}})", R"({"entity":{"ref":"e"}})",
                         R"({"sample":{"metric":"m","elements":[{"entity":"e"}]}})"}),
      "");
  EXPECT_EQ(kept.values.at(0).m_tag, 0);
}

TEST_F(Reader, EachValueHasTheTagOfItsMember) {
  EXPECT_EQ(reading.readPath(QUMETRA_RECORDINGS "/all_kinds.qmrec"), "");
  std::vector<std::string> texts;
  for (const pwr::Data& value : kept.values) {
    texts.push_back(describe(value));
  }
  EXPECT_THAT(texts, ElementsAre("3 0x1.999999999999ap-4", "1 -9223372036854775808",
                                 "2 18446744073709551615", "0 ", "4 -1..4", "5 1..4",
                                 "6 0x1p-1..-inf", "3 nan", "7 #33 main", "255 "));
}

TEST_F(Reader, NullHandleIsAValueOfTag7) {
  EXPECT_EQ(describe(valueOf(R"({"handle":null})")), "7 null");
}

TEST_F(Reader, NoneIsAValueOfTag0) { EXPECT_EQ(describe(valueOf(R"({"none":null})")), "0 "); }

TEST_F(Reader, DeepNestingIsAFaultAndNoOverflow) {
  const std::string deep(2'000'000, '[');
  const std::string fault = reading.readLines({R"({"text":{"message":)" + deep});
  EXPECT_THAT(fault, HasSubstr("r:2: no JSON at text.message[0][0]"));
  EXPECT_LT(fault.size(), 300U) << "the place is cut";
}

TEST_F(Reader, DeepValueIsOfAWrongTypeAndNoOverflow) {
  const std::string deep = std::string(2'000'000, '[') + std::string(2'000'000, ']');
  EXPECT_EQ(reading.readLines({R"({"text":{"message":)" + deep + "}}"}),
            "r:2: text.message: a list; expected a string");
}

// Definitions

TEST_F(Reader, IdsCountUpFromTheFirstDefaultInFileOrder) {
  EXPECT_EQ(reading.readLines(
                {R"({"quantity":{"ref":"q"}})", R"({"entity":{"ref":"e","name":"e"}})",
                 R"({"descriptor":{"ref":"x","id":3}})", R"({"metric":{"ref":"m","metricId":1}})",
                 R"({"descriptor":{"ref":"d","name":"d"}})"}),
            "");
  EXPECT_EQ(handleOf(0x40000001).getName(), "e");
  EXPECT_EQ(handleOf(0x40000002).getName(), "d");
}

TEST_F(Reader, IdZeroAndTheIdsBesideTheReservedOnesAreAllowed) {
  EXPECT_EQ(reading.readLines({R"({"entity":{"ref":"a","id":0,"name":"a"}})",
                               R"({"entity":{"ref":"b","id":1610612735,"name":"b"}})",
                               R"({"entity":{"ref":"c","id":2147483648,"name":"c"}})",
                               R"({"entity":{"ref":"d","id":18446744073709551615,"name":"d"}})"}),
            "");
  EXPECT_EQ(handleOf(0).getName(), "a");
  EXPECT_EQ(handleOf(0x5FFFFFFF).getName(), "b");
  EXPECT_EQ(handleOf(0x80000000).getName(), "c");
  EXPECT_EQ(handleOf(0xFFFFFFFFFFFFFFFF).getName(), "d");
}

TEST_F(Reader, FieldNameIsTheNameUnlessGiven) {
  EXPECT_EQ(reading.readLines({R"({"entity":{"ref":"a","id":1,"name":"a"}})",
                               R"({"entity":{"ref":"b","id":2,"name":"b","fieldName":""}})"}),
            "");
  EXPECT_EQ(handleOf(1).getFieldName(), "a");
  EXPECT_EQ(handleOf(2).getFieldName(), "");
}

TEST_F(Reader, DefinitionsSayWhatTheirRecordsSay) {
  ASSERT_EQ(reading.readPath(QUMETRA_RECORDINGS "/all_kinds.qmrec"), "");
  EXPECT_EQ(describe(handleOf(30)),
            "(#30 level/level//level type 1 Level/turbo/18446744073709551615)");
  EXPECT_EQ(describe(handleOf(32)), "(#32 shell/shell//shell type 1 process 20 1 /bin/sh 50-60)");
  EXPECT_EQ(describe(handleOf(33)), "(#33 main/main//main type 1 thread 21 20 51-71)");
  EXPECT_EQ(describe(handleOf(40)),
            "(#40 Package 0/Package 0//Package 0 type 1 parent null attributes[#20 cpu=2 0;"
            "#1073741824 owner=7 #31 init;])");
  EXPECT_EQ(describe(handleOf(50)), "(#50 C6/C6//C6 type 9 attributes[#20 cpu=3 -0x0p+0;])");
  EXPECT_EQ(describe(handleOf(60)),
            "(#60 Value/Value/Measured/Value type 3 expected #20 cpu #1073741824 owner)");
  EXPECT_EQ(describe(handleOf(0x40000000)),
            "(#1073741824 owner/owner//cpu/owner type 0 attribute 3 null parent #20 cpu "
            "attributes[#20 cpu=1 -7;null=0 ;])");
  EXPECT_EQ(handleOf(41).getQualifiedName(), "Package 0/Core 0");
}

TEST_F(Reader, QuantityTitleIsNameAndUnitsUnlessGiven) {
  EXPECT_EQ(reading.readLines({R"({"quantity":{"ref":"a","name":"Power","units":"mW"}})",
                               R"({"attribute":{"ref":"x","id":1,"quantity":"a"}})",
                               R"({"quantity":{"ref":"b","name":"Count"}})",
                               R"({"attribute":{"ref":"y","id":2,"quantity":"b"}})",
                               R"({"quantity":{"ref":"c","name":"Count","units":"s","title":""}})",
                               R"({"attribute":{"ref":"z","id":3,"quantity":"c"}})"}),
            "");
  std::string title;
  handleOf<pwr::Attribute>(1).m_quantity->toTitleString(title);
  EXPECT_EQ(title, "Power (mW)");
  handleOf<pwr::Attribute>(2).m_quantity->toTitleString(title);
  EXPECT_EQ(title, "Count");
  handleOf<pwr::Attribute>(3).m_quantity->toTitleString(title);
  EXPECT_EQ(title, "");
}

TEST_F(Reader, SeveralMetricsMayCarryOneMetricId) {
  EXPECT_EQ(reading.readLines({R"({"metric":{"ref":"m","metricId":1,"name":"one"}})",
                               R"({"metric":{"ref":"n","metricId":1,"name":"two"}})",
                               R"({"sample":{"metric":"n"}})", R"({"sample":{"metric":"m"}})"}),
            "");
  EXPECT_THAT(reading.messages(),
              ElementsAre(HasSubstr("sample 1 two"), HasSubstr("sample 1 one")));
}

TEST_F(Reader, NumbersBesideTheListedMeaningsAreAllowed) {
  EXPECT_EQ(
      reading.readLines(
          {R"({"attribute":{"ref":"a","id":1,"kind":4294967295}})",
           R"({"metric":{"ref":"m","metricId":1,"type":18446744073709551615,"tableClass":99}})",
           R"({"handle":{"ref":"h","type":4294967295}})", R"({"table":{"type":255}})",
           R"({"container":{"residencyView":255}})"}),
      "");
  EXPECT_EQ(static_cast<std::uint32_t>(handleOf<pwr::Attribute>(1).getAttributeType()),
            4294967295U);
}

TEST_F(Reader, ConfigFillsTheProcessWideOrder) {
  std::deque<std::string> names = {"old"};
  const auto* order = pwr::WriterInterfaceConfigFileParser::instance();
  EXPECT_EQ(
      reading.readLines(
          {R"({"config":{"featureOrder":["b","a"],"featurePrefixes":[],"metricOrder":{"b":["y","x"],"a":[]}}})"}),
      "");
  EXPECT_TRUE(order->getFeatureOrder(names));
  EXPECT_THAT(names, ElementsAre("b", "a"));
  EXPECT_TRUE(order->getMetricOrderForFeature(names, "b"));
  EXPECT_THAT(names, ElementsAre("y", "x"));
  EXPECT_FALSE(order->getMetricOrderForFeature(names, "a"));
  EXPECT_FALSE(order->getAllFeaturePrefixes(names));
}

TEST_F(Reader, ConfigMayStandBehindDefinitions) {
  EXPECT_EQ(reading.readLines({R"({"entity":{"ref":"e"}})", R"({"config":{}})"}), "");
}

// Changes

TEST_F(Reader, AttributesRecordReplacesTheValuesOfAnObject) {
  EXPECT_EQ(reading.readLines(
                {R"({"attribute":{"ref":"a","id":1,"name":"a"}})",
                 R"({"entity":{"ref":"e","id":2,"attributes":[["a",{"int":1}],["a",{"int":2}]]}})",
                 R"({"attributes":{"of":"e","attributes":[["a",{"handle":"e"}]]}})"}),
            "");
  EXPECT_THAT(describe(handleOf(2)), HasSubstr("attributes[#1 a=7 #2 ;]"));
  EXPECT_EQ(reading.messages().size(), 1U) << "the sink hears of the change";
}

TEST_F(Reader, AttributesRecordWithoutAListRemovesAll) {
  EXPECT_EQ(
      reading.readLines({R"({"attribute":{"ref":"a","id":1,"attributes":[[null,{"int":1}]]}})",
                         R"({"attributes":{"of":"a"}})"}),
      "");
  EXPECT_THAT(describe(handleOf(1)), HasSubstr("attributes[]"));
}

TEST_F(Reader, EndedRecordSetsTheEndTime) {
  EXPECT_EQ(
      reading.readLines({R"({"process":{"ref":"p","id":1,"endTime":3}})",
                         R"({"thread":{"ref":"t","id":2}})", R"({"ended":{"of":"p","endTime":8}})",
                         R"({"ended":{"of":"t","endTime":9}})"}),
      "");
  EXPECT_EQ(handleOf<pwr::Process>(1).getEndTime(), 8U);
  EXPECT_EQ(handleOf<pwr::Thread>(2).getEndTime(), 9U);
}

TEST_F(Reader, MetadataRecordChangesOnlyTheGivenMembersOfTheSameObject) {
  EXPECT_EQ(reading.readLines({R"({"system":{"metadata":{"hostName":"h","lastTimestamp":5}}})",
                               R"({"metadata":{"lastTimestamp":9,"collectionDurationSec":2.5}})"}),
            "");
  EXPECT_EQ(kept.metadata->m_hostName, "h");
  EXPECT_EQ(kept.metadata->m_lastTimestamp, 9U);
  EXPECT_EQ(kept.metadata->getCollectionDurationSec(), 2.5);
  EXPECT_THAT(reading.messages().at(1), HasSubstr("metadata "));
}

// Messages

TEST_F(Reader, SystemMetadataOutlivesItsMessage) {
  EXPECT_EQ(reading.readLines({R"({"system":{"metadata":{"hostName":"first"}}})",
                               R"({"system":{"metadata":{"hostName":"second"}}})"}),
            "");
  ASSERT_EQ(kept.allMetadata.size(), 2U);
  EXPECT_EQ(kept.allMetadata[0]->m_hostName, "first");
  EXPECT_EQ(kept.allMetadata[1]->m_hostName, "second");
}

TEST_F(Reader, DurationFollowsFromTheTimestampsUnlessGiven) {
  EXPECT_EQ(
      reading.readLines(
          {R"({"system":{"metadata":{"timestampFrequency":1000,"firstTimestamp":1000000000,"lastTimestamp":3500000000}}})"}),
      "");
  EXPECT_EQ(kept.metadata->getCollectionDurationSec(), 2.5);
}

TEST_F(Reader, FrequencyIsTheDoubleNarrowed) {
  EXPECT_EQ(reading.readLines({R"({"system":{"metadata":{"timestampFrequency":24.1}}})"}), "");
  EXPECT_EQ(kept.metadata->m_timestampFrequency, 24.1F);
}

TEST_F(Reader, PlatformEntriesAreOfTheClassOfTheirType) {
  ASSERT_EQ(reading.readPath(QUMETRA_RECORDINGS "/all_kinds.qmrec"), "");
  const auto& platform = kept.metadata->m_platformMetadata;
  ASSERT_EQ(platform.size(), 4U);
  const auto* cpu = dynamic_cast<const pwr::CPUMetadata*>(platform.at(1));
  ASSERT_NE(cpu, nullptr);
  EXPECT_EQ(cpu->m_topology.getNumPackages(), 2U);
  EXPECT_EQ(cpu->m_topology.getNumModules(), 1U);
  EXPECT_EQ(cpu->m_topology.getNumCores(), 2U);
  EXPECT_EQ(cpu->m_topology.getNumThreads(), 3U);
  EXPECT_NE(dynamic_cast<const pwr::PCHMetadata*>(platform.at(2)), nullptr);
  EXPECT_EQ(platform.at(3), nullptr);
  EXPECT_EQ(platform.at(9)->m_name, "other");
}

TEST_F(Reader, FlushTakesTheLastSystemRecordsMetadata) {
  EXPECT_EQ(reading.readLines({R"({"system":{}})", R"({"system":{}})", R"({"flush":{}})",
                               R"({"flush":{"metadata":null}})", R"({"flush":{"metadata":{}}})",
                               R"({"flush":{"metadata":null}})"}),
            "");
  ASSERT_EQ(kept.flushed.size(), 4U);
  EXPECT_EQ(kept.flushed[0], kept.metadata);
  EXPECT_EQ(kept.flushed[1], kept.metadata);
  EXPECT_NE(kept.flushed[2], kept.metadata);
  EXPECT_EQ(kept.flushed[3], kept.metadata);
}

TEST_F(Reader, InfoIsOrderedByIdAndEmptyInfoIsAnEmptyManager) {
  EXPECT_EQ(
      reading.readLines(
          {R"({"metric":{"ref":"m","metricId":1}})", R"({"entity":{"ref":"e","id":7}})",
           R"({"quantity":{"ref":"q","id":6}})",
           R"({"sample":{"metric":"m","elements":[{"entity":"e","info":[[9,{"int":1}],["e",{"int":2}],["q",{"int":3}]]},{"entity":"e","info":[]},{"entity":"e","info":null},{"entity":"e"}]}})"}),
      "");
  ASSERT_EQ(kept.infoIds.size(), 4U);
  EXPECT_THAT(kept.infoIds[0].value(), ElementsAre(6, 7, 9));
  EXPECT_THAT(kept.infoIds[1].value(), IsEmpty());
  EXPECT_FALSE(kept.infoIds[2].has_value());
  EXPECT_FALSE(kept.infoIds[3].has_value());
}

TEST_F(Reader, AttributeMayStandWhereAnEntityMay) {
  EXPECT_EQ(reading.readLines({R"({"attribute":{"ref":"a","id":1,"name":"a"}})",
                               R"({"entity":{"ref":"e","id":2,"name":"e","parent":"a"}})",
                               R"({"metric":{"ref":"m","metricId":1,"entityList":["a"]}})",
                               R"({"sample":{"metric":"m","elements":[{"entity":"a"}]}})",
                               R"({"table":{"type":1,"entities":["a"]}})"}),
            "");
  EXPECT_EQ(handleOf(2).getQualifiedName(), "a/e");
}

TEST_F(Reader, MetricHoldsNoElementsBehindItsDelivery) {
  EXPECT_EQ(
      reading.readLines({R"({"metric":{"ref":"m","metricId":1}})", R"({"entity":{"ref":"e"}})",
                         R"({"sample":{"metric":"m","elements":[{"entity":"e"}]}})"}),
      "");
  EXPECT_TRUE(kept.lastMetric->getData().elements.empty());
}

TEST_F(Reader, NotesOutliveTheirMessage) {
  EXPECT_EQ(reading.readLines({R"({"container":{"textNotes":{"0":["a","b"],"4294967295":[]}}})",
                               R"({"container":{"textNotes":{}}})",
                               R"({"container":{"textNotes":null}})"}),
            "");
  ASSERT_EQ(kept.notes.size(), 3U);
  EXPECT_THAT(kept.notes[0]->at(0), ElementsAre("a", "b"));
  EXPECT_EQ(kept.notes[0]->count(4294967295), 1U);
  EXPECT_TRUE(kept.notes[1]->empty());
  EXPECT_EQ(kept.notes[2], nullptr);
}

// Tables

/// A table of the handles s, t (shared), f, g (fields) and the entities e (id 9) and d (id 8).
class TableOf : public Reader {
 protected:
  std::string cells(const std::string& members) {
    EXPECT_EQ(reading.readLines({R"({"handle":{"ref":"s","id":1,"name":"s"}})",
                                 R"({"handle":{"ref":"t","id":2,"name":"t"}})",
                                 R"({"handle":{"ref":"f","id":3,"name":"f"}})",
                                 R"({"handle":{"ref":"g","id":4,"name":"g"}})",
                                 R"({"entity":{"ref":"e","id":9,"name":"e"}})",
                                 R"({"entity":{"ref":"d","id":8,"name":"d"}})",
                                 R"({"table":{"type":1,"shared":["s","t"],"fields":["f","g"],)" +
                                     members + "}}"}),
              "");
    const std::string& text = kept.tables.at(0);
    return text.substr(text.find('\n'));
  }

  static std::string head(const char* kind, const char* handle) {
    const std::string name(handle);
    return std::string("\n  ") + kind + " (#" + name + '/' + name.substr(2) + "//" +
           name.substr(2) + " type 0 expected): ";
  }
};

TEST_F(TableOf, EntitiesAreOrderedByIdThoughCellsStandInTheRecordsOrder) {
  EXPECT_EQ(
      cells(
          R"("entities":["e","d"],"sharedCells":["S",null],"fieldCells":[["fe","fd"],[{"error":"bad"},null]])"),
      head("shared", "1 s") + "0+S, 1-UNTOUCHED, 1-UNTOUCHED" + head("shared", "2 t") +
          "0-UNTOUCHED, 1-UNTOUCHED, 1-UNTOUCHED" + head("field", "3 f") +
          "1-UNTOUCHED, #8 d 0+fd, #9 e 0+fe" + head("field", "4 g") +
          "1-UNTOUCHED, #8 d 0-UNTOUCHED, #9 e 1-bad");
}

TEST_F(TableOf, FieldHasOneCellWithoutEntities) {
  EXPECT_EQ(cells(R"("fieldCells":[["one"],[]])"),
            head("shared", "1 s") + "1-UNTOUCHED" + head("shared", "2 t") + "1-UNTOUCHED" +
                head("field", "3 f") + "0+one" + head("field", "4 g") + "1-UNTOUCHED");
}

TEST_F(TableOf, ExtraCellsAddAndReplaceInOrder) {
  EXPECT_EQ(
      cells(
          R"("entities":["e"],"fieldCells":[["old"],["kept"]],"extraCells":[["e","f","new"],[null,"s","x"],[null,"s",null],["d","g","off the grid"]])"),
      head("shared", "1 s") + "0-UNTOUCHED, 1-UNTOUCHED" + head("shared", "2 t") +
          "1-UNTOUCHED, 1-UNTOUCHED" + head("field", "3 f") + "1-UNTOUCHED, #9 e 0+new" +
          head("field", "4 g") + "1-UNTOUCHED, #9 e 0+kept");
}

TEST_F(TableOf, FieldCountIsTheNumberOfColumns) {
  cells(R"("entities":["e","d"])");
  // Two entities, two fields, two shared handles: 2 + 2 * 2 columns.
  EXPECT_THAT(kept.tables.at(0), HasSubstr(" counts 2 2 2 6\n"));
}

}  // namespace
}  // namespace qumetra::test
