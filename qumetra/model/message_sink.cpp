#include "qumetra/model/message_sink.h"

namespace qumetra {

MessageSink::~MessageSink() = default;

void MessageSink::attributesChanged(const pwr::DataHandle& /*handle*/) {}
void MessageSink::ended(const pwr::DataHandle& /*handle*/) {}
void MessageSink::metadataChanged(const pwr::SystemMetadata& /*metadata*/) {}

}  // namespace qumetra
