#include "writers/binarywriter_plugin/binary_writer.h"

#include "writers/binarywriter_plugin/binary_writer_impl.h"
#include "writers/capability.h"
#include "writers/without_exception.h"

namespace {

constexpr const char* kGuid = "c3b1f91c-4a80-11e9-8261-001e67ca31ce";

}  // namespace

BinaryWriter::BinaryWriter() : WriterPlugin(kGuid) {
  declareCapability(*this, {.option = "bin",
                            .description = "Write data in a proprietary binary format (.qmbin)",
                            .suffix = ".qmbin",
                            .flags = pwr::PluginCapability::kFlagContinuous |
                                     pwr::PluginCapability::kFlagHostInterpreted});
}

BinaryWriter::~BinaryWriter() = default;

int BinaryWriter::init(const std::string& name, bool continuous) {
  if (m_impl != nullptr) {
    m_impl->startCollection();
    return 0;
  }
  return withoutException([&] {
    m_impl = std::make_unique<Impl>(name, continuous);
    return 0;
  });
}

int BinaryWriter::fini() {
  return m_impl == nullptr ? 0 : withoutException([&] { return m_impl->fini(); });
}

int BinaryWriter::flushContinuousResults(const pwr::SystemMetadata& metadata) {
  if (m_impl == nullptr) {
    return 0;
  }
  return withoutException([&] { return m_impl->flushContinuousResults(metadata) ? 1 : 0; }, 0);
}

int BinaryWriter::writeMessage(const pwr::SystemMessage& message) {
  return m_impl == nullptr ? 1 : m_impl->writeMessage(message);
}

int BinaryWriter::writeMessage(const pwr::Metric& metric) {
  return m_impl == nullptr ? 1 : withoutException([&] { return m_impl->writeMessage(metric); });
}
