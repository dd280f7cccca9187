// Nodes of the tree of names: kinds, entities, states and their colours.
#include "writers/keltowriter_plugin/info_metadata.h"

#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "client/src/common/number_text.h"
#include "host/handles.h"
#include "writers/keltowriter_plugin/kelto_log.h"
#include "writers/keltowriter_plugin/kelto_writer.h"
#include "writers/keltowriter_plugin/name_tables.h"
#include "writers/keltowriter_plugin/packed_record.h"

namespace {

/// The uids of most nodes are drawn under this name.
constexpr const char* kCommonUidName = "info_type_info";

std::string entityName(const pwr::EntityHandle& entity) {
  std::string name = entity.getName();
  return name.empty() ? "NA" : name;
}

void appendPart(std::string& key, const char* label, const std::string& text) {
  key += label;
  key += text;
}

/// All that makes up a node.
std::string nodeKey(const std::string& kind, const std::string& longName,
                    const std::string& shortName, const std::string& description,
                    std::uint64_t value, std::uint64_t uid, long parentUid) {
  std::string key;
  appendPart(key, "infotype:", kind);
  appendPart(key, "_longname:", longName);
  appendPart(key, "_shortname:", shortName);
  appendPart(key, "_description:", description);
  pwr::appendUInt(key += "_value:", value);
  pwr::appendUInt(key += "_uid:", uid);
  pwr::appendInt(key += "_parent_uid:", parentUid);
  return key;
}

}  // namespace

std::uint64_t kelto::drawUid(const char* name) {
  return pwr::Attribute::create(name, nullptr, pwr::AttributeType::Info)->getId();
}

// offset  size
//      0     4  10 00 40 02
//      4     8  0
//     12     2  size, from here to the end: length of the text plus 33
//     14     2  type, 72
//     16     2  sub-type, 7
//     18     2  version
//     20     4  number of the kind; 0 in a node that declares one
//     24     4  value
//     28     4  uid of the parent; all ones for none
//     32     4  uid
//     36     2  length of the long name
//     38     2  length of the short name
//     40     2  length of the kind's name
//     42     2  length of the description
//     44     n  the four texts with nothing between, and one terminator; 400 bytes at most
int KeltoWriter::writeInfoMetadataHelper(const std::string& kind, std::uint64_t infoTypeId,
                                         const std::string& longName, const std::string& shortName,
                                         const std::string& description, std::uint64_t value,
                                         std::uint64_t uid, long parentUid) {
  std::string key = nodeKey(kind, longName, shortName, description, value, uid, parentUid);
  // A node whose text is too long fails once and then counts as written, so that its metric is not
  // refused a second time for the same.
  if (!infoRecordIds.emplace(std::move(key), static_cast<std::int64_t>(value)).second) {
    return 0;
  }
  const std::string text = longName + shortName + kind + description;
  if (text.size() + 1 > kelto::kLongestMetadataText) {
    return kelto::failure("Info names string too long\n");
  }
  kelto::PackedRecord<kelto::kMetadataFixedSize + kelto::kLongestMetadataText> record;
  record.u32(kelto::kTimedWord);
  record.u64(0);
  record.u16(static_cast<std::uint16_t>(text.size() + kelto::kMetadataRestSize));
  record.u16(kelto::kMetadataRecord);
  record.u16(kelto::kInfoMetadata);
  record.u16(formatVersion());
  record.u32(static_cast<std::uint32_t>(infoTypeId));
  record.u32(static_cast<std::uint32_t>(value));
  record.u32(static_cast<std::uint32_t>(parentUid));
  record.u32(static_cast<std::uint32_t>(uid));
  for (const std::string* part : {&longName, &shortName, &kind, &description}) {
    record.u16(static_cast<std::uint16_t>(part->size()));
  }
  record.terminatedText(text);
  return writeRecord(systemStreamId, record.data(), record.size());
}

std::uint64_t KeltoWriter::getInfoTypeMetadataId(const std::string& kind) {
  const auto known = infoTypeIds.find(kind);
  if (known != infoTypeIds.end()) {
    return static_cast<std::uint64_t>(known->second);
  }
  const std::int64_t number = s_nextInfoTypeId++;
  const std::uint64_t uid = kelto::drawUid(kCommonUidName);
  if (writeInfoMetadataHelper("info_type", 0, kind, kind, "info_type_id",
                              static_cast<std::uint64_t>(number), uid, kelto::kNoParent) != 0) {
    kelto::failure("Failed to write info type metadata for '%s'.\n", kind.c_str());
    return kAllOnes;
  }
  infoTypeIds[kind] = number;
  return static_cast<std::uint64_t>(number);
}

// From the root down, so that a parent stands before its children. A loop, since trees may be of
// any depth; a tree that leads back to itself has no root.
int KeltoWriter::writeEntityMetadataTopology(const pwr::EntityHandle* entity) {
  std::vector<const pwr::EntityHandle*> unknown;
  std::unordered_set<const pwr::EntityHandle*> met;
  for (const auto* above = entity; above != nullptr; above = above->getParent()) {
    if (isEntityWritten(*above)) {
      break;
    }
    if (!met.insert(above).second) {
      return kelto::failure("Failed to write parent entity metadata for entity '%s'.\n",
                            entityName(*entity).c_str());
    }
    unknown.push_back(above);
  }
  bool failed = false;
  for (auto it = unknown.rbegin(); it != unknown.rend(); ++it) {
    const std::string name = entityName(**it);
    if (failed) {
      kelto::failure("Failed to write parent entity metadata for entity '%s'.\n", name.c_str());
      continue;
    }
    const pwr::EntityHandle* const parent = (*it)->getParent();
    const std::uint64_t parentId = parent == nullptr ? kAllOnes : parent->getId();
    if (writeEntityMetadata(name, name, (*it)->getId(), parentId) != 0) {
      kelto::failure("Failed to write entity '%s' metadata.\n", name.c_str());
      failed = true;
    }
  }
  return failed ? 1 : 0;
}

bool KeltoWriter::isEntityWritten(const pwr::EntityHandle& entity) const {
  return entityParents.contains(getNameIdKey(entityName(entity), entity.getId()));
}

int KeltoWriter::writeEntityMetadata(const std::string& name, const std::string& shortName,
                                     std::uint64_t id, std::uint64_t parentId) {
  const std::string key = getNameIdKey(name, id);
  const auto parent = static_cast<std::int64_t>(parentId);
  if (const auto known = entityParents.find(key); known != entityParents.end()) {
    if (known->second == parent) {
      return 0;
    }
    return kelto::failure(
        "The saved parent entity id '%llu' for entity '%s' doesn't match the new parent entity id "
        "'%llu'.\n",
        static_cast<unsigned long long>(known->second), name.c_str(),
        static_cast<unsigned long long>(parentId));
  }
  const std::uint64_t kind = getInfoTypeMetadataId("entity");
  if (kind == kAllOnes) {
    return 1;
  }
  if (writeInfoMetadataHelper("entity", kind, name, shortName, "entity_id", id, id, parent) == 0) {
    entityParents[key] = parent;
  }
  return 0;  // Also when it was not written: the next sample tries again.
}

int KeltoWriter::writeStateMetadata(const std::string& key, const std::string& name,
                                    std::uint64_t& id) {
  if (const auto known = fieldIds.find(key); known != fieldIds.end()) {
    id = static_cast<std::uint64_t>(known->second);
    return 0;
  }
  const std::uint64_t kind = getInfoTypeMetadataId("field");
  if (kind == kAllOnes) {
    return 1;
  }
  if (writeInfoMetadataHelper("field", kind, key, name, "field_id", id, id, kelto::kNoParent) ==
      0) {
    fieldIds[key] = static_cast<std::int64_t>(id);
  }
  return 0;  // Also when it was not written: the next sample tries again.
}

int KeltoWriter::writeStateColorMetadata(const std::string& name) {
  if (colorIds.contains(name)) {
    return 0;
  }
  const std::uint64_t kind = getInfoTypeMetadataId("color");
  if (kind == kAllOnes) {
    return 1;
  }
  const KeltoColor color = getColor(name);
  const std::uint64_t uid = kelto::drawUid(kCommonUidName);
  if (writeInfoMetadataHelper("color", kind, color.first + "|" + color.second, name, "color_id",
                              uid, uid, kelto::kNoParent) != 0) {
    return 1;
  }
  colorIds[name] = static_cast<std::int64_t>(uid);
  return 0;
}

std::string KeltoWriter::getNameIdKey(const std::string& name, std::uint64_t id) const {
  std::string key = name + "_";
  pwr::appendUInt(key, id);
  return key;
}

std::uint64_t KeltoWriter::getUniqueId(const std::string& key) {
  const auto known = uniqueIds.find(key);
  if (known != uniqueIds.end()) {
    return static_cast<std::uint64_t>(known->second);
  }
  const std::uint64_t uid = kelto::drawUid("name_id");
  uniqueIds[key] = static_cast<std::int64_t>(uid);
  return uid;
}
