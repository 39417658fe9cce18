#include "platform/windows.h"

// The entry point stands in an object that is always linked: an import library may bring a DllMain of its
// own, and the C library would call that one while the module loads. Thread notifications stay on, because
// the C++ library is linked statically and needs them.
BOOL WINAPI DllMain(HINSTANCE, DWORD, void*) { return TRUE; }
