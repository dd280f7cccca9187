#include "host/environment.h"
#include "host/logger.h"

PluginEnvironment* g_pluginEnvironment = nullptr;

PluginEnvironment::PluginEnvironment(LogSink& error, LogSink& warning, std::ostream& quiet)
    : errorLog(error), warningLog(warning), quietLog(quiet) {}
PluginEnvironment::~PluginEnvironment() = default;

pwr::Logger* PluginEnvironment::getFileOutputHandle(const char* name) const {
  const std::string key = name == nullptr ? "" : name;
  auto& output = m_outputs[key];
  if (output == nullptr) {
    output = std::make_unique<pwr::Logger>(key);
  }
  return output.get();
}
