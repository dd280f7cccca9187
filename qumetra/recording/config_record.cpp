#include "qumetra/recording/config_record.h"

#include <deque>
#include <string>

namespace qumetra {
namespace {

std::deque<std::string> readNames(RecordList list) {
  std::deque<std::string> names;
  for (const RecordValue name : list) {
    names.emplace_back(name.string());
  }
  return names;
}

std::deque<std::string> readNames(RecordObject& record, std::string_view member) {
  const auto list = record.find(member);
  return list ? readNames(list->list()) : std::deque<std::string>();
}

}  // namespace

pwr::MetricOrder readConfig(RecordObject& record) {
  pwr::MetricOrder order;
  order.featureOrder = readNames(record, "featureOrder");
  order.featurePrefixes = readNames(record, "featurePrefixes");
  if (const auto metrics = record.find("metricOrder")) {
    RecordObject(*metrics).forAll([&](std::string_view feature, RecordValue names) {
      if (!order.metricOrder.emplace(feature, readNames(names.list())).second) {
        names.fail("a member given twice", "it once");
      }
    });
  }
  record.finish();
  return order;
}

}  // namespace qumetra
