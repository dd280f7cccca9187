#include "qumetra/access/memory_backend.h"

#include <fmt/format.h>

#include "client/src/common/hw_operation.h"

namespace qumetra {
namespace {

constexpr std::uint32_t kSampleBytes = 8;
constexpr std::uint32_t kBitsPerByte = 8;
constexpr std::uint32_t kLargestReadBytes = 4096;

}  // namespace

MemoryBackend::MemoryBackend() = default;
MemoryBackend::~MemoryBackend() = default;

MemoryBackend::Place MemoryBackend::placeOf(const PciPlace& place) {
  return {fmt::format("PCI {}:{}.{}", place.bus, place.device, place.function), place.offset};
}

MemoryBackend::Place MemoryBackend::mmioPlace(std::uint64_t address) { return {"MMIO", address}; }

MemoryBackend::Place MemoryBackend::samplePlace(std::uint16_t endpointId, std::uint64_t sampleId) {
  return {fmt::format("telemetry {}", endpointId), sampleId * kSampleBytes};
}

std::optional<MemoryBackend::Place> MemoryBackend::placeOf(const HWOperation& operation) {
  if (const auto pciPlace = pciPlaceOf(operation)) {
    return placeOf(*pciPlace);
  }
  if (const auto address = mmioAddressOf(operation)) {
    return mmioPlace(*address);
  }
  if (const auto sample = telemetryPlaceOf(operation)) {
    return samplePlace(sample->endpointId, sample->sampleId);
  }
  return std::nullopt;
}

void MemoryBackend::setPci(const PciPlace& place, std::uint64_t value, std::uint32_t sizeBytes) {
  store(placeOf(place), value, sizeBytes);
}

void MemoryBackend::setMmio(std::uint64_t address, std::uint64_t value, std::uint32_t sizeBytes) {
  store(mmioPlace(address), value, sizeBytes);
}

void MemoryBackend::setSample(std::uint16_t endpointId, std::uint64_t sampleId,
                              std::uint64_t value) {
  store(samplePlace(endpointId, sampleId), value, kSampleBytes);
}

std::optional<std::uint64_t> MemoryBackend::pci(const PciPlace& place,
                                                std::uint32_t sizeBytes) const {
  return load(placeOf(place), sizeBytes);
}

std::optional<std::uint64_t> MemoryBackend::mmio(std::uint64_t address,
                                                 std::uint32_t sizeBytes) const {
  return load(mmioPlace(address), sizeBytes);
}

void MemoryBackend::failAt(std::size_t access) { m_failures.insert(access); }

std::optional<std::vector<std::uint8_t>> MemoryBackend::read(const HWOperation& operation,
                                                             const std::string& target) {
  if (!begin(Access::Kind::Read, operation, target)) {
    return std::nullopt;
  }
  const auto place = placeOf(operation);
  const auto size = readSizeOf(operation, kLargestReadBytes);
  if (!place || !size) {
    return std::nullopt;
  }
  auto bytes = bytesAt(*place, *size);
  m_accesses.back().done = bytes.has_value();
  return bytes;
}

bool MemoryBackend::write(const HWOperation& operation, const std::string& target) {
  if (!begin(Access::Kind::Write, operation, target)) {
    return false;
  }
  const auto place = placeOf(operation);
  const auto write = registerWriteOf(operation);
  if (!place || !write) {
    return false;
  }
  const auto old = load(*place, write->sizeBytes);
  if (!old) {
    return false;
  }
  store(*place, write->appliedTo(*old), write->sizeBytes);
  m_accesses.back().done = true;
  return true;
}

bool MemoryBackend::begin(Access::Kind kind, const HWOperation& operation,
                          const std::string& target) {
  m_accesses.push_back({kind, operation.m_values, target, false});
  return !m_failures.contains(m_accesses.size());
}

void MemoryBackend::store(Place place, std::uint64_t value, std::uint32_t sizeBytes) {
  for (std::uint32_t i = 0; i < sizeBytes; ++i) {
    m_bytes[place] = static_cast<std::uint8_t>(value);
    value >>= kBitsPerByte;
    ++place.address;
  }
}

std::optional<std::vector<std::uint8_t>> MemoryBackend::bytesAt(Place place,
                                                                std::uint32_t count) const {
  std::vector<std::uint8_t> bytes;
  for (std::uint32_t i = 0; i < count; ++i) {
    const auto found = m_bytes.find(place);
    if (found == m_bytes.end()) {
      return std::nullopt;
    }
    bytes.push_back(found->second);
    ++place.address;
  }
  return bytes;
}

std::optional<std::uint64_t> MemoryBackend::load(const Place& place,
                                                 std::uint32_t sizeBytes) const {
  const auto bytes = bytesAt(place, sizeBytes);
  if (!bytes) {
    return std::nullopt;
  }
  std::uint64_t value = 0;
  for (auto byte = bytes->rbegin(); byte != bytes->rend(); ++byte) {
    value = value << kBitsPerByte | *byte;
  }
  return value;
}

}  // namespace qumetra
