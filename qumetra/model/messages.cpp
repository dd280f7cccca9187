#include "host/messages.h"

#include <utility>

namespace pwr {

WriterMessage::WriterMessage() = default;
WriterMessage::~WriterMessage() = default;

TextMessage::TextMessage() = default;
TextMessage::~TextMessage() = default;
std::uint8_t TextMessage::getMessageType() const { return kText; }
void TextMessage::setMessage(std::string message) { m_message = std::move(message); }

HeaderTextMessage::HeaderTextMessage() = default;
HeaderTextMessage::~HeaderTextMessage() = default;
std::uint8_t HeaderTextMessage::getMessageType() const { return kHeaderText; }

SystemMessage::SystemMessage() = default;
SystemMessage::~SystemMessage() = default;
std::uint8_t SystemMessage::getMessageType() const { return kSystem; }

IdMessage::IdMessage() = default;
IdMessage::~IdMessage() = default;
std::uint8_t IdMessage::getMessageType() const { return kId; }

MetricContainerInfoMessage::MetricContainerInfoMessage() = default;
MetricContainerInfoMessage::~MetricContainerInfoMessage() = default;
std::uint8_t MetricContainerInfoMessage::getMessageType() const { return kContainerInfo; }

}  // namespace pwr
