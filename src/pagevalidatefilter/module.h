#pragma once

#include "platform/windows.h"

namespace pagevalidatefilter {

// Counts as one live object of the module while it lives; the module may be unloaded when there is none.
class ModuleReference {
  public:
    ModuleReference() noexcept;
    ModuleReference(const ModuleReference&) = delete;
    ModuleReference& operator=(const ModuleReference&) = delete;
    ~ModuleReference();
};

// One more, or one less, for as long as a client keeps the server locked.
void LockModule() noexcept;
void UnlockModule() noexcept;

// Live objects and locks together.
[[nodiscard]] LONG ModuleCount() noexcept;

}  // namespace pagevalidatefilter
