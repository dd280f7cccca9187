// Values as text with a chosen number of decimals.
#pragma once

#include <string>

namespace pwr {

class Data;

/// Turns a value into text. Stateless: one object may serve many threads.
class Formatter {
 public:
  virtual ~Formatter();
  /// Sets `out` to the text of `value`.
  virtual void format(std::string& out, const Data& value) const = 0;
};

/// Fixed notation with `precision` decimals for integers and reals, and low, " - ", high for
/// ranges. The exact binary value is rounded, ties to even; every other kind gives the empty text.
/// Texts shorter than `width` are padded with blanks on the left.
class RealFormatter : public Formatter {
 public:
  RealFormatter(int width, int precision);
  ~RealFormatter() override;

  void format(std::string& out, const Data& value) const override;

 private:
  int m_width;
  int m_precision;
};

}  // namespace pwr
