// The host's output handle for one result file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace pwr {

/// Takes the bytes of one result file. Owned by the environment, one per file name; writers never
/// free it. A writer appends to `m_buffer`, calls `flush`, empties the buffer, sets
/// `m_pendingBytes` to 0 and calls `close`. Not synchronised.
class Logger {
 public:
  /// A handle with the empty name has no file.
  explicit Logger(std::string fileName);
  Logger(const Logger&) = delete;
  Logger& operator=(const Logger&) = delete;
  virtual ~Logger();

  /// Ends the use of the handle. Returns 0.
  virtual int finish();
  /// Brings the buffer's bytes to the file. The first use makes the file and its directories, or
  /// empties it, also when there are no bytes; later uses append. A file that cannot be made or
  /// written is one error in the log, at level 1, however often it fails.
  virtual void flush();
  /// Releases the file. A later `flush` appends to it.
  virtual void close();

  std::vector<char> m_buffer;
  std::uint64_t m_pendingBytes = 0;

 private:
  bool open();
  void reportFailure(const char* action, int error);

  std::string m_fileName;
  int m_descriptor = -1;
  bool m_started = false;
  bool m_failureReported = false;
};

}  // namespace pwr
