// Registers in memory, and the messages that put them back.
#pragma once

#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "client/src/common/input_msg.h"
#include "qumetra/access/memory_backend.h"
#include "tests/support/log_capture.h"

namespace qumetra::test {

/// All accesses of a test go to `m_registers`; `m_messages` owns what routines append.
class RestoreWorld : public ::testing::Test {
 protected:
  ~RestoreWorld() override {
    for (pwr::InputMsg* const message : m_messages) {
      std::default_delete<pwr::InputMsg>()(message);
    }
  }

  LogCapture m_log;
  MemoryBackend m_registers;
  BackendInUse m_inUse{m_registers};
  std::vector<pwr::InputMsg*> m_messages;
};

}  // namespace qumetra::test
