#include <cstring>

#include "host/environment.h"

namespace {

/// Takes everything and keeps nothing, so that a sink without a target is a good stream.
class NullBuffer : public std::streambuf {
 protected:
  int_type overflow(int_type character) override { return traits_type::not_eof(character); }
  std::streamsize xsputn(const char* /*text*/, std::streamsize count) override { return count; }
};

std::streambuf* nullBuffer() {
  static NullBuffer s_buffer;
  return &s_buffer;
}

}  // namespace

LogSink::LogSink(std::streambuf* target)
    : std::ostream(target != nullptr ? target : nullBuffer()) {}
LogSink::~LogSink() = default;

void LogSink::hostSlot1() {}
void LogSink::hostSlot2() {}
void LogSink::hostSlot3() {}

void LogSink::log(int /*level*/, const char* text) {
  write(text, static_cast<std::streamsize>(std::strlen(text)));
  flush();
}
