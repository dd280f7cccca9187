#include "qumetra/run/order_file.h"

#include <algorithm>
#include <cerrno>
#include <deque>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

#include <fmt/format.h>

#include "client/src/common/pw_files.h"

namespace qumetra {
namespace {

constexpr const char* kBlanks = " \t\r";

std::string_view trimmed(std::string_view line) {
  const auto first = line.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) {
    return {};
  }
  return line.substr(first, line.find_last_not_of(kBlanks) - first + 1);
}

bool contains(const std::deque<std::string>& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

/// Builds the order line by line. A fault is a text without the place.
class OrderBuilder {
 public:
  void take(std::string_view line) {
    if (line.empty() || line.front() == '#') {
      return;
    }
    if (line.front() == '[') {
      beginFeature(line);
    } else {
      addMetric(line);
    }
  }

  pwr::MetricOrder order;

 private:
  void beginFeature(std::string_view line) {
    const std::string_view name = trimmed(line.substr(1, line.size() - 2));
    if (line.back() != ']' || name.empty()) {
      throw OrderFileError(fmt::format("\"{}\" is no feature; expected [NAME]", line));
    }
    if (contains(order.featureOrder, name)) {
      throw OrderFileError(fmt::format("feature \"{}\" is named twice; expected once", name));
    }
    order.featureOrder.emplace_back(name);
  }

  void addMetric(std::string_view name) {
    if (order.featureOrder.empty()) {
      throw OrderFileError(
          fmt::format("metric \"{}\" belongs to no feature; expected [FEATURE] before it", name));
    }
    auto& metrics = order.metricOrder[order.featureOrder.back()];
    if (contains(metrics, name)) {
      throw OrderFileError(fmt::format("metric \"{}\" is named twice; expected once", name));
    }
    metrics.emplace_back(name);
  }
};

[[noreturn]] void failToRead(const std::string& path, int error) {
  throw OrderFileError(fmt::format("{}: {}", path, std::generic_category().message(error)));
}

}  // namespace

pwr::MetricOrder readOrderFile(const std::string& path) {
  errno = 0;
  std::ifstream file(path);
  if (!file) {
    failToRead(path, errno);
  }
  OrderBuilder builder;
  std::string line;
  for (std::uint64_t number = 1; std::getline(file, line); ++number) {
    try {
      builder.take(trimmed(line));
    } catch (const OrderFileError& fault) {
      throw OrderFileError(fmt::format("{}:{}: {}", path, number, fault.what()));
    }
  }
  if (file.bad()) {
    // A folder, for one, opens and cannot be read.
    failToRead(path, errno != 0 ? errno : EIO);
  }
  if (builder.order.featureOrder.empty()) {
    throw OrderFileError(path + ": names no feature; expected [FEATURE] and metrics below it");
  }
  return builder.order;
}

std::string defaultOrderFile() {
  namespace fs = std::filesystem;
  std::string toolPath;
  if (!pwr::getToolPath(toolPath)) {
    return {};
  }
  const fs::path prefix = fs::path(toolPath).parent_path().parent_path();
  const fs::path file = prefix / QUMETRA_DATADIR / "metric_order.conf";
  std::error_code error;
  return fs::exists(file, error) ? file.string() : std::string();
}

}  // namespace qumetra
