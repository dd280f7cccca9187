// Every fault of a recording is one line with file, line, member and what was expected.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/recording/reading.h"

namespace qumetra::test {
namespace {

/// A name for gtest, a line behind the common definitions, and the fault that it is.
struct FaultCase {
  const char* name;
  std::string line;
  /// Without "r:LINE: ".
  std::string fault;
};

class Fault : public ::testing::TestWithParam<FaultCase> {};

// One object of each kind, the ref being the kind's first letters. The case's line is line 12.
const std::initializer_list<std::string> kDefinitions = {
    R"({"quantity":{"ref":"q","id":1}})",      R"({"attribute":{"ref":"a","id":2}})",
    R"({"entity":{"ref":"e","id":3}})",        R"({"descriptor":{"ref":"d","id":4}})",
    R"({"nameValuePair":{"ref":"n","id":5}})", R"({"process":{"ref":"p","id":6}})",
    R"({"thread":{"ref":"t","id":7}})",        R"({"handle":{"ref":"h","id":8}})",
    R"({"metric":{"ref":"m","metricId":1}})",  R"({"entity":{"ref":"f","id":9}})",
};

TEST_P(Fault, IsToldWithLineAndMember) {
  std::string bytes = kFirstRecord + '\n';
  for (const std::string& line : kDefinitions) {
    bytes += line + '\n';
  }
  Reading reading;
  EXPECT_EQ(reading.readBytes(bytes + GetParam().line + "\n{\"text\":{}}\n"),
            "r:12: " + GetParam().fault);
  EXPECT_THAT(reading.messages(), ::testing::IsEmpty()) << "nothing is delivered";
  EXPECT_THAT(reading.warnings(), ::testing::IsEmpty());
}

std::string caseName(const ::testing::TestParamInfo<FaultCase>& info) { return info.param.name; }

/// A sample of one element with these members.
std::string element(const std::string& members) {
  return R"({"sample":{"metric":"m","elements":[{)" + members + "}]}}";
}
std::string value(const std::string& json) { return element(R"("entity":"e","value":)" + json); }
std::string metadata(const std::string& members) {
  return R"({"system":{"metadata":{)" + members + "}}}";
}
std::string platform(const std::string& entry) { return metadata(R"("platform":[)" + entry + "]"); }

const std::string kUnknown = "an unknown member; expected none of this name";
const std::string kDefinedBefore = "expected the ref of an object defined before";

INSTANTIATE_TEST_SUITE_P(
    Text, Fault,
    ::testing::Values(
        FaultCase{"BytesThatAreNotUtf8", "{\"text\":{\"message\":\"a\x80\"}}",
                  "byte 22 is not UTF-8; expected such bytes as escapes from \\udc80 to \\udcff"},
        FaultCase{"OverlongUtf8", "{\"text\":{\"message\":\"\xc0\x80\"}}",
                  "byte 21 is not UTF-8; expected such bytes as escapes from \\udc80 to \\udcff"},
        FaultCase{"SurrogateInUtf8", "{\"text\":{\"message\":\"\xed\xb2\x80\"}}",
                  "byte 21 is not UTF-8; expected such bytes as escapes from \\udc80 to \\udcff"},
        FaultCase{"LoneHighSurrogate", R"({"text":{"message":"\ud83dx"}})",
                  "a lone surrogate at byte 21; expected a pair, or one from \\udc80 to \\udcff "
                  "for a single byte"},
        FaultCase{"HighSurrogateBeforeAnEscapedBackslash",
                  R"({"text":{"message":"\ud83d\\udc80"}})",
                  "a lone surrogate at byte 21; expected a pair, or one from \\udc80 to \\udcff "
                  "for a single byte"},
        FaultCase{"LowSurrogateOfAnAsciiByte", R"({"text":{"message":"\udc80\udc7f"}})",
                  "a lone surrogate at byte 27; expected a pair, or one from \\udc80 to \\udcff "
                  "for a single byte"},
        FaultCase{"LowSurrogateOfNoByte", R"({"text":{"message":"\udd00"}})",
                  "a lone surrogate at byte 21; expected a pair, or one from \\udc80 to \\udcff "
                  "for a single byte"},
        FaultCase{"NoJson", R"({"sample":{"metric":"m","elements":[{},{"entity" 1}]}})",
                  "no JSON at sample.elements[1].entity: Missing a colon after a name of object "
                  "member; expected one JSON object"},
        FaultCase{"ControlCharacterInAText", "{\"text\":{\"message\":\"\x01\"}}",
                  "no JSON at text.message: Invalid escape character in string; expected one JSON "
                  "object"},
        FaultCase{"ZeroByteBehindTheObject", std::string("{\"text\":{}}\0x", 13),
                  "no JSON: a zero byte in the line; expected \\u0000"},
        FaultCase{"JunkBehindTheObject", R"({"text":{}} x)",
                  "no JSON: The document root must not be followed by other values; expected one "
                  "JSON object"},
        FaultCase{"TwoObjects", R"({"text":{}}{"text":{}})",
                  "no JSON: The document root must not be followed by other values; expected one "
                  "JSON object"},
        FaultCase{"NoObject", "[]", "no JSON object; expected one per line"},
        FaultCase{"BlankLine", " ", "no JSON: The document is empty; expected one JSON object"}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Record, Fault,
    ::testing::Values(
        FaultCase{"NoMember", "{}",
                  "an object of 0 members; expected exactly one, the record's kind"},
        FaultCase{"TwoMembers", R"({"text":{},"note":{}})",
                  "an object of 2 members; expected exactly one, the record's kind"},
        FaultCase{"UnknownKind", R"({"Text":{}})",
                  "Text: an unknown kind of record; expected a kind that this format has"},
        FaultCase{"LineEndInAKind", R"({"a\nb":{}})",
                  "a?b: an unknown kind of record; expected a kind that this format has"},
        FaultCase{"RecordThatIsNoObject", R"({"text":"a"})", "text: \"a\"; expected an object"},
        FaultCase{"SecondVersion", kFirstRecord,
                  "recording: a record given twice; expected it once, as the first"},
        FaultCase{"UnknownMember", R"({"text":{"id":1,"massage":"a"}})",
                  "text.massage: " + kUnknown},
        FaultCase{"UnknownMemberOfANote", R"({"note":{"txt":"a"}})", "note.txt: " + kUnknown},
        FaultCase{"MemberTwice", R"({"text":{"id":1,"message":"a","id":1}})",
                  "text.id: a member given twice; expected it once"},
        FaultCase{"WrongTypeOfAText", R"({"text":{"message":7}})",
                  "text.message: a number; expected a string"},
        FaultCase{"NullText", R"({"text":{"message":null}})",
                  "text.message: null; expected a string"},
        FaultCase{"WrongTypeOfANumber", R"({"text":{"id":"7"}})",
                  "text.id: \"7\"; expected an integer from 0 to 4294967295"},
        FaultCase{"WrongTypeOfAFlag", R"({"table":{"skip":1}})",
                  "table.skip: a number; expected true or false"},
        FaultCase{"WrongTypeOfAList", R"({"table":{"shared":"h"}})",
                  "table.shared: \"h\"; expected a list"},
        FaultCase{"WrongTypeOfAnObject", R"({"container":{"textNotes":[]}})",
                  "container.textNotes: a list; expected an object"},
        FaultCase{"WrongTypeOfAReference", R"({"sample":{"metric":7}})",
                  "sample.metric: a number; expected the ref of an object"}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Range, Fault,
    ::testing::Values(
        FaultCase{"IdOfAMessageBeyond32Bits", R"({"idMessage":{"id":4294967296}})",
                  "idMessage.id: 4294967296 is out of range; expected an integer from 0 to "
                  "4294967295"},
        FaultCase{"NegativeUnsigned", R"({"idMessage":{"id":-1}})",
                  "idMessage.id: -1 is out of range; expected an integer from 0 to 4294967295"},
        FaultCase{"Fraction", R"({"idMessage":{"id":1.0}})",
                  "idMessage.id: 1.0 is no integer; expected an integer from 0 to 4294967295"},
        FaultCase{"Exponent", R"({"idMessage":{"id":1e3}})",
                  "idMessage.id: 1e3 is no integer; expected an integer from 0 to 4294967295"},
        FaultCase{"TimestampBeyond64Bits",
                  R"({"sample":{"metric":"m","timestamp":18446744073709551616}})",
                  "sample.timestamp: 18446744073709551616 is out of range; expected an integer "
                  "from 0 to 18446744073709551615"},
        FaultCase{
            "ResidencyViewBeyondAByte", R"({"container":{"residencyView":256}})",
            "container.residencyView: 256 is out of range; expected an integer from 0 to 255"},
        FaultCase{"TableTypeBeyondAByte", R"({"table":{"type":256}})",
                  "table.type: 256 is out of range; expected an integer from 0 to 255"},
        FaultCase{"SignedBeyond64Bits", value(R"({"int":9223372036854775808})"),
                  "sample.elements[0].value.int: 9223372036854775808 is out of range; expected an "
                  "integer from -9223372036854775808 to 9223372036854775807"},
        FaultCase{"TagOfAKnownKind", value(R"({"tag":8})"),
                  "sample.elements[0].value.tag: 8 is out of range; expected a tag from 9 to 255"},
        FaultCase{
            "TagBeyondAByte", value(R"({"tag":256})"),
            "sample.elements[0].value.tag: 256 is out of range; expected an integer from 0 to "
            "255"},
        FaultCase{"RealBeyondADouble", value(R"({"real":99e307})"),
                  "sample.elements[0].value.real: 99e307 is out of range; expected a number that a "
                  "64-bit real holds"},
        FaultCase{
            "RealFarBeyondADouble", value(R"({"real":1e400})"),
            "sample.elements[0].value.real: a number out of range; expected one that a 64-bit "
            "real holds"},
        FaultCase{"RealAsAnyText", value(R"({"real":"NaN"})"),
                  "sample.elements[0].value.real: \"NaN\"; expected a number, \"nan\", \"inf\" or "
                  "\"-inf\""},
        FaultCase{"VersionMajorBeyond16Bits", metadata(R"("toolVersion":[65536,0,0])"),
                  "system.metadata.toolVersion[0]: 65536 is out of range; expected an integer from "
                  "0 to 65535"},
        FaultCase{"VersionMinorBeyondAByte", metadata(R"("driverVersion":[0,256,0])"),
                  "system.metadata.driverVersion[1]: 256 is out of range; expected an integer from "
                  "0 to 255"},
        FaultCase{
            "SecureSignInBeyondAByte", metadata(R"("secureSignIn":256)"),
            "system.metadata.secureSignIn: 256 is out of range; expected an integer from 0 to "
            "255"},
        FaultCase{"PlatformTypeBeyond16Bits", platform(R"({"type":65536,"null":true})"),
                  "system.metadata.platform[0].type: 65536 is out of range; expected an integer "
                  "from 0 to 65535"},
        FaultCase{"CpuModelBeyondAByte", platform(R"({"type":1,"cpu":{"model":256}})"),
                  "system.metadata.platform[0].cpu.model: 256 is out of range; expected an integer "
                  "from 0 to 255"},
        FaultCase{"PidBeyond32Bits", R"({"process":{"ref":"x","pid":4294967296}})",
                  "process.pid: 4294967296 is out of range; expected an integer from 0 to "
                  "4294967295"}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Definition, Fault,
    ::testing::Values(
        FaultCase{"NoRef", R"({"entity":{}})", "entity: no member \"ref\"; expected one"},
        FaultCase{"RefTwice", R"({"thread":{"ref":"m"}})",
                  "thread.ref: \"m\" is a metric already; expected a name that is not used yet"},
        FaultCase{"RefOfAMetricTwice", R"({"metric":{"ref":"q","metricId":1}})",
                  "metric.ref: \"q\" is a quantity already; expected a name that is not used yet"},
        FaultCase{"IdTwice", R"({"thread":{"ref":"x","id":8}})",
                  "thread.id: id 8 is used already; expected an id that is not used yet, outside "
                  "0x60000000 to 0x7FFFFFFF"},
        FaultCase{"IdOfAQuantityTwice", R"({"quantity":{"ref":"x","id":3}})",
                  "quantity.id: id 3 is used already; expected an id that is not used yet, outside "
                  "0x60000000 to 0x7FFFFFFF"},
        FaultCase{"FirstReservedId", R"({"entity":{"ref":"x","id":1610612736}})",
                  "entity.id: id 1610612736 is reserved for objects made at run time; expected an "
                  "id that is not used yet, outside 0x60000000 to 0x7FFFFFFF"},
        FaultCase{"LastReservedId", R"({"entity":{"ref":"x","id":2147483647}})",
                  "entity.id: id 2147483647 is reserved for objects made at run time; expected an "
                  "id that is not used yet, outside 0x60000000 to 0x7FFFFFFF"},
        FaultCase{"NullId", R"({"entity":{"ref":"x","id":null}})",
                  "entity.id: null; expected an integer from 0 to 18446744073709551615"},
        FaultCase{"IdOfAMetric", R"({"metric":{"ref":"x","id":1,"metricId":1}})",
                  "metric.id: " + kUnknown},
        FaultCase{"NoMetricId", R"({"metric":{"ref":"x"}})",
                  "metric: no member \"metricId\"; expected one"},
        FaultCase{"HandleTextOfAQuantity", R"({"quantity":{"ref":"x","header":""}})",
                  "quantity.header: " + kUnknown},
        FaultCase{"HandleTextOfAMetric", R"({"metric":{"ref":"x","metricId":1,"fieldName":""}})",
                  "metric.fieldName: " + kUnknown},
        FaultCase{"RateWithoutQuantity", R"({"quantity":{"ref":"x","rate":{"factor":1}}})",
                  "quantity.rate: no member \"quantity\"; expected one"},
        FaultCase{"RateWithoutFactor", R"({"quantity":{"ref":"x","rate":{"quantity":"q"}}})",
                  "quantity.rate: no member \"factor\"; expected one"},
        FaultCase{"UnknownMemberOfARate",
                  R"({"quantity":{"ref":"x","rate":{"quantity":"q","factor":1,"id":1}}})",
                  "quantity.rate.id: " + kUnknown},
        FaultCase{"ExpectedAttributesOfAnEntity",
                  R"({"entity":{"ref":"x","expectedAttributes":[]}})",
                  "entity.expectedAttributes: " + kUnknown},
        FaultCase{"AttributeWithoutValue", R"({"entity":{"ref":"x","attributes":[["a"]]}})",
                  "entity.attributes[0]: a list of 1; expected a list of 2"},
        FaultCase{"EntityWithinItself", R"({"entity":{"ref":"x","parent":"x"}})",
                  "entity.parent: unknown reference \"x\"; " + kDefinedBefore}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Reference, Fault,
    ::testing::Values(
        FaultCase{"Unknown", element(R"("entity":"E")"),
                  "sample.elements[0].entity: unknown reference \"E\"; " + kDefinedBefore},
        FaultCase{"NoMetric", R"({"sample":{}})", "sample: no member \"metric\"; expected one"},
        FaultCase{"NoEntity", element(R"("descriptor":"d")"),
                  "sample.elements[0]: no member \"entity\"; expected one"},
        FaultCase{"NullEntity", element(R"("entity":null)"),
                  "sample.elements[0].entity: null; expected the ref of an object"},
        FaultCase{"DescriptorForAnEntity", element(R"("entity":"d")"),
                  "sample.elements[0].entity: \"d\" is a descriptor; expected an entity or "
                  "attribute"},
        FaultCase{"EntityForADescriptor", element(R"("entity":"e","descriptor":"e")"),
                  "sample.elements[0].descriptor: \"e\" is an entity; expected a descriptor"},
        FaultCase{"ProcessForADescriptor", element(R"("entity":"e","keltoDescriptor":"p")"),
                  "sample.elements[0].keltoDescriptor: \"p\" is a process; expected a descriptor"},
        FaultCase{"EntityForAMetric", R"({"sample":{"metric":"e"}})",
                  "sample.metric: \"e\" is an entity; expected a metric"},
        FaultCase{"QuantityForAHandle", value(R"({"handle":"q"})"),
                  "sample.elements[0].value.handle: \"q\" is a quantity; expected anything but a "
                  "quantity or metric"},
        FaultCase{"MetricForAHandle", R"({"table":{"fields":["m"]}})",
                  "table.fields[0]: \"m\" is a metric; expected anything but a quantity or metric"},
        FaultCase{"ThreadForAQuantity", R"({"table":{"quantity":"t"}})",
                  "table.quantity: \"t\" is a thread; expected a quantity"},
        FaultCase{"EntityForAnAttribute", R"({"handle":{"ref":"x","expectedAttributes":["e"]}})",
                  "handle.expectedAttributes[0]: \"e\" is an entity; expected an attribute"},
        FaultCase{"NullInEntityList", R"({"metric":{"ref":"x","metricId":1,"entityList":[null]}})",
                  "metric.entityList[0]: null; expected the ref of an object"},
        FaultCase{"AttributesOfAProcess", R"({"attributes":{"of":"p"}})",
                  "attributes.of: \"p\" is a process; expected an entity, attribute or descriptor"},
        FaultCase{"AttributesOfNothing", R"({"attributes":{}})",
                  "attributes: no member \"of\"; expected one"},
        FaultCase{"EndOfAnEntity", R"({"ended":{"of":"n"}})",
                  "ended.of: \"n\" is a nameValuePair; expected a process or thread"},
        FaultCase{"InfoOfAMetric", element(R"("entity":"e","info":[["m",{"int":1}]])"),
                  "sample.elements[0].info[0][0]: \"m\" is a metric; expected anything but a "
                  "quantity or metric"},
        FaultCase{"InfoKeyOfAnotherType", element(R"("entity":"e","info":[[null,{"int":1}]])"),
                  "sample.elements[0].info[0][0]: null; expected an id or the ref of an object"},
        FaultCase{"InfoKeyTwice", element(R"("entity":"e","info":[[3,{"int":1}],["e",{"int":1}]])"),
                  "sample.elements[0].info[1][0]: key 3 given twice; expected it once"}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Value, Fault,
    ::testing::Values(
        FaultCase{"WithoutMember", value("{}"),
                  "sample.elements[0].value: a value of 0 members; expected exactly one"},
        FaultCase{"WithTwoMembers", value(R"({"int":1,"uint":1})"),
                  "sample.elements[0].value: a value of 2 members; expected exactly one"},
        FaultCase{"OfAnUnknownKind", value(R"({"float":1})"),
                  "sample.elements[0].value.float: an unknown kind of value; expected none, int, "
                  "uint, real, intRange, uintRange, realRange, handle, string or tag"},
        FaultCase{"ThatIsNoObject", value("1"),
                  "sample.elements[0].value: a number; expected an object"},
        FaultCase{"ThatIsNull", value("null"),
                  "sample.elements[0].value: null; expected an object"},
        FaultCase{"NoneThatIsSomething", value(R"({"none":0})"),
                  "sample.elements[0].value.none: a number; expected null"},
        FaultCase{"RangeOfThree", value(R"({"intRange":[1,2,3]})"),
                  "sample.elements[0].value.intRange: a list of 3; expected a list of 2"},
        FaultCase{"RangeThatIsNoList", value(R"({"realRange":1})"),
                  "sample.elements[0].value.realRange: a number; expected a list of 2"},
        FaultCase{"NegativeEndOfAnUnsignedRange", value(R"({"uintRange":[0,-1]})"),
                  "sample.elements[0].value.uintRange[1]: -1 is out of range; expected an integer "
                  "from 0 to 18446744073709551615"},
        FaultCase{"StringThatIsNone", value(R"({"string":null})"),
                  "sample.elements[0].value.string: null; expected a string"}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Table, Fault,
    ::testing::Values(
        FaultCase{"EntityTwice", R"({"table":{"entities":["e","f","e"]}})",
                  "table.entities[2]: an entity given twice; expected it once"},
        FaultCase{"NullEntity", R"({"table":{"entities":[null]}})",
                  "table.entities[0]: null; expected the ref of an object"},
        FaultCase{"TooFewSharedCells",
                  R"({"table":{"type":1,"shared":["h","h"],"sharedCells":["a"]}})",
                  "table.sharedCells: a list of 1; expected a list of 2"},
        FaultCase{"CellsWithoutHandles", R"({"table":{"type":1,"sharedCells":[null]}})",
                  "table.sharedCells: a list of 1; expected a list of 0"},
        FaultCase{"TooManyFieldLists",
                  R"({"table":{"type":1,"fields":["h"],"fieldCells":[[],[]]}})",
                  "table.fieldCells: a list of 2; expected a list of 1"},
        FaultCase{
            "TooFewFieldCells",
            R"({"table":{"type":1,"fields":["h"],"entities":["e","f"],"fieldCells":[["a"]]}})",
            "table.fieldCells[0]: a list of 1; expected a list of 2"},
        FaultCase{"TooManyCellsWithoutEntities",
                  R"({"table":{"type":1,"fields":["h"],"fieldCells":[["a","b"]]}})",
                  "table.fieldCells[0]: a list of 2; expected a list of 1"},
        FaultCase{
            "CellOfAnotherType", R"({"table":{"type":1,"shared":["h"],"sharedCells":[1]}})",
            "table.sharedCells[0]: a number; expected a string, null or {\"error\":\"text\"}"},
        FaultCase{"CellWithoutError", R"({"table":{"type":1,"shared":["h"],"sharedCells":[{}]}})",
                  "table.sharedCells[0]: no member \"error\"; expected one"},
        FaultCase{"ExtraCellWithoutHandle",
                  R"({"table":{"type":1,"extraCells":[[null,null,"a"]]}})",
                  "table.extraCells[0][1]: null; expected the ref of an object"},
        FaultCase{"ShortExtraCell", R"({"table":{"type":1,"extraCells":[[null,"h"]]}})",
                  "table.extraCells[0]: a list of 2; expected a list of 3"},
        FaultCase{"UnknownMemberInAContainer", R"({"container":{"metricInfoTable":{"ref":"x"}}})",
                  "container.metricInfoTable.ref: " + kUnknown},
        FaultCase{"PlacementThatIsNoNumber", R"({"table":{"notes":{"before":[]}}})",
                  "table.notes.before: no placement; expected a member name from 0 to 4294967295"},
        FaultCase{"PlacementBeyond32Bits", R"({"table":{"notes":{"4294967296":[]}}})",
                  "table.notes.4294967296: no placement; expected a member name from 0 to "
                  "4294967295"},
        FaultCase{"PlacementTwice", R"({"table":{"notes":{"0":[],"0":[]}}})",
                  "table.notes.0: a placement given twice; expected it once"},
        FaultCase{"NoteThatIsNoText", R"({"table":{"notes":{"0":[null]}}})",
                  "table.notes.0[0]: null; expected a string"}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Metadata, Fault,
    ::testing::Values(
        FaultCase{"UnknownMember", metadata(R"("m_hostName":"h")"),
                  "system.metadata.m_hostName: " + kUnknown},
        FaultCase{"NullOfASystemRecord", R"({"system":{"metadata":null}})",
                  "system.metadata: null; expected an object"},
        FaultCase{"ShortVersion", metadata(R"("toolVersion":[1,2])"),
                  "system.metadata.toolVersion: a list of 2; expected a list of 3"},
        FaultCase{"FlagAsANumber", metadata(R"("hasIntegratedGraphics":1)"),
                  "system.metadata.hasIntegratedGraphics: a number; expected true or false"},
        FaultCase{"ByteAsAFlag", metadata(R"("secureSignIn":true)"),
                  "system.metadata.secureSignIn: a boolean; expected an integer from 0 to 255"},
        FaultCase{"CpuThatIsNoProcessor", platform(R"({"type":1,"other":{}})"),
                  "system.metadata.platform[0].other: an entry of another kind; expected one of "
                  "\"cpu\" and \"null\" for type 1"},
        FaultCase{"ProcessorOfAnotherType", platform(R"({"type":3,"cpu":{}})"),
                  "system.metadata.platform[0].cpu: an entry of another kind; expected one of "
                  "\"other\" and \"null\" for type 3"},
        FaultCase{"EntryWithoutContent", platform(R"({"type":2})"),
                  "system.metadata.platform[0]: an entry without content; expected one of \"pch\" "
                  "and \"null\" for type 2"},
        FaultCase{"EntryWithTwoContents", platform(R"({"type":2,"pch":{},"null":true})"),
                  "system.metadata.platform[0].null: " + kUnknown},
        FaultCase{"NullThatIsFalse", platform(R"({"type":2,"null":false})"),
                  "system.metadata.platform[0].null: false; expected true"},
        FaultCase{"TypeTwice", platform(R"({"type":7,"null":true},{"type":7,"other":{}})"),
                  "system.metadata.platform[1]: type 7 given twice; expected it once"},
        FaultCase{"CpuMemberOfAHub", platform(R"({"type":2,"pch":{"family":1}})"),
                  "system.metadata.platform[0].pch.family: " + kUnknown},
        FaultCase{"ValueTwice", platform(R"({"type":5,"other":{"values":{"a":"1","a":"2"}}})"),
                  "system.metadata.platform[0].other.values.a: a member given twice; expected it "
                  "once"},
        FaultCase{"UnknownMemberOfAThread",
                  platform(R"({"type":1,"cpu":{"threads":[{"id":1},{"thread":1}]}})"),
                  "system.metadata.platform[0].cpu.threads[1].thread: " + kUnknown},
        FaultCase{"FlushBeforeAnySystemRecord", R"({"flush":{"metadata":null}})",
                  "flush: no metadata; expected metadata, or a system record before"},
        FaultCase{"ChangeBeforeAnySystemRecord", R"({"metadata":{}})",
                  "metadata: nothing to change; expected a system record before"}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Config, Fault,
    ::testing::Values(FaultCase{"NameThatIsNoText", R"({"config":{"featureOrder":["a",1]}})",
                                "config.featureOrder[1]: a number; expected a string"},
                      FaultCase{"FeatureTwice",
                                R"({"config":{"metricOrder":{"f":[],"g":[],"f":[]}}})",
                                "config.metricOrder.f: a member given twice; expected it once"},
                      FaultCase{"UnknownMember", R"({"config":{"features":[]}})",
                                "config.features: " + kUnknown}),
    caseName);

TEST(FirstRecord, MustBeTheRecordings) {
  Reading reading;
  EXPECT_EQ(reading.readBytes("\n{\"text\":{}}\n"),
            "r:2: text: a record before the first; expected {\"recording\":{\"version\":1}} as the "
            "first record");
}

TEST(FirstRecord, MustHaveAKnownVersion) {
  Reading reading;
  EXPECT_EQ(reading.readBytes("{\"recording\":{\"version\":2}}\n"),
            "r:1: recording.version: unknown version 2; expected 1");
}

TEST(FirstRecord, MustHaveAVersion) {
  Reading reading;
  EXPECT_EQ(reading.readBytes("{\"recording\":{}}\n"),
            "r:1: recording: no member \"version\"; expected one");
}

TEST(FirstRecord, MustHaveNothingElse) {
  Reading reading;
  EXPECT_EQ(reading.readBytes("{\"recording\":{\"version\":1,\"tool\":\"x\"}}\n"),
            "r:1: recording.tool: " + kUnknown);
}

TEST(FirstRecord, IsMissingInAnEmptyFile) {
  Reading reading;
  EXPECT_EQ(reading.readBytes(""),
            "r:1: the end of the file; expected {\"recording\":{\"version\":1}} as the first "
            "record");
}

TEST(FirstRecord, MayBeInterrupted) {
  Reading reading;
  EXPECT_EQ(reading.readBytes("{\"recor"), "");
  EXPECT_EQ(reading.warnings().size(), 1U);
}

TEST(SecondConfig, IsAFault) {
  Reading reading;
  EXPECT_EQ(reading.readLines({R"({"config":{}})", R"({"config":{}})"}),
            "r:3: config: a record given twice; expected it at most once");
}

TEST(LateConfig, IsAFaultBehindEveryKindOfMessage) {
  for (const char* message : {R"({"system":{}})", R"({"text":{}})", R"({"headerText":{}})",
                              R"({"idMessage":{}})", R"({"table":{}})", R"({"container":{}})",
                              R"({"flush":{"metadata":{}}})", R"({"sample":{"metric":"m"}})"}) {
    Reading reading;
    EXPECT_EQ(
        reading.readLines({R"({"metric":{"ref":"m","metricId":1}})", message, R"({"config":{}})"}),
        "r:4: config: a record behind the first message; expected it before")
        << message;
  }
}

TEST(LoneSurrogate, IsAnErrorAlsoInAWholeLastLineWithoutALineEnd) {
  Reading reading;
  EXPECT_THAT(reading.readBytes(kFirstRecord + "\n{\"text\":{\"message\":\"\\ud800\"}}"),
              ::testing::HasSubstr("r:2: a lone surrogate at byte 21"));
}

TEST(DefaultId, ThatAnEarlierObjectHasIsAFault) {
  Reading reading;
  EXPECT_THAT(
      reading.readLines({R"({"entity":{"ref":"a","id":1073741824}})", R"({"entity":{"ref":"b"}})"}),
      ::testing::HasSubstr("r:3: entity.ref: id 1073741824 is used already"));
}

}  // namespace
}  // namespace qumetra::test
