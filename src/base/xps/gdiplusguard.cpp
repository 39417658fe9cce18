#include "base/xps/gdiplusguard.h"

namespace base::xps {
namespace {

SRWLOCK g_lock = SRWLOCK_INIT;
std::uint32_t g_useCount = 0;
ULONG_PTR g_token = 0;
Gdiplus::Status g_status = Gdiplus::GdiplusNotInitialized;

// A bare atomic count would let one thread use GDI+ while another is still starting it, and let a late
// shutdown end the next start-up; hence the lock round count and call.
class Lock {
  public:
    Lock() noexcept { AcquireSRWLockExclusive(&g_lock); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock() { ReleaseSRWLockExclusive(&g_lock); }
};

}  // namespace

GdiplusGuard::GdiplusGuard() {
    const Lock lock;
    if (++g_useCount != 1) return;
    const Gdiplus::GdiplusStartupInput input(nullptr, FALSE, FALSE);
    g_status = Gdiplus::GdiplusStartup(&g_token, &input, nullptr);
}

GdiplusGuard::~GdiplusGuard() {
    const Lock lock;
    if (--g_useCount != 0) return;
    Gdiplus::GdiplusShutdown(g_token);
    g_token = 0;
    g_status = Gdiplus::GdiplusNotInitialized;
}

std::uint32_t GdiplusGuard::UseCount() noexcept {
    const Lock lock;
    return g_useCount;
}

ULONG_PTR GdiplusGuard::Token() noexcept {
    const Lock lock;
    return g_token;
}

Gdiplus::Status GdiplusGuard::LastStatus() noexcept {
    const Lock lock;
    return g_status;
}

}  // namespace base::xps
