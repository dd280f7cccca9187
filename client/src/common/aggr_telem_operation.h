// An access to a counter of aggregator telemetry.
#pragma once

#include <string>

#include "client/src/common/hw_operation.h"
#include "host/configuration.h"

/// Eight bytes: the sample that holds a field of a counter. Can be read only.
class AggrTelemOperation : public HWOperation {
 public:
  // By value, as callers that were built before expect it.
  AggrTelemOperation(std::string counterName, std::string fieldName,
                     pwr::AggrTelemCounterInfo info);
  AggrTelemOperation(const AggrTelemOperation& other);
  ~AggrTelemOperation() override;

  void setEndpointGUID(unsigned int guid);
  void setEndpointId(unsigned short endpointId);
  void setSampleID(unsigned long sampleId);

  /// Has the counter's name in the place of an address, and what describes the field. Where the
  /// counter is found (GUID and sample) stays out.
  pwr::OperationMetadata* getOperationMetadata() const override;
  AggrTelemOperation* clone() const override;

  void init_i();
};
