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

bool IsInside(DWORD threadId, const Code& code) {
    const UniqueHandle thread(OpenThread(THREAD_SUSPEND_RESUME | THREAD_GET_CONTEXT, FALSE, threadId));
    // One that is gone meanwhile.
    if (thread == nullptr || SuspendThread(thread.get()) == static_cast<DWORD>(-1)) return false;
    const bool isInside = StandsInside(thread.get(), code);
    ResumeThread(thread.get());
    return isInside;
}

}  // namespace

std::size_t CountThreadsInside(HMODULE module) {
    const Code code(module);
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (snapshot == INVALID_HANDLE_VALUE) return 0;
    const UniqueHandle owner(snapshot);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    std::size_t count = 0;
    for (BOOL isThere = Thread32First(snapshot, &entry); isThere; isThere = Thread32Next(snapshot, &entry)) {
        const bool isOther = entry.th32ThreadID != GetCurrentThreadId();
        if (entry.th32OwnerProcessID == GetCurrentProcessId() && isOther &&
            IsInside(entry.th32ThreadID, code))
            ++count;
    }
    return count;
}

}  // namespace devkit::pipeline
