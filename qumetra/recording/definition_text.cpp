// The texts of definitions: what stands between the brackets of their records.
#include <iterator>

#include "qumetra/recording/definition_writer.h"

namespace qumetra {
namespace {

using pwr::Data;

/// The title that a quantity without one of its own gets.
std::string defaultTitle(const pwr::Quantity& quantity) {
  const std::string units = quantity.toUnitsString();
  return quantity.toQuantityString() + (units.empty() ? "" : " (" + units + ")");
}

void appendTimes(JsonText& json, std::uint64_t startTime, std::uint64_t endTime) {
  json.numberMember("startTime", startTime);
  json.numberMember("endTime", endTime);
}

void appendNameValuePair(JsonText& json, const pwr::NameValuePair& pair) {
  json.textMember("infoName", pair.getInfoName());
  json.textMember("valueDesc", pair.getValueDesc());
  json.numberMember("value", pair.getValue());
}

void appendProcess(JsonText& json, const pwr::Process& process) {
  json.numberMember("pid", process.getPid());
  json.numberMember("parentPid", process.getParentPid());
  json.textMember("path", process.getPath());
  appendTimes(json, process.getStartTime(), process.getEndTime());
}

void appendThread(JsonText& json, const pwr::Thread& thread) {
  json.numberMember("tid", thread.getTid());
  json.numberMember("pid", thread.getPid());
  appendTimes(json, thread.getStartTime(), thread.getEndTime());
}

// What is in a value, by its tag. A conversion that fails leaves zeros.

void appendNone(JsonText& json, const Data& /*value*/) {
  json.name("none");
  json.null();
}

void appendInt(JsonText& json, const Data& value) {
  long number = 0;
  value.toInt(number);
  json.name("int");
  json.integer(number);
}

void appendUInt(JsonText& json, const Data& value) {
  unsigned long number = 0;
  value.toUInt(number);
  json.name("uint");
  json.unsignedInteger(number);
}

void appendReal(JsonText& json, const Data& value) {
  double number = 0;
  value.toReal(number);
  json.name("real");
  json.real(number);
}

void appendIntRange(JsonText& json, const Data& value) {
  Data::IntRange range;
  value.toIntRange(range);
  json.name("intRange");
  json.beginList();
  json.integer(range.first);
  json.integer(range.second);
  json.endList();
}

void appendUIntRange(JsonText& json, const Data& value) {
  Data::UIntRange range;
  value.toUIntRange(range);
  json.name("uintRange");
  json.beginList();
  json.unsignedInteger(range.first);
  json.unsignedInteger(range.second);
  json.endList();
}

void appendRealRange(JsonText& json, const Data& value) {
  Data::RealRange range;
  value.toRealRange(range);
  json.name("realRange");
  json.beginList();
  json.real(range.first);
  json.real(range.second);
  json.endList();
}

constexpr void (*kAppendByTag[])(JsonText&, const Data&) = {
    appendNone,     appendInt,       appendUInt,     appendReal,
    appendIntRange, appendUIntRange, appendRealRange};
static_assert(std::size(kAppendByTag) == Data::kHandle);

}  // namespace

void DefinitionWriter::writeQuantity(const pwr::Quantity& object, std::string_view ref,
                                     std::string_view rate, double factor) {
  std::string line;
  JsonText json(line);
  json.beginObject();
  json.name("quantity");
  json.beginObject();
  json.rawMember("ref", ref);
  json.name("id");
  json.unsignedInteger(takeId(object.getId()));
  json.numberMember("code", object.toQuantity());
  json.textMember("name", object.toQuantityString());
  json.textMember("units", object.toUnitsString());
  std::string title;
  object.toTitleString(title);
  if (title != defaultTitle(object)) {
    json.name("title");
    json.text(title);
  }
  if (rate != "null") {
    json.name("rate");
    json.beginObject();
    json.rawMember("quantity", rate);
    json.name("factor");
    json.real(factor);
    json.endObject();
  }
  json.endObject();
  json.endObject();
  m_file.append(line + '\n');
}

void DefinitionWriter::appendTexts(JsonText& json, const pwr::DataHandle& object) {
  const std::string name = object.getName();
  const std::string fieldName = object.getFieldName();
  json.textMember("name", name);
  if (fieldName != name) {
    json.name("fieldName");
    json.text(fieldName);
  }
  json.textMember("header", object.getHeader());
}

void DefinitionWriter::appendMembers(JsonText& json, const pwr::DataHandle& object, Kind kind) {
  if (const auto* attribute = dynamic_cast<const pwr::Attribute*>(&object)) {
    json.numberMember("kind", static_cast<std::uint32_t>(attribute->getAttributeType()));
    if (attribute->m_quantity != nullptr) {
      json.rawMember("quantity", quantity(*attribute->m_quantity));
    }
  }
  if (const auto* entity = dynamic_cast<const pwr::EntityHandle*>(&object)) {
    json.rawMember("parent", handleOrNothing(entity->getParent()));
  } else if (const auto* pair = dynamic_cast<const pwr::NameValuePair*>(&object)) {
    appendNameValuePair(json, *pair);
  } else if (const auto* process = dynamic_cast<const pwr::Process*>(&object)) {
    appendProcess(json, *process);
  } else if (const auto* thread = dynamic_cast<const pwr::Thread*>(&object)) {
    appendThread(json, *thread);
  } else if (kind == Kind::Column) {
    json.numberMember("type", object.getHandleType());
    appendExpected(json, object);
  }
}

void DefinitionWriter::appendExpected(JsonText& json, const pwr::DataHandle& object) {
  const auto* expected = dynamic_cast<const pwr::ExpectedAttributeManager*>(&object);
  if (expected == nullptr || expected->getAttributeCount() == 0) {
    return;
  }
  json.name("expectedAttributes");
  json.beginList();
  for (const pwr::Attribute* attribute : *expected) {
    json.raw(handle(*attribute));
  }
  json.endList();
}

void DefinitionWriter::appendAttributes(JsonText& json, const pwr::AttributeValueManager& values) {
  json.beginList();
  for (const auto& [attribute, value] : values) {
    json.beginList();
    json.raw(handleOrNull(attribute));
    appendData(json, value);
    json.endList();
  }
  json.endList();
}

void DefinitionWriter::appendKey(JsonText& json, std::uint64_t id) {
  const auto found = m_firstOfId.find(id);
  const pwr::DataHandle* object = found == m_firstOfId.end() ? nullptr : found->second;
  if (object == nullptr && pwr::DataHandle::get(id, object) != 0) {
    json.unsignedInteger(id);
    return;
  }
  json.raw(handle(*object));
}

void DefinitionWriter::appendData(JsonText& json, const Data& value) {
  json.beginObject();
  if (value.m_tag < std::size(kAppendByTag)) {
    kAppendByTag[value.m_tag](json, value);
  } else if (value.m_tag == Data::kHandle) {
    const pwr::DataHandle* object = nullptr;
    value.toHandle(object);
    json.name("handle");
    json.raw(handleOrNull(object));
  } else if (value.m_tag == Data::kString) {
    std::string text;
    value.toString(text);
    json.name("string");
    json.text(text);
  } else {
    json.name("tag");
    json.unsignedInteger(value.m_tag);
  }
  json.endObject();
}

}  // namespace qumetra
