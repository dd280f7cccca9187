// What a number measures: name, units and how it turns into a rate.
#pragma once

#include <cstdint>
#include <string>

#include "host/unique_id.h"

namespace pwr {

/// A physical quantity. Owned by the host, alive for the whole run, compared by address.
/// Thread-safe: all calls are const.
class Quantity : public UniqueId {
 public:
  /// Code 0 means "no quantity", code 9 is a rate. Codes stand in result files.
  static constexpr std::uint32_t kNoQuantity = 0;
  static constexpr std::uint32_t kRate = 9;

  /// `title` is what a column of this quantity is headed with, for example "Time (s)".
  Quantity(std::uint64_t id, std::uint32_t code, std::string name, std::string units,
           std::string title);
  Quantity(const Quantity&) = delete;
  Quantity& operator=(const Quantity&) = delete;
  ~Quantity();

  std::uint32_t toQuantity() const;
  std::string toQuantityString() const;
  std::string toUnitsString() const;
  /// Sets `out` to the title.
  void toTitleString(std::string& out) const;

  /// The quantity that values per second have, and the factor that scales a value into its unit.
  /// Returns 0 on success. Without a rate form returns 1 and sets `out` to null and `factor` to 1.
  int getRateConversion(const Quantity*& out, double& factor) const;

  /// The quantity of time: code 1, "Time", in "s". One object per process.
  static const Quantity* time();

  /// Host side. `rate` is borrowed and must live as long as this object.
  void setRateConversion(const Quantity* rate, double factor);

 private:
  std::uint32_t m_code;
  std::string m_name;
  std::string m_units;
  std::string m_title;
  const Quantity* m_rate = nullptr;
  double m_rateFactor = 1.0;
};

}  // namespace pwr
