// The description of an access to hardware.
#pragma once

#include "host/operation_metadata.h"

/// What a `HWOperation` tells about itself.
class HWOperationMetadata : public pwr::OperationMetadata {
 public:
  using pwr::OperationMetadata::OperationMetadata;
  HWOperationMetadata(const HWOperationMetadata& other);
  ~HWOperationMetadata() override;
};
