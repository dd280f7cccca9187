#include "writers/keltowriter_plugin/kelto_writer.h"

#include <set>

#include "client/src/common/text_parsing.h"
#include "host/handles.h"
#include "host/metric.h"
#include "writers/capability.h"
#include "writers/keltowriter_plugin/kelto_log.h"
#include "writers/keltowriter_plugin/name_tables.h"
#include "writers/without_exception.h"

namespace {

constexpr const char* kGuid = "f245366a-c403-478b-aae5-649269da17c7";
constexpr const char* kSuffix = ".pwr";

std::set<pwr::TableClass> tableClasses() {
  std::set<pwr::TableClass> classes;
  for (std::uint32_t number = 3; number <= 9; ++number) {
    classes.insert(static_cast<pwr::TableClass>(number));
  }
  return classes;
}

}  // namespace

std::int64_t KeltoWriter::s_nextInfoTypeId = 1;
bool KeltoWriter::s_wasCountNoted = false;
bool KeltoWriter::s_wasRealNoted = false;
bool KeltoWriter::s_wasRealRangeNoted = false;

KeltoWriter::KeltoWriter()
    : WriterPlugin(kGuid),
      impl(std::make_unique<KeltoWriterImpl>(kSuffix)),
      legacy(pwr::check_env("PW_ENABLE_LEGACY_KELTO")) {
  declareCapability(*this, {.option = "kelto",
                            .description = "Write data trace file (.pwr) in import format for "
                                           "visualization with Corvane Kelto Viewer",
                            .suffix = kSuffix,
                            .tableClasses = tableClasses()});
}

KeltoWriter::~KeltoWriter() = default;

int KeltoWriter::init(const std::string& base, bool /*continuous*/) {
  impl->outputPath = base + impl->fileSuffix;
  createAttributeMap();
  createStateColorMap();
  cstateTabGroupId = kNoGroup;
  cstateTimelineGroupId = kNoGroup;
  temperatureTabGroupId = kNoGroup;
  powerTabGroupId = kNoGroup;
  m_cache.clear();
  return 0;
}

int KeltoWriter::fini() {
  return withoutException([&] { return finish(); });
}

int KeltoWriter::finish() {
  if (systemStreamId == kAllOnes) {
    impl->valid = false;
    kelto::failure("Failed to obtain a system metadata message.\n");
    return impl->fini();
  }
  if (flushStoredStates() != 0) {
    impl->valid = false;
    return kelto::failure("Failed to flush stored states.\n");
  }
  // The magic record closes the system stream as it opened it.
  if (writeMagicRecord() != 0) {
    impl->valid = false;
    return kelto::failure("Failed to write magic record.\n");
  }
  return impl->fini();
}

int KeltoWriter::writeMessage(const pwr::SystemMessage& message) {
  return withoutException([&] { return handleSystemMessage(message); });
}

int KeltoWriter::writeMessage(const pwr::Metric& metric) {
  const int status = withoutException([&] {
    std::string& name = metricNames[metric.metricId];
    if (name != metric.name) {
      name = metric.name;
    }
    return trackOf(metric).isUnsupported ? 1 : handleMetricMessage(metric);
  });
  if (status == 0) {
    return 0;
  }
  return withoutException([&] {
    setInvalidTempFile(metric.metricId);
    return 1;
  });
}

int KeltoWriter::writeRecord(std::uint64_t id, const char* data, std::uint32_t size) {
  if (!impl->valid) {
    return 1;
  }
  KeltoBackingStoreManager* store = impl->findStore(id);
  if (store == nullptr) {
    store = impl->getBackingStore(storeName(id), id);
  }
  if (store == nullptr) {
    impl->valid = false;
    return 1;
  }
  // What a refused metric still brings is dropped, and its caller is to know.
  return store->active ? store->pushBuffer_i(data, size) : 1;
}

void KeltoWriter::setInvalidTempFile(std::uint64_t id) {
  KeltoBackingStoreManager* const store = impl->getBackingStore(storeName(id), id);
  if (store == nullptr) {
    impl->valid = false;
    return;
  }
  store->active = false;
}

std::string KeltoWriter::storeName(std::uint64_t id) const {
  const auto known = metricNames.find(id);
  return known != metricNames.end() ? known->second
                                    : UNKNOWN_METRIC_NAME + " " + std::to_string(id);
}

// Processes go first: a thread without an end takes that of its process.
int KeltoWriter::flushStoredStates() {
  for (const auto& [key, process] : m_processes) {
    if (handleProcessInfo(process.first, false) != 0) {
      return kelto::failure("Unable to re-handle process.\n");
    }
  }
  for (const auto& [key, thread] : m_threads) {
    if (handleThreadInfo(thread.first, false) != 0) {
      return kelto::failure("Unable to re-handle thread.\n");
    }
  }
  return 0;
}
