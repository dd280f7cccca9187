#include "qumetra/readers/pwr_names.h"

#include <array>
#include <cstddef>

namespace qumetra {
namespace {

/// In the order of `PwrNamed`.
constexpr std::array kKinds{"tab_group", "timeline_group",   "quantity", "entity", "field",
                            "color",     "nameid_attribute", "metric",   "package"};
/// The first of them are kinds of nodes.
constexpr std::size_t kNodeKinds = 7;

/// What people know it by; of a node the short form, which for a colour is only its state's name.
const std::string& nameOf(const PwrRecord& record, PwrNamed kind) {
  if (kind == PwrNamed::Metric) {
    return std::get<PwrMetric>(record.body).name;
  }
  if (kind == PwrNamed::Package) {
    return std::get<PwrPackage>(record.body).name;
  }
  const auto& info = std::get<PwrInfo>(record.body);
  return kind == PwrNamed::Color ? info.longName : info.shortName;
}

}  // namespace

const char* pwrNamedText(PwrNamed kind) { return kKinds[static_cast<std::size_t>(kind)]; }

std::optional<PwrNamed> pwrNodeKind(std::string_view kindName) {
  for (std::size_t i = 0; i < kNodeKinds; ++i) {
    if (kindName == kKinds[i]) {
      return static_cast<PwrNamed>(i);
    }
  }
  return std::nullopt;
}

std::optional<PwrUid> pwrDeclaredUid(const PwrRecord& record) {
  if (const auto* metric = std::get_if<PwrMetric>(&record.body)) {
    return PwrUid{PwrNamed::Metric, metric->metricId};
  }
  if (const auto* package = std::get_if<PwrPackage>(&record.body)) {
    return PwrUid{PwrNamed::Package, package->uid};
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
  if (const std::optional<PwrUid> uid = pwrDeclaredUid(record)) {
    m_names.insert_or_assign(*uid, nameOf(record, uid->kind));
  }
}

const std::string* PwrNames::find(PwrUid uid) const {
  const auto found = m_names.find(uid);
  return found == m_names.end() ? nullptr : &found->second;
}

}  // namespace qumetra
