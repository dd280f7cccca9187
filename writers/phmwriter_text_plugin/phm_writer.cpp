#include "writers/phmwriter_text_plugin/phm_writer.h"

#include "client/src/common/pw_log.h"
#include "host/messages.h"
#include "writers/capability.h"
#include "writers/phmwriter_text_plugin/group_files.h"

namespace {

constexpr const char* kGuid = "9d2aa443-e197-4628-9ed7-f7772a50828e";
/// The files' suffix. The capability shows another one, which is what hosts go by.
constexpr const char* kFileSuffix = "_phm.csv";
constexpr const char* kShownSuffix = ".csv";

}  // namespace

PhmTextWriter::PhmTextWriter() : IntWriterV2(kGuid, kFileSuffix) {
  declareCapability(*this, {.option = "phm-csv",
                            .description = "Write over-time data to *_phm.csv file.",
                            .suffix = kShownSuffix,
                            .flags = pwr::PluginCapability::kFlagHostInterpreted});
  readSwitches();
}

PhmTextWriter::~PhmTextWriter() = default;

int PhmTextWriter::init(const std::string& base, bool /*continuous*/) {
  basePath = base;
  return 0;
}

int PhmTextWriter::writeMessage(const pwr::TextMessage& message) {
  headerText += "\n\n" + message.m_message;
  return 0;
}

int PhmTextWriter::fini() {
  if (flushMetaData() != 0) {
    pwr::logPlainWarning("WARNING: PHM writer plugin could not flush metadata file\n");
    return 1;
  }
  int result = 0;
  GroupFiles files(basePath, fileSuffix, headerText);
  for (auto& [outerKey, family] : tables) {
    std::FILE* file = files.open(metricGroups[outerKey]);
    if (file == nullptr) {
      result = 1;
      break;
    }
    for (auto& [innerKey, table] : family) {
      table.store->flush(file, ",", false);  // What went wrong is in the log.
    }
  }
  return files.close() ? result : 1;
}

BackingStoreWrapper* PhmTextWriter::getStore(const std::string& title, unsigned long outerKey,
                                             const std::string& groupName, unsigned long innerKey,
                                             const std::string& defaultValue) {
  TableInfo* table = findTable(outerKey, innerKey);
  if (table == nullptr) {
    table = &makeTable(title, outerKey, innerKey, defaultValue);
  }
  metricGroups[outerKey] = groupName;
  return table->store.get();
}
