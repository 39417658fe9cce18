#include "devkit/filterhost/interrupt.h"

#include "platform/windows.h"

#include <condition_variable>
#include <mutex>
#include <utility>

namespace devkit::filterhost {
namespace {

std::mutex g_lock;
std::condition_variable g_changed;
std::function<void()> g_cancel;
bool g_isCancelling = false;

BOOL WINAPI OnConsoleControl(DWORD event) {
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
    std::function<void()> cancel;
    {
        const std::lock_guard guard(g_lock);
        cancel = std::exchange(g_cancel, nullptr);
        if (!cancel) TerminateProcess(GetCurrentProcess(), kInterrupted);
        g_isCancelling = true;
    }
    // Without the lock, so that the next Ctrl+C need not wait for whatever this waits for.
    cancel();
    {
        const std::lock_guard guard(g_lock);
        g_isCancelling = false;
    }
    g_changed.notify_all();
    return TRUE;
}

}  // namespace

void EndOnInterrupt() { SetConsoleCtrlHandler(OnConsoleControl, TRUE); }

Interrupt::Interrupt(std::function<void()> cancel) {
    const std::lock_guard guard(g_lock);
    g_cancel = std::move(cancel);
}

Interrupt::~Interrupt() {
    std::unique_lock guard(g_lock);
    g_cancel = nullptr;
    g_changed.wait(guard, [] { return !g_isCancelling; });
}

}  // namespace devkit::filterhost
