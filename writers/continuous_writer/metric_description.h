// The descriptions that continuous results hold beside their samples.
#pragma once

#include <memory>

#include "writers/continuous_writer/continuous_writer.h"

namespace pwr {
class CPUMetadata;
struct SystemMetadata;
}  // namespace pwr

/// The description of `metric`: quantity, type, states, and which entity has which descriptor. A
/// metric without a quantity is a warning.
std::shared_ptr<ContinuousWriter::Metadata> describeMetric(const pwr::Metric& metric);

/// The description of the measured system.
std::shared_ptr<ContinuousWriter::Metadata> describeSystem(const pwr::SystemMetadata& system,
                                                           const pwr::CPUMetadata& cpu);
