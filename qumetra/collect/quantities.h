// The quantities that collectors measure in.
#pragma once

#include <string>

namespace pwr {
class Quantity;
}

namespace qumetra {

class Model;

/// A count of things such as "interrupts", whose rate is in "interrupts/s". Made in the model,
/// which owns it.
pwr::Quantity& addCountQuantity(Model& model, const std::string& name, const std::string& units);

}  // namespace qumetra
