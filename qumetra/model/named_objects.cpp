// Attributes, descriptors, name and value pairs, processes and threads.
#include <deque>
#include <utility>

#include "host/handles.h"
#include "qumetra/model/handle_registry.h"

namespace pwr {
namespace {

/// The objects of one kind that were made at run time. A deque never moves them.
template <typename Handle>
std::deque<Handle>& runtimeObjects() {
  static std::deque<Handle> s_objects;
  return s_objects;
}

template <typename Handle, typename... Arguments>
Handle& makeRuntimeObject(Arguments&&... arguments) {
  auto& registry = qumetra::HandleRegistry::instance();
  Handle& made = runtimeObjects<Handle>().emplace_back(registry.drawId(),
                                                       std::forward<Arguments>(arguments)...);
  registry.addRuntimeHandle(made);
  return made;
}

}  // namespace

Attribute::Attribute(std::uint64_t id, HandleTexts texts, const EntityHandle* parent,
                     const Quantity* quantity, AttributeType type)
    : EntityHandle(id, std::move(texts), parent, kAttributeType),
      m_quantity(quantity),
      m_type(type) {}
Attribute::Attribute(const Attribute& other) = default;
Attribute::~Attribute() = default;

const Attribute* Attribute::create(std::string name, const Quantity* quantity, AttributeType type) {
  HandleTexts texts{name, std::move(name), {}};
  return &makeRuntimeObject<Attribute>(std::move(texts), nullptr, quantity, type);
}

AttributeType Attribute::getAttributeType() const { return m_type; }

DataDescriptorBuilder::DataDescriptorBuilder(std::string name, std::string fieldName)
    : m_name(std::move(name)), m_fieldName(std::move(fieldName)) {}
DataDescriptorBuilder::~DataDescriptorBuilder() = default;

const std::string& DataDescriptorBuilder::name() const { return m_name; }
const std::string& DataDescriptorBuilder::fieldName() const { return m_fieldName; }

DataDescriptor::DataDescriptor(std::uint64_t id, HandleTexts texts)
    : DataHandle(id, std::move(texts), kDescriptorType) {}
DataDescriptor::DataDescriptor(const DataDescriptor& other) = default;
DataDescriptor::~DataDescriptor() = default;

DataDescriptor* DataDescriptor::create(const DataDescriptorBuilder& builder) {
  return &makeRuntimeObject<DataDescriptor>(HandleTexts{builder.name(), builder.fieldName(), {}});
}

NameValuePair::NameValuePair(std::uint64_t id, HandleTexts texts, std::string infoName,
                             std::string valueDesc, std::uint64_t value)
    : DataHandle(id, std::move(texts), kOtherType),
      m_infoName(std::move(infoName)),
      m_valueDesc(std::move(valueDesc)),
      m_value(value) {}
NameValuePair::~NameValuePair() = default;

std::string NameValuePair::getInfoName() const { return m_infoName; }
std::string NameValuePair::getValueDesc() const { return m_valueDesc; }
std::uint64_t NameValuePair::getValue() const { return m_value; }

Process::Process(std::uint64_t id, HandleTexts texts, std::uint32_t pid, std::uint32_t parentPid,
                 std::string path, Lifetime lifetime)
    : DataHandle(id, std::move(texts), kOtherType),
      m_pid(pid),
      m_parentPid(parentPid),
      m_path(std::move(path)),
      m_lifetime(lifetime) {}
Process::~Process() = default;

std::uint32_t Process::getPid() const { return m_pid; }
std::uint32_t Process::getParentPid() const { return m_parentPid; }
std::string Process::getPath() const { return m_path; }
std::uint64_t Process::getStartTime() const { return m_lifetime.startTime; }
std::uint64_t Process::getEndTime() const { return m_lifetime.endTime; }
void Process::setEndTime(std::uint64_t ticks) { m_lifetime.endTime = ticks; }

Thread::Thread(std::uint64_t id, HandleTexts texts, std::uint32_t tid, std::uint32_t pid,
               Lifetime lifetime)
    : DataHandle(id, std::move(texts), kOtherType), m_tid(tid), m_pid(pid), m_lifetime(lifetime) {}
Thread::~Thread() = default;

std::uint32_t Thread::getTid() const { return m_tid; }
std::uint32_t Thread::getPid() const { return m_pid; }
std::uint64_t Thread::getStartTime() const { return m_lifetime.startTime; }
std::uint64_t Thread::getEndTime() const { return m_lifetime.endTime; }
void Thread::setEndTime(std::uint64_t ticks) { m_lifetime.endTime = ticks; }

}  // namespace pwr
