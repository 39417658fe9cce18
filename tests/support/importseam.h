#pragma once

#include "platform/windows.h"

// TEST_IMPORT(NAME, STACK, REPLACEMENT): a call of the imported system function NAME from anywhere in the
// test program goes to REPLACEMENT, because the linker prefers the program's own import slot to the import
// library's. STACK is the size of the function's arguments on x86. At global scope of one source.
#ifdef _M_IX86
#ifdef __MINGW32__
#define TEST_IMPORT(name, stack, replacement)                                      \
    extern "C" void* const test_import_##name __asm__("__imp__" #name "@" #stack); \
    extern "C" void* const test_import_##name = reinterpret_cast<void*>(&replacement);
#else
#define TEST_IMPORT(name, stack, replacement)                                                     \
    __pragma(comment(linker, "/alternatename:__imp__" #name "@" #stack                            \
                             "=_test_import_" #name)) extern "C" void* const test_import_##name = \
        reinterpret_cast<void*>(&replacement);
#endif
#else
#define TEST_IMPORT(name, stack, replacement) \
    extern "C" void* const __imp_##name;      \
    extern "C" void* const __imp_##name = reinterpret_cast<void*>(&replacement);
#endif

namespace tests {

// The function that a replaced import would have reached.
template <typename Function>
[[nodiscard]] Function* SystemFunction(const wchar_t* module, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(LoadLibraryW(module), name)));
}

}  // namespace tests
