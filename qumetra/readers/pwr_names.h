// What the numbers in a .pwr file stand for.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "qumetra/readers/pwr_records.h"

namespace qumetra {

/// The things that have a uid, each kind by its own numbers; metrics have ids, and packages the
/// uids of their users.
enum class PwrNamed : std::uint8_t {
  TabGroup,
  TimelineGroup,
  Quantity,
  Entity,
  Field,
  Color,
  NameId,
  Metric,
  Package
};

/// A uid and of what.
struct PwrUid {
  PwrNamed kind{};
  std::uint32_t number = 0;

  bool operator==(const PwrUid&) const = default;
  bool operator<(const PwrUid& other) const {
    return kind == other.kind ? number < other.number : kind < other.kind;
  }
};

/// A name of a kind as the format has it: "tab_group", "metric" and so on.
const char* pwrNamedText(PwrNamed kind);

/// The kind of a node whose record calls it by this name; none for nodes that number kinds and
/// types.
std::optional<PwrNamed> pwrNodeKind(std::string_view kindName);

/// What the record declares, if it does.
std::optional<PwrUid> pwrDeclaredUid(const PwrRecord& record);

/// The uid that the attribute refers to, if it does. Records declare the low 32 bits of an id, so
/// only these count.
std::optional<PwrUid> pwrReferredUid(const PwrAttribute& attribute);

/// Collects names. Grows with the records that declare one, not with samples. Not synchronised.
class PwrNames {
 public:
  /// Learns what the record declares; what is declared once more has its last name.
  void learn(const PwrRecord& record);

  /// Null when nothing was declared. Valid until the next `learn`.
  const std::string* find(PwrUid uid) const;

 private:
  // In order, since the numbers in a hostile file could be chosen to collide in a hash table.
  std::map<PwrUid, std::string> m_names;
};

}  // namespace qumetra
