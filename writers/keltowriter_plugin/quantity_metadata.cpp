// Nodes of quantities, each pointing at the quantity that its values have per second.
#include <set>
#include <string>
#include <vector>

#include "client/src/common/number_text.h"
#include "client/src/common/pw_log.h"
#include "host/quantity.h"
#include "writers/keltowriter_plugin/kelto_log.h"
#include "writers/keltowriter_plugin/kelto_writer.h"

namespace {

constexpr std::uint32_t kHighestQuantityType = 13;

/// A quantity in the chain from a quantity to its rate, the rate's rate, and so on.
struct Link {
  const pwr::Quantity* quantity;
  const pwr::Quantity* rate;
  double multiplier;
};

std::string unitsOf(const pwr::Quantity& quantity) {
  std::string units = quantity.toUnitsString();
  return units == "%" ? "percent" : units;
}

long uidOf(const pwr::Quantity* quantity) {
  return quantity == nullptr ? -1 : static_cast<long>(quantity->getId());
}

/// Asks for the rate, and warns when there is none.
Link linkOf(const pwr::Quantity& quantity) {
  Link link{&quantity, nullptr, 1.0};
  if (quantity.getRateConversion(link.rate, link.multiplier) != 0 && pwr::plainWarningsShow()) {
    pwr::logPlainWarning("WARNING: Rate Quantity not specified for %s\n",
                         quantity.toQuantityString().c_str());
  }
  return link;
}

/// All rates of `quantity`, itself first. A rate that leads back into the chain is taken for none:
/// a node cannot stand before itself.
std::vector<Link> chainOf(const pwr::Quantity& quantity) {
  std::vector<Link> chain = {linkOf(quantity)};
  std::set<const pwr::Quantity*> met = {&quantity};
  while (chain.back().rate != nullptr) {
    if (!met.insert(chain.back().rate).second) {
      pwr::logPlainWarning("WARNING: Rate Quantity not specified for %s\n",
                           chain.back().quantity->toQuantityString().c_str());
      chain.back().rate = nullptr;
      break;
    }
    chain.push_back(linkOf(*chain.back().rate));
  }
  return chain;
}

/// REQUIRES: the chain of rates ends.
void warnOfMissingRates(const pwr::Quantity& quantity) {
  if (!pwr::plainWarningsShow()) {
    return;
  }
  for (const pwr::Quantity* next = &quantity; next != nullptr;) {
    next = linkOf(*next).rate;
  }
}

}  // namespace

/// Whether nodes of the quantity and all its rates stand in the stream as they now are. The table
/// never holds a closed chain, since each that was written had an end.
bool KeltoWriter::isQuantityWritten(const pwr::Quantity& quantity) const {
  for (const pwr::Quantity* next = &quantity; next != nullptr;) {
    const auto known = m_cache.quantities.find(next);
    const pwr::Quantity* rate = nullptr;
    double multiplier = 1.0;
    next->getRateConversion(rate, multiplier);
    if (known == m_cache.quantities.end() || known->second.rate != rate ||
        known->second.multiplier != multiplier) {
      return false;
    }
    next = rate;
  }
  return true;
}

// A rate stands before what points at it, so the chain is written from its end.
int KeltoWriter::handleQuantityMetadata(const pwr::Quantity* quantity, long& uid) {
  uid = uidOf(quantity);
  if (quantity == nullptr) {
    return 0;
  }
  if (isQuantityWritten(*quantity)) {
    warnOfMissingRates(*quantity);
    return 0;
  }
  const std::vector<Link> chain = chainOf(*quantity);
  const char* failedPart = nullptr;
  for (auto link = chain.rbegin(); link != chain.rend(); ++link) {
    const std::string name = link->quantity->toQuantityString();
    const std::string units = unitsOf(*link->quantity);
    const std::uint32_t type = getKeltoQuantityType(link->quantity->toQuantity());
    const long linkUid = uidOf(link->quantity);
    const long rateUid = uidOf(link->rate);
    if (failedPart != nullptr) {
      failedPart = "handle rate quantity metadata for quantity";
    } else if (writeQuantityMetadata(name, name, units, type, linkUid, rateUid, link->multiplier) !=
               0) {
      failedPart = "write quantity metadata";
    } else {
      m_cache.quantities[link->quantity] = {link->rate, link->multiplier};
      continue;
    }
    kelto::failure(
        "Failed to %s name:'%s' units:'%s' type:'%d' uid:'%llu' rate uid:'%s' multiplier:'%f'.\n",
        failedPart, name.c_str(), units.c_str(), static_cast<int>(type),
        static_cast<unsigned long long>(linkUid), std::to_string(rateUid).c_str(),
        link->multiplier);
  }
  return failedPart == nullptr ? 0 : 1;
}

int KeltoWriter::writeQuantityMetadata(const std::string& name, const std::string& shortName,
                                       const std::string& units, std::uint32_t type, long uid,
                                       long rateUid, double multiplier) {
  const std::uint64_t kind = getInfoTypeMetadataId("quantity");
  if (kind == kAllOnes) {
    return 1;
  }
  const std::string longName = name + "|" + units + "|" + pwr::to_string(multiplier);
  if (writeInfoMetadataHelper("quantity", kind, longName, shortName, "quantity_type", type,
                              static_cast<std::uint64_t>(uid), rateUid) != 0) {
    return 1;
  }
  quantityIds[static_cast<std::uint64_t>(uid)] = static_cast<std::uint64_t>(uid);
  return 0;
}

std::uint32_t KeltoWriter::getKeltoQuantityType(std::uint32_t code) const {
  return code <= kHighestQuantityType ? code : 0;
}
