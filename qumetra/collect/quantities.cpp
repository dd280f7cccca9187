#include "qumetra/collect/quantities.h"

#include <cstdint>

#include "host/quantity.h"
#include "qumetra/model/model.h"

namespace qumetra {
namespace {

/// The code of counts. It stands in result files and never changes.
constexpr std::uint32_t kCountCode = 2;

}  // namespace

pwr::Quantity& addCountQuantity(Model& model, const std::string& name, const std::string& units) {
  QuantitySpec rateSpec;
  rateSpec.code = pwr::Quantity::kRate;
  rateSpec.name = name + " Rate";
  rateSpec.units = units + "/s";
  const pwr::Quantity& rate = model.addQuantity(rateSpec);
  QuantitySpec countSpec;
  countSpec.code = kCountCode;
  countSpec.name = name;
  countSpec.units = units;
  pwr::Quantity& count = model.addQuantity(countSpec);
  count.setRateConversion(&rate, 1.0);
  return count;
}

}  // namespace qumetra
