// A run of the import stream whose header is written, ready for metadata.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tests/writers/kelto_fixture.h"

namespace qumetra::test {

class KeltoMetadata : public KeltoTest {
 protected:
  KeltoMetadata() {
    deliverSystem();
    m_headerSize = systemStream().size();
  }
  /// What the system stream got behind its header.
  std::string added() { return systemStream().substr(m_headerSize); }

  int writeNode(const std::string& longName, std::uint64_t uid = 9) {
    return m_writer.writeInfoMetadataHelper("k", 3, longName, "", "", 5, uid, -1);
  }
  int describe(const std::string& name, std::uint64_t id = kMetric,
               const pwr::Quantity* quantity = nullptr) {
    return m_writer.handleMetricMetadataHelper(id, 8, name, name, quantity);
  }
  /// The tab and the time-line of a metric of that name.
  std::pair<std::string, std::string> groupsOf(const std::string& name) {
    EXPECT_EQ(describe(name), 0);
    return {nodes("tab_group").back().longName, nodes("timeline_group").back().longName};
  }
  std::vector<std::string> kinds() {
    std::vector<std::string> names;
    for (const Node& node : nodes("info_type")) {
      names.push_back(node.longName);
    }
    return names;
  }

  std::size_t m_headerSize = 0;
};

}  // namespace qumetra::test
