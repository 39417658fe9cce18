#include "platform/windows.h"

// The import library has a DllMain, too, which calls into prntvpt.dll; this one comes first.
BOOL WINAPI DllMain(HINSTANCE, DWORD, LPVOID) { return TRUE; }
