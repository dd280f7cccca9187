#include "writers/plugin_list.h"

#include <vector>

PluginList* makePluginList(std::span<const PluginMaker> makers, void* (*allocate)(std::size_t)) {
  std::vector<std::unique_ptr<Plugin>> plugins;
  plugins.reserve(makers.size());
  for (const PluginMaker make : makers) {
    plugins.push_back(make());
  }

  auto list = std::make_unique<PluginList>();
  list->count = static_cast<std::int32_t>(plugins.size());
  // NOLINTNEXTLINE(bugprone-sizeof-expression): the array holds pointers.
  list->plugins = static_cast<Plugin**>(allocate(plugins.size() * sizeof(Plugin*)));
  if (list->plugins == nullptr) {
    // Let go, not destroyed: without a list a host can only end, and the plug-ins' destructors may
    // ask for memory that is not there.
    for (std::unique_ptr<Plugin>& plugin : plugins) {
      static_cast<void>(plugin.release());
    }
    return nullptr;
  }
  for (std::size_t i = 0; i < plugins.size(); ++i) {
    list->plugins[i] = plugins[i].release();
  }
  return list.release();
}
