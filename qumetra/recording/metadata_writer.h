// The description of the measured system as the text of a recording.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/system_metadata.h"

namespace qumetra {

/// What a metadata object says, member by member in the order of the format.
class MetadataText {
 public:
  explicit MetadataText(const pwr::SystemMetadata& metadata);

  /// The whole object; members that say nothing are left out.
  std::string object() const;
  /// An object of the members that differ from those of `former`; empty when none does. A duration
  /// that follows from the timestamps again, after it was set, is written as the number that it is.
  std::string changesFrom(const MetadataText& former) const;

 private:
  struct Member {
    std::string_view name;
    std::string json;
    /// The member says what an absent one says.
    bool isDefault;
  };

  std::vector<Member> m_members;
  std::string m_durationJson;
};

}  // namespace qumetra
