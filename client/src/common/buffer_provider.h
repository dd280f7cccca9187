// The interface of byte sequences that may be longer than memory.
#pragma once

#include <cstdint>

namespace pwr {

/// A sequence of bytes with one position for reading and one for writing, the read head and the
/// write head, which move on their own. Both start at 0 and never pass the end.
///
/// Sizes are in bytes. Results of -1 mean that the bytes could not be reached; the heads then stand
/// where they stood when it happened. The order of the operations is part of the contract: hosts
/// are built against it. One thread at a time uses a sequence.
class QMBufferProvider {
 public:
  virtual ~QMBufferProvider();

  /// Copies up to `count` bytes from the read head on and moves it behind them. Returns how many
  /// there were, 0 at the end of the sequence, or -1.
  virtual std::int64_t read(void* destination, std::uint64_t count) = 0;
  /// Stores `count` bytes at the write head, over what is there and on past the end, and moves the
  /// head behind them. Returns `count`, or -1; part of the bytes may then be stored.
  virtual std::int64_t write(const void* source, std::uint64_t count) = 0;
  /// Like `read`, but leaves the read head where it was.
  virtual std::int64_t peek(void* destination, std::uint64_t count) = 0;
  virtual std::uint64_t size() const = 0;

  /// Moves the read head to the start.
  virtual void resetForRead() = 0;
  /// Moves the read head to the end.
  virtual void resetForReadBack() = 0;
  /// Moves the write head to the read head.
  virtual void writeToReadHead() = 0;

  /// A new, empty sequence of the same kind, owned by the caller. May throw as its constructor
  /// does.
  virtual QMBufferProvider* clone(std::uint64_t size) const = 0;

  /// Makes room for `count` bytes at `position` and stores them there. The read head stays; the
  /// write head ends at the end of the sequence, or at `position` when there was nothing to insert.
  /// A null `source` inserts nothing. Returns 0, or -1 (all bits one) when `position` is past the
  /// end or memory or bytes could not be reached; what follows `position` may then be damaged.
  virtual std::int32_t insert(std::uint64_t position, const void* source, std::uint64_t count) = 0;
  /// Copies up to `count` bytes that lie before the read head and moves it in front of them. They
  /// keep their order and are right-aligned in `destination`: the byte before the head goes to
  /// index `count` less 1. Returns how many there were, 0 at the start, or -1.
  virtual std::int64_t readBack(void* destination, std::uint64_t count) = 0;

 protected:
  QMBufferProvider() = default;
  QMBufferProvider(const QMBufferProvider&) = default;
  QMBufferProvider& operator=(const QMBufferProvider&) = default;
};

}  // namespace pwr
