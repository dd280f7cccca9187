#include "writers/textwriter_plugin/text_writer.h"

#include <utility>

#include "host/messages.h"
#include "host/system_metadata.h"

TextWriter::TextWriter(std::string guid) : WriterPlugin(std::move(guid)) {}

TextWriter::~TextWriter() = default;

int TextWriter::init(const std::string& name, bool /*continuous*/) {
  return m_impl != nullptr ? m_impl->init(name) : 1;
}

int TextWriter::fini() { return m_impl != nullptr ? m_impl->fini() : 1; }

int TextWriter::writeMessage(const pwr::TextMessage& message) {
  if (m_impl == nullptr) {
    return 1;
  }
  bool isNew = false;
  m_impl->getTempFile(message.m_id, isNew, 1).pushString(nullptr, message.m_message, 0);
  return 0;
}

int TextWriter::writeMessage(const pwr::SystemMessage& message) {
  if (m_impl == nullptr) {
    return 1;
  }
  if (message.m_metadata != nullptr) {
    m_impl->m_timestampFrequency = message.m_metadata->m_timestampFrequency;
  }
  return 0;
}
