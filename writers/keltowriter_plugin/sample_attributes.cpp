// The attributes of entities, descriptors and single values: those that point at something (info
// attributes) and those that carry a value (data attributes).
#include <string>

#include "host/handles.h"
#include "writers/held_handle.h"
#include "writers/keltowriter_plugin/info_metadata.h"
#include "writers/keltowriter_plugin/kelto_log.h"
#include "writers/keltowriter_plugin/kelto_writer.h"
#include "writers/keltowriter_plugin/name_tables.h"

namespace {

/// The attribute with this id; null when there is none.
const pwr::Attribute* attributeById(std::uint64_t id) {
  const pwr::DataHandle* handle = nullptr;
  pwr::DataHandle::get(id, handle);
  return dynamic_cast<const pwr::Attribute*>(handle);
}

const pwr::Attribute* attributeOf(const pwr::AttributeValueManager::Entry& entry) {
  return entry.first;
}

const pwr::Attribute* attributeOf(const pwr::DynamicAttributeValueManager::Map::value_type& entry) {
  return attributeById(entry.first);
}

/// Calls `take` with each attribute and its value, up to the first null attribute or failure.
template <typename Manager, typename Take>
int forEachAttribute(const Manager& manager, Take take) {
  const auto end = manager.end();
  for (auto entry = manager.begin(); entry != end; ++entry) {
    const pwr::Attribute* const attribute = attributeOf(*entry);
    if (attribute == nullptr) {
      return 0;
    }
    if (take(attribute, &entry->second) != 0) {
      return 1;
    }
  }
  return 0;
}

}  // namespace

// Info attributes.

int KeltoWriter::processInfoAttributes(const pwr::AttributeValueManager* manager,
                                       QM2AttributeList* list) {
  if (manager == nullptr || list == nullptr) {
    return kelto::failure("Can't process attributes.\n");
  }
  return walkInfoAttributes(*manager, list);
}

int KeltoWriter::processInfoAttributes(const pwr::DynamicAttributeValueManager* manager,
                                       QM2AttributeList* list) {
  if (manager == nullptr) {
    return 0;
  }
  if (list == nullptr) {
    return kelto::failure("Can't process attributes.\n");
  }
  return walkInfoAttributes(*manager, list);
}

template <typename Manager>
int KeltoWriter::walkInfoAttributes(const Manager& manager, QM2AttributeList* list) {
  return forEachAttribute(manager, [&](const pwr::Attribute* attribute, const pwr::Data* data) {
    return processInfoAttributesHelper(attribute, data, list) == 0
               ? 0
               : kelto::failure("Failed to process info attribute\n");
  });
}

int KeltoWriter::processInfoAttributesHelper(const pwr::Attribute* attribute, const pwr::Data* data,
                                             QM2AttributeList* list) {
  if (attribute == nullptr || data == nullptr || list == nullptr) {
    return kelto::failure("Can't process attribute.\n");
  }
  switch (attribute->getAttributeType()) {
    case pwr::AttributeType::Info:
      return addPair(*data, list);
    case pwr::AttributeType::Thread:
      return addThread(*data, list);
    case pwr::AttributeType::Process:
      return addProcess(*data, list);
    default:
      return 0;
  }
}

int KeltoWriter::addPair(const pwr::Data& data, QM2AttributeList* list) {
  const pwr::DataHandle* const handle = handleIn(data);
  if (handle == nullptr) {
    return kelto::failure("Failed to get data handle for info attribute.\n");
  }
  auto known = m_cache.pairs.find(handle);
  if (known == m_cache.pairs.end()) {
    const auto* const pair = dynamic_cast<const pwr::NameValuePair*>(handle);
    if (pair == nullptr) {
      return kelto::failure("Failed to get data for info attribute\n");
    }
    if (writePair(*pair) != 0) {
      return 1;
    }
    known = m_cache.pairs.emplace(handle, pair->getId()).first;
  }
  if (add(kInfoAttribute, known->second, list) != 0) {
    return kelto::failure("Unable to add nameid value to the record.\n");
  }
  return 0;
}

int KeltoWriter::writePair(const pwr::NameValuePair& pair) {
  const std::uint64_t kind = getInfoTypeMetadataId(kelto::kNameIdKind);
  if (kind == kAllOnes) {
    return kelto::failure("Invalid info type. Failed to process info attribute.\n");
  }
  const std::string name = pair.getInfoName();
  if (writeInfoMetadataHelper(kelto::kNameIdKind, kind, name, name, pair.getValueDesc(),
                              pair.getValue(), pair.getId(), kelto::kNoParent) != 0) {
    return kelto::failure("Failed to write an info record for nameid attribute.\n");
  }
  return 0;
}

int KeltoWriter::addThread(const pwr::Data& data, QM2AttributeList* list) {
  const pwr::DataHandle* const handle = handleIn(data);
  if (handle == nullptr) {
    return kelto::failure("Failed to get data handle for thread attribute.\n");
  }
  auto known = m_cache.threads.find(handle);
  if (known == m_cache.threads.end()) {
    const auto* const thread = dynamic_cast<const pwr::Thread*>(handle);
    if (thread == nullptr) {
      return kelto::failure("Failed to get thread attribute information\n");
    }
    if (handleThreadInfo(thread, true) != 0) {
      return kelto::failure("Failed to handle thread information. \n");
    }
    known = m_cache.threads.emplace(handle, thread->getTid()).first;
  }
  return addIdentity(kThreadAttribute, known->second, list);
}

int KeltoWriter::addProcess(const pwr::Data& data, QM2AttributeList* list) {
  const pwr::DataHandle* const handle = handleIn(data);
  if (handle == nullptr) {
    return kelto::failure("Failed to get data handle for process attribute.\n");
  }
  auto known = m_cache.processes.find(handle);
  if (known == m_cache.processes.end()) {
    const auto* const process = dynamic_cast<const pwr::Process*>(handle);
    if (process == nullptr) {
      return kelto::failure("Failed to handle process information\n");
    }
    if (handleProcessInfo(process, true) != 0) {
      return kelto::failure("Failed to handle process information. \n");
    }
    known = m_cache.processes.emplace(handle, process->getPid()).first;
  }
  return addIdentity(kProcessAttribute, known->second, list);
}

/// Adds a pid or tid. Processes and threads share the text of a failure.
int KeltoWriter::addIdentity(std::uint32_t attribute, std::uint64_t id, QM2AttributeList* list) {
  if (add(attribute, id, list) != 0) {
    return kelto::failure("Unable to add thread attribute to the record.\n");
  }
  return 0;
}

// Data attributes.

int KeltoWriter::processDataAttributes(const pwr::AttributeValueManager* manager,
                                       QM2AttributeList* list, bool firstAsString) {
  if (manager == nullptr || list == nullptr) {
    return kelto::failure("Can't process attributes.\n");
  }
  return walkDataAttributes(*manager, list, firstAsString);
}

int KeltoWriter::processDataAttributes(const pwr::DynamicAttributeValueManager* manager,
                                       QM2AttributeList* list, bool firstAsString) {
  if (manager == nullptr) {
    return 0;
  }
  if (list == nullptr) {
    return kelto::failure("Can't process attributes.\n");
  }
  return walkDataAttributes(*manager, list, firstAsString);
}

/// Only the first attribute may be numeric, whatever its kind.
template <typename Manager>
int KeltoWriter::walkDataAttributes(const Manager& manager, QM2AttributeList* list,
                                    bool firstAsString) {
  bool asString = firstAsString;
  return forEachAttribute(manager, [&](const pwr::Attribute* attribute, const pwr::Data* data) {
    const int status = processDataAttributesHelper(attribute, data, list, asString, nullptr);
    asString = true;
    return status;
  });
}

int KeltoWriter::processDataAttributesHelper(const pwr::Attribute* attribute, const pwr::Data* data,
                                             QM2AttributeList* list, bool asString,
                                             std::string* out) {
  if (attribute == nullptr || data == nullptr || (list == nullptr && out == nullptr)) {
    return kelto::failure("Can't process attribute.\n");
  }
  if (attribute->getAttributeType() != pwr::AttributeType::Data) {
    return 0;
  }
  if (processData(data, attribute->m_quantity, list, asString, out) != 0) {
    return kelto::failure("Unable to add first attribute data to the record.\n");
  }
  return 0;
}

int KeltoWriter::getFirstDataAttributeAsString(const pwr::AttributeValueManager* manager,
                                               std::string* out) {
  if (out == nullptr) {
    return kelto::failure("Failed to get string attribute\n");
  }
  if (manager == nullptr || manager->begin() == manager->end()) {
    return 0;
  }
  const auto& [attribute, value] = *manager->begin();
  return attribute == nullptr ? 0
                              : processDataAttributesHelper(attribute, &value, nullptr, true, out);
}
