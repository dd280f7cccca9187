#include "tests/recording/message_dump.h"

#include <sstream>

#include "host/platform_metadata.h"
#include "host/quantity.h"

namespace qumetra::test {
namespace {

std::string exact(double value) {
  std::ostringstream out;
  out << std::hexfloat << value;
  return out.str();
}

std::string brief(const pwr::DataHandle* handle) {
  return handle == nullptr ? "null"
                           : '#' + std::to_string(handle->getId()) + ' ' + handle->getName();
}

std::string briefQuantity(const pwr::Quantity* quantity) {
  if (quantity == nullptr) {
    return "null";
  }
  std::string title;
  quantity->toTitleString(title);
  const pwr::Quantity* rate = nullptr;
  double factor = 0;
  const int status = quantity->getRateConversion(rate, factor);
  return '#' + std::to_string(quantity->getId()) + ' ' + std::to_string(quantity->toQuantity()) +
         ' ' + quantity->toQuantityString() + '/' + quantity->toUnitsString() + '/' + title +
         " rate " + std::to_string(status) + ' ' +
         (rate == nullptr ? "null" : rate->toQuantityString()) + ' ' + exact(factor);
}

std::string attributes(const pwr::AttributeValueManager& values) {
  std::string text = " attributes[";
  for (const auto& [attribute, value] : values) {
    text += brief(attribute) + '=' + describe(value) + ';';
  }
  return text + ']';
}

std::string notes(const pwr::TextNotes* notes) {
  if (notes == nullptr) {
    return "null";
  }
  std::string text;
  for (const auto& [placement, lines] : *notes) {
    text += std::to_string(placement) + ':';
    for (const std::string& line : lines) {
      text += line + '|';
    }
  }
  return '{' + text + '}';
}

std::string cell(const pwr::TableMessage& table, const pwr::EntityHandle* entity,
                 const pwr::DataHandle* handle) {
  std::string out = "UNTOUCHED";
  bool present = false;
  const int status = entity == nullptr ? table.getFieldAsString(handle, out, present)
                                       : table.getFieldAsString(entity, handle, out, present);
  return std::to_string(status) + (present ? "+" : "-") + out;
}

std::string element(const pwr::DataElement& element) {
  std::string text = "\n  entity " + describe(*element.getEntity());
  if (element.getDescriptor() != nullptr) {
    text += " descriptor " + describe(*element.getDescriptor());
  }
  text += " kelto " + brief(element.getKeltoDescriptor());
  text += " value " + describe(*element.getValue());
  text += " for " + std::to_string(element.getDuration());
  if (element.getAdditionalInfo() != nullptr) {
    text += " info{";
    for (const auto& [id, value] : *element.getAdditionalInfo()) {
      text += std::to_string(id) + ':' + describe(value) + ';';
    }
    text += '}';
  }
  return text;
}

std::string columns(const pwr::Metric& metric) {
  std::string text = " entities[";
  for (const auto& [entity, descriptor] : metric.entities) {
    text += brief(entity) + '/' + brief(descriptor) + ';';
  }
  text += "] entityList[";
  for (const pwr::EntityHandle* entity : metric.entityList) {
    text += brief(entity) + ';';
  }
  return text + ']';
}

std::string values(const std::vector<pwr::Data>& list) {
  std::string text = "[";
  for (const pwr::Data& value : list) {
    text += describe(value) + ';';
  }
  return text + ']';
}

std::string orNull(const pwr::DataHandle* handle) {
  return handle == nullptr ? "null" : describe(*handle);
}

std::string version(const pwr::VersionRecord& record) {
  return std::to_string(record.major) + '.' + std::to_string(record.minor) + '.' +
         std::to_string(record.third);
}

std::string cpu(const pwr::CPUMetadata& metadata) {
  const pwr::CPUWords& words = metadata.m_cpuWords;
  std::ostringstream out;
  out << " cpu " << int{metadata.m_family} << ' ' << int{metadata.m_model} << ' '
      << int{metadata.m_stepping} << ' ' << std::hexfloat << words.busFrequencyMHz << ' '
      << words.lowFrequencyMHz << ' ' << words.highFrequencyMHz << ' ' << words.cpuFrequencyMHz
      << ' ' << words.platformId << ' ' << words.lastWord << " topology "
      << metadata.m_topology.getNumPackages() << metadata.m_topology.getNumModules()
      << metadata.m_topology.getNumCores() << metadata.m_topology.getNumThreads();
  std::vector<const pwr::TNode*> threads;
  metadata.m_topology.getAllThreads(threads);
  for (const pwr::TNode* node : threads) {
    out << ' ';
    for (; node != nullptr; node = node->parent) {
      out << node->kind << ':' << node->id << '<';
    }
  }
  return out.str();
}

std::string platformEntry(const pwr::PlatformMetadata* entry) {
  if (entry == nullptr) {
    return "null";
  }
  std::string text = entry->m_name + '/' + entry->m_description + '/';
  for (const std::string& specifier : entry->m_specifiers) {
    text += specifier + ',';
  }
  for (const auto& [name, value] : entry->m_values) {
    text += name + '=' + value + ',';
  }
  text += std::to_string(entry->m_id);
  if (const auto* processor = dynamic_cast<const pwr::CPUMetadata*>(entry)) {
    text += cpu(*processor);
  }
  return dynamic_cast<const pwr::PCHMetadata*>(entry) != nullptr ? text + " pch" : text;
}

}  // namespace

std::string describe(const pwr::Data& value) {
  long integer = 0;
  unsigned long unsignedInteger = 0;
  double real = 0;
  pwr::Data::IntRange integers;
  pwr::Data::UIntRange unsignedIntegers;
  pwr::Data::RealRange reals;
  const pwr::DataHandle* handle = nullptr;
  std::string text;
  const std::string tag = std::to_string(value.m_tag) + ' ';
  if (value.toInt(integer) == 0) {
    return tag + std::to_string(integer);
  }
  if (value.toUInt(unsignedInteger) == 0) {
    return tag + std::to_string(unsignedInteger);
  }
  if (value.toReal(real) == 0) {
    return tag + exact(real);
  }
  if (value.toIntRange(integers) == 0) {
    return tag + std::to_string(integers.first) + ".." + std::to_string(integers.second);
  }
  if (value.toUIntRange(unsignedIntegers) == 0) {
    return tag + std::to_string(unsignedIntegers.first) + ".." +
           std::to_string(unsignedIntegers.second);
  }
  if (value.toRealRange(reals) == 0) {
    return tag + exact(reals.first) + ".." + exact(reals.second);
  }
  if (value.toHandle(handle) == 0) {
    return tag + brief(handle);
  }
  return value.toString(text) == 0 ? tag + text : tag;
}

std::string describe(const pwr::DataHandle& handle) {
  std::string text = '(' + brief(&handle) + '/' + handle.getFieldName() + '/' + handle.getHeader() +
                     '/' + handle.getQualifiedName() + " type " +
                     std::to_string(handle.getHandleType());
  if (const auto* attribute = dynamic_cast<const pwr::Attribute*>(&handle)) {
    text += " attribute " + std::to_string(static_cast<int>(attribute->getAttributeType())) + ' ' +
            briefQuantity(attribute->m_quantity);
  }
  if (const auto* entity = dynamic_cast<const pwr::EntityHandle*>(&handle)) {
    text += " parent " + brief(entity->getParent());
  }
  if (const auto* holder = dynamic_cast<const pwr::AttributeValueManager*>(&handle)) {
    text += attributes(*holder);
  }
  if (const auto* pair = dynamic_cast<const pwr::NameValuePair*>(&handle)) {
    text += ' ' + pair->getInfoName() + '/' + pair->getValueDesc() + '/' +
            std::to_string(pair->getValue());
  }
  if (const auto* process = dynamic_cast<const pwr::Process*>(&handle)) {
    text += " process " + std::to_string(process->getPid()) + ' ' +
            std::to_string(process->getParentPid()) + ' ' + process->getPath() + ' ' +
            std::to_string(process->getStartTime()) + '-' + std::to_string(process->getEndTime());
  }
  if (const auto* thread = dynamic_cast<const pwr::Thread*>(&handle)) {
    text += " thread " + std::to_string(thread->getTid()) + ' ' + std::to_string(thread->getPid()) +
            ' ' + std::to_string(thread->getStartTime()) + '-' +
            std::to_string(thread->getEndTime());
  }
  if (const auto* expected = dynamic_cast<const pwr::ExpectedAttributeManager*>(&handle)) {
    text += " expected";
    for (const pwr::Attribute* attribute : *expected) {
      text += ' ' + brief(attribute);
    }
  }
  return text + ')';
}

std::string describe(const pwr::SystemMetadata& metadata) {
  std::ostringstream out;
  out << std::hexfloat << metadata.m_scuWord << '/' << metadata.m_platformName << '/'
      << metadata.m_hostName << '/' << metadata.m_osName << '/' << metadata.m_osType << '/'
      << metadata.m_osVersion << '/' << version(metadata.m_toolVersion) << '/'
      << version(metadata.m_driverVersion) << '/';
  for (const std::string& argument : metadata.m_collectorArguments) {
    out << argument << ' ';
  }
  out << metadata.m_osBuildNumber << '/' << metadata.m_timestampFrequency << '/'
      << metadata.m_firstTimestamp << '/' << metadata.m_lastTimestamp << '/'
      << metadata.m_timerResolution << '/' << metadata.m_timeDisplayResolution << '/'
      << int{metadata.m_hasIntegratedGraphics} << '/' << int{metadata.m_secureSignIn} << '/'
      << metadata.m_versionWord << '/' << metadata.getCollectionStartTime() << '/'
      << metadata.getCollectionDurationSec() << '/' << metadata.getCPUNativeModelName(3) << '/'
      << metadata.getFormattedCPUCodeName() << '/' << metadata.getFormattedPCHDeviceNamesStr("any");
  for (const auto& [type, entry] : metadata.m_platformMetadata) {
    out << "\n  platform " << type << ' ' << platformEntry(entry);
  }
  return out.str();
}

std::string describe(const pwr::TableMessage& table) {
  std::ostringstream out;
  out << "table " << table.m_id << ' ' << table.m_metricId << ' ' << table.getTitle()
      << " quantity " << briefQuantity(table.getQuantity()) << " notes "
      << notes(table.getTextNotes()) << " type " << int{table.getTableMessageType()} << " skip "
      << table.mustBeSkipped() << " headers " << table.hasFieldHeaders() << " counts "
      << table.getEntityCount() << ' ' << table.getHandleCount() << ' '
      << table.getSharedHandleCount() << ' ' << table.getFieldCount();
  for (auto shared = table.sharedHandlesBegin(); shared != table.sharedHandlesEnd(); ++shared) {
    out << "\n  shared " << orNull(*shared) << ": " << cell(table, nullptr, *shared);
    for (auto entity = table.entitiesBegin(); entity != table.entitiesEnd(); ++entity) {
      out << ", " << cell(table, entity->second, *shared);
    }
  }
  for (auto field = table.fieldHandlesBegin(); field != table.fieldHandlesEnd(); ++field) {
    out << "\n  field " << orNull(*field) << ": " << cell(table, nullptr, *field);
    for (auto entity = table.entitiesBegin(); entity != table.entitiesEnd(); ++entity) {
      out << ", " << brief(entity->second) << ' ' << cell(table, entity->second, *field);
    }
  }
  return out.str();
}

void MessageDump::system(const pwr::SystemMessage& message) {
  m_messages.push_back("system " + std::to_string(message.m_id) + ' ' +
                       describe(*message.m_metadata));
}

void MessageDump::text(const pwr::TextMessage& message) {
  m_messages.push_back("text " + std::to_string(message.getMessageType()) + ' ' +
                       std::to_string(message.m_id) + ' ' + message.m_message);
}

void MessageDump::id(const pwr::IdMessage& message) {
  m_messages.push_back("id " + std::to_string(message.m_id));
}

void MessageDump::sample(const pwr::Metric& metric) {
  std::string text = "sample " + std::to_string(metric.metricId) + ' ' + metric.name + " type " +
                     std::to_string(metric.metricType) + ' ' + briefQuantity(metric.quantity) +
                     columns(metric) + " states" + values(metric.states) + ' ' +
                     metric.featureName + '/' + metric.groupName + " metadata" +
                     values(metric.metadataValues) + orNull(metric.valueHandle) +
                     orNull(metric.descriptorTitleHandle) + orNull(metric.entityTitleHandle) +
                     (metric.writeEntityAttributes ? " attributes" : "") + " class " +
                     std::to_string(static_cast<int>(metric.tableClass)) + " at " +
                     std::to_string(metric.getData().timestamp);
  for (const pwr::DataElement* one : metric.getData().elements) {
    text += element(*one);
  }
  m_messages.push_back(text);
}

void MessageDump::table(const pwr::TableMessage& table) { m_messages.push_back(describe(table)); }

void MessageDump::container(const pwr::MetricContainerInfoMessage& message) {
  m_messages.push_back(
      "container " + std::to_string(message.m_id) + ' ' + std::to_string(message.metricId) + ' ' +
      notes(message.textNotes) + ' ' + message.containerName + ' ' +
      (message.metricInfoTable == nullptr ? "null" : describe(*message.metricInfoTable)) + ' ' +
      message.featureName + ' ' + message.metricName + ' ' + std::to_string(message.residencyView));
}

void MessageDump::flush(const pwr::SystemMetadata& metadata) {
  m_messages.push_back("flush " + describe(metadata));
}

void MessageDump::attributesChanged(const pwr::DataHandle& handle) {
  m_messages.push_back("attributes of " + describe(handle));
}

void MessageDump::ended(const pwr::DataHandle& handle) {
  m_messages.push_back("ended " + describe(handle));
}

void MessageDump::metadataChanged(const pwr::SystemMetadata& metadata) {
  m_messages.push_back("metadata " + describe(metadata));
}

void Tee::system(const pwr::SystemMessage& message) {
  m_first.system(message);
  m_second.system(message);
}

void Tee::text(const pwr::TextMessage& message) {
  m_first.text(message);
  m_second.text(message);
}

void Tee::id(const pwr::IdMessage& message) {
  m_first.id(message);
  m_second.id(message);
}

void Tee::sample(const pwr::Metric& metric) {
  m_first.sample(metric);
  m_second.sample(metric);
}

void Tee::table(const pwr::TableMessage& table) {
  m_first.table(table);
  m_second.table(table);
}

void Tee::container(const pwr::MetricContainerInfoMessage& message) {
  m_first.container(message);
  m_second.container(message);
}

void Tee::flush(const pwr::SystemMetadata& metadata) {
  m_first.flush(metadata);
  m_second.flush(metadata);
}

void Tee::attributesChanged(const pwr::DataHandle& handle) {
  m_first.attributesChanged(handle);
  m_second.attributesChanged(handle);
}

void Tee::ended(const pwr::DataHandle& handle) {
  m_first.ended(handle);
  m_second.ended(handle);
}

void Tee::metadataChanged(const pwr::SystemMetadata& metadata) {
  m_first.metadataChanged(metadata);
  m_second.metadataChanged(metadata);
}

}  // namespace qumetra::test
