// Values of samples and of their attributes.
#include <bit>
#include <string>

#include "client/src/common/number_text.h"
#include "client/src/common/pw_log.h"
#include "client/src/common/real_to_integer.h"
#include "host/data.h"
#include "host/execute_once.h"
#include "host/quantity.h"
#include "writers/keltowriter_plugin/info_metadata.h"
#include "writers/keltowriter_plugin/kelto_log.h"
#include "writers/keltowriter_plugin/kelto_writer.h"
#include "writers/keltowriter_plugin/name_tables.h"

namespace {

void appendValue(std::string& text, long value) { pwr::appendInt(text, value); }
void appendValue(std::string& text, unsigned long value) { pwr::appendUInt(text, value); }
void appendValue(std::string& text, double value) { pwr::appendGeneral(text, value); }

/// What `convert` takes out of `data`.
template <typename Value>
Value taken(const pwr::Data& data, int (pwr::Data::*convert)(Value&) const) {
  Value value{};
  (data.*convert)(value);
  return value;
}

/// Nothing in front of the bracket: "3-7(MHz)".
void appendUnits(std::string& text, const pwr::Quantity* quantity) {
  if (quantity != nullptr) {
    text += '(';
    text += quantity->toUnitsString();
    text += ')';
  }
}

// The values as warnings show them.
std::string shown(long value) { return std::to_string(value); }
std::string shown(unsigned long value) { return std::to_string(value); }
std::string shown(double value) {
  constexpr int kDecimals = 6;
  std::string text;
  pwr::appendFixed(text, value, kDecimals);
  return text;
}

/// Not inline: it is rare, and its strings would cost each value.
template <typename T>
[[gnu::noinline]] int tellUnaddedValue(const char* kind, T value) {
  return kelto::failure("Unable to add %s value '%s' to the record.\n", kind, shown(value).c_str());
}

/// Notes that real values need a viewer, once per `wasNoted`.
void noteRealValues(bool& wasNoted) {
  pwr::executeOnce(wasNoted, [] {
    pwr::logNote(
        "The generated .pwr file can only be visualized in Kelto Viewer 2018 Update 3 or later\n");
  });
}

}  // namespace

int KeltoWriter::processData(const pwr::Data* data, const pwr::Quantity* quantity,
                             QM2AttributeList* list, bool asString, std::string* out) {
  if (data == nullptr) {
    return 0;
  }
  if (list == nullptr && out == nullptr) {
    return kelto::failure("Invalid attribute list.\n");
  }
  if (quantity != nullptr && !asString && addQuantity(*quantity, list) != 0) {
    return 1;
  }
  if (data->m_tag == pwr::Data::kString) {
    return processText(*data, list, out);
  }
  return asString ? processNumberAsString(*data, quantity, list, out) : addNumber(*data, list);
}

int KeltoWriter::addQuantity(const pwr::Quantity& quantity, QM2AttributeList* list) {
  long uid = -1;
  if (handleQuantityMetadata(&quantity, uid) != 0) {
    return kelto::failure("Failed to handle quantity metadata uid:%llu'.\n",
                          static_cast<unsigned long long>(uid));
  }
  if (add(kQuantityAttribute, static_cast<std::uint64_t>(uid), list) != 0) {
    return kelto::failure("Unable to add quantity attribute to the record.\n");
  }
  return 0;
}

/// Viewers that need the legacy form know whole numbers only.
std::uint64_t KeltoWriter::bitsOf(double value) const {
  return legacy ? pwr::realToUInt64(value) : std::bit_cast<std::uint64_t>(value);
}

template <typename T>
int KeltoWriter::addValue(std::uint32_t attribute, const char* kind, T value,
                          QM2AttributeList* list) {
  return add(attribute, bitsOf(value), list) == 0 ? 0 : tellUnaddedValue(kind, value);
}

int KeltoWriter::addNumber(const pwr::Data& data, QM2AttributeList* list) {
  switch (data.m_tag) {
    case pwr::Data::kInt:
      return addValue(kIntAttribute, "integer", taken(data, &pwr::Data::toInt), list);
    case pwr::Data::kUInt:
      return addValue(kUIntAttribute, "unsigned integer", taken(data, &pwr::Data::toUInt), list);
    case pwr::Data::kReal:
      if (!legacy) {
        noteRealValues(s_wasRealNoted);
      }
      return addValue(kRealAttribute, "real", taken(data, &pwr::Data::toReal), list);
    default:
      return addRange(data, list);
  }
}

int KeltoWriter::addRange(const pwr::Data& data, QM2AttributeList* list) {
  const auto addBounds = [&](std::uint32_t lower, const char* lowerKind, const char* upperKind,
                             const auto& range) {
    const int status = addValue(lower, lowerKind, range.first, list);
    return status != 0 ? status : addValue(lower + 1, upperKind, range.second, list);
  };
  switch (data.m_tag) {
    case pwr::Data::kIntRange:
      return addBounds(kIntLowerBoundAttribute, "lower bound integer", "upper bound integer",
                       taken(data, &pwr::Data::toIntRange));
    case pwr::Data::kUIntRange:
      return addBounds(kUIntLowerBoundAttribute, "lower bound unsigned integer",
                       "upper bound unsigned integer", taken(data, &pwr::Data::toUIntRange));
    case pwr::Data::kRealRange: {
      const int status = addBounds(kRealLowerBoundAttribute, "lower bound real", "upper bound real",
                                   taken(data, &pwr::Data::toRealRange));
      if (status == 0 && !legacy) {
        noteRealValues(s_wasRealRangeNoted);
      }
      return status;
    }
    default:
      return kelto::failure("Unsupported data type obtained.\n");
  }
}

int KeltoWriter::processNumberAsString(const pwr::Data& data, const pwr::Quantity* quantity,
                                       QM2AttributeList* list, std::string* out) {
  const auto process = [&](auto value) {
    return processValueAsString(value, quantity, list, out) == 0
               ? 0
               : kelto::failure("Unable to process value attribute as string'.\n");
  };
  switch (data.m_tag) {
    case pwr::Data::kInt:
      return process(taken(data, &pwr::Data::toInt));
    case pwr::Data::kUInt:
      return process(taken(data, &pwr::Data::toUInt));
    case pwr::Data::kReal:
      return process(taken(data, &pwr::Data::toReal));
    default:
      return processAnyRangeAsString(data, quantity, list, out);
  }
}

int KeltoWriter::processAnyRangeAsString(const pwr::Data& data, const pwr::Quantity* quantity,
                                         QM2AttributeList* list, std::string* out) {
  const auto process = [&](auto low, auto high) {
    return processRangeAsString(low, high, quantity, list, out) == 0
               ? 0
               : kelto::failure("Unable to process value range attribute as string'.\n");
  };
  switch (data.m_tag) {
    case pwr::Data::kIntRange: {
      const auto [low, high] = taken(data, &pwr::Data::toIntRange);
      return process(low, high);
    }
    case pwr::Data::kUIntRange: {
      // Unsigned ends show as signed numbers, which is how viewers know them.
      const auto [low, high] = taken(data, &pwr::Data::toUIntRange);
      return process(static_cast<long>(low), static_cast<long>(high));
    }
    case pwr::Data::kRealRange: {
      const auto [low, high] = taken(data, &pwr::Data::toRealRange);
      return process(low, high);
    }
    default:
      return kelto::failure("Unsupported data type obtained.\n");
  }
}

template <typename T>
int KeltoWriter::processValueAsString(T value, const pwr::Quantity* quantity,
                                      QM2AttributeList* list, std::string* out) {
  m_valueText.clear();
  appendValue(m_valueText, value);
  appendUnits(m_valueText, quantity);
  return deliverText(list, out);
}

template <typename T>
int KeltoWriter::processRangeAsString(T low, T high, const pwr::Quantity* quantity,
                                      QM2AttributeList* list, std::string* out) {
  m_valueText.clear();
  appendValue(m_valueText, low);
  m_valueText += '-';
  appendValue(m_valueText, high);
  appendUnits(m_valueText, quantity);
  return deliverText(list, out);
}

/// Gives `m_valueText` to `out`, or to the record when there is no `out`.
int KeltoWriter::deliverText(QM2AttributeList* list, std::string* out) {
  if (out == nullptr) {
    return processStringData(m_valueText, list);
  }
  *out = m_valueText;
  return 0;
}

int KeltoWriter::processText(const pwr::Data& data, QM2AttributeList* list, std::string* out) {
  data.toString(m_valueText);
  if (deliverText(list, out) != 0) {
    return kelto::failure("Unable to process string value '%s'.\n", m_valueText.c_str());
  }
  return 0;
}

int KeltoWriter::processStringData(const std::string& text, QM2AttributeList* list) {
  if (list == nullptr) {
    return kelto::failure("Invalid attribute list.\n");
  }
  const std::uint64_t kind = getInfoTypeMetadataId(kelto::kNameIdKind);
  if (kind == kAllOnes) {
    return 1;
  }
  auto known = nameIdStrings.find(text);
  if (known == nameIdStrings.end()) {
    const std::uint64_t uid = kelto::drawUid("nameid_attribute");
    if (writeInfoMetadataHelper(kelto::kNameIdKind, kind, text, text, "", 0, uid,
                                kelto::kNoParent) != 0) {
      return kelto::failure("Failed to write an info record for string attribute '%s'.\n",
                            text.c_str());
    }
    known = nameIdStrings.emplace(text, static_cast<std::int64_t>(uid)).first;
  }
  if (add(kInfoAttribute, static_cast<std::uint64_t>(known->second), list) != 0) {
    return kelto::failure("Unable to add string value '%s' to the record.\n", text.c_str());
  }
  return 0;
}

template int KeltoWriter::processValueAsString(long, const pwr::Quantity*, QM2AttributeList*,
                                               std::string*);
template int KeltoWriter::processValueAsString(unsigned long, const pwr::Quantity*,
                                               QM2AttributeList*, std::string*);
template int KeltoWriter::processValueAsString(double, const pwr::Quantity*, QM2AttributeList*,
                                               std::string*);
template int KeltoWriter::processRangeAsString(long, long, const pwr::Quantity*, QM2AttributeList*,
                                               std::string*);
template int KeltoWriter::processRangeAsString(double, double, const pwr::Quantity*,
                                               QM2AttributeList*, std::string*);
