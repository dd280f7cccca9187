// What a writer tells the host about itself.
#pragma once

#include <cstdint>
#include <set>

#include "host/table_class.h"

class WriterPlugin;

/// The parts of a writer's capability. The texts are copied.
struct CapabilityForm {
  /// The option name with which the user selects the writer.
  const char* option;
  /// The help text.
  const char* description;
  /// The suffix of the result file as the host shows it.
  const char* suffix;
  /// Flags of `pwr::PluginCapability`.
  std::uint8_t flags = 0;
  /// For information: hosts filter nothing by it.
  std::set<pwr::TableClass> tableClasses = {};
};

/// Gives `writer`, in its constructor, the capability that `form` describes. The writer owns it.
/// REQUIRES: the writer has none yet.
void declareCapability(WriterPlugin& writer, const CapabilityForm& form);
