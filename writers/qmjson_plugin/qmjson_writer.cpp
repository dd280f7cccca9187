#include "writers/qmjson_plugin/qmjson_writer.h"

#include "writers/json_plugin_helper/json_file.h"
#include "writers/qmjson_plugin/category_document.h"
#include "writers/qmjson_plugin/system_document.h"
#include "writers/system_lookup.h"

namespace {

constexpr SeriesWriterForm kForm = {
    .guid = "2e820d9e-2f9e-4cdb-a81d-056273a7a392",
    .option = "qmjson",
    .description =
        "Write data trace file (.qmjson) in JSON format for visualization with Corvane Perivue",
    .extension = ".qmjson",
    .flags = pwr::PluginCapability::kFlagContinuous,
    .keepsStateNames = false,
};

void writeFormat(JsonFile& file) {
  file.textMember("fileType", "qumetra");
  file.key("version");
  file.startObject();
  file.unsignedMember("major", 1);
  file.unsignedMember("minor", 0);
  file.unsignedMember("rev", 0);
  file.endObject();
}

}  // namespace

QMJSONWriter::QMJSONWriter() : SeriesWriter(kForm) {}

QMJSONWriter::~QMJSONWriter() = default;

int QMJSONWriter::fini() {
  return finish([this] { writeDocument(); });
}

void QMJSONWriter::writeDocument() const {
  const pwr::CPUMetadata* cpu = processorOf(systemMetadata);
  if (cpu == nullptr) {
    return;  // Without a word: hosts rely on the silence.
  }
  // Before the file is touched: a state that cannot be sorted ends the process, and what an earlier
  // run left under the name is still whole then.
  const std::vector<CategoryDocument> categories = sortedCategories();
  JsonFile file(fileName);
  file.startObject();
  writeFormat(file);
  writeSystem(file,
              {*systemMetadata, *cpu, toolVersion, driverVersion, commandLine, startTimestamp});
  file.key("data");
  file.startObject();
  for (const CategoryDocument& category : categories) {
    category.write(file);
  }
  file.endObject();
  file.endObject();
  file.finish();
}

std::vector<CategoryDocument> QMJSONWriter::sortedCategories() const {
  std::vector<CategoryDocument> categories;
  for (auto& [name, members] : seriesByCategory()) {
    categories.emplace_back(members);
  }
  return categories;
}
