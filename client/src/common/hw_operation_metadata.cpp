#include "client/src/common/hw_operation_metadata.h"

HWOperationMetadata::HWOperationMetadata(const HWOperationMetadata& other) = default;
HWOperationMetadata::~HWOperationMetadata() = default;
