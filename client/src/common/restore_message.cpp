#include "client/src/common/restore_message.h"

namespace pwr {

void appendRestoreMessage(std::vector<InputMsg*>& messages, const std::string& name,
                          MessageContext context, std::unique_ptr<Operation> restore) {
  auto message = std::make_unique<InputMsg>(name);
  message->first = context.first;
  message->second = context.second;
  // The first trigger of a message is never refused.
  message->addWriteTrigger("FINI");
  message->addOperation(restore.get());
  static_cast<void>(restore.release());
  messages.push_back(message.get());
  static_cast<void>(message.release());
}

}  // namespace pwr
