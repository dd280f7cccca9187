// A run of the import stream whose header is written, ready for samples.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/writers/kelto_fixture.h"

namespace qumetra::test {

class KeltoSample : public KeltoTest {
 protected:
  KeltoSample() { deliverSystem(); }

  std::uint64_t colorOf(const std::string& state) {
    return static_cast<std::uint64_t>(m_writer.colorIds.at(state));
  }
  /// ENTITY, FIELD, DURATION, COLOR and UINT of a plain value.
  Attributes plainAttributes(const pwr::EntityHandle& of, const pwr::DataDescriptor& state,
                             std::uint64_t duration, std::uint64_t value) {
    return {{kEntityAttribute, of.getId()},
            {kFieldAttribute, state.getId()},
            {kDurationAttribute, duration},
            {kColorAttribute, colorOf(state.getName())},
            {kUIntAttribute, value}};
  }
  static Attributes joined(const std::vector<Attributes>& parts) {
    Attributes all = {{kMetricAttribute, kMetric}};
    for (const Attributes& part : parts) {
      all.insert(all.end(), part.begin(), part.end());
    }
    return all;
  }
  std::size_t typeInFile() {
    return static_cast<std::size_t>(number(records(kMetric).at(0), 20, 4));
  }
};

}  // namespace qumetra::test
