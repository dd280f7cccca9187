#include "qumetra/recording/record_values.h"

#include <charconv>
#include <utility>

namespace qumetra {
namespace {

using pwr::Data;

/// The two ends of a range, read by `read`.
template <typename Read>
auto readRange(RecordValue value, Read read) {
  const RecordList ends = value.list(2);
  return std::pair(read(ends[0]), read(ends[1]));
}

Data readNone(RecordValue value, const Definitions& /*definitions*/) {
  if (!value.isNull()) {
    value.failType("null");
  }
  return {};
}

Data readInt(RecordValue value, const Definitions& /*definitions*/) {
  return Data::fromInt(value.integer<std::int64_t>());
}

Data readUInt(RecordValue value, const Definitions& /*definitions*/) {
  return Data(static_cast<unsigned long>(value.integer<std::uint64_t>()));
}

Data readReal(RecordValue value, const Definitions& /*definitions*/) { return Data(value.real()); }

Data readIntRange(RecordValue value, const Definitions& /*definitions*/) {
  return Data::fromIntRange(
      readRange(value, [](RecordValue end) { return end.integer<std::int64_t>(); }));
}

Data readUIntRange(RecordValue value, const Definitions& /*definitions*/) {
  return Data::fromUIntRange(
      readRange(value, [](RecordValue end) { return end.integer<std::uint64_t>(); }));
}

Data readRealRange(RecordValue value, const Definitions& /*definitions*/) {
  return Data::fromRealRange(readRange(value, [](RecordValue end) { return end.real(); }));
}

Data readHandle(RecordValue value, const Definitions& definitions) {
  return Data::fromHandle(definitions.handleOrNull(value));
}

Data readText(RecordValue value, const Definitions& /*definitions*/) {
  return Data(std::string(value.string()));
}

Data readTag(RecordValue value, const Definitions& /*definitions*/) {
  const auto tag = value.integer<std::uint8_t>();
  if (tag <= Data::kString) {
    value.fail(std::to_string(tag) + " is out of range", "a tag from 9 to 255");
  }
  return Data::fromTag(tag);
}

struct ValueKind {
  std::string_view name;
  Data (*read)(RecordValue, const Definitions&);
};

// What most samples carry comes first.
constexpr ValueKind kValueKinds[] = {
    {"real", readReal},
    {"uint", readUInt},
    {"int", readInt},
    {"string", readText},
    {"none", readNone},
    {"intRange", readIntRange},
    {"uintRange", readUIntRange},
    {"realRange", readRealRange},
    {"handle", readHandle},
    {"tag", readTag},
};

}  // namespace

Data readData(RecordValue value, const Definitions& definitions) {
  RecordObject record(value);
  if (record.size() != 1) {
    value.fail("a value of " + std::to_string(record.size()) + " members", "exactly one");
  }
  for (const ValueKind& kind : kValueKinds) {
    if (const auto member = record.find(kind.name)) {
      return kind.read(*member, definitions);
    }
  }
  record.first().fail("an unknown kind of value",
                      "none, int, uint, real, intRange, uintRange, realRange, handle, string or "
                      "tag");
}

Data readData(RecordObject& record, std::string_view name, const Definitions& definitions) {
  const auto member = record.find(name);
  return member ? readData(*member, definitions) : Data();
}

std::vector<Data> readDataList(RecordObject& record, std::string_view name,
                               const Definitions& definitions) {
  std::vector<Data> values;
  record.forEach(name, [&](RecordValue value) { values.push_back(readData(value, definitions)); });
  return values;
}

std::vector<pwr::AttributeValueManager::Entry> readAttributeValues(RecordObject& record,
                                                                   std::string_view name,
                                                                   const Definitions& definitions) {
  std::vector<pwr::AttributeValueManager::Entry> entries;
  record.forEach(name, [&](RecordValue value) {
    const RecordList pair = value.list(2);
    entries.emplace_back(definitions.attributeOrNull(pair[0]), readData(pair[1], definitions));
  });
  return entries;
}

pwr::TextNotes readNotes(RecordValue value) {
  pwr::TextNotes notes;
  RecordObject(value).forAll([&](std::string_view name, RecordValue texts) {
    std::uint32_t placement = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), placement);
    if (error != std::errc() || end != name.data() + name.size()) {
      texts.fail("no placement", "a member name from 0 to 4294967295");
    }
    std::vector<std::string> list;
    for (const RecordValue text : texts.list()) {
      list.emplace_back(text.string());
    }
    if (!notes.emplace(placement, std::move(list)).second) {
      texts.fail("a placement given twice", "it once");
    }
  });
  return notes;
}

std::vector<std::string> readStrings(RecordObject& record, std::string_view name) {
  std::vector<std::string> strings;
  record.forEach(name, [&](RecordValue text) { strings.emplace_back(text.string()); });
  return strings;
}

}  // namespace qumetra
