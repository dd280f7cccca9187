// The plug-in frame: what a host sees of the library of result writers.
//
// A host opens the library, resolves `createPlugins` and `destroyPlugins`, and drives the writers
// that the user asked for through the virtual operations of `WriterPlugin`:
//
//     PluginList* list = createPlugins();
//     auto* writer = static_cast<WriterPlugin*>(list->plugins[0]);
//     if (writer->init("result", false) == 0) { writer->writeMessage(message); ... }
//     writer->fini();
//     destroyPlugins(list);
//
// The order of the virtual operations is part of the contract: hosts are built against it. One
// thread drives a writer; the library starts no thread and takes no lock.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/pwset.h"
#include "host/table_class.h"

class Plugin;

namespace pwr {

class DataHandle;
class EntityHandle;
class IdMessage;
class Metric;
class MetricContainerInfoMessage;
class PluginRequirement;
class SystemMessage;
class TableMessage;
class TextMessage;
struct SystemMetadata;

/// What a plug-in offers under one option name.
class PluginCapability {
 public:
  /// Flags that this library sets and the host interprets.
  static constexpr std::uint8_t kFlagHostInterpreted = 2;
  static constexpr std::uint8_t kFlagContinuous = 4;

  /// `continuous` sets `kFlagContinuous`.
  PluginCapability(std::string name, std::string description, bool continuous);
  PluginCapability(const PluginCapability&) = delete;
  PluginCapability& operator=(const PluginCapability&) = delete;
  virtual ~PluginCapability();

  /// The option name with which the user selects the plug-in.
  std::string m_name;
  /// The help text.
  std::string m_description;
  /// The plug-in that owns this capability; set by `Plugin::addCapability`.
  Plugin* m_plugin = nullptr;
  PWSet<std::string> m_options;
  std::uint8_t m_flags = 0;
  /// Filled by the host, if at all.
  std::deque<std::shared_ptr<PluginRequirement>> m_requirements;
};

/// What a result writer offers.
class WriterPluginCapability : public PluginCapability {
 public:
  WriterPluginCapability(std::set<TableClass> tableClasses, std::string name,
                         std::string description, std::string fileSuffix, bool continuous);
  ~WriterPluginCapability() override;

  /// The table classes that the writer takes. For information: the host filters nothing by it.
  std::set<TableClass> m_tableClasses;
  /// The suffix of the result file as the host shows it.
  std::string m_fileSuffix;
};

}  // namespace pwr

/// The root of all plug-ins. Owns its capabilities.
class Plugin {
 public:
  /// Why a host resets a plug-in. The meaning of the numbers is the host's.
  enum class ResetReason : std::uint32_t { NewCollection = 0 };
  using VersionInfo = std::vector<std::pair<std::string, std::string>>;

  explicit Plugin(std::string guid);
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;
  virtual ~Plugin();

  /// May append name and value pairs about itself. Here: nothing.
  virtual void getVersion(VersionInfo& out);
  /// An option that the host gives to every plug-in. Here: nothing.
  virtual void handleBroadcastOption(const std::string& option);
  /// Returns false when the plug-in cannot be reset. Here: true.
  virtual bool reset(ResetReason reason, std::uint64_t value, const pwr::SystemMetadata& metadata);
  /// The same after a telemetry device was reset.
  virtual bool pmtDevReset(std::uint32_t value, std::uint64_t ticks,
                           const pwr::SystemMetadata& metadata);
  /// Takes ownership of `capability` and points it back at this plug-in.
  virtual void addCapability(pwr::PluginCapability* capability);
  /// The command line has been read. Here: nothing.
  virtual void notifyCommandlineParamsSet_i();

  /// Assigned by the host.
  std::int64_t m_id = -1;
  std::string m_guid;
  /// Owned. A null entry ends the list for the destructor.
  std::vector<pwr::PluginCapability*> m_capabilities;
  std::string m_name;
};

/// A result writer. Every operation returns 0 for success; what `writeMessage` returns concerns
/// that one message, and the writer stays usable. No exception is thrown across an operation on
/// purpose.
class WriterPlugin : public Plugin {
 public:
  explicit WriterPlugin(std::string guid);
  ~WriterPlugin() override;

  /// A writer has one capability: a second one is refused with a warning and stays the caller's.
  void addCapability(pwr::PluginCapability* capability) override;

  /// Starts a collection. `name` is the output base name without suffix. Non-zero means that the
  /// writer has no output; the host then calls nothing more than `fini`.
  virtual int init(const std::string& name, bool continuous) = 0;
  /// Ends a collection: the writer assembles its files.
  virtual int fini() = 0;
  /// In continuous mode: hands out what has come since the last call. Writers that do not serve the
  /// mode return 0.
  virtual int flushContinuousResults(const pwr::SystemMetadata& metadata);

  // The messages. Writers override what they take; the others return 0.
  virtual int writeMessage(const pwr::TableMessage& table);
  virtual int writeMessage(const pwr::TextMessage& message);
  virtual int writeMessage(const pwr::SystemMessage& message);
  virtual int writeMessage(const pwr::IdMessage& message);
  virtual int writeMessage(const pwr::Metric& metric);
  virtual int writeMessage(const pwr::MetricContainerInfoMessage& message);

  // A table as one flat list of columns: the shared handles, then for every entity every field
  // handle, or the field handles alone when there are no entities.
  /// Appends one title per column.
  virtual void getColumnTitles(const pwr::TableMessage& table,
                               std::deque<std::string>& titles) const;
  /// Appends one cell text per column, in the same order. A cell that cannot be read is "Invalid"
  /// unless the failed read left another text; an absent one is empty.
  virtual void getRowValues(const pwr::TableMessage& table, std::deque<std::string>& values) const;

  /// The title of the column of `entity` and `field`, either of which may be null.
  std::string getFieldNameFromHandle(const pwr::TableMessage& table,
                                     const pwr::EntityHandle* entity,
                                     const pwr::DataHandle* field) const;
  /// The text of that column's cell.
  std::string getFieldValueFromHandle(const pwr::TableMessage& table,
                                      const pwr::EntityHandle* entity,
                                      const pwr::DataHandle* field) const;
};

/// What `createPlugins` returns. The array comes from malloc.
struct PluginList {
  std::int32_t count;
  Plugin** plugins;
};

extern "C" {
/// Makes every writer. Returns null when there is no memory for the list. The caller owns the list
/// and gives it back with `destroyPlugins`. An exception that a constructor throws passes through.
PluginList* createPlugins();
/// Destroys the writers and the list. Null is allowed, as are a null array and null entries.
void destroyPlugins(PluginList* list);
}
