// The byte store against a plain vector, over random operations and buffers so small that the disk
// is reached all the time.
#include <algorithm>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "client/src/common/backing_store.h"
#include "tests/common/store_test_support.h"
#include "tests/support/disk_faults.h"

namespace {

enum class Kind { Write, Read, Peek, ReadBack, Insert, ResetForRead, ResetForReadBack, Overwrite };

struct Operation {
  Kind kind;
  /// How many bytes to read.
  std::uint64_t count;
  /// Where to insert, in percent of the sequence; above 100 past its end.
  std::uint64_t percent;
  /// What to write.
  std::string bytes;
};

void showValue(const Operation& operation, std::ostream& out) {
  out << "{kind " << static_cast<int>(operation.kind) << ", count " << operation.count << ", at "
      << operation.percent << "%, \"" << operation.bytes << "\"}";
}

/// What the store must do, by the plainest means.
class Model {
 public:
  std::int64_t write(const std::string& bytes) {
    const std::size_t over = std::min(bytes.size(), m_bytes.size() - m_writeHead);
    m_bytes.replace(m_writeHead, over, bytes);
    m_writeHead += bytes.size();
    return static_cast<std::int64_t>(bytes.size());
  }
  std::string peek(std::uint64_t count) const { return m_bytes.substr(m_readHead, count); }
  std::string read(std::uint64_t count) {
    std::string bytes = peek(count);
    m_readHead += bytes.size();
    return bytes;
  }
  std::string readBack(std::uint64_t count) {
    const std::size_t got = std::min<std::size_t>(count, m_readHead);
    m_readHead -= got;
    return std::string(count - got, '.') + m_bytes.substr(m_readHead, got);
  }
  std::int32_t insert(std::uint64_t position, const std::string& bytes) {
    if (position > m_bytes.size()) {
      return -1;
    }
    m_bytes.insert(position, bytes);
    m_writeHead = bytes.empty() ? position : m_bytes.size();
    return 0;
  }
  void resetForRead() { m_readHead = 0; }
  void resetForReadBack() { m_readHead = m_bytes.size(); }
  void writeToReadHead() { m_writeHead = m_readHead; }
  const std::string& bytes() const { return m_bytes; }

 private:
  std::string m_bytes;
  std::size_t m_readHead = 0;
  std::size_t m_writeHead = 0;
};

std::string readBack(pwr::QMBufferProvider& store, std::uint64_t count) {
  std::string bytes(count, '.');
  store.readBack(bytes.data(), count);
  return bytes;
}

void insertInBoth(const Operation& operation, pwr::QMBufferProvider& store, Model& model) {
  const std::uint64_t position = model.bytes().size() * operation.percent / 100;
  RC_ASSERT(store.insert(position, operation.bytes.data(), operation.bytes.size()) ==
            model.insert(position, operation.bytes));
}

void apply(const Operation& operation, pwr::QMBufferProvider& store, Model& model) {
  switch (operation.kind) {
    case Kind::Write:
      RC_ASSERT(qumetra::test::write(store, operation.bytes) == model.write(operation.bytes));
      break;
    case Kind::Read:
      RC_ASSERT(qumetra::test::read(store, operation.count) == model.read(operation.count));
      break;
    case Kind::Peek:
      RC_ASSERT(qumetra::test::peek(store, operation.count) == model.peek(operation.count));
      break;
    case Kind::ReadBack:
      RC_ASSERT(readBack(store, operation.count) == model.readBack(operation.count));
      break;
    case Kind::Insert:
      insertInBoth(operation, store, model);
      break;
    case Kind::ResetForRead:
      store.resetForRead();
      model.resetForRead();
      break;
    case Kind::ResetForReadBack:
      store.resetForReadBack();
      model.resetForReadBack();
      break;
    case Kind::Overwrite:
      store.writeToReadHead();
      model.writeToReadHead();
      break;
  }
  RC_ASSERT(store.size() == model.bytes().size());
}

rc::Gen<Operation> anyOperation() {
  // Writes come more often than the rest, so that there is something to read.
  const auto kind = rc::gen::element(Kind::Write, Kind::Write, Kind::Write, Kind::Read, Kind::Peek,
                                     Kind::ReadBack, Kind::Insert, Kind::ResetForRead,
                                     Kind::ResetForReadBack, Kind::Overwrite);
  return rc::gen::construct<Operation>(
      kind, rc::gen::inRange<std::uint64_t>(0, 60), rc::gen::inRange<std::uint64_t>(0, 105),
      rc::gen::container<std::string>(rc::gen::inRange('a', static_cast<char>('z' + 1))));
}

RC_GTEST_PROP(BackingStoreProperty, BehavesLikeAVector, ()) {
  const qumetra::test::TempArea area;
  pwr::QMExtensibleBackingStore store(*rc::gen::inRange<std::uint64_t>(0, 40));
  Model model;
  for (const Operation& operation : *rc::gen::container<std::vector<Operation>>(anyOperation())) {
    apply(operation, store, model);
  }
  RC_ASSERT(qumetra::test::contents(store) == model.bytes());
}

}  // namespace
