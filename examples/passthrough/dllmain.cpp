#include <windows.h>

// In an object of its own, which is always linked: an import library (that of prntvpt.dll does) may bring a
// DllMain, and the C library would call that one while the module loads.
BOOL WINAPI DllMain(HINSTANCE, DWORD, void*) { return TRUE; }
