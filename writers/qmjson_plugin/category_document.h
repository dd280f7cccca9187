// The part of a .qmjson document that tells one metric.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "writers/json_plugin_helper/series.h"

class JsonFile;
/// The states of all series of a metric, in the order of the document.
struct SharedStates {
  std::vector<std::string> names;
  std::shared_ptr<Series::StateIds> ids;
  /// The ids as keys.
  std::vector<std::string> keys;
};

/// A metric with all its series, which are borrowed.
class CategoryDocument {
 public:
  /// Merges and sorts the states of the series, and makes their ids in all points agree. Ends the
  /// process for a state that cannot be sorted (`sortStateNames`).
  /// REQUIRES: there is a series.
  explicit CategoryDocument(std::vector<Series*> members);

  /// Writes the metric's member: what its numbers mean, by its first series, and all its series.
  void write(JsonFile& file) const;

 private:
  std::vector<Series*> m_members;
  SharedStates m_shared;
};
