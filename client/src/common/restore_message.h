// Messages that put a register back at the end of a run.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "client/src/common/input_msg.h"

namespace pwr {

/// Context numbers that the host gives to a message.
struct MessageContext {
  int first = 0;
  int second = 0;
};

/// Appends a message that has the host carry `restore` out at "FINI". `messages` owns the message,
/// which owns the operation. REQUIRES: the operation can write.
void appendRestoreMessage(std::vector<InputMsg*>& messages, const std::string& name,
                          MessageContext context, std::unique_ptr<Operation> restore);

}  // namespace pwr
