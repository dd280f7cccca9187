// The writer of .json: a run as trace events, which Perfetto and others open.
#pragma once

#include "writers/json_plugin_helper/series_writer.h"

/// Writes `<base>.json` at `fini`: one counter event per point. docs/trace-json.md tells the
/// document member by member.
class JSONWriter : public SeriesWriter {
 public:
  JSONWriter();
  ~JSONWriter() override;

  /// Returns 0, also when the file cannot be made, and 1 for want of memory, where the file may
  /// have a beginning; in a continuous run what the host's output returns.
  int fini() override;

 private:
  void writeDocument() const;
};

/// The id of this process.
int getProcessId();
/// The id of this thread, cut to 32 bits.
int getThreadId();
