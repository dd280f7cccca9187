// Who hears what a check of a .pwr file finds.
#pragma once

#include <cstdint>
#include <string>

namespace qumetra {

/// Gets what a check finds. Offsets are in bytes from the front of the file.
class PwrFindings {
 public:
  virtual ~PwrFindings();

  /// The file is not as the format wants it.
  virtual void fault(std::uint64_t offset, const std::string& what) = 0;
  /// The file can be read, but says something that nothing can be made of.
  virtual void warning(std::uint64_t offset, const std::string& what) = 0;
};

}  // namespace qumetra
