#include "qumetra/run/temp_area.h"

#include <stdlib.h>

#include <cerrno>
#include <system_error>

#include <fmt/format.h>

#include "qumetra/run/run_error.h"

namespace qumetra {
namespace {

constexpr const char* kVariable = "TMPDIR";

/// The base as the writers' own search for a place finds it, but an empty variable names none.
std::string temporaryBase() {
  for (const char* name : {kVariable, "TMP", "TEMP", "TEMPDIR"}) {
    const char* value = std::getenv(name);
    if (value != nullptr && *value != '\0') {
      return value;
    }
  }
  return "/tmp";
}

/// An absolute path, since the process may change its directory later.
std::filesystem::path makePrivateDirectory() {
  std::error_code error;
  const std::string base = temporaryBase();
  std::string pattern = (std::filesystem::absolute(base, error) / "qumetra_run_XXXXXX").string();
  if (error || ::mkdtemp(pattern.data()) == nullptr) {
    const int code = error ? error.value() : errno;
    throw RunError(fmt::format(
        "cannot make a temporary directory in \"{}\": {}; TMPDIR can name another place", base,
        std::generic_category().message(code)));
  }
  return pattern;
}

}  // namespace

TempArea::TempArea() : m_path(makePrivateDirectory()) {
  if (const char* former = std::getenv(kVariable)) {
    m_formerTmpdir = former;
  }
  ::setenv(kVariable, m_path.c_str(), 1);
}

TempArea::~TempArea() {
  if (m_formerTmpdir) {
    ::setenv(kVariable, m_formerTmpdir->c_str(), 1);
  } else {
    ::unsetenv(kVariable);
  }
  if (!m_isKept) {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
}

}  // namespace qumetra
