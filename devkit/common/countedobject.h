#pragma once

#include <cstddef>

#include "platform/comobject.h"

namespace devkit::common {

// The reference count of each COM object of the kit: the process knows how many of them live.
class CountedObject : public platform::ReferenceCount {
  protected:
    CountedObject() noexcept;
    ~CountedObject();
};

// The kit's COM objects that are alive, of all folders and all runs.
[[nodiscard]] std::size_t LiveObjectCount() noexcept;

}  // namespace devkit::common
