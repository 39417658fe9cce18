#include "platform/windows.h"

#include "devkit/prntvpt/dll/instance.h"

namespace devkit::prntvpt {

Provider& Instance() {
    static Provider s_provider;
    return s_provider;
}

}  // namespace devkit::prntvpt

// A thread that ends with open handles is noticed here.
BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason == DLL_THREAD_DETACH) devkit::prntvpt::Instance().ThreadEnded(GetCurrentThreadId());
    return TRUE;
}
