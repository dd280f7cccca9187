#include "client/src/common/input_msg.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <string_view>

#include "client/src/common/pw_log.h"
#include "client/src/common/tokenizer.h"

namespace pwr {
namespace {

constexpr std::uint32_t kAllOnes = std::numeric_limits<std::uint32_t>::max();

/// The triggers of a run's life.
constexpr std::array kLifeTriggers = {"INIT", "REQUIREMENTS", "FINI"};

/// Life's triggers, and the empty one, stand alone.
bool isReserved(const std::string& trigger) {
  return trigger.empty() || std::any_of(kLifeTriggers.begin(), kLifeTriggers.end(),
                                        [&](std::string_view life) { return life == trigger; });
}

bool hasLifeTrigger(const PWSet<std::string>& triggers) {
  return std::any_of(kLifeTriggers.begin(), kLifeTriggers.end(),
                     [&](const char* life) { return triggers.contains(life); });
}

void reportRefusal(const std::string& trigger, const std::string& message, const char* reason) {
  errorStream() << "Trying to add Trigger " << trigger << " to message " << message
                << " which already has " << reason << std::endl;
}

}  // namespace

InputMsg::InputMsg(const std::string& messageName) {
  init_i(messageName, "", 0, 0, 0, QMOpCommand::None);
}

InputMsg::~InputMsg() {
  for (Operation* const operation : operations) {
    std::default_delete<Operation>()(operation);
  }
}

void InputMsg::init_i(const std::string& messageName, const std::string& messageFeature,
                      int firstNumber, int secondNumber, int thirdNumber,
                      QMOpCommand messageCommand) {
  name = messageName;
  feature = messageFeature;
  first = firstNumber;
  second = secondNumber;
  third = thirdNumber;
  command = messageCommand;
  setPlatformName();
  fullName = feature + "_" + name;
  target = "ANY";
  hostNumber = 0;
  writeTriggers = &writeTrigger.first;
  hostSecondNumber = 0;
  hostText.clear();
}

void InputMsg::setPlatformName() {
  const Tokenizer tokenizer(feature, "_");
  if (tokenizer.get_num_tokens() == 2) {
    platformName = tokenizer.get_all_tokens().front();
  }
}

void InputMsg::addOperation(Operation* operation) { operations.push_back(operation); }

std::uint32_t InputMsg::addWriteTrigger(const std::string& trigger) {
  if (command != QMOpCommand::Write && command != QMOpCommand::None) {
    return kAllOnes;
  }
  const bool allCanWrite = std::all_of(
      operations.begin(), operations.end(),
      [](const Operation* operation) { return operation->isValidCommand_i(QMOpCommand::Write); });
  if (!allCanWrite || !isTriggerCompatible_i(trigger, *writeTriggers)) {
    return kAllOnes;
  }
  command = QMOpCommand::Write;
  writeTriggers->add(trigger);
  return 0;
}

// The first text speaks of two triggers although three are tested, and the second shouts: readers
// of the log look for them as they are.
bool InputMsg::isTriggerCompatible_i(const std::string& trigger,
                                     PWSet<std::string>& triggers) const {
  if (!isReserved(trigger)) {
    if (!hasLifeTrigger(triggers)) {
      return true;
    }
    reportRefusal(trigger, name,
                  "an \"INIT\" or \"REQUIREMENTS\" Trigger; \"INIT\" and \"REQUIREMENTS\" messages "
                  "cannot be mixed with other messages!");
    return false;
  }
  if (triggers.empty() || triggers.contains(trigger)) {
    return true;
  }
  reportRefusal(trigger, name,
                "other triggers; \"INIT\", \"FINI\" and \"REQUIREMENTS\" messages CANNOT be mixed "
                "with other messages!");
  return false;
}

}  // namespace pwr
