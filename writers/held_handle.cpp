#include "writers/held_handle.h"

#include "host/handles.h"

const pwr::DataHandle* handleIn(const pwr::Data& value) {
  const pwr::DataHandle* handle = nullptr;
  static_cast<void>(value.toHandle(handle));  // A failure sets it to null.
  return handle;
}

const pwr::DataDescriptor* descriptorIn(const pwr::Data& value) {
  return dynamic_cast<const pwr::DataDescriptor*>(handleIn(value));
}
