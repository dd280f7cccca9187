#include "writers/keltowriter_plugin/record_stream.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

#include "client/src/common/owned.h"
#include "client/src/common/pw_files.h"
#include "client/src/common/pw_log.h"
#include "host/execute_once.h"
#include "writers/keltowriter_plugin/kelto_log.h"

namespace {

constexpr std::uint64_t kStoreBufferSize = 0x100000;
constexpr std::uint64_t kBlockSize = 0x100000;

using Stores = std::vector<std::unique_ptr<KeltoBackingStoreManager>>;

/// Holds what no run will release any more. Never destroyed, since the temp files are to stay.
Stores& unreleasedStores() {
  static auto* const s_stores = std::make_unique<Stores>().release();
  return *s_stores;
}

/// Cuts off what was written from `position` on.
void takeBack(std::FILE* stream, off_t position) {
  if (position < 0) {
    return;  // A stream that has no positions, such as a pipe.
  }
  std::fflush(stream);
  if (::ftruncate(::fileno(stream), position) == 0) {
    ::fseeko(stream, position, SEEK_SET);
  }
}

}  // namespace

KeltoBackingStoreManager::KeltoBackingStoreManager(std::string storeName)
    : store(std::make_unique<pwr::QMExtensibleBackingStore>(kStoreBufferSize)),
      name(std::move(storeName)) {}

int KeltoBackingStoreManager::pushBuffer_i(const char* data, std::uint32_t size) {
  if (!active) {
    return 0;
  }
  if (store->write(data, size) < static_cast<std::int64_t>(size)) {
    return kelto::failure("Failed to write to tmp file %s\n", store->path().c_str());
  }
  return 0;
}

int KeltoBackingStoreManager::flush(std::FILE* stream) {
  if (stream == nullptr) {
    return 1;
  }
  if (!active) {
    pwr::logNote(
        "Note: The .pwr file will not contain data associated with '%s'. This metric is not "
        "supported for visualization in Kelto(TM) Viewer.\n",
        name.c_str());
    return 1;
  }
  return copyTo(stream, store->size());
}

// Block by block, so that memory does not grow with the store. A reader of the file could not tell
// where half a store ends, so what was copied before a short read is taken back.
int KeltoBackingStoreManager::copyTo(std::FILE* stream, std::uint64_t size) {
  const std::uint64_t blockSize = std::clamp<std::uint64_t>(size, 1, kBlockSize);
  const pwr::OwnedBytes block(static_cast<char*>(std::malloc(blockSize)));
  if (block == nullptr) {
    return kelto::failure("Failed to allocate buffer of size %lld\n", static_cast<long long>(size));
  }
  const off_t start = ::ftello(stream);
  store->resetForRead();
  for (std::uint64_t left = size; left > 0;) {
    const std::uint64_t count = std::min(left, blockSize);
    if (store->read(block.get(), count) < static_cast<std::int64_t>(count)) {
      takeBack(stream, start);
      return kelto::failure("Failed to read from backing store '%s'. \n", store->path().c_str());
    }
    const bool isWritten = std::fwrite(block.get(), 1, count, stream) == count;
    left -= count;
    // The last bytes may wait in the stream, where a full disk would go unnoticed.
    if (!isWritten || (left == 0 && std::fflush(stream) != 0)) {
      return kelto::failure("Failed to write backing store '%s' buffer to main output file. \n",
                            store->path().c_str());
    }
  }
  return 0;
}

bool KeltoWriterImpl::m_hasData = false;
bool KeltoWriterImpl::m_wasFileOpened = false;

KeltoWriterImpl::KeltoWriterImpl(std::string suffix) : fileSuffix(std::move(suffix)) {}

KeltoWriterImpl::~KeltoWriterImpl() {
  for (auto& [id, manager] : stores) {
    unreleasedStores().push_back(std::move(manager));
  }
  closeOutput();
}

KeltoBackingStoreManager* KeltoWriterImpl::findStore(std::uint64_t id) {
  const auto found = stores.find(id);
  return found == stores.end() ? nullptr : found->second.get();
}

KeltoBackingStoreManager* KeltoWriterImpl::getBackingStore(const std::string& name,
                                                           std::uint64_t id) {
  if (KeltoBackingStoreManager* const known = findStore(id)) {
    return known;
  }
  try {
    auto manager = std::make_unique<KeltoBackingStoreManager>(name);
    return stores.emplace(id, std::move(manager)).first->second.get();
  } catch (...) {
    return nullptr;  // The store has told why.
  }
}

int KeltoWriterImpl::fini() {
  bool isWhole = true;
  for (auto entry = stores.begin(); entry != stores.end(); entry = stores.erase(entry)) {
    if (!valid) {
      continue;
    }
    if (!openOutput()) {
      return kelto::failure("Could not create %s\n", outputPath.c_str());
    }
    // A store that fails leaves a hole and has told so; the others are still worth having.
    const bool isMissing = entry->second->flush(outputFile) != 0 && entry->second->active;
    isWhole = isWhole && !isMissing;
  }
  if (valid && m_hasData && outputFile != nullptr) {
    isWhole = closeOutput() == 0 && isWhole;
    if (!isWhole) {
      // Warnings are seldom shown, and the status of a result with holes is the same.
      pwr::logError("ERROR: Could not write all of %s\n", outputPath.c_str());
    }
    return 0;
  }
  return withdraw();
}

/// False when this call has tried and failed. After the process's one attempt there may be no file.
bool KeltoWriterImpl::openOutput() {
  bool isOpen = true;
  pwr::executeOnce(m_wasFileOpened,
                   [&] { isOpen = pwr::openFileHandle(&outputFile, outputPath, "wb"); });
  return isOpen;
}

/// Returns 0 when there was an open file and it closed well.
int KeltoWriterImpl::closeOutput() {
  std::FILE* const file = std::exchange(outputFile, nullptr);
  return file == nullptr ? EOF : std::fclose(file);
}

int KeltoWriterImpl::withdraw() {
  if (closeOutput() == 0 && std::remove(outputPath.c_str()) != 0) {
    pwr::logError("ERROR: Failed to remove the .pwr result file \"%s\", the file is unusable.\n",
                  outputPath.c_str());
    return 0;
  }
  pwr::logNote("Note: A .pwr result file was not created. No supported metric was found.\n");
  return 0;
}
