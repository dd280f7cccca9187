// What all operations have in common. The dispatch lies in the host.
#include "host/operation.h"

namespace pwr {

Operation::Operation(const std::string& name) : m_name(name), m_initValue(name) {}
Operation::Operation(const Operation& other) = default;
Operation::~Operation() = default;

bool Operation::canSetCategory(const std::string& /*category*/) const { return true; }

bool Operation::isValidCommand_i(QMOpCommand command) const { return command == QMOpCommand::Read; }

}  // namespace pwr
