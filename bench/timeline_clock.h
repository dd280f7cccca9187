// The clock of the measured over-time tables.
#pragma once

#include <cstdint>

#include "host/messages.h"
#include "host/system_metadata.h"
#include "writers/writer_plugins.h"

namespace qumetra::bench {

inline constexpr double kTicksPerMicrosecond = 2;
/// The start of the collection, in ticks.
inline constexpr std::uint64_t kStart = 1'000'000;

inline void tellClock(WriterPlugin& writer) {
  static const pwr::SystemMetadata s_metadata = [] {
    pwr::SystemMetadata metadata;
    metadata.m_timestampFrequency = static_cast<float>(kTicksPerMicrosecond);
    metadata.m_firstTimestamp = kStart;
    return metadata;
  }();
  pwr::SystemMessage message;
  message.m_metadata = &s_metadata;
  writer.writeMessage(message);
}

}  // namespace qumetra::bench
