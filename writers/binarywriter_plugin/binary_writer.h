// The writer of the binary result.
#pragma once

#include <memory>
#include <string>

#include "writers/writer_plugins.h"

/// Writes every sample as a record of 27 bytes to `<base>.qmbin`, behind records that tell each
/// name once. In continuous mode each flush makes one file of a series, `<base>_<n>.qmbin`, whose
/// numbers go on through the whole process; a series is read in order, since a name stands in the
/// file of its first use only. docs/qmbin.md tells the format.
///
/// Nothing is written before the end or a flush. Until then names stand in memory, and all samples
/// but the last block of them in a temp file. The files are made by the host's output handles,
/// which also report what they cannot write; a large result goes through its handle's buffer in
/// several flushes. Want of memory fails the call, 1, or 0 for a flush, and what came before is
/// kept. One thread at a time.
class BinaryWriter final : public WriterPlugin {
 public:
  BinaryWriter();
  ~BinaryWriter() override;

  /// The first call sets base and mode for the life of the writer; later ones keep them, and what
  /// is still to be written too. Returns 0, or 1 for want of memory.
  int init(const std::string& name, bool continuous) override;

  /// Writes all that came since the last call to `<base>.qmbin` and returns 0. A second collection
  /// of the same writer goes behind the first. In continuous mode nothing is written: what was not
  /// flushed waits for another flush, and is lost with the writer. What the host's unnamed output
  /// handle returns at its end is returned.
  int fini() override;

  /// Writes the next file of the series. Returns 1 when that was done, and 0 when nothing was
  /// written and all is kept: before `init`, or while the host has no output handle to give.
  int flushContinuousResults(const pwr::SystemMetadata& metadata) override;

  using WriterPlugin::writeMessage;
  /// Keeps the metadata and learns how long a tick is. Returns 1 for a message that has none, and
  /// before `init`.
  int writeMessage(const pwr::SystemMessage& message) override;
  /// Takes the elements. The first that fails ends the message with 1; those before it are kept.
  /// Returns 1 before `init` too.
  int writeMessage(const pwr::Metric& metric) override;

 private:
  class Impl;
  /// Null before the first `init`.
  std::unique_ptr<Impl> m_impl;
};
