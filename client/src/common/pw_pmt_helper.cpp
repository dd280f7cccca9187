#include "client/src/common/pw_pmt_helper.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <limits>
#include <string_view>

#include "client/src/common/number_text.h"
#include "client/src/common/owned.h"
#include "client/src/common/pw_log.h"
#include "host/services.h"

namespace pwr {

std::map<int, int> s_pmtOriginalAutoSuspendDelayMap;

namespace {

constexpr const char* kLogTag = "pmt-helper";
constexpr int kMaxDevices = 256;
constexpr int kShortDelayMs = 1;
constexpr std::size_t kMaxLinkBytes = 1024;
/// Link, telemetry interface and their directory stand below the device.
constexpr int kPartsBelowDevice = 3;

bool readSystemDelay(FILE* file, int& delay) {
  constexpr int kDecimal = 10;
  std::array<char, 64> text{};
  if (std::fgets(text.data(), static_cast<int>(text.size()), file) == nullptr) {
    return false;
  }
  char* end = nullptr;
  errno = 0;
  const long value = std::strtol(text.data(), &end, kDecimal);
  if (end == text.data() || errno != 0 || value < std::numeric_limits<int>::min() ||
      value > std::numeric_limits<int>::max()) {
    return false;
  }
  delay = static_cast<int>(value);
  return true;
}

/// Writes from the start of the file, wherever a read before ended.
bool writeSystemDelay(FILE* file, int delay) {
  const std::string text = toString(delay);
  return std::fseek(file, 0, SEEK_SET) == 0 &&
         std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0;
}

PmtDelayAccess& delayAccess() {
  static PmtDelayAccess s_access = pmtSystemDelayAccess();
  return s_access;
}

/// Cuts the last parts of a path off. False when it has too few of them.
bool dropLastParts(std::string_view& path, int count) {
  for (int i = 0; i < count; ++i) {
    const auto slash = path.rfind('/');
    if (slash == std::string_view::npos) {
      return false;
    }
    path = path.substr(0, slash);
  }
  return true;
}

/// Calls `visit` with index, path and open file of each device. Device 0 may belong to another
/// driver: only behind it is a file that cannot be opened the end of the devices.
void forEachDevice(const std::function<void(int, const std::string&, FILE*)>& visit) {
  for (int index = 0; index < kMaxDevices; ++index) {
    std::string path = pmtGetSourcePath(index);
    if (path.empty()) {
      continue;
    }
    path += "/power/autosuspend_delay_ms";
    // What the system asks for; an attribute keeps its value across it.
    const OwnedFile file(std::fopen(path.c_str(), "w+"));
    if (file != nullptr) {
      visit(index, path, file.get());
    } else if (index != 0) {
      return;
    }
  }
}

void shortenDelay(int index, const std::string& path, FILE* file) {
  int original = 0;
  if (!delayAccess().readDelay(file, original)) {
    logTaggedWarning(kLogTag,
                     "WARNING: couldn't read autosuspend_delay_ms in %s, PMT endpoint unusable\n",
                     path.c_str());
    return;
  }
  s_pmtOriginalAutoSuspendDelayMap[index] = original;
  if (!delayAccess().writeDelay(file, kShortDelayMs)) {
    logTaggedWarning(kLogTag,
                     "WARNING: Could not write value %d to autosuspend_delay_ms for file %s\n",
                     kShortDelayMs, path.c_str());
  }
}

void restoreDelay(int index, const std::string& path, FILE* file) {
  const auto found = s_pmtOriginalAutoSuspendDelayMap.find(index);
  if (found == s_pmtOriginalAutoSuspendDelayMap.end()) {
    return;
  }
  if (!delayAccess().writeDelay(file, found->second)) {
    logTaggedWarning(kLogTag,
                     "WARNING: Could not restore autosuspend_delay_ms to original value of %d for "
                     "file %s\n",
                     found->second, path.c_str());
  }
}

}  // namespace

PmtDelayAccess pmtSystemDelayAccess() { return {readSystemDelay, writeSystemDelay}; }

void setPmtDelayAccess(PmtDelayAccess access) { delayAccess() = access; }

std::string pmtGetSourcePath(int index) {
  const std::string link = sysfsRoot() + "/class/corvane_pmt/telem" + toString(index);
  std::array<char, kMaxLinkBytes> target{};
  const ssize_t length = ::readlink(link.c_str(), target.data(), target.size());
  if (length < 1) {
    return {};
  }
  std::string_view device(target.data(), static_cast<std::size_t>(length));
  if (!dropLastParts(device, kPartsBelowDevice)) {
    return {};
  }
  while (device.substr(0, 3) == "../") {
    device.remove_prefix(3);
  }
  std::array<char, kMaxLinkBytes + 1> path{};
  pw_strncpy(path.data(), (sysfsRoot() + "/" + std::string(device)).c_str(), path.size());
  return path.data();
}

void pmtSetAutoSuspendDelay() { forEachDevice(shortenDelay); }

void pmtRestoreAutoSuspendDelay() {
  if (s_pmtOriginalAutoSuspendDelayMap.empty()) {
    return;
  }
  forEachDevice(restoreDelay);
  s_pmtOriginalAutoSuspendDelayMap.clear();
}

}  // namespace pwr
