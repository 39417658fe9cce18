#include "platform/windows.h"

#include <array>
#include <atomic>
#include <exception>

#ifdef __GLIBCXX__
namespace __gnu_cxx {
// Frees what the C++ library keeps for the life of the process, its reserve for exceptions without memory.
void __freeres();  // NOLINT(bugprone-reserved-identifier,readability-identifier-naming): the library's name
}  // namespace __gnu_cxx

namespace {

// The library of threads takes a slot of thread storage, of which a process has a thousand, when the first
// exception is thrown, and never gives it back. The slots are kept here to be freed with the module.
std::array<std::atomic<DWORD>, 8> g_slots;
std::atomic<std::size_t> g_slotCount = 0;

DWORD WINAPI TakeSlot() {
    using Take = DWORD WINAPI();
    const auto pTake = reinterpret_cast<Take*>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "TlsAlloc")));
    const DWORD slot = pTake();
    if (slot == TLS_OUT_OF_INDEXES) return slot;
    if (const std::size_t place = g_slotCount++; place < g_slots.size()) g_slots[place] = slot;
    return slot;
}

void FreeSlots() {
    for (std::size_t place = 0; place < g_slotCount && place < g_slots.size(); ++place) {
        TlsFree(g_slots[place]);
    }
}

}  // namespace

// The linker prefers the module's own import slot to the import library's.
extern "C" void* const kTakeSlot asm(
#ifdef _M_IX86
    "__imp__TlsAlloc@0"
#else
    "__imp_TlsAlloc"
#endif
);
extern "C" void* const kTakeSlot = reinterpret_cast<void*>(&TakeSlot);
#endif

// The entry point stands in an object that is always linked: an import library may bring a DllMain of its
// own, and the C library would call that one while the module loads. Thread notifications stay on, because
// the C++ library is linked statically and needs them.
BOOL WINAPI DllMain(HINSTANCE, DWORD reason, [[maybe_unused]] void* pReserved) {
#ifdef __GLIBCXX__
    // The libraries are the module's own and go with it. At the end of the process nothing need be freed.
    if (reason == DLL_PROCESS_DETACH && pReserved == nullptr) {
        __gnu_cxx::__freeres();
        FreeSlots();
    }
#else
    static_cast<void>(reason);
#endif
    return TRUE;
}
