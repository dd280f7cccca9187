// The writer of .qmjson: a run as one document for a visualiser.
#pragma once

#include <vector>

#include "writers/json_plugin_helper/series_writer.h"
#include "writers/qmjson_plugin/category_document.h"

/// Writes `<base>.qmjson` at `fini`: the system, then per metric its unit, its states, and all its
/// series with their points. docs/qmjson.md tells the document member by member. A run whose system
/// has no processor has no file, and nothing is said.
class QMJSONWriter : public SeriesWriter {
 public:
  QMJSONWriter();
  ~QMJSONWriter() override;

  /// Returns 0, also when the file cannot be made, and 1 for want of memory, where the file may
  /// have a beginning; in a continuous run what the host's output returns.
  int fini() override;

 private:
  void writeDocument() const;
  std::vector<CategoryDocument> sortedCategories() const;
};
