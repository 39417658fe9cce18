#include "devkit/filterhost/interrupt.h"

#include "platform/windows.h"

#include <mutex>
#include <utility>

namespace devkit::filterhost {
namespace {

std::mutex lock;
pipeline::FilterRun* current = nullptr;

BOOL WINAPI OnConsoleControl(DWORD event) {
    if (event != CTRL_C_EVENT) return FALSE;
    const std::lock_guard guard(lock);
    pipeline::FilterRun* run = std::exchange(current, nullptr);
    if (run == nullptr) return FALSE;
    run->Cancel();
    return TRUE;
}

}  // namespace

CancelOnInterrupt::CancelOnInterrupt(pipeline::FilterRun& run) {
    {
        const std::lock_guard guard(lock);
        current = &run;
    }
    SetConsoleCtrlHandler(OnConsoleControl, TRUE);
}

CancelOnInterrupt::~CancelOnInterrupt() {
    SetConsoleCtrlHandler(OnConsoleControl, FALSE);
    const std::lock_guard guard(lock);
    current = nullptr;
}

}  // namespace devkit::filterhost
