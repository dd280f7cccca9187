#include "writers/writer_plugins.h"

#include <array>
#include <cstdlib>
#include <utility>

#include "client/src/common/pw_log.h"
#include "writers/autowriter_plugin.h"
#include "writers/binarywriter_plugin/binary_writer.h"
#include "writers/json_plugin.h"
#include "writers/keltowriter_plugin/kelto_writer.h"
#include "writers/phmwriter_text_plugin/phm_writer.h"
#include "writers/plugin_list.h"
#include "writers/qmjson_plugin/qmjson_writer.h"
#include "writers/textwriter_plugin/int_writer.h"
#include "writers/textwriter_plugin/raw_writer.h"
#include "writers/textwriter_plugin/summary_writer.h"

namespace pwr {

PluginCapability::PluginCapability(std::string name, std::string description, bool continuous)
    : m_name(std::move(name)),
      m_description(std::move(description)),
      m_flags(continuous ? kFlagContinuous : std::uint8_t{0}) {}

PluginCapability::~PluginCapability() = default;

WriterPluginCapability::WriterPluginCapability(std::set<TableClass> tableClasses, std::string name,
                                               std::string description, std::string fileSuffix,
                                               bool continuous)
    : PluginCapability(std::move(name), std::move(description), continuous),
      m_tableClasses(std::move(tableClasses)),
      m_fileSuffix(std::move(fileSuffix)) {}

WriterPluginCapability::~WriterPluginCapability() = default;

}  // namespace pwr

Plugin::Plugin(std::string guid) : m_guid(std::move(guid)) {}

Plugin::~Plugin() {
  for (const pwr::PluginCapability* capability : m_capabilities) {
    if (capability == nullptr) {
      break;  // A null entry ends the list; what stands behind it is not this plug-in's.
    }
    delete capability;
  }
}

void Plugin::getVersion(VersionInfo& /*out*/) {}

void Plugin::handleBroadcastOption(const std::string& /*option*/) {}

bool Plugin::reset(ResetReason /*reason*/, std::uint64_t /*value*/,
                   const pwr::SystemMetadata& /*metadata*/) {
  return true;
}

bool Plugin::pmtDevReset(std::uint32_t /*value*/, std::uint64_t /*ticks*/,
                         const pwr::SystemMetadata& /*metadata*/) {
  return true;
}

void Plugin::addCapability(pwr::PluginCapability* capability) {
  m_capabilities.push_back(capability);
  capability->m_plugin = this;
}

void Plugin::notifyCommandlineParamsSet_i() {}

WriterPlugin::WriterPlugin(std::string guid) : Plugin(std::move(guid)) {}

WriterPlugin::~WriterPlugin() = default;

void WriterPlugin::addCapability(pwr::PluginCapability* capability) {
  if (m_capabilities.empty()) {
    Plugin::addCapability(capability);
    return;
  }
  // Users search their logs for this text, so its misspelling stays.
  pwr::logPlainWarning(
      "WARNING: Illegal attempt to register a second capabliity for a writer plugin...ignored\n");
}

int WriterPlugin::flushContinuousResults(const pwr::SystemMetadata& /*metadata*/) { return 0; }

int WriterPlugin::writeMessage(const pwr::TableMessage& /*table*/) { return 0; }

int WriterPlugin::writeMessage(const pwr::TextMessage& /*message*/) { return 0; }

int WriterPlugin::writeMessage(const pwr::SystemMessage& /*message*/) { return 0; }

int WriterPlugin::writeMessage(const pwr::IdMessage& /*message*/) { return 0; }

int WriterPlugin::writeMessage(const pwr::Metric& /*metric*/) { return 0; }

int WriterPlugin::writeMessage(const pwr::MetricContainerInfoMessage& /*message*/) { return 0; }

namespace {

// Hosts may rely on the order: SummaryWriter, KeltoWriter, QMJSONWriter, JSONWriter, BinaryWriter,
// RawWriterV2, IntWriterV2, PhmTextWriter, AutoWriter. A new writer takes its place among them.
constexpr std::array kMakers = {
    &makePlugin<SummaryWriter>, &makePlugin<KeltoWriter>,   &makePlugin<QMJSONWriter>,
    &makePlugin<JSONWriter>,    &makePlugin<BinaryWriter>,  &makePlugin<RawWriterV2>,
    &makePlugin<IntWriterV2>,   &makePlugin<PhmTextWriter>, &makePlugin<AutoWriter>,
};

}  // namespace

PluginList* createPlugins() { return makePluginList(kMakers, &std::malloc); }

void destroyPlugins(PluginList* list) {
  if (list == nullptr) {
    return;
  }
  if (list->plugins != nullptr) {
    // The count is read anew each time: a plug-in may shorten the list as it goes.
    for (std::int32_t i = 0; i < list->count; ++i) {
      delete list->plugins[i];
    }
    std::free(list->plugins);
  }
  delete list;
}
