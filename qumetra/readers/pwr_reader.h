// Reads .pwr import streams.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "qumetra/readers/pwr_records.h"

namespace qumetra {

class ByteSource;

/// Gets what a reader finds, in the order of the file. By default nothing happens.
class PwrVisitor {
 public:
  virtual ~PwrVisitor();

  /// The record is valid during the call.
  virtual void record(const PwrRecord& record);
  /// Something is wrong with the record at `offset`, in bytes from the front of the file, which is
  /// left out. Reading goes on unless nothing tells where the next record begins.
  virtual void fault(std::uint64_t offset, const std::string& what);
};

/// How much was read.
struct PwrCounts {
  std::uint64_t records = 0;
  std::uint64_t faults = 0;
  /// The place behind the last record that was found.
  std::uint64_t end = 0;
};

/// Reads a file from front to end.
///
///     PwrReader reader(visitor);
///     FileSource file("run.pwr");
///     const PwrCounts counts = reader.read(file);
///
/// Any bytes are survived: what makes no sense is a fault. Memory holds one record, of 64 KiB at
/// most, whatever the file's size. What a record says about others is for the visitor to check.
/// Not synchronised.
class PwrReader {
 public:
  /// `visitor` is borrowed.
  explicit PwrReader(PwrVisitor& visitor);
  PwrReader(const PwrReader&) = delete;
  PwrReader& operator=(const PwrReader&) = delete;
  ~PwrReader();

  /// Reads a file to its end, or to where records cannot be told apart any more. What the source
  /// throws passes through.
  PwrCounts read(ByteSource& source);

 private:
  bool readRecord(ByteSource& source);
  bool readSized(ByteSource& source, std::size_t sizePlace);
  bool readUpTo(ByteSource& source, std::size_t length);
  void takeRecord();
  void fault(const std::string& what);

  /// What stands in front of a size field, and what the field can claim.
  static constexpr std::size_t kLongestRecord = 28 + 0xFFFF;

  PwrVisitor& m_visitor;
  PwrCounts m_counts;
  /// Reused, so that samples find room for their attributes.
  PwrRecord m_record;
  /// What was read of a record.
  std::size_t m_length = 0;
  std::array<char, kLongestRecord> m_bytes;
};

}  // namespace qumetra
