#include "client/src/common/telemetry_feature.h"

#include <algorithm>
#include <optional>

#include "client/src/common/pw_log.h"
#include "host/services.h"

namespace pwr {
namespace {

bool hasSubEntityForm(const CounterField& field) {
  return !field.subEntity.empty() && !field.descriptor.empty();
}

/// The first field of the form, or the first that is not of it; null when there is none.
const CounterField* findField(const CounterTable& counters, bool isOfSubEntityForm) {
  for (const auto& [name, fields] : counters) {
    const auto found = std::find_if(fields.begin(), fields.end(), [&](const CounterField& field) {
      return hasSubEntityForm(field) == isOfSubEntityForm;
    });
    if (found != fields.end()) {
      return &*found;
    }
  }
  return nullptr;
}

/// The device of an entity: the text before the first "/".
std::string deviceOf(const std::string& entity) { return entity.substr(0, entity.find('/')); }

/// Finds the device that all counters should have: the first one.
class DeviceFinder {
 public:
  explicit DeviceFinder(const std::string& tag) : m_tag(tag) {}

  void take(const std::string& counter, const CounterField& field) {
    if (field.entity.empty()) {
      return;
    }
    const std::string candidate = deviceOf(field.entity);
    if (!m_device) {
      m_device = candidate;
    } else if (candidate != *m_device) {
      warn(counter, candidate);
    }
  }

  std::string device() const { return m_device.value_or(""); }

 private:
  void warn(const std::string& counter, const std::string& candidate) const {
    logTaggedWarning(m_tag.c_str(),
                     "WARNING: %s: counter %s declares device %s but an earlier counter declared "
                     "%s; using %s\n",
                     m_tag.c_str(), counter.c_str(), candidate.c_str(), m_device->c_str(),
                     m_device->c_str());
  }

  const std::string& m_tag;
  std::optional<std::string> m_device;
};

}  // namespace

void warnUnappliedAttribute(const std::string& tag, const std::string& counter,
                            const char* attribute) {
  logTaggedWarning(
      tag.c_str(),
      "WARNING: %s: counter %s declares %s, which this feature does not apply; ignoring it\n",
      tag.c_str(), counter.c_str(), attribute != nullptr ? attribute : "");
}

void warnUnknownMetricMetadata(const std::string& tag, const std::string& key) {
  logTaggedWarning(tag.c_str(),
                   "WARNING: %s: ignoring metric metadata %s, which this feature does not use\n",
                   tag.c_str(), key.c_str());
}

int rejectMixedSubEntityFields(const std::string& tag, const CounterTable& counters) {
  const CounterField* const firstWithout = findField(counters, false);
  if (firstWithout == nullptr || findField(counters, true) == nullptr) {
    return 0;
  }
  logTaggedError(
      tag.c_str(),
      "ERROR: %s: counter %s reports on no sub-entity while other counters do; a feature "
      "cannot mix the two forms\n",
      tag.c_str(), firstWithout->label.c_str());
  return 1;
}

void recordSubEntityFields(const std::string& counter, const CounterTable& counters,
                           std::unordered_map<std::string, CounterField>& out) {
  const auto found = counters.find(counter);
  if (found == counters.end()) {
    return;
  }
  for (const CounterField& field : found->second) {
    if (hasSubEntityForm(field)) {
      out.emplace(field.label, field);
    }
  }
}

std::string resolveFeatureEntity(const std::string& tag, const std::string& name,
                                 const std::vector<std::string>& counterNames,
                                 const CounterTable& counters) {
  DeviceFinder finder(tag);
  for (const std::string& counter : counterNames) {
    const auto found = counters.find(counter);
    if (found == counters.end()) {
      continue;
    }
    for (const CounterField& field : found->second) {
      finder.take(counter, field);
    }
  }
  return resolveEntityName(name, finder.device(), tag);
}

}  // namespace pwr
