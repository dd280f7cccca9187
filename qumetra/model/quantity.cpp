#include "host/quantity.h"

#include <utility>

#include "qumetra/model/handle_registry.h"

namespace pwr {
namespace {

constexpr std::uint32_t kTimeCode = 1;

}  // namespace

Quantity::Quantity(std::uint64_t id, std::uint32_t code, std::string name, std::string units,
                   std::string title)
    : UniqueId(id),
      m_code(code),
      m_name(std::move(name)),
      m_units(std::move(units)),
      m_title(std::move(title)) {}
Quantity::~Quantity() = default;

std::uint32_t Quantity::toQuantity() const { return m_code; }
std::string Quantity::toQuantityString() const { return m_name; }
std::string Quantity::toUnitsString() const { return m_units; }
void Quantity::toTitleString(std::string& out) const { out = m_title; }

int Quantity::getRateConversion(const Quantity*& out, double& factor) const {
  out = m_rate;
  factor = m_rateFactor;
  return m_rate == nullptr ? 1 : 0;
}

const Quantity* Quantity::time() {
  static const Quantity s_time(qumetra::HandleRegistry::instance().drawId(), kTimeCode, "Time", "s",
                               "Time (s)");
  return &s_time;
}

void Quantity::setRateConversion(const Quantity* rate, double factor) {
  m_rate = rate;
  m_rateFactor = rate == nullptr ? 1.0 : factor;
}

}  // namespace pwr
