#include "qumetra/access/message_firing.h"

#include "client/src/common/input_msg.h"

namespace qumetra {
namespace {

std::size_t writeAll(const pwr::InputMsg& message) {
  std::size_t failures = 0;
  for (pwr::Operation* const operation : message.operations) {
    if (pwr::Operation::dispatchWrite(operation, message.target) != 0) {
      ++failures;
    }
  }
  return failures;
}

}  // namespace

std::size_t fireWriteTrigger(const std::vector<pwr::InputMsg*>& messages,
                             const std::string& trigger) {
  std::size_t failures = 0;
  for (const pwr::InputMsg* const message : messages) {
    const bool isMeant =
        message->command == pwr::QMOpCommand::Write && message->writeTriggers->contains(trigger);
    if (isMeant) {
      failures += writeAll(*message);
    }
  }
  return failures;
}

}  // namespace qumetra
