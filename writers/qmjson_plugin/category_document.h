// The part of a .qmjson document that tells one metric.
#pragma once

#include <vector>

class JsonFile;
class Series;

/// Writes the object of a metric: what its numbers mean, by its first series, and all its series.
/// The states of the series are merged and sorted, and their ids in all points made to agree.
/// REQUIRES: there is a series.
void writeCategory(JsonFile& file, const std::vector<Series*>& members);
