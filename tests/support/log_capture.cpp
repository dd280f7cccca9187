#include "tests/support/log_capture.h"

namespace qumetra::test {

LogCapture::LogCapture(std::uint32_t verbosity)
    : m_environment(m_error, m_warning, m_quiet), m_former(g_pluginEnvironment) {
  m_environment.verbosity = verbosity;
  g_pluginEnvironment = &m_environment;
}

LogCapture::~LogCapture() { g_pluginEnvironment = m_former; }

}  // namespace qumetra::test
