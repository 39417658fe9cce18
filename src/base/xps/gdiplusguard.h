#pragma once

#include <cstdint>

#include "platform/gdiplus.h"

namespace base::xps {

// Keeps GDI+ started for its lifetime. All guards of the process share one start-up: the first starts GDI+,
// the last shuts it down, and guards may be made and destroyed on any thread. What GDI+ owns, matrices
// included, must be gone before the guard. Not for DllMain.
class GdiplusGuard {
  public:
    GdiplusGuard();
    GdiplusGuard(const GdiplusGuard&) = delete;
    GdiplusGuard& operator=(const GdiplusGuard&) = delete;
    ~GdiplusGuard();

    // The number of guards alive, the token of the current start-up (0 when there is none), and what the last
    // start-up answered (GdiplusNotInitialized when GDI+ is shut down).
    [[nodiscard]] static std::uint32_t UseCount() noexcept;
    [[nodiscard]] static ULONG_PTR Token() noexcept;
    [[nodiscard]] static Gdiplus::Status LastStatus() noexcept;
};

}  // namespace base::xps
