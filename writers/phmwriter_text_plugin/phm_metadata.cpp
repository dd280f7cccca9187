// The companion file of the PHM form, which tells what the columns of each metric are.
#include <utility>

#include "client/src/common/pw_log.h"
#include "host/handles.h"
#include "host/metric.h"
#include "writers/phmwriter_text_plugin/phm_writer.h"
#include "writers/textwriter_plugin/time_line_columns.h"

namespace {

/// Columns without an entity belong to every metric's first entity.
bool belongsTo(const pwr::EntityHandle* entity, const pwr::EntityHandle* first) {
  return entity == nullptr || (first != nullptr && entity->getId() == first->getId());
}

std::string columnItem(const pwr::EntityHandle* entity, const pwr::DataDescriptor& descriptor) {
  const std::string title = descriptorTitle(descriptor);
  return entity == nullptr ? title : entity->getQualifiedName() + " " + title;
}

}  // namespace

void PhmTextWriter::processMetaData(const pwr::Metric& metric) {
  if (metricMetadata.contains(metric.name)) {
    return;
  }
  std::vector<pwr::Data> items = metric.metadataValues;
  const pwr::EntityHandle* first = metric.entityList.empty() ? nullptr : metric.entityList.front();
  for (const auto& [entity, descriptor] : metric.entities) {
    if (descriptor != nullptr && belongsTo(entity, first)) {
      items.emplace_back(columnItem(entity, *descriptor));
    }
  }
  if (!items.empty()) {
    metricMetadata.emplace(metric.name, std::move(items));
  }
}

int PhmTextWriter::flushMetaData() {
  const std::string path = basePath + "_meta" + fileSuffix;
  ResultFile file = createResultFile(path);
  if (file == nullptr) {
    pwr::logPlainWarning("WARNING: Could not create %s\n", path.c_str());
    return 1;
  }
  writeLine(file, headerText);
  writeLine(file, getTitleString("Metric Metadata"));
  std::string text;
  for (const auto& [name, items] : metricMetadata) {
    std::string line = name + ",";
    for (const pwr::Data& item : items) {
      item.toFormattedString(text);
      line += text + ",";
    }
    writeLine(file, line);
  }
  // An incomplete file is an error in the log; it is no reason to lose the tables.
  closeResultFile(file, path);
  return 0;
}

std::string PhmTextWriter::getTitleString(const std::string& title) const {
  const std::string dashes(title.size(), '-');
  return dashes + "\n" + title + "\n" + dashes;
}
