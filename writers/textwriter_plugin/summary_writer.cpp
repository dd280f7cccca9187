#include "writers/textwriter_plugin/summary_writer.h"

#include "host/messages.h"
#include "host/table.h"
#include "writers/capability.h"

SummaryWriter::SummaryWriter()
    : TextWriter("108d88ba-5ee4-11e4-aa15-123b93f75cba"),
      m_metricOrder(std::make_unique<TextWriterImpl::MetricOrder>()),
      m_featureMetrics(std::make_unique<TextWriterImpl::FeatureMetrics>()) {
  declareCapability(
      *this,
      {.option = "sum",
       .description = "Write summary reports for all collected metrics to CSV file [default]",
       .suffix = ".csv",
       .tableClasses = {pwr::TableClass::Summary}});
  m_impl = std::make_unique<TextWriterImpl>(", ", ".csv");
}

SummaryWriter::~SummaryWriter() = default;

int SummaryWriter::init(const std::string& name, bool /*continuous*/) {
  m_toConsole = name == kConsoleName;
  m_metricOrder->clear();
  m_knownMetrics.clear();
  m_featureMetrics->clear();
  return m_impl->init(name);
}

int SummaryWriter::fini() {
  m_impl->m_metricOrder = m_metricOrder.get();
  m_impl->m_featureMetrics = m_featureMetrics.get();
  return m_impl->fini();
}

int SummaryWriter::writeMessage(const pwr::TextMessage& message) {
  if (message.getMessageType() == pwr::WriterMessage::kHeaderText) {
    return writeMessage(static_cast<const pwr::HeaderTextMessage&>(message));
  }
  return writeText_i(TextWriterImpl::kTextKey, message.m_message);
}

int SummaryWriter::writeMessage(const pwr::HeaderTextMessage& message) {
  return writeText_i(TextWriterImpl::kHeaderTextKey, message.m_message);
}

int SummaryWriter::writeText_i(std::uint64_t key, const std::string& text) {
  bool isNew = false;
  TempFileManager& manager = m_impl->getTempFile(key, isNew, 1);
  if (isNew) {
    manager.m_echo = m_toConsole;
  }
  // Without a temp file the text is dropped; that was said when the file could not be made.
  manager.pushString(nullptr, text, 0);
  return 0;
}

int SummaryWriter::writeMessage(const pwr::TableMessage& table) {
  if (table.mustBeSkipped() != 0) {
    return 0;
  }
  noteMetric_i(table.m_metricId);
  bool isNew = false;
  TempFileManager& manager =
      m_impl->getTempFile(TextWriterImpl::combineIds(table.m_metricId, table.m_id), isNew,
                          TextWriterImpl::countColumns(table, 0));
  return handleTableMessage(table, manager, isNew);
}

int SummaryWriter::writeMessage(const pwr::MetricContainerInfoMessage& message) {
  if (message.textNotes != nullptr) {
    m_impl->m_containerNotes[message.metricId] = message.textNotes;
  }
  if (!message.containerName.empty()) {
    m_impl->m_containerNames[message.metricId] = message.containerName;
  }
  if (!message.featureName.empty() && !message.metricName.empty()) {
    (*m_featureMetrics)[message.featureName][message.metricName] = message.metricId;
  }
  if (message.metricInfoTable == nullptr) {
    return 0;
  }
  noteMetric_i(message.metricId);
  bool isNew = false;
  TempFileManager& manager = m_impl->getTempMetricInfoFile(*message.metricInfoTable, isNew, 0);
  // A cell that cannot be read is shown in the report; the message itself has been taken.
  handleTableMessage(*message.metricInfoTable, manager, isNew);
  return 0;
}

void SummaryWriter::noteMetric_i(std::uint32_t metricId) {
  if (m_knownMetrics.insert(metricId).second) {
    m_metricOrder->push_back(metricId);
  }
}

int SummaryWriter::handleTableMessage(const pwr::TableMessage& table, TempFileManager& manager,
                                      bool isNew) {
  if (isNew) {
    manager.m_echo = m_toConsole;
    m_impl->handleTitle(table, manager);
    m_impl->handleFieldHeaders(table, manager, 0);
    m_impl->handleFieldMetadata(table, manager, 0);
    if (table.getTextNotes() != nullptr) {
      m_impl->handlePerTableTextNotes(table);
    }
  }
  if (table.getTableMessageType() == pwr::TableMessage::kTitleTable) {
    return 0;
  }
  return m_impl->handleData(table, nullptr, manager, 0);
}
