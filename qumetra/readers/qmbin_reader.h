// Reads .qmbin files, alone or as a series.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>

#include "qumetra/readers/qmbin_records.h"

namespace qumetra {

class ByteSource;
class RecordFields;

/// Gets what a reader finds, in the order of the file. By default nothing happens.
class QmbinVisitor {
 public:
  virtual ~QmbinVisitor();

  virtual void text(std::uint16_t index, const std::string& text);
  virtual void system(const QmbinSystem& system);
  virtual void descriptor(const QmbinDescriptor& descriptor);
  virtual void metric(const QmbinMetric& metric);
  virtual void sample(const QmbinSample& sample);
  /// Something is wrong at `offset`, in bytes from the front of the file. Reading goes on unless it
  /// is the end of the file.
  virtual void fault(std::uint64_t offset, const std::string& what);
};

/// How much was read.
struct QmbinCounts {
  std::uint64_t texts = 0;
  std::uint64_t systems = 0;
  std::uint64_t descriptors = 0;
  std::uint64_t metrics = 0;
  std::uint64_t samples = 0;
  std::uint64_t faults = 0;
  /// The faults that are references to a text, descriptor or metric that was not told, as in a file
  /// of a series without those before it.
  std::uint64_t untold = 0;
  /// The faults that are texts, descriptors or metrics that were told before, as in files that are
  /// no series.
  std::uint64_t retold = 0;
  /// Where the whole records end, in bytes.
  std::uint64_t end = 0;
};

/// Reads one file after the other. Names that a file tells hold for the files after it, as in the
/// files of a continuous run; read those in the order of their numbers.
///
///     QmbinReader reader(visitor);
///     FileSource file("run_0.qmbin");
///     const QmbinCounts counts = reader.read(file);
///
/// Any bytes are survived: what makes no sense is a fault, a name that was not told is read as the
/// empty one, and a record whose size is wrong is left out. Memory holds one record and the names,
/// never more than the files hold. Not synchronised.
class QmbinReader {
 public:
  /// `visitor` is borrowed.
  explicit QmbinReader(QmbinVisitor& visitor);
  QmbinReader(const QmbinReader&) = delete;
  QmbinReader& operator=(const QmbinReader&) = delete;
  ~QmbinReader();

  /// Reads a file to its end. What the source throws passes through.
  QmbinCounts read(ByteSource& source);

 private:
  bool readRecord(ByteSource& source);
  void takeRecord(std::uint8_t type, RecordFields& payload);
  void takeText(RecordFields& payload);
  void takeSystem(RecordFields& payload);
  void takeDescriptor(RecordFields& payload);
  void takeMetric(RecordFields& payload);
  QmbinMetric metricHead(RecordFields& payload);
  void takeSample(RecordFields& payload);
  bool hasSize(const RecordFields& payload, std::size_t wanted, const char* record);
  const std::string& textOf(RecordFields& payload, const char* what);
  const std::string* findText(std::uint16_t index, const char* what);
  const QmbinDescriptor* findDescriptor(std::uint16_t index);
  void fault(const std::string& what);
  void untold(const std::string& what);
  void retold(const char* kind, std::uint64_t number);

  static constexpr std::size_t kLongestPayload = 0xFFFF;

  QmbinVisitor& m_visitor;
  QmbinCounts m_counts;
  /// Of the record being read.
  std::uint64_t m_offset = 0;
  std::array<char, kLongestPayload> m_payload;
  std::unordered_map<std::uint16_t, std::string> m_texts;
  std::unordered_map<std::uint16_t, QmbinDescriptor> m_descriptors;
  // In order, since the ids in a hostile file could be chosen to collide in a hash table.
  std::map<std::uint32_t, QmbinMetric> m_metrics;
};

}  // namespace qumetra
