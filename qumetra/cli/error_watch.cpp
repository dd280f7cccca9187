#include "qumetra/cli/error_watch.h"

#include "qumetra/model/environment.h"

namespace qumetra::cli {

ErrorWatch::ErrorWatch(Environment& environment) : m_environment(environment) {
  m_environment.setListener([this](const LogEvent& event) {
    // Lines that were inserted as a stream have no level; those of the error sink are errors.
    const bool isError = event.sink == LogEvent::Sink::Error &&
                         event.level.value_or(LogSink::kError) == LogSink::kError;
    m_hasErrors = m_hasErrors || isError;
  });
}

ErrorWatch::~ErrorWatch() { m_environment.setListener(nullptr); }

}  // namespace qumetra::cli
