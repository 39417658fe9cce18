#include "devkit/pipeline/threadsinside.h"

#include <tlhelp32.h>

#include <cstdint>

#include "devkit/common/uniquehandle.h"

namespace devkit::pipeline {
namespace {

using common::UniqueHandle;
using Address = std::uintptr_t;

// The code of a module.
class Code {
  public:
    explicit Code(HMODULE module) : m_begin(reinterpret_cast<Address>(module)) {
        const auto* const pDos = reinterpret_cast<const IMAGE_DOS_HEADER*>(module);
        const auto* const pHeaders =
            reinterpret_cast<const IMAGE_NT_HEADERS*>(m_begin + static_cast<Address>(pDos->e_lfanew));
        m_end = m_begin + pHeaders->OptionalHeader.SizeOfImage;
    }

    [[nodiscard]] bool Holds(Address address) const noexcept {
        if (address < m_begin || address >= m_end) return false;
        MEMORY_BASIC_INFORMATION region{};
        if (VirtualQuery(reinterpret_cast<const void*>(address), &region, sizeof(region)) == 0) return false;
        constexpr DWORD kExecutable =
            PAGE_EXECUTE | PAGE_EXECUTE_READ | PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
        return region.State == MEM_COMMIT && (region.Protect & kExecutable) != 0;
    }

  private:
    Address m_begin;
    Address m_end = 0;
};

Address InstructionOf(const CONTEXT& context) noexcept {
#if defined(_M_X64) || defined(__x86_64__)
    return context.Rip;
#elif defined(_M_ARM64) || defined(__aarch64__)
    return context.Pc;
#else
    return context.Eip;
#endif
}

Address StackOf(const CONTEXT& context) noexcept {
#if defined(_M_X64) || defined(__x86_64__)
    return context.Rsp;
#elif defined(_M_ARM64) || defined(__aarch64__)
    return context.Sp;
#else
    return context.Esp;
#endif
}

// The thread is stopped and may hold any lock, the heap's too: nothing here takes one.
bool StandsInside(HANDLE thread, const Code& code) noexcept {
    CONTEXT context{};
    context.ContextFlags = CONTEXT_CONTROL;
    if (!GetThreadContext(thread, &context)) return false;
    if (code.Holds(InstructionOf(context))) return true;
    MEMORY_BASIC_INFORMATION stack{};
    const Address top = StackOf(context) & ~(sizeof(Address) - 1);
    if (VirtualQuery(reinterpret_cast<const void*>(top), &stack, sizeof(stack)) == 0) return false;
    if (stack.State != MEM_COMMIT) return false;
    const Address base = reinterpret_cast<Address>(stack.BaseAddress) + stack.RegionSize;
    for (Address place = top; place + sizeof(Address) <= base; place += sizeof(Address)) {
        if (code.Holds(*reinterpret_cast<const Address*>(place))) return true;
    }
    return false;
}

bool IsInside(HANDLE thread, const Code& code) {
    // One that is gone meanwhile.
    if (SuspendThread(thread) == static_cast<DWORD>(-1)) return false;
    const bool isInside = StandsInside(thread, code);
    ResumeThread(thread);
    return isInside;
}

constexpr DWORD kAccess = THREAD_SUSPEND_RESUME | THREAD_GET_CONTEXT | THREAD_QUERY_LIMITED_INFORMATION;

// Asks ntdll for one thread of the process after the other. A snapshot would hold those of every process of
// the system, and under Wine each of them takes as long as all that is done here. False where ntdll cannot be
// asked.
template <typename Take>
bool WalkOwnThreads(const Take& take) {
    using GetNextThread = LONG(NTAPI*)(HANDLE, HANDLE, ACCESS_MASK, ULONG, ULONG, HANDLE*);
    static const auto kGetNextThread = reinterpret_cast<GetNextThread>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtGetNextThread")));
    if (kGetNextThread == nullptr) return false;
    UniqueHandle thread;
    for (HANDLE next = nullptr;
         kGetNextThread(GetCurrentProcess(), thread.get(), kAccess, 0, 0, &next) >= 0;) {
        thread.reset(next);
        take(next);
    }
    return true;
}

template <typename Take>
void WalkSnapshot(const Take& take) {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (snapshot == INVALID_HANDLE_VALUE) return;
    const UniqueHandle owner(snapshot);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL isThere = Thread32First(snapshot, &entry); isThere; isThere = Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID != GetCurrentProcessId()) continue;
        const UniqueHandle thread(OpenThread(kAccess, FALSE, entry.th32ThreadID));
        if (thread != nullptr) take(thread.get());
    }
}

}  // namespace

std::size_t CountThreadsInside(HMODULE module) {
    const Code code(module);
    std::size_t count = 0;
    const auto take = [&](HANDLE thread) {
        if (GetThreadId(thread) != GetCurrentThreadId() && IsInside(thread, code)) ++count;
    };
    if (!WalkOwnThreads(take)) WalkSnapshot(take);
    return count;
}

}  // namespace devkit::pipeline
