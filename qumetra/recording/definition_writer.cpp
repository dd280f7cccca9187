#include "qumetra/recording/definition_writer.h"

#include "qumetra/model/model.h"

namespace qumetra {
namespace {

constexpr std::string_view kNull = "null";

const pwr::AttributeValueManager* attributesOf(const pwr::DataHandle& handle) {
  return dynamic_cast<const pwr::AttributeValueManager*>(&handle);
}

std::string quotedRef(char letter, std::uint64_t number) {
  return std::string("\"") + letter + std::to_string(number) + '"';
}

}  // namespace

std::string_view DefinitionWriter::quantityOrNull(const pwr::Quantity* object) {
  return object == nullptr ? kNull : quantity(*object);
}

std::string_view DefinitionWriter::handleOrNull(const pwr::DataHandle* object) {
  return object == nullptr ? kNull : handle(*object);
}

std::string_view DefinitionWriter::handleOrNothing(const pwr::DataHandle* object) {
  return object == nullptr ? std::string_view() : handle(*object);
}

std::string_view DefinitionWriter::quantity(const pwr::Quantity& object) {
  const auto [found, isNew] = m_quantities.try_emplace(&object);
  std::string& ref = found->second;
  if (!isNew) {
    // A quantity that is its own rate in the end cannot be told; the circle is cut.
    return ref.empty() ? kNull : std::string_view(ref);
  }
  const pwr::Quantity* rate = nullptr;
  double factor = 1;
  std::string_view rateRef = kNull;
  if (object.getRateConversion(rate, factor) == 0 && rate != nullptr) {
    rateRef = quantity(*rate);
  }
  ref = quotedRef('q', ++m_quantityCount);
  writeQuantity(object, ref, rateRef, factor);
  return ref;
}

std::string_view DefinitionWriter::handle(const pwr::DataHandle& object) {
  const auto [found, isNew] = m_handles.try_emplace(&object);
  Entry& entry = found->second;
  if (!isNew) {
    if (!entry.isWritten) {
      defineBare(object, entry);
    }
    return entry.ref;
  }
  entry.kind = kindOf(object);
  const auto [first, isFirst] = m_firstOfId.try_emplace(object.getId(), &object);
  if (!isFirst) {
    const Entry& original = m_handles[first->second];
    if (original.isWritten && original.kind == entry.kind) {
      entry = original;
      return entry.ref;
    }
  }
  define(object, entry);
  return entry.ref;
}

/// Writes the definition with all that belongs to it. What its attribute values refer to may refer
/// back; the definition is then written without them, and they follow in a record of their own.
void DefinitionWriter::define(const pwr::DataHandle& object, Entry& entry) {
  defineFixedParts(object);
  const pwr::AttributeValueManager* values = attributesOf(object);
  if (values != nullptr) {
    defineAttributes(*values);
  }
  if (!entry.isWritten) {
    write(object, entry, values);
  } else if (values != nullptr && values->getAttributeCount() > 0) {
    writeAttributes(entry.ref, *values);
  }
}

/// Writes the definition without attribute values, for something that refers to the object while
/// these are being defined.
void DefinitionWriter::defineBare(const pwr::DataHandle& object, Entry& entry) {
  defineFixedParts(object);
  if (!entry.isWritten) {
    write(object, entry, nullptr);
  }
}

/// Defines what an object has from the start. No object can be among its own fixed parts.
void DefinitionWriter::defineFixedParts(const pwr::DataHandle& object) {
  if (const auto* entity = dynamic_cast<const pwr::EntityHandle*>(&object)) {
    handleOrNull(entity->getParent());
  }
  if (const auto* attribute = dynamic_cast<const pwr::Attribute*>(&object)) {
    quantityOrNull(attribute->m_quantity);
  }
  if (const auto* expected = dynamic_cast<const pwr::ExpectedAttributeManager*>(&object)) {
    for (const pwr::Attribute* attribute : *expected) {
      handle(*attribute);
    }
  }
}

void DefinitionWriter::defineAttributes(const pwr::AttributeValueManager& values) {
  for (const auto& [attribute, value] : values) {
    handleOrNull(attribute);
    const pwr::DataHandle* target = nullptr;
    value.toHandle(target);
    handleOrNull(target);
  }
}

void DefinitionWriter::write(const pwr::DataHandle& object, Entry& entry,
                             const pwr::AttributeValueManager* values) {
  const char letter = kindName(entry.kind)[0];
  entry.ref = quotedRef(letter, ++m_counts[static_cast<int>(entry.kind)]);
  std::string line;
  JsonText json(line);
  json.beginObject();
  json.name(kindName(entry.kind));
  json.beginObject();
  json.rawMember("ref", entry.ref);
  json.name("id");
  json.unsignedInteger(takeId(object.getId()));
  appendTexts(json, object);
  appendMembers(json, object, entry.kind);
  if (values != nullptr && values->getAttributeCount() > 0) {
    json.name("attributes");
    appendAttributes(json, *values);
  }
  json.endObject();
  json.endObject();
  m_file.append(line + '\n');
  entry.isWritten = true;
}

void DefinitionWriter::attributesChanged(const pwr::DataHandle& object) {
  const auto found = m_handles.find(&object);
  const pwr::AttributeValueManager* values = attributesOf(object);
  if (found == m_handles.end() || values == nullptr) {
    return;
  }
  defineAttributes(*values);
  writeAttributes(found->second.ref, *values);
}

void DefinitionWriter::writeAttributes(std::string_view ref,
                                       const pwr::AttributeValueManager& values) {
  std::string line;
  JsonText json(line);
  json.beginObject();
  json.name("attributes");
  json.beginObject();
  json.rawMember("of", ref);
  json.name("attributes");
  appendAttributes(json, values);
  json.endObject();
  json.endObject();
  m_file.append(line + '\n');
}

void DefinitionWriter::ended(const pwr::DataHandle& object) {
  const auto found = m_handles.find(&object);
  if (found == m_handles.end()) {
    return;
  }
  std::uint64_t endTime = 0;
  if (const auto* process = dynamic_cast<const pwr::Process*>(&object)) {
    endTime = process->getEndTime();
  } else if (const auto* thread = dynamic_cast<const pwr::Thread*>(&object)) {
    endTime = thread->getEndTime();
  } else {
    return;
  }
  m_file.append("{\"ended\":{\"of\":" + found->second.ref +
                ",\"endTime\":" + std::to_string(endTime) + "}}\n");
}

/// The id to write for an object that has the id `wanted`.
std::uint64_t DefinitionWriter::takeId(std::uint64_t wanted) {
  constexpr std::uint64_t kFirstReplacement = 0xFFFFFFFF00000000;
  if (!Model::isReserved(wanted) && m_takenIds.insert(wanted).second) {
    return wanted;
  }
  std::uint64_t replacement = kFirstReplacement + m_replacements;
  while (!m_takenIds.insert(replacement).second) {
    ++replacement;
  }
  m_replacements = replacement - kFirstReplacement + 1;
  return replacement;
}

DefinitionWriter::Kind DefinitionWriter::kindOf(const pwr::DataHandle& object) {
  if (dynamic_cast<const pwr::Attribute*>(&object) != nullptr) {
    return Kind::Attribute;
  }
  if (dynamic_cast<const pwr::EntityHandle*>(&object) != nullptr) {
    return Kind::Entity;
  }
  if (dynamic_cast<const pwr::DataDescriptor*>(&object) != nullptr) {
    return Kind::Descriptor;
  }
  if (dynamic_cast<const pwr::NameValuePair*>(&object) != nullptr) {
    return Kind::NameValuePair;
  }
  if (dynamic_cast<const pwr::Process*>(&object) != nullptr) {
    return Kind::Process;
  }
  if (dynamic_cast<const pwr::Thread*>(&object) != nullptr) {
    return Kind::Thread;
  }
  return Kind::Column;
}

/// The kind's name in a recording. The first letters are all different, which references rely on.
const char* DefinitionWriter::kindName(Kind kind) {
  static constexpr const char* kNames[] = {"attribute", "entity", "descriptor", "nameValuePair",
                                           "process",   "thread", "handle"};
  return kNames[static_cast<int>(kind)];
}

}  // namespace qumetra
