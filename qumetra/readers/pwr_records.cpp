#include "qumetra/readers/pwr_records.h"

#include <cstddef>

namespace qumetra {
namespace {

constexpr std::array kAttributeNames{"metric",
                                     "entity",
                                     "field",
                                     "process",
                                     "thread",
                                     "call_stack_frame",
                                     "quantity",
                                     "color",
                                     "info",
                                     "int",
                                     "uint",
                                     "real",
                                     "int_lower_bound",
                                     "int_upper_bound",
                                     "uint_lower_bound",
                                     "uint_upper_bound",
                                     "real_lower_bound",
                                     "real_upper_bound",
                                     "duration"};

}  // namespace

const char* pwrAttributeName(PwrAttributeId id) {
  const auto place = static_cast<std::size_t>(id);
  return place < kAttributeNames.size() ? kAttributeNames[place] : "unknown";
}

const char* pwrKindName(const PwrRecord& record) {
  return std::visit([](const auto& body) { return body.kKind; }, record.body);
}

}  // namespace qumetra
