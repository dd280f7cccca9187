// A measured value with its kind: what samples, states and attributes carry.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>

namespace pwr {

class DataHandle;

/// One tagged value. Cheap to copy except for texts. A handle is borrowed: the object it points at
/// belongs to the host and lives for the whole run.
///
/// Conversions return 0 on success. They return 1 and leave their result alone when the value is of
/// another kind; each serves its own kind only and never converts between kinds.
///
/// Thread-safe as a plain value is: const calls may run together.
class Data {
 public:
  /// The kinds by their tag numbers. The numbers stand in result files and never change. Tags above
  /// `kString` may occur; they carry no value.
  enum Tag : std::uint8_t {
    kNone = 0,
    kInt = 1,
    kUInt = 2,
    kReal = 3,
    kIntRange = 4,
    kUIntRange = 5,
    kRealRange = 6,
    kHandle = 7,
    kString = 8,
  };
  using IntRange = std::pair<long, long>;
  using UIntRange = std::pair<unsigned long, unsigned long>;
  using RealRange = std::pair<double, double>;

  /// A value of no kind, tag 0.
  Data();
  explicit Data(double value);
  explicit Data(unsigned long value);
  explicit Data(std::string value);
  Data(const Data& other);
  Data(Data&& other) noexcept;
  Data& operator=(const Data& other);
  Data& operator=(Data&& other) noexcept;
  ~Data();

  static Data fromInt(long value);
  static Data fromIntRange(IntRange value);
  static Data fromUIntRange(UIntRange value);
  static Data fromRealRange(RealRange value);
  /// `handle` may be null: a handle value without an object.
  static Data fromHandle(const DataHandle* handle);
  /// A value that has a tag and nothing else, for tags above `kString`.
  static Data fromTag(std::uint8_t tag);

  int toInt(long& out) const;
  int toUInt(unsigned long& out) const;
  int toReal(double& out) const;
  int toString(std::string& out) const;
  int toIntRange(IntRange& out) const;
  int toUIntRange(UIntRange& out) const;
  int toRealRange(RealRange& out) const;
  /// Unlike the other conversions, a failure sets `out` to null.
  int toHandle(const DataHandle*& out) const;

  /// Sets `out` to the text a person reads: integers in decimal; a real in fixed notation with at
  /// most six decimals and no trailing zeros; a range as low, " - ", high; a handle as its name.
  /// Every other tag, and a null handle, gives the empty text.
  void toFormattedString(std::string& out) const;

  /// True for integers and reals, false for ranges and all else.
  bool isNumeric() const;

  /// Scales a real, or both ends of a real range, in place. Leaves every other kind alone.
  void multiplyValue(double factor);

  /// The real form of `source`: integers and reals give a real, ranges a real range, everything
  /// else the real 0. REQUIRES: `source` is not null.
  static Data convertToReal(const Data* source);

  /// The kind, a `Tag` or a number above them. Readers look at it directly.
  std::uint8_t m_tag = kNone;

 private:
  using Value = std::variant<std::monostate, long, unsigned long, double, IntRange, UIntRange,
                             RealRange, const DataHandle*, std::string>;

  Data(std::uint8_t tag, Value value);

  Value m_value;
};

}  // namespace pwr
