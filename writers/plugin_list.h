// How the list of plug-ins is made, apart from which plug-ins stand in it. Inside of the library
// only: hosts get their list from `createPlugins`.
#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "writers/writer_plugins.h"

/// Makes one plug-in.
using PluginMaker = std::unique_ptr<Plugin> (*)();

/// Makes a plug-in by plain construction.
template <typename Writer>
__attribute__((visibility("hidden"))) std::unique_ptr<Plugin> makePlugin() {
  return std::make_unique<Writer>();
}

/// Makes a list that holds one plug-in per maker, in their order, for `destroyPlugins` to take
/// back. `allocate` gets the size of the array in bytes; what it returns must be from malloc. When
/// it returns null, so does this, and the plug-ins stay alive without an owner: a host without a
/// list can only end, and destroying them may ask for memory that is not there. An exception from a
/// maker passes through; the plug-ins made before it are gone.
__attribute__((visibility("hidden"))) PluginList* makePluginList(
    std::span<const PluginMaker> makers, void* (*allocate)(std::size_t));
