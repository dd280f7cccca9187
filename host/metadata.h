// The root of what features tell about themselves in serialised form.
#pragma once

#include <cstdint>

namespace pwr {

class Serializer;

/// A description that can be packed. Not synchronised.
class Metadata {
 public:
  Metadata(const Metadata&) = default;
  Metadata& operator=(const Metadata&) = delete;
  virtual ~Metadata();

  /// The plug-in that the description belongs to; all ones for none. Here: none.
  virtual std::uint32_t getPluginID() const;
  /// Appends the packed form.
  virtual void serialize_i(Serializer& serializer) const = 0;
  /// Reads what a writer of this packed version made. Returns 0, or 1 and changes nothing when the
  /// bytes are not such a description.
  virtual int deserialize_i(Serializer& serializer, unsigned int version) = 0;

  /// What is described; stands in the packed form.
  std::uint32_t m_kind;

 protected:
  explicit Metadata(std::uint32_t kind);
};

}  // namespace pwr
