// The messages that a host sends to its writers, samples and tables apart.
//
// A message lives for the call that delivers it. What it points at (metadata, notes, tables'
// handles) lives for the whole run, unless a member says otherwise.
#pragma once

#include <cstdint>
#include <string>

#include "host/text_notes.h"

namespace pwr {

class TableMessage;
struct SystemMetadata;

/// The base of everything that goes to a writer's `writeMessage`.
class WriterMessage {
 public:
  /// The message types that `getMessageType` returns.
  static constexpr std::uint8_t kTable = 1;
  static constexpr std::uint8_t kText = 2;
  static constexpr std::uint8_t kSystem = 3;
  static constexpr std::uint8_t kId = 4;
  static constexpr std::uint8_t kHeaderText = 5;
  static constexpr std::uint8_t kMetric = 6;
  static constexpr std::uint8_t kContainerInfo = 7;

  virtual ~WriterMessage();
  virtual std::uint8_t getMessageType() const = 0;

  /// The id of the message or, for a table, of the table.
  std::uint32_t m_id = 0;

 protected:
  WriterMessage();
  WriterMessage(const WriterMessage&) = default;
  WriterMessage& operator=(const WriterMessage&) = default;
};

/// Free text for the result.
class TextMessage : public WriterMessage {
 public:
  TextMessage();
  ~TextMessage() override;
  std::uint8_t getMessageType() const override;

  void setMessage(std::string message);

  std::string m_message;
};

/// Free text that belongs at the head of the result. Delivered through the overload for
/// `TextMessage`, which tells it by its type.
class HeaderTextMessage : public TextMessage {
 public:
  HeaderTextMessage();
  ~HeaderTextMessage() override;
  std::uint8_t getMessageType() const override;
};

/// What was measured where: stands before the samples that need it.
class SystemMessage : public WriterMessage {
 public:
  SystemMessage();
  ~SystemMessage() override;
  std::uint8_t getMessageType() const override;

  /// Borrowed; lives for the whole run.
  const SystemMetadata* m_metadata = nullptr;
};

/// A message that carries its id only.
class IdMessage : public WriterMessage {
 public:
  IdMessage();
  ~IdMessage() override;
  std::uint8_t getMessageType() const override;
};

/// How a metric's results are to be framed: heading, remarks, a table about the metric itself.
class MetricContainerInfoMessage : public WriterMessage {
 public:
  /// Which of the tables of a residency metric are wanted.
  static constexpr std::uint8_t kBothViews = 0;
  static constexpr std::uint8_t kPercentageView = 1;
  static constexpr std::uint8_t kTimeView = 2;

  MetricContainerInfoMessage();
  ~MetricContainerInfoMessage() override;
  std::uint8_t getMessageType() const override;

  std::uint32_t metricId = 0;
  /// Borrowed, may be null; lives for the whole run.
  const TextNotes* textNotes = nullptr;
  std::string containerName;
  /// Borrowed, may be null; lives for the call.
  const TableMessage* metricInfoTable = nullptr;
  std::string featureName;
  std::string metricName;
  std::uint8_t residencyView = kBothViews;
};

}  // namespace pwr
