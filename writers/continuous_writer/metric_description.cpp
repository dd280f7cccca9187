#include "writers/continuous_writer/metric_description.h"

#include "client/src/common/number_text.h"
#include "client/src/common/pw_log.h"
#include "host/handles.h"
#include "host/metric.h"
#include "host/platform_metadata.h"
#include "host/quantity.h"
#include "host/system_metadata.h"
#include "writers/sample_reading.h"

namespace {

using Metadata = ContinuousWriter::Metadata;
using Node = std::shared_ptr<Metadata>;

/// The id of every node that is no metric's.
constexpr int kNoId = -1;

Node makeNode() { return std::make_shared<Metadata>("", kNoId); }

Metadata::Data entry(const std::string& value) { return {value, nullptr}; }
Metadata::Data entry(const Node& value) { return {"", value}; }
template <typename Number>
Metadata::Data entry(Number value) {
  return {pwr::toString(value), nullptr};
}

Node describeQuantity(const pwr::Metric& metric) {
  std::string name;
  std::string units;
  if (metric.quantity != nullptr) {
    name = metric.quantity->toQuantityString();
    units = metric.quantity->toUnitsString();
  } else {
    pwr::logPlainWarning("WARNING: no quantity so no units for %s?!\n", metric.name.c_str());
  }
  Node quantity = makeNode();
  quantity->add("Name", name);
  quantity->add("Units", units);
  return quantity;
}

Node describeDescriptor(const pwr::DataDescriptor& descriptor) {
  std::string attribute;
  static_cast<void>(firstAttributeText(descriptor, attribute));
  Node node = makeNode();
  node->add("Name", descriptor.getName());
  node->add("AttributeValue", attribute);
  return node;
}

Node describeColumn(const pwr::Metric::Column& column) {
  Node combination = makeNode();
  combination->add("Entity",
                   column.first == nullptr ? std::string() : column.first->getQualifiedName());
  if (column.second != nullptr) {
    combination->add("Descriptor", describeDescriptor(*column.second));
  }
  return combination;
}

Node describePlatform(const pwr::SystemMetadata& system, const pwr::CPUMetadata& cpu) {
  Node platform = makeNode();
  platform->add("Platform ID", cpu.m_cpuWords.platformId);
  // Readers look this key up as it is; the document of an ordinary run spells it right.
  platform->add("Plaform Name", system.m_platformName);
  platform->add("CPU Name", system.getFormattedCPUCodeName());
  platform->add("CPU Native Name", system.getCPUNativeModelName(cpu.m_model));
  platform->add("PCH Name", system.getFormattedPCHDeviceNamesStr(system.m_platformName));
  platform->add("Host Name", system.m_hostName);
  platform->add("Num Packages", cpu.m_topology.getNumPackages());
  platform->add("Num Modules", cpu.m_topology.getNumModules());
  platform->add("Num Cores", cpu.m_topology.getNumCores());
  platform->add("Num Threads", cpu.m_topology.getNumThreads());
  platform->add("HFM Frequency MHz", cpu.m_cpuWords.highFrequencyMHz);
  platform->add("LFM Frequency MHz", cpu.m_cpuWords.lowFrequencyMHz);
  platform->add("CPU Frequency MHz", cpu.m_cpuWords.cpuFrequencyMHz);
  platform->add("Bus Frequency MHz", cpu.m_cpuWords.busFrequencyMHz);
  return platform;
}

Node describeOs(const pwr::SystemMetadata& system) {
  Node os = makeNode();
  os->add("OS Name", system.m_osName);
  os->add("OS Type", system.m_osType);
  os->add("OS Version", system.m_osVersion);
  return os;
}

Node describeCollection(const pwr::SystemMetadata& system) {
  Node collection = makeNode();
  collection->add("Collection Start Timestamp", system.m_firstTimestamp);
  collection->add("Collection Stop Timestamp", system.m_lastTimestamp);
  collection->add("Collection Duration", system.getCollectionDurationSec());
  return collection;
}

}  // namespace

ContinuousWriter::Metadata::Metadata(const std::string& nodeName, int nodeId)
    : name(nodeName), id(nodeId) {}

template <typename T>
void ContinuousWriter::Metadata::add(const std::string& key, const T& value) {
  entries[key].push_back(std::make_shared<Data>(entry(value)));
}

template void Metadata::add(const std::string& key, const std::string& value);
template void Metadata::add(const std::string& key, const Node& value);
template void Metadata::add(const std::string& key, const unsigned int& value);
template void Metadata::add(const std::string& key, const unsigned long& value);
template void Metadata::add(const std::string& key, const float& value);
template void Metadata::add(const std::string& key, const double& value);

std::shared_ptr<Metadata> describeMetric(const pwr::Metric& metric) {
  auto root = std::make_shared<Metadata>(metric.featureName, static_cast<int>(metric.metricId));
  root->add("Quantity", describeQuantity(metric));
  root->add("Type", std::string(metricTypeName(metric.metricType)));
  for (const pwr::Data& state : metric.states) {
    std::string text;
    state.toFormattedString(text);
    root->add("States", text);
  }
  for (const pwr::Metric::Column& column : metric.entities) {
    root->add("Entity-Descriptor-Combinations", describeColumn(column));
  }
  return root;
}

std::shared_ptr<Metadata> describeSystem(const pwr::SystemMetadata& system,
                                         const pwr::CPUMetadata& cpu) {
  Node root = makeNode();
  root->add("Platform", describePlatform(system, cpu));
  root->add("OS", describeOs(system));
  root->add("Qumetra", describeCollection(system));
  return root;
}
