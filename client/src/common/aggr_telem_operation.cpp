#include "client/src/common/aggr_telem_operation.h"

#include <array>
#include <memory>

#include "client/src/common/number_text.h"
#include "host/operation_metadata.h"

namespace {

constexpr unsigned int kSampleBytes = 8;

/// The categories that a description has, in its order.
constexpr std::array kDescribedCategories = {"COUNTER-FIELD-NAME", "BIT-RANGE",    "DESCRIPTION",
                                             "DATA-FORMAT",        "SCALE-FACTOR", "DIVIDER",
                                             "ENDPOINT-ID"};

}  // namespace

// By value, as callers that were built before expect it.
// NOLINTBEGIN(performance-unnecessary-value-param)
AggrTelemOperation::AggrTelemOperation(std::string counterName, std::string fieldName,
                                       pwr::AggrTelemCounterInfo info)
    : HWOperation("AGGR-TELEM", kSampleBytes) {
  init_i();
  setEndpointGUID(info.guid);
  setEndpointId(info.endpointId);
  setSampleID(info.sampleId);
  if (!info.bitRange.empty()) {
    HWOperation::set("BIT-RANGE", info.bitRange);
  }
  HWOperation::set("COUNTER-NAME", counterName);
  HWOperation::set("COUNTER-FIELD-NAME", fieldName);
}
// NOLINTEND(performance-unnecessary-value-param)

AggrTelemOperation::AggrTelemOperation(const AggrTelemOperation& other) = default;
AggrTelemOperation::~AggrTelemOperation() = default;

void AggrTelemOperation::init_i() {
  for (const char* const category :
       {"COUNTER-NAME", "SAMPLE-ID", "ENDPOINT-ID", "GUID", "COUNTER-FIELD-NAME", "BIT-RANGE",
        "DESCRIPTION", "DATA-FORMAT", "SCALE-FACTOR", "DIVIDER"}) {
    m_categories.add(category);
  }
}

void AggrTelemOperation::setEndpointGUID(unsigned int guid) { set("GUID", pwr::toString(guid)); }

void AggrTelemOperation::setEndpointId(unsigned short endpointId) {
  set("ENDPOINT-ID", pwr::toString(endpointId));
}

void AggrTelemOperation::setSampleID(unsigned long sampleId) {
  set("SAMPLE-ID", pwr::toString(sampleId));
}

pwr::OperationMetadata* AggrTelemOperation::getOperationMetadata() const {
  const auto name = m_values.find("COUNTER-NAME");
  if (name == m_values.end()) {
    return HWOperation::getOperationMetadata();
  }
  std::unique_ptr<pwr::OperationMetadata> metadata(getOperationMetadata_i(name->second));
  for (const char* const category : kDescribedCategories) {
    const auto found = m_values.find(category);
    if (found != m_values.end()) {
      metadata->addValue(found->first, found->second);
    }
  }
  return metadata.release();
}

AggrTelemOperation* AggrTelemOperation::clone() const {
  return std::make_unique<AggrTelemOperation>(*this).release();
}
