#include "qumetra/cli/session.h"

#include <algorithm>
#include <vector>

#include "qumetra/cli/command.h"
#include "qumetra/run/resource_limits.h"

namespace qumetra::cli {

std::unique_ptr<Environment> makeEnvironment(const CommonOptions& common) {
  auto environment = std::make_unique<Environment>();
  // Writers log errors even to those who want silence, since errors count in the exit status.
  environment->plugin().verbosity = std::max(common.verbosity, PluginEnvironment::kErrors);
  if (common.verbosity < PluginEnvironment::kErrors) {
    environment->hideErrors();
  }
  for (const std::string& tag : common.logTags) {
    environment->plugin().enabledTags.add(tag);
  }
  return environment;
}

std::unique_ptr<WriterLibrary> loadWriters(const CommonOptions& common) {
  auto library = std::make_unique<WriterLibrary>(WriterLibrary::defaultPath());
  std::vector<std::string> broadcast = {"verbosity=" + std::to_string(common.verbosity)};
  for (const std::string& tag : common.logTags) {
    broadcast.push_back("log-tag=" + tag);
  }
  library->commandLineRead(broadcast);
  return library;
}

Session::Session(const CommonOptions& common)
    : m_environment(makeEnvironment(common)),
      m_library(loadWriters(common)),
      m_signals(m_stop),
      m_formerOpenFileLimit(openFileLimit()) {
  raiseOpenFileLimit();
  m_signals.setLastWords("qumetra: left early; what was received so far is kept in " +
                         m_tempArea.path().string());
}

Session::~Session() = default;

Model& Session::freshModel() {
  m_model.reset();
  m_model = std::make_unique<Model>();
  return *m_model;
}

}  // namespace qumetra::cli
