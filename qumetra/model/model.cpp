#include "qumetra/model/model.h"

#include <deque>
#include <utility>

#include "qumetra/model/handle_registry.h"

namespace qumetra {
namespace {

pwr::HandleTexts textsOf(const HandleSpec& spec) {
  return {spec.name, spec.fieldName.value_or(spec.name), spec.header};
}

std::string titleOf(const QuantitySpec& spec) {
  if (spec.title) {
    return *spec.title;
  }
  return spec.units.empty() ? spec.name : spec.name + " (" + spec.units + ")";
}

/// Adds a thing to those of its kind, where it stays until the model goes.
template <typename Base, typename Owned = Base>
Owned& keep(std::vector<std::unique_ptr<Base>>& things, std::unique_ptr<Owned> thing) {
  Owned& kept = *thing;
  things.push_back(std::move(thing));
  return kept;
}

}  // namespace

struct Model::Contents {
  Contents() { HandleRegistry::instance().attach(table); }
  Contents(const Contents&) = delete;
  Contents& operator=(const Contents&) = delete;
  ~Contents() { HandleRegistry::instance().detach(table); }

  /// The id that an object made from `wanted` gets, checked but not taken.
  std::uint64_t idFor(const std::optional<std::uint64_t>& wanted) const {
    const std::uint64_t id = wanted.value_or(nextDefaultId);
    if (isReserved(id)) {
      throw IdError("id " + std::to_string(id) + " is reserved for objects made at run time");
    }
    if (table.contains(id)) {
      throw IdError("id " + std::to_string(id) + " is used already");
    }
    return id;
  }

  /// Takes an id that `idFor` gave. `handle` is null for a quantity.
  void take(std::uint64_t id, const std::optional<std::uint64_t>& wanted,
            const pwr::DataHandle* handle) {
    table.emplace(id, handle);
    if (!wanted) {
      ++nextDefaultId;
    }
  }

  std::uint64_t nextDefaultId = kFirstDefaultId;
  /// All ids that are taken; those of quantities have no handle.
  HandleTable table;
  std::vector<std::unique_ptr<pwr::Quantity>> quantities;
  std::vector<std::unique_ptr<pwr::DataHandle>> handles;
  std::deque<pwr::Metric> metrics;
  std::deque<pwr::TextNotes> notes;
  std::deque<pwr::SystemMetadata> systemMetadata;
  std::vector<std::unique_ptr<pwr::PlatformMetadata>> platformMetadata;
};

Model::Model() : m_contents(std::make_unique<Contents>()) {}
Model::~Model() = default;

template <typename Handle, typename... Arguments>
Handle& Model::addHandle(const HandleSpec& spec, Arguments&&... arguments) {
  const std::uint64_t id = m_contents->idFor(spec.id);
  Handle& added =
      keep(m_contents->handles,
           std::make_unique<Handle>(id, textsOf(spec), std::forward<Arguments>(arguments)...));
  m_contents->take(id, spec.id, &added);
  return added;
}

pwr::Quantity& Model::addQuantity(const QuantitySpec& spec) {
  const std::uint64_t id = m_contents->idFor(spec.id);
  pwr::Quantity& added =
      keep(m_contents->quantities,
           std::make_unique<pwr::Quantity>(id, spec.code, spec.name, spec.units, titleOf(spec)));
  m_contents->take(id, spec.id, nullptr);
  return added;
}

pwr::EntityHandle& Model::addEntity(const HandleSpec& spec, const pwr::EntityHandle* parent) {
  return addHandle<pwr::EntityHandle>(spec, parent);
}

pwr::Attribute& Model::addAttribute(const HandleSpec& spec, pwr::AttributeType type,
                                    const pwr::Quantity* quantity,
                                    const pwr::EntityHandle* parent) {
  return addHandle<pwr::Attribute>(spec, parent, quantity, type);
}

pwr::DataDescriptor& Model::addDescriptor(const HandleSpec& spec) {
  return addHandle<pwr::DataDescriptor>(spec);
}

pwr::NameValuePair& Model::addNameValuePair(const HandleSpec& spec, const std::string& infoName,
                                            const std::string& valueDesc, std::uint64_t value) {
  return addHandle<pwr::NameValuePair>(spec, infoName, valueDesc, value);
}

pwr::Process& Model::addProcess(const HandleSpec& spec, std::uint32_t pid, std::uint32_t parentPid,
                                const std::string& path, pwr::Lifetime lifetime) {
  return addHandle<pwr::Process>(spec, pid, parentPid, path, lifetime);
}

pwr::Thread& Model::addThread(const HandleSpec& spec, std::uint32_t tid, std::uint32_t pid,
                              pwr::Lifetime lifetime) {
  return addHandle<pwr::Thread>(spec, tid, pid, lifetime);
}

pwr::ColumnHandle& Model::addColumnHandle(const HandleSpec& spec, std::uint32_t handleType,
                                          std::vector<const pwr::Attribute*> expectedAttributes) {
  return addHandle<pwr::ColumnHandle>(spec, handleType, std::move(expectedAttributes));
}

pwr::Metric& Model::addMetric() { return m_contents->metrics.emplace_back(); }

const pwr::TextNotes& Model::addNotes(pwr::TextNotes notes) {
  return m_contents->notes.emplace_back(std::move(notes));
}

pwr::SystemMetadata& Model::addSystemMetadata() {
  return m_contents->systemMetadata.emplace_back();
}

pwr::PlatformMetadata& Model::addPlatformMetadata() {
  return keep(m_contents->platformMetadata, std::make_unique<pwr::PlatformMetadata>());
}

pwr::CPUMetadata& Model::addCpuMetadata() {
  return keep(m_contents->platformMetadata, std::make_unique<pwr::CPUMetadata>());
}

pwr::PCHMetadata& Model::addPchMetadata() {
  return keep(m_contents->platformMetadata, std::make_unique<pwr::PCHMetadata>());
}

}  // namespace qumetra
