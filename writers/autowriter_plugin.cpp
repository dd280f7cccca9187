#include "writers/autowriter_plugin.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <fstream>
#include <optional>
#include <string_view>
#include <utility>

#include "client/src/common/number_text.h"
#include "client/src/common/pw_log.h"
#include "host/handles.h"
#include "host/messages.h"
#include "host/system_metadata.h"
#include "host/table.h"
#include "writers/capability.h"
#include "writers/table_cells.h"

namespace {

constexpr const char* kGuid = "894d2fa0-61c8-11e7-9598-0800200c9a66";
constexpr const char* kFileName = "Automation_Summary.csv";
/// The first column, by which header lines are known.
constexpr const char* kNameColumn = "Output_Name";

/// Counts of what was received say nothing about the machine.
constexpr std::array<std::string_view, 4> kIgnoredTitles = {
    "Summary: Total Samples Received",
    "Summary: Counts",
    "Summary: Entry Counts",
    "Summary - Sampled: Total Samples Received",
};

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

bool isIgnored(std::string_view title) {
  return std::any_of(kIgnoredTitles.begin(), kIgnoredTitles.end(),
                     [title](std::string_view ignored) { return contains(title, ignored); });
}

/// How many of a row's `columns` name the row; the others are its values.
std::size_t keyColumnCount(std::string_view title, std::size_t columns) {
  const auto allBut = [columns](std::size_t values) { return columns - std::min(values, columns); };
  if (contains(title, "ACPI D-State Summary: Residency (Percentage and Time)") ||
      contains(title, "ACPI F-State Summary: Residency (Percentage and Time)")) {
    return std::min<std::size_t>(4, columns);
  }
  if (contains(title, "Summary: Average Rate and Total")) {
    return allBut(2);
  }
  if (contains(title, "Summary: Total")) {
    return allBut(1);
  }
  return std::min<std::size_t>(1, columns);
}

/// The first `count` cells with their titles, joined by "_".
std::string rowKey(const std::deque<std::string>& titles, const std::deque<std::string>& cells,
                   std::size_t count) {
  std::string key;
  for (std::size_t i = 0; i < count; ++i) {
    if (!key.empty()) {
      key += '_';
    }
    if (!titles[i].empty()) {
      key += titles[i] + '_';
    }
    key += cells[i];
  }
  return key;
}

std::string commaTerminated(const std::vector<std::string>& entries) {
  std::string line;
  for (const std::string& entry : entries) {
    line += entry + ',';
  }
  return line;
}

/// `name` up to and with its last backslash. A slash does not count, although it ends a directory
/// here: scripts look for the summary of "dir/run" in the current directory.
std::string summaryDirectory(const std::string& name) {
  const std::size_t backslash = name.rfind('\\');
  return backslash == std::string::npos ? std::string() : name.substr(0, backslash + 1);
}

/// The last line of the file that begins as a header does, if there is any.
std::optional<std::string> lastHeader(const std::string& path) {
  std::optional<std::string> header;
  std::ifstream file(path);
  std::string line;
  while (std::getline(file, line)) {
    if (line.starts_with(kNameColumn)) {
      header = line;
    }
  }
  return header;
}

/// Returns false when the file could neither be opened nor made, or did not take the whole text.
bool appendText(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::app);
  file << text;
  file.close();
  return file.good();
}

}  // namespace

AutoWriter::AutoWriter() : WriterPlugin(kGuid) {
  declareCapability(
      *this, {.option = "auto",
              .description = "Write summary data as single line to file Automation_Summary.csv",
              .suffix = ".csv"});
}

AutoWriter::~AutoWriter() = default;

int AutoWriter::init(const std::string& name, bool /*continuous*/) {
  m_outputName = name;
  addColumn(kNameColumn, name);
  return 0;
}

int AutoWriter::fini() {
  const std::string header = commaTerminated(m_titles);
  const std::string path = summaryDirectory(m_outputName) + kFileName;
  std::string text;
  if (lastHeader(path) != header) {
    text = header + '\n';
  }
  text += commaTerminated(m_values) + '\n';
  if (!appendText(path, text)) {
    pwr::logError("ERROR: Could not open automation summary file.\n");
    return 1;
  }
  return 0;
}

int AutoWriter::writeMessage(const pwr::TableMessage& table) {
  return writeMessage_i(table) == 0 ? 0 : 1;
}

int AutoWriter::writeMessage(const pwr::SystemMessage& message) {
  if (message.m_metadata == nullptr) {
    return 1;
  }
  addColumn("Collection_Time", message.m_metadata->getCollectionStartTime());
  addColumn("Duration (sec)", pwr::toString(message.m_metadata->getCollectionDurationSec()));
  return 0;
}

int AutoWriter::writeMessage(const pwr::MetricContainerInfoMessage& message) {
  return message.metricInfoTable == nullptr ? 0 : writeMessage(*message.metricInfoTable);
}

void AutoWriter::getColumnTitles(const pwr::TableMessage& table,
                                 std::deque<std::string>& titles) const {
  pwr::forEachColumn(
      table,
      [&](const pwr::DataHandle* handle) { titles.push_back(pwr::singleColumnTitle(handle)); },
      [&](const pwr::EntityHandle* entity, const pwr::DataHandle* field) {
        std::string title = getFieldNameFromHandle(table, entity, field);
        if (entity != nullptr && !contains(title, entity->getFieldName())) {
          title = entity->getFieldName() + '_' + title;
        }
        titles.push_back(std::move(title));
      });
}

int AutoWriter::writeMessage_i(const pwr::TableMessage& table) {
  const std::string title = table.getTitle();
  if (isIgnored(title)) {
    return 0;
  }
  if (table.getTableMessageType() == pwr::TableMessage::kTitleTable) {
    m_columnTitles.clear();
    getColumnTitles(table, m_columnTitles);
    return 0;
  }
  if (table.getTableMessageType() != pwr::TableMessage::kValueTable) {
    return 0;
  }
  std::deque<std::string> cells;
  getRowValues(table, cells);
  if (cells.size() != m_columnTitles.size()) {
    return 1;
  }
  addRow(title, cells);
  return 0;
}

void AutoWriter::addColumn(std::string title, std::string value) {
  m_titles.push_back(std::move(title));
  m_values.push_back(std::move(value));
}

void AutoWriter::addRow(const std::string& tableTitle, const std::deque<std::string>& cells) {
  const std::size_t keyColumns = keyColumnCount(tableTitle, cells.size());
  const std::string key = rowKey(m_columnTitles, cells, keyColumns);
  if (key.starts_with("Total_")) {
    return;  // A row of totals.
  }
  const std::string rowTitle = tableTitle + '_' + key + '_';
  for (std::size_t i = keyColumns; i < cells.size(); ++i) {
    addColumn(rowTitle + m_columnTitles[i], cells[i]);
  }
}
