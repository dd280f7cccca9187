#include "client/src/common/buffer_provider.h"

namespace pwr {

QMBufferProvider::~QMBufferProvider() = default;

}  // namespace pwr
