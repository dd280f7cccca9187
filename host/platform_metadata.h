// What is known of the platform's parts: a named bag of texts, and its two kinds.
#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <string>
#include <vector>

#include "host/topology.h"

namespace pwr {

class QMConfigFileParser;
class Serializer;
struct SystemMetadata;

/// A named bag of name and value pairs about a part of the platform. Copyable; owns all it holds.
class PlatformMetadata {
 public:
  PlatformMetadata();
  PlatformMetadata(const PlatformMetadata& other);
  PlatformMetadata& operator=(const PlatformMetadata&) = delete;
  virtual ~PlatformMetadata();

  /// A host operation: appends the names by which the host's configuration knows the platform.
  virtual void getPlatformNames(QMConfigFileParser* parser, std::list<std::string>& names,
                                SystemMetadata& metadata);
  /// Whether the host is to tell that the platform matched nothing. Here: false.
  virtual bool shouldPrintMessageOnNoMatch() const;
  /// Appends the packed form to `serializer`.
  virtual void serializePlatformMetadata(Serializer& serializer) const;
  /// Reads the packed form. Returns 0, or -1 when the bytes fall short. Pairs read before a fault
  /// stay in `m_values`; name, description and specifiers are taken only where they are empty.
  virtual int deserializePlatformMetadata(Serializer& serializer);
  /// Appends "N/A" to `names` and returns 0.
  virtual int initAndGetValue_i(SystemMetadata& metadata, std::list<std::string>& names);

  std::string m_name;
  std::string m_description;
  std::vector<std::string> m_specifiers;
  std::map<std::string, std::string> m_values;
  std::uint16_t m_id = 0;
};

/// The numbers of a processor that are packed as six 32-bit words, in this order.
struct CPUWords {
  float busFrequencyMHz = 0;
  float lowFrequencyMHz = 0;
  float highFrequencyMHz = 0;
  float cpuFrequencyMHz = 0;
  std::uint32_t platformId = 0;
  std::uint32_t lastWord = 0;
};

/// A processor: its signature, frequencies and topology.
class CPUMetadata : public PlatformMetadata {
 public:
  CPUMetadata();
  CPUMetadata(const CPUMetadata& other);
  ~CPUMetadata() override;

  void serializePlatformMetadata(Serializer& serializer) const override;
  /// Always reads the topology in its deprecated form: a reader of newer data calls the form with a
  /// version. Returns 0, or 1 when a read falls short.
  int deserializePlatformMetadata(Serializer& serializer) override;
  /// Reads the form that a writer of this packed version word made. Returns 0, or 1 when a read
  /// falls short.
  int deserializePlatformMetadata(Serializer& serializer, std::uint32_t version);

  std::uint8_t m_family = 0;
  std::uint8_t m_model = 0;
  std::uint8_t m_stepping = 0;
  CPUWords m_cpuWords;
  TopTree m_topology;
  std::vector<TopologyChange> m_topologyChanges;
};

/// A platform controller hub.
class PCHMetadata : public PlatformMetadata {
 public:
  PCHMetadata();
  PCHMetadata(const PCHMetadata& other);
  ~PCHMetadata() override;

  /// The energy reporting words by their keys, from the entries of `m_values` that name them.
  std::map<std::string, std::uint32_t> getEnergyReportingConfiguration() const;
  /// The bus on which the hub of one server generation is found; 0xFFFF when it is not known.
  std::uint16_t getMZLWSPCHBus() const;
};

}  // namespace pwr
