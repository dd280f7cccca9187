// Appending records to the byte store, next to a vector that is written out whenever it is full.
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <vector>

#include "bench/support/ratio.h"
#include "bench/support/scratch.h"
#include "client/src/common/backing_store.h"

namespace {

using qumetra::bench::Scratch;

constexpr std::size_t kBlockSize = 0x100000;
constexpr std::array<char, 27> kRecord = {"a record of ordinary width"};

void appendToStore(std::size_t records) {
  // Users hold the store by its interface.
  std::unique_ptr<pwr::QMBufferProvider> store =
      std::make_unique<pwr::QMExtensibleBackingStore>(kBlockSize);
  for (std::size_t i = 0; i < records; ++i) {
    if (store->write(kRecord.data(), kRecord.size()) != static_cast<std::int64_t>(kRecord.size())) {
      std::abort();
    }
  }
}

void appendToVector(std::size_t records) {
  const Scratch scratch("floor");
  const int file = ::open(scratch.path().c_str(), O_RDWR | O_CREAT | O_TRUNC, 0600);
  std::vector<char> block;
  block.reserve(kBlockSize);
  for (std::size_t i = 0; i < records; ++i) {
    if (block.size() + kRecord.size() > kBlockSize) {
      qumetra::bench::writeBlock(file, block);
    }
    block.insert(block.end(), kRecord.begin(), kRecord.end());
  }
  ::close(file);
}

}  // namespace

int main(int argc, char** argv) {
  qumetra::bench::addContest({"byte_store_append", 2'000'000, appendToStore, appendToVector});
  return qumetra::bench::runContests(argc, argv);
}
