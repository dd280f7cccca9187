// The roots of everything named: handles, entities, and handles of columns.
#include "host/handles.h"

#include <utility>

#include "client/src/common/number_text.h"
#include "qumetra/model/handle_registry.h"

namespace pwr {
namespace {

/// "name #id": names repeat, ids do not.
std::string diagnosticName(const std::string& name, std::uint64_t id) {
  std::string text = name + " #";
  appendUInt(text, id);
  return text;
}

}  // namespace

DataHandle::DataHandle(std::uint64_t id, HandleTexts texts, std::uint32_t handleType)
    : UniqueId(id),
      m_name(std::move(texts.name)),
      m_fieldName(std::move(texts.fieldName)),
      m_header(std::move(texts.header)),
      m_hostText(diagnosticName(m_name, id)),
      m_handleType(handleType) {}
DataHandle::DataHandle(const DataHandle& other) = default;
DataHandle::~DataHandle() = default;

std::string DataHandle::getDiagnosticName() const { return m_hostText; }
std::string DataHandle::getQualifiedName() const { return m_name; }
std::string DataHandle::getName() const { return m_name; }
std::string DataHandle::getFieldName() const { return m_fieldName; }
std::string DataHandle::getHeader() const { return m_header; }
std::uint32_t DataHandle::getHandleType() const { return m_handleType; }

int DataHandle::get(unsigned long id, const DataHandle*& out) {
  out = qumetra::HandleRegistry::instance().find(id);
  return out == nullptr ? 1 : 0;
}

EntityHandle::EntityHandle(std::uint64_t id, HandleTexts texts, const EntityHandle* parent,
                           std::uint32_t handleType)
    : DataHandle(id, std::move(texts), handleType), m_parent(parent) {}
EntityHandle::EntityHandle(const EntityHandle& other) = default;
EntityHandle::~EntityHandle() = default;

const EntityHandle* EntityHandle::getParent() const { return m_parent; }

std::string EntityHandle::getQualifiedName() const {
  if (m_parent == nullptr) {
    return getName();
  }
  // A loop, not a recursion: the trees of a recording may be of any depth.
  std::vector<std::string> names;
  for (const EntityHandle* entity = this; entity != nullptr; entity = entity->m_parent) {
    names.push_back(entity->getName());
  }
  std::string joined;
  for (auto name = names.rbegin(); name != names.rend(); ++name) {
    if (!joined.empty() && !name->empty()) {
      joined += '/';
    }
    joined += *name;
  }
  return joined;
}

ColumnHandle::ColumnHandle(std::uint64_t id, HandleTexts texts, std::uint32_t handleType,
                           std::vector<const Attribute*> expectedAttributes)
    : DataHandle(id, std::move(texts), handleType),
      ExpectedAttributeManager(std::move(expectedAttributes)) {}
ColumnHandle::~ColumnHandle() = default;

}  // namespace pwr
