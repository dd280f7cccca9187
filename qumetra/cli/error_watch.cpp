#include "qumetra/cli/error_watch.h"

#include <string_view>

#include "qumetra/model/environment.h"

namespace qumetra::cli {
namespace {

/// How the summary begins to tell that there is no order of metrics. Its report is whole: without
/// an order it takes the metrics as they came. Recordings need not bring one.
constexpr std::string_view kNoOrder = "ERROR: No entries present for metrics";

/// Lines that were inserted as a stream have no level; those of the error sink are errors.
bool tellsOfLoss(const LogEvent& event) {
  return event.level.value_or(LogSink::kError) == LogSink::kError &&
         !event.text.starts_with(kNoOrder);
}

}  // namespace

ErrorWatch::ErrorWatch(Environment& environment) : m_environment(environment) {
  m_environment.setErrorListener(
      [this](const LogEvent& event) { m_hasErrors = m_hasErrors || tellsOfLoss(event); });
}

ErrorWatch::~ErrorWatch() { m_environment.setErrorListener(nullptr); }

}  // namespace qumetra::cli
