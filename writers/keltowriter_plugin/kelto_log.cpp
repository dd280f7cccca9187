#include "writers/keltowriter_plugin/kelto_log.h"

#include <cstdarg>
#include <string>

#include "client/src/common/pw_log.h"

namespace kelto {

int failure(const char* format, ...) {
  if (pwr::plainWarningsShow()) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::string text = pwr::formatText(format, arguments);
    va_end(arguments);
    pwr::logPlainWarning("WARNING: KeltoWriterPlugin:    %s", text.c_str());
  }
  return 1;
}

}  // namespace kelto
