#include "writers/json_plugin_helper/json_file.h"

JsonFile::JsonFile(const std::string& path)
    : m_file(path, std::ios::binary | std::ios::out | std::ios::trunc) {}

JsonFile::~JsonFile() = default;

void JsonFile::finish() {
  m_buffer.Put('\n');
  writeOut();
  m_file.flush();
  m_file.close();
}

void JsonFile::writeOut() {
  m_file.write(m_buffer.GetString(), static_cast<std::streamsize>(m_buffer.GetSize()));
  m_buffer.Clear();
}
