#include "qumetra/readers/pwr_names.h"

#include <array>
#include <cstddef>

namespace qumetra {
namespace {

/// In the order of `PwrNamed`; metrics come last and are no kind of node.
constexpr std::array<std::string_view, 8> kKinds{"tab_group",        "timeline_group", "quantity",
                                                 "entity",           "field",          "color",
                                                 "nameid_attribute", "metric"};

/// What people know the node by: the two colours, or the short form of the name.
const std::string& nameOf(const PwrInfo& info, PwrNamed kind) {
  return kind == PwrNamed::Color ? info.longName : info.shortName;
}

}  // namespace

const char* pwrNamedText(PwrNamed kind) { return kKinds[static_cast<std::size_t>(kind)].data(); }

std::optional<PwrNamed> pwrNodeKind(std::string_view kindName) {
  for (std::size_t i = 0; i + 1 < kKinds.size(); ++i) {
    if (kKinds[i] == kindName) {
      return static_cast<PwrNamed>(i);
    }
  }
  return std::nullopt;
}

std::optional<PwrUid> pwrDeclaredUid(const PwrRecord& record) {
  if (const auto* metric = std::get_if<PwrMetric>(&record.body)) {
    return PwrUid{PwrNamed::Metric, metric->metricId};
  }
  const auto* const info = std::get_if<PwrInfo>(&record.body);
  if (info == nullptr) {
    return std::nullopt;
  }
  const std::optional<PwrNamed> kind = pwrNodeKind(info->kindName);
  return kind ? std::optional(PwrUid{*kind, info->uid}) : std::nullopt;
}

std::optional<PwrUid> pwrReferredUid(const PwrAttribute& attribute) {
  const auto number = static_cast<std::uint32_t>(attribute.bits);
  switch (attribute.id) {
    case PwrAttributeId::Metric:
      return PwrUid{PwrNamed::Metric, number};
    case PwrAttributeId::Entity:
      return PwrUid{PwrNamed::Entity, number};
    case PwrAttributeId::Field:
      return PwrUid{PwrNamed::Field, number};
    case PwrAttributeId::Quantity:
      return PwrUid{PwrNamed::Quantity, number};
    case PwrAttributeId::Color:
      return PwrUid{PwrNamed::Color, number};
    case PwrAttributeId::Info:
      return PwrUid{PwrNamed::NameId, number};
    default:
      return std::nullopt;
  }
}

void PwrNames::learn(const PwrRecord& record) {
  const std::optional<PwrUid> uid = pwrDeclaredUid(record);
  if (!uid) {
    return;
  }
  const auto* const info = std::get_if<PwrInfo>(&record.body);
  m_names.insert_or_assign(
      *uid, info == nullptr ? std::get<PwrMetric>(record.body).name : nameOf(*info, uid->kind));
}

const std::string* PwrNames::find(PwrUid uid) const {
  const auto found = m_names.find(uid);
  return found == m_names.end() ? nullptr : &found->second;
}

}  // namespace qumetra
