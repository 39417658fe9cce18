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

template <typename Function>
Function* SystemFunction(const char* name) {
    return reinterpret_cast<Function*>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), name)));
}

// The library of threads takes a slot of thread storage, of which a process has a thousand, when the first
// exception is thrown, and never gives it back. The slots are kept here to be freed with the module.
std::array<std::atomic<DWORD>, 8> g_slots;
std::atomic<std::size_t> g_slotCount = 0;

DWORD WINAPI TakeSlot() {
    const DWORD slot = SystemFunction<DWORD WINAPI()>("TlsAlloc")();
    if (slot == TLS_OUT_OF_INDEXES) return slot;
    if (const std::size_t place = g_slotCount++; place < g_slots.size()) g_slots[place] = slot;
    return slot;
}

void FreeSlots() {
    for (std::size_t place = 0; place < g_slotCount && place < g_slots.size(); ++place) {
        TlsFree(g_slots[place]);
    }
}

// It keeps an event and a handle of each thread that has used it until the thread ends, and two semaphores of
// its own from the first exception on. Those of the module and of a thread that outlives it are closed with
// the module; of more threads at a time they stay.
std::array<std::atomic<HANDLE>, 512> g_handles;

void Keep(HANDLE handle) {
    if (handle == nullptr) return;
    for (std::atomic<HANDLE>& place : g_handles) {
        HANDLE nothing = nullptr;
        if (place.compare_exchange_strong(nothing, handle)) return;
    }
}

BOOL WINAPI CopyHandle(HANDLE fromProcess, HANDLE handle, HANDLE toProcess, HANDLE* pCopy, DWORD access,
                       BOOL isInherited, DWORD options) {
    using Copy = BOOL WINAPI(HANDLE, HANDLE, HANDLE, HANDLE*, DWORD, BOOL, DWORD);
    const BOOL isCopied = SystemFunction<Copy>("DuplicateHandle")(fromProcess, handle, toProcess, pCopy,
                                                                  access, isInherited, options);
    if (isCopied) Keep(*pCopy);
    return isCopied;
}

HANDLE WINAPI MakeEvent(SECURITY_ATTRIBUTES* pSecurity, BOOL isManual, BOOL isSet, const char* name) {
    using Make = HANDLE WINAPI(SECURITY_ATTRIBUTES*, BOOL, BOOL, const char*);
    const HANDLE event = SystemFunction<Make>("CreateEventA")(pSecurity, isManual, isSet, name);
    Keep(event);
    return event;
}

HANDLE WINAPI MakeSemaphore(SECURITY_ATTRIBUTES* pSecurity, LONG first, LONG most, const char* name) {
    using Make = HANDLE WINAPI(SECURITY_ATTRIBUTES*, LONG, LONG, const char*);
    const HANDLE semaphore = SystemFunction<Make>("CreateSemaphoreA")(pSecurity, first, most, name);
    Keep(semaphore);
    return semaphore;
}

BOOL WINAPI Close(HANDLE handle) {
    for (std::atomic<HANDLE>& place : g_handles) {
        HANDLE kept = handle;
        if (place.compare_exchange_strong(kept, nullptr)) break;
    }
    return SystemFunction<BOOL WINAPI(HANDLE)>("CloseHandle")(handle);
}

void CloseHandles() {
    for (std::atomic<HANDLE>& place : g_handles) {
        if (const HANDLE handle = place) Close(handle);
    }
}

}  // namespace

// The linker prefers the module's own import slots to the import library's. STACK is the size of the
// function's arguments on x86.
#ifdef _M_IX86
#define OWN_IMPORT(name, stack) "__imp__" #name "@" #stack
#else
#define OWN_IMPORT(name, stack) "__imp_" #name
#endif
extern "C" void* const kTakeSlot asm(OWN_IMPORT(TlsAlloc, 0));
extern "C" void* const kTakeSlot = reinterpret_cast<void*>(&TakeSlot);
extern "C" void* const kCopyHandle asm(OWN_IMPORT(DuplicateHandle, 28));
extern "C" void* const kCopyHandle = reinterpret_cast<void*>(&CopyHandle);
extern "C" void* const kMakeEvent asm(OWN_IMPORT(CreateEventA, 16));
extern "C" void* const kMakeEvent = reinterpret_cast<void*>(&MakeEvent);
extern "C" void* const kMakeSemaphore asm(OWN_IMPORT(CreateSemaphoreA, 16));
extern "C" void* const kMakeSemaphore = reinterpret_cast<void*>(&MakeSemaphore);
extern "C" void* const kClose asm(OWN_IMPORT(CloseHandle, 4));
extern "C" void* const kClose = reinterpret_cast<void*>(&Close);
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
        CloseHandles();
    }
#else
    static_cast<void>(reason);
#endif
    return TRUE;
}
