#include "writers/json_plugin_helper/json_file.h"

#include "client/src/common/pw_log.h"
#include "writers/without_exception.h"

JsonFile::JsonFile(const std::string& path)
    : m_path(path), m_file(path, std::ios::binary | std::ios::out | std::ios::trunc) {}

JsonFile::~JsonFile() {
  if (!m_file.is_open()) {
    return;
  }
  static_cast<void>(withoutException([this] {
    reportFailure();
    return 0;
  }));
}

void JsonFile::finish() {
  const bool wasMade = m_file.is_open();
  m_buffer.Put('\n');
  writeOut();
  m_file.flush();
  m_file.close();
  if (wasMade && !m_file) {
    reportFailure();
  }
}

void JsonFile::reportFailure() const {
  pwr::logError("ERROR: Could not write all of %s\n", m_path.c_str());
}

void JsonFile::writeOut() {
  m_file.write(m_buffer.GetString(), static_cast<std::streamsize>(m_buffer.GetSize()));
  m_buffer.Clear();
}
