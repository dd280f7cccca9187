// Handles made from little more than a name.
#pragma once

#include <string>
#include <utility>

#include "qumetra/model/model.h"

namespace qumetra {

/// A handle's spec whose field name is its name, with the next free id.
inline HandleSpec named(std::string name, std::string header = {}) {
  HandleSpec spec;
  spec.name = std::move(name);
  spec.header = std::move(header);
  return spec;
}

}  // namespace qumetra
