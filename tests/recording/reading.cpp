#include "tests/recording/reading.h"

#include <stdexcept>

namespace qumetra::test {

std::string Reading::readBytes(const std::string& bytes) {
  writeFile(m_directory.file("r"), bytes);
  return readPath(m_directory.file("r"));
}

std::string Reading::readLines(std::initializer_list<std::string> lines) {
  std::string bytes = kFirstRecord + '\n';
  for (const std::string& line : lines) {
    bytes += line + '\n';
  }
  return readBytes(bytes);
}

std::string Reading::readPath(const std::string& path) {
  MessageDump ignored;
  Tee sink(m_dump, second == nullptr ? ignored : *second);
  try {
    RecordingReader reader(path, m_model, sink);
    reader.setWarningHandler(
        [this](const std::string& text) { m_warnings.push_back(withoutDirectory(text)); });
    reader.readAll();
    m_samplesRead = reader.samplesRead();
  } catch (const RecordingError& error) {
    return withoutDirectory(error.what());
  }
  return {};
}

std::string Reading::withoutDirectory(const std::string& text) const {
  const std::string prefix = m_directory.path().string() + '/';
  return text.compare(0, prefix.size(), prefix) == 0 ? text.substr(prefix.size()) : text;
}

const pwr::DataHandle& handleOf(std::uint64_t id) {
  const pwr::DataHandle* handle = nullptr;
  if (pwr::DataHandle::get(id, handle) != 0) {
    throw std::out_of_range("no handle with id " + std::to_string(id));
  }
  return *handle;
}

}  // namespace qumetra::test
