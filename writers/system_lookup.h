// Parts of the system's description.
#pragma once

namespace pwr {
class CPUMetadata;
struct SystemMetadata;
}  // namespace pwr

/// The processor that was measured. Null when the description, or `system` itself, has none.
const pwr::CPUMetadata* processorOf(const pwr::SystemMetadata* system);
