#include "platform/windows.h"

#include <exception>

#ifdef __GLIBCXX__
namespace __gnu_cxx {
// Frees what the C++ library keeps for the life of the process, its reserve for exceptions without memory.
void __freeres();
}  // namespace __gnu_cxx
#endif

// The entry point stands in an object that is always linked: an import library may bring a DllMain of its
// own, and the C library would call that one while the module loads. Thread notifications stay on, because
// the C++ library is linked statically and needs them.
BOOL WINAPI DllMain(HINSTANCE, DWORD reason, [[maybe_unused]] void* pReserved) {
#ifdef __GLIBCXX__
    // The library is the module's own and goes with it. At the end of the process nothing need be freed.
    if (reason == DLL_PROCESS_DETACH && pReserved == nullptr) __gnu_cxx::__freeres();
#else
    static_cast<void>(reason);
#endif
    return TRUE;
}
