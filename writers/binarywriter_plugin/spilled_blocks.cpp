#include "writers/binarywriter_plugin/spilled_blocks.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "client/src/common/pw_files.h"

namespace pwr::bin {

SpilledBlocks::SpilledBlocks(std::size_t blockSize) : m_blockSize(blockSize) {}

SpilledBlocks::~SpilledBlocks() { clear(); }

void SpilledBlocks::append(const char* block) {
  if (m_inMemory.empty() && appendToFile(block)) {
    ++m_endOnDisk;
  } else {
    m_inMemory.emplace_back(block, block + m_blockSize);
  }
}

bool SpilledBlocks::appendToFile(const char* block) {
  if (m_file == nullptr && !open()) {
    return false;
  }
  std::FILE* const file = m_file.get();
  return ::fseeko(file, placeOf(m_endOnDisk), SEEK_SET) == 0 &&
         std::fwrite(block, m_blockSize, 1, file) == 1;
}

bool SpilledBlocks::takeFirst(char* out) {
  if (m_firstOnDisk < m_endOnDisk) {
    return takeFromFile(m_firstOnDisk++, out);
  }
  std::copy(m_inMemory.front().begin(), m_inMemory.front().end(), out);
  m_inMemory.pop_front();
  return true;
}

bool SpilledBlocks::takeFromFile(std::size_t number, char* out) {
  std::FILE* const file = m_file.get();
  if (::fseeko(file, placeOf(number), SEEK_SET) != 0 ||
      std::fread(out, m_blockSize, 1, file) != 1) {
    return false;
  }
  // So that what the block becomes finds room. Not every file system can; `clear` frees all.
  ::fallocate(::fileno(file), FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, placeOf(number),
              static_cast<off_t>(m_blockSize));
  return true;
}

void SpilledBlocks::clear() {
  m_firstOnDisk = m_endOnDisk = 0;
  m_inMemory.clear();
  if (m_file != nullptr) {
    m_file.reset();
    ::unlink(m_path.c_str());
    m_path.clear();
  }
}

bool SpilledBlocks::open() {
  std::string path = qm_temp_directory_path() + "_qmet_samples_XXXXXX";
  const int descriptor = ::mkostemp(path.data(), O_CLOEXEC);
  if (descriptor < 0) {
    return false;
  }
  m_file.reset(::fdopen(descriptor, "w+b"));
  if (m_file == nullptr) {
    ::close(descriptor);
    ::unlink(path.c_str());
    return false;
  }
  // Blocks go to the file as they are; a failure then shows at once.
  std::setvbuf(m_file.get(), nullptr, _IONBF, 0);
  m_path = std::move(path);
  return true;
}

}  // namespace pwr::bin
