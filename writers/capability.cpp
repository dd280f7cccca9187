#include "writers/capability.h"

#include <memory>

#include "writers/writer_plugins.h"

void declareCapability(WriterPlugin& writer, const CapabilityForm& form) {
  auto capability = std::make_unique<pwr::WriterPluginCapability>(
      form.tableClasses, form.option, form.description, form.suffix, false);
  capability->m_flags = form.flags;
  writer.addCapability(capability.release());
}
