// The description of a hardware access that the host can carry out.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "host/pwset.h"

namespace pwr {

class EntityHandle;
class OperationMetadata;
class PluginRequirement;

/// What an operation is asked to do. Hosts exchange the numbers.
enum class QMOpCommand : std::uint32_t {
  Read = 0,
  Write = 1,
  /// Nothing has been decided yet.
  None = 2,
};

/// A hardware access, described by texts: a name, and values for the categories that it accepts.
/// Copyable; a copy is as free of its original as a plain value. Not synchronised.
class Operation {
 public:
  explicit Operation(const std::string& name);
  Operation(const Operation& other);
  Operation& operator=(const Operation&) = delete;
  virtual ~Operation();

  /// Gives a category its value. Returns 0, or -1 when the category is refused.
  virtual int set(const std::string& category, const std::string& value) = 0;
  /// A description of the operation as it is now. The caller owns it.
  virtual OperationMetadata* getOperationMetadata() const = 0;
  /// A copy, which the caller owns.
  virtual Operation* clone() const = 0;
  /// Whether the category may get a value beside those that are set. Here: true.
  virtual bool canSetCategory(const std::string& category) const;
  /// Whether the operation can do what `command` asks for. Here: reads only.
  virtual bool isValidCommand_i(QMOpCommand command) const;

  // The host's part: carries the access out. Each returns 0 on success. The bytes that a read
  // brought are then in the operation. `target` tells which of the places that the operation fits
  // is meant; "ANY" leaves it open.
  static int dispatchRead(Operation* operation, const std::string& target);
  static int dispatchWrite(Operation* operation, const std::string& target);
  static int dispatchWrite(Operation* operation, const EntityHandle* target);

  /// The operation's name, such as "PCI".
  std::string m_name;
  /// Starts as a copy of the name, and goes into descriptions of the operation.
  std::string m_initValue;
  /// The categories that `set` accepts.
  PWSet<std::string> m_categories;
  std::deque<std::shared_ptr<PluginRequirement>> m_requirements;
};

}  // namespace pwr
