#include "client/src/common/telemetry_endpoints.h"

#include <charconv>
#include <iterator>
#include <set>

#include "client/src/common/pw_log.h"
#include "client/src/common/text_parsing.h"

namespace pwr {
namespace {

/// Appends the endpoints of one operation. False at an id that is not known.
bool appendEndpoints(const OperationMetadata& metadata, const SystemMetadata& system,
                     std::vector<const _qm_aggregator_info*>& out) {
  for (const auto& [key, value] : metadata.m_pairs) {
    if (key != "ENDPOINT-ID") {
      continue;
    }
    const auto found = system.m_aggregators.find(extractNumber<unsigned short>(value, false));
    if (found == system.m_aggregators.end()) {
      return false;
    }
    out.push_back(&found->second);
  }
  return true;
}

}  // namespace

int extractPMTEndpoints(const std::string& tag, const SystemMetadata& system,
                        const MsgMetadata* message, std::vector<const _qm_aggregator_info*>& out) {
  if (message == nullptr) {
    return 1;
  }
  for (const auto& metadata : message->m_operations) {
    if (metadata != nullptr && !appendEndpoints(*metadata, system, out)) {
      logTaggedWarning(tag.c_str(),
                       "WARNING: Endpoint for message not found in loaded endpoints!\n");
      return 1;
    }
  }
  return out.empty() ? 1 : 0;
}

std::uint16_t extractEndpointIdFromKey(const std::string& key) {
  std::uint16_t id = 0;
  const auto result = std::from_chars(key.data(), key.data() + key.size(), id);
  return result.ec == std::errc() ? id : std::uint16_t{0};
}

std::size_t getPMTInstanceInfo(const std::vector<const _qm_aggregator_info*>& infos,
                               unsigned short instance, unsigned short& index) {
  std::set<unsigned short> instances;
  for (const _qm_aggregator_info* const info : infos) {
    if (info != nullptr) {
      instances.insert(info->instance);
    }
  }
  const auto found = instances.find(instance);
  index = found == instances.end()
              ? static_cast<unsigned short>(0)
              : static_cast<unsigned short>(std::distance(instances.begin(), found));
  return instances.size();
}

}  // namespace pwr
