// What a feature asks the host to do at certain times.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/operation.h"
#include "host/pwset.h"

namespace pwr {

/// Operations, and the names of the triggers at which the host runs them. A message fires either at
/// one of the points of a run's life ("INIT", "REQUIREMENTS", "FINI", and the empty name), or at
/// any number of other triggers. Owns its operations. Not synchronised.
///
///     auto message = std::make_unique<InputMsg>("Restore");
///     message->addWriteTrigger("FINI");
///     message->addOperation(operation.release());
class InputMsg {
 public:
  /// When operations run; the host knows what each of the sets stands for.
  struct Trigger {
    PWSet<std::string> first;
    PWSet<std::string> second;
    PWSet<std::string> third;
  };

  explicit InputMsg(const std::string& messageName);
  InputMsg(const InputMsg&) = delete;
  InputMsg& operator=(const InputMsg&) = delete;
  ~InputMsg();

  void init_i(const std::string& messageName, const std::string& messageFeature, int firstNumber,
              int secondNumber, int thirdNumber, QMOpCommand messageCommand);
  /// Takes the platform from a feature of the form platform_feature; else leaves it as it is.
  void setPlatformName();
  /// Takes the operation over. REQUIRES: it is not null and was made by new.
  void addOperation(Operation* operation);
  /// Makes the message a write message and adds a trigger. Returns 0. All ones, and nothing has
  /// changed, for a read message, for operations that cannot write, and for triggers that exclude
  /// one another; the last is an error in the log.
  std::uint32_t addWriteTrigger(const std::string& trigger);
  /// Whether `trigger` may stand beside `triggers`. A refusal is an error in the log.
  bool isTriggerCompatible_i(const std::string& trigger, PWSet<std::string>& triggers) const;

  std::string name;
  /// "platform_feature" when it names a platform.
  std::string feature;
  std::string platformName;
  /// Feature and name with "_" between them, also when there is no feature.
  std::string fullName;
  /// Context numbers of the host.
  int first = 0;
  int second = 0;
  int third = 0;
  /// Which of the places that an operation fits is meant.
  std::string target;
  /// Used by the host only.
  int hostNumber = 0;
  Trigger writeTrigger;
  Trigger otherTrigger;
  /// The first set of the first trigger.
  PWSet<std::string>* writeTriggers = &writeTrigger.first;
  /// Owned, in order of adding.
  std::vector<Operation*> operations;
  QMOpCommand command = QMOpCommand::None;
  // Used by the host only.
  int hostSecondNumber = 0;
  std::string hostText;
};

}  // namespace pwr
