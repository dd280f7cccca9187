#include "qumetra/recording/definitions.h"

#include <iterator>
#include <type_traits>

namespace qumetra {
namespace {

std::string quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

std::string kindName(const Definitions::Object& object) {
  // In the order of the variant's alternatives.
  static constexpr const char* kNames[] = {"a quantity",   "an attribute",        "an entity",
                                           "a descriptor", "a nameValuePair",     "a process",
                                           "a thread",     "a handle definition", "a metric"};
  static_assert(std::size(kNames) == std::variant_size_v<Definitions::Object>);
  return kNames[object.index()];
}

template <typename T>
T& get(const Definitions& definitions, RecordValue ref, const char* expected) {
  const Definitions::Object& object = definitions.object(ref);
  if (const auto* found = std::get_if<T*>(&object)) {
    return **found;
  }
  failKind(ref, object, expected);
}

bool isNothing(const std::optional<RecordValue>& ref) { return !ref || ref->isNull(); }

}  // namespace

void Definitions::checkNew(RecordValue ref) const {
  const auto found = m_objects.find(ref.string());
  if (found != m_objects.end()) {
    ref.fail(quoted(ref.string()) + " is " + kindName(found->second) + " already",
             "a name that is not used yet");
  }
}

void Definitions::add(RecordValue ref, Object object) {
  m_objects.emplace(std::string(ref.string()), object);
}

const Definitions::Object& Definitions::object(RecordValue ref) const {
  if (!ref.isString()) {
    ref.failType("the ref of an object");
  }
  const auto found = m_objects.find(ref.string());
  if (found == m_objects.end()) {
    ref.fail("unknown reference " + quoted(ref.string()), "the ref of an object defined before");
  }
  return found->second;
}

const pwr::Quantity& Definitions::quantity(RecordValue ref) const {
  return get<pwr::Quantity>(*this, ref, "a quantity");
}

const pwr::Attribute& Definitions::attribute(RecordValue ref) const {
  return get<pwr::Attribute>(*this, ref, "an attribute");
}

const pwr::EntityHandle& Definitions::entity(RecordValue ref) const {
  const Object& found = object(ref);
  if (const auto* attribute = std::get_if<pwr::Attribute*>(&found)) {
    return **attribute;
  }
  return get<pwr::EntityHandle>(*this, ref, "an entity or attribute");
}

const pwr::DataDescriptor& Definitions::descriptor(RecordValue ref) const {
  return get<pwr::DataDescriptor>(*this, ref, "a descriptor");
}

pwr::Metric& Definitions::metric(RecordValue ref) const {
  return get<pwr::Metric>(*this, ref, "a metric");
}

const pwr::DataHandle& Definitions::handle(RecordValue ref) const {
  const Object& found = object(ref);
  const auto* handle = std::visit(
      [](auto* candidate) -> const pwr::DataHandle* {
        if constexpr (std::is_convertible_v<decltype(candidate), const pwr::DataHandle*>) {
          return candidate;
        } else {
          return nullptr;
        }
      },
      found);
  if (handle == nullptr) {
    failKind(ref, found, "anything but a quantity or metric");
  }
  return *handle;
}

std::uint64_t Definitions::id(RecordValue ref) const {
  const Object& found = object(ref);
  if (const auto* quantity = std::get_if<pwr::Quantity*>(&found)) {
    return (*quantity)->getId();
  }
  return handle(ref).getId();
}

const pwr::Quantity* Definitions::quantityOrNull(std::optional<RecordValue> ref) const {
  return isNothing(ref) ? nullptr : &quantity(*ref);
}

const pwr::Attribute* Definitions::attributeOrNull(std::optional<RecordValue> ref) const {
  return isNothing(ref) ? nullptr : &attribute(*ref);
}

const pwr::EntityHandle* Definitions::entityOrNull(std::optional<RecordValue> ref) const {
  return isNothing(ref) ? nullptr : &entity(*ref);
}

const pwr::DataDescriptor* Definitions::descriptorOrNull(std::optional<RecordValue> ref) const {
  return isNothing(ref) ? nullptr : &descriptor(*ref);
}

const pwr::DataHandle* Definitions::handleOrNull(std::optional<RecordValue> ref) const {
  return isNothing(ref) ? nullptr : &handle(*ref);
}

void failKind(RecordValue ref, const Definitions::Object& object, const std::string& expected) {
  ref.fail(quoted(ref.string()) + " is " + kindName(object), expected);
}

}  // namespace qumetra
