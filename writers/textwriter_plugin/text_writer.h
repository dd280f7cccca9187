// The frame of a writer whose report is made by a `TextWriterImpl`.
#pragma once

#include <memory>
#include <string>

#include "writers/textwriter_plugin/text_writer_impl.h"
#include "writers/writer_plugins.h"

/// Passes what a host calls on to the engine. A class that derives from it sets `m_impl` in its
/// constructor; without an engine every operation that needs one returns 1.
class TextWriter : public WriterPlugin {
 public:
  explicit TextWriter(std::string guid);
  ~TextWriter() override;

  using WriterPlugin::writeMessage;

  /// The report is the same with `continuous` and without.
  int init(const std::string& name, bool continuous) override;
  int fini() override;
  /// Stores the text as a row of the table whose key is the message's id.
  int writeMessage(const pwr::TextMessage& message) override;
  int writeMessage(const pwr::SystemMessage& message) override;

 protected:
  std::unique_ptr<TextWriterImpl> m_impl;
};
