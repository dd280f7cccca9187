#include "qumetra/access/access_place.h"

#include <charconv>
#include <system_error>

#include "client/src/common/hw_operation.h"

namespace qumetra {
namespace {

constexpr std::uint64_t kBuses = 256;
constexpr std::uint64_t kDevices = 32;
constexpr std::uint64_t kFunctions = 8;
constexpr std::uint64_t kConfigurationBytes = 4096;
constexpr std::uint32_t kWidestRegisterBytes = 8;

/// The number in a category if it is below `limit`.
std::optional<std::uint32_t> numberBelow(const HWOperation& operation, const char* category,
                                         std::uint64_t limit) {
  const auto number = numberIn(operation, category);
  return number && *number < limit ? std::optional(static_cast<std::uint32_t>(*number))
                                   : std::nullopt;
}

}  // namespace

std::optional<std::uint64_t> parseHexOrDecimal(std::string_view text) {
  int base = 10;
  if (text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X") {
    text.remove_prefix(2);
    base = 16;
  }
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  if (error != std::errc() || end != text.data() + text.size()) {
    return std::nullopt;
  }
  return number;
}

std::optional<std::uint64_t> numberIn(const HWOperation& operation, const std::string& category) {
  const auto found = operation.m_values.find(category);
  return found == operation.m_values.end() ? std::nullopt : parseHexOrDecimal(found->second);
}

std::optional<PciPlace> pciPlaceOf(const HWOperation& operation) {
  const auto bus = numberBelow(operation, "BUS", kBuses);
  const auto device = numberBelow(operation, "DEVICE", kDevices);
  const auto function = numberBelow(operation, "FUNCTION", kFunctions);
  const auto offset = numberBelow(operation, "OFFSET", kConfigurationBytes);
  if (operation.m_name != "PCI" || !bus || !device || !function || !offset) {
    return std::nullopt;
  }
  return PciPlace{*bus, *device, *function, *offset};
}

std::optional<std::uint64_t> mmioAddressOf(const HWOperation& operation) {
  return operation.m_name == "MMIO" ? numberIn(operation, "ADDRESS") : std::nullopt;
}

std::optional<TelemetryPlace> telemetryPlaceOf(const HWOperation& operation) {
  constexpr std::uint64_t kEndpoints = std::uint64_t{1} << 16U;
  const auto endpoint = numberBelow(operation, "ENDPOINT-ID", kEndpoints);
  const auto sample = numberIn(operation, "SAMPLE-ID");
  if (operation.m_name != "AGGR-TELEM" || !endpoint || !sample) {
    return std::nullopt;
  }
  return TelemetryPlace{static_cast<std::uint16_t>(*endpoint), *sample,
                        numberBelow(operation, "GUID", std::uint64_t{1} << 32U)};
}

std::optional<std::uint32_t> readSizeOf(const HWOperation& operation, std::uint32_t limit) {
  const std::uint32_t size = operation.getSize();
  return size > 0 && size <= limit ? std::optional(size) : std::nullopt;
}

std::optional<RegisterWrite> registerWriteOf(const HWOperation& operation) {
  const auto size = readSizeOf(operation, kWidestRegisterBytes);
  const auto value = numberIn(operation, "VALUE");
  if (!size || !value) {
    return std::nullopt;
  }
  RegisterWrite write{*size, *value};
  if (operation.m_values.contains("VALUE-MASK")) {
    const auto mask = numberIn(operation, "VALUE-MASK");
    if (!mask) {
      return std::nullopt;
    }
    write.mask = *mask;
  }
  return write;
}

}  // namespace qumetra
