#include "devkit/filterhost/crashreport.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <typeinfo>

#include "devkit/common/leave.h"
#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/runevent.h"

#ifdef __GNUC__
#include <cxxabi.h>
#include <unwind.h>
#endif

// All of this runs while a thread may have stopped with the heap's lock, or the heap be destroyed: it takes
// no memory.

namespace devkit::filterhost {
namespace {

CrashReport::Tell g_tell = nullptr;
void* g_pContext = nullptr;

// Text in a place of its own; what does not fit is cut off.
class Text {
  public:
    void Add(const char* format, ...) noexcept {
        std::va_list arguments;
        va_start(arguments, format);
        const int length =
            std::vsnprintf(m_text.data() + m_length, m_text.size() - m_length, format, arguments);
        va_end(arguments);
        if (length > 0) m_length = std::min(m_length + static_cast<std::size_t>(length), m_text.size() - 1);
    }
    // As the inside of a JSON text.
    void AddEscaped(const char* text) noexcept {
        for (; *text != '\0'; ++text) {
            const auto byte = static_cast<unsigned char>(*text);
            if (byte == '"' || byte == '\\') {
                Add("\\%c", byte);
            } else if (byte < 0x20) {
                Add("\\u%04x", byte);
            } else {
                Add("%c", byte);
            }
        }
    }
    void Add(const wchar_t* text) noexcept {
        std::array<char, 1024> utf8{};
        WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), static_cast<int>(utf8.size() - 1), nullptr,
                            nullptr);
        Add("%s", utf8.data());
    }
    [[nodiscard]] const char* Get() const noexcept { return m_text.data(); }
    [[nodiscard]] std::string_view View() const noexcept { return {m_text.data(), m_length}; }

  private:
    std::array<char, 4096> m_text{};
    std::size_t m_length = 0;
};

struct ExceptionName {
    DWORD code;
    const char* name;
};
constexpr std::array<ExceptionName, 14> kNames{{
    {EXCEPTION_ACCESS_VIOLATION, "ACCESS_VIOLATION"},
    {EXCEPTION_ARRAY_BOUNDS_EXCEEDED, "ARRAY_BOUNDS_EXCEEDED"},
    {EXCEPTION_BREAKPOINT, "BREAKPOINT"},
    {EXCEPTION_DATATYPE_MISALIGNMENT, "DATATYPE_MISALIGNMENT"},
    {EXCEPTION_FLT_DIVIDE_BY_ZERO, "FLT_DIVIDE_BY_ZERO"},
    {EXCEPTION_ILLEGAL_INSTRUCTION, "ILLEGAL_INSTRUCTION"},
    {EXCEPTION_IN_PAGE_ERROR, "IN_PAGE_ERROR"},
    {EXCEPTION_INT_DIVIDE_BY_ZERO, "INT_DIVIDE_BY_ZERO"},
    {EXCEPTION_INT_OVERFLOW, "INT_OVERFLOW"},
    {EXCEPTION_PRIV_INSTRUCTION, "PRIV_INSTRUCTION"},
    {EXCEPTION_STACK_OVERFLOW, "STACK_OVERFLOW"},
    {STATUS_HEAP_CORRUPTION, "HEAP_CORRUPTION"},
    {0xC0000409, "STACK_BUFFER_OVERRUN"},
    {0xE06D7363, "a C++ exception"},
}};

// Whether the address lies in the program or its simulated provider, and not in what it was asked to run.
bool IsKit(const void* address) noexcept {
    HMODULE module = nullptr;
    constexpr DWORD kFlags =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (address == nullptr || !GetModuleHandleExW(kFlags, static_cast<const wchar_t*>(address), &module))
        return false;
    return module == GetModuleHandleW(nullptr) || GetProcAddress(module, "SimConfigure") != nullptr;
}

// The C++ exception of g++ that the filter threw last, should nobody catch it. It is copied at once: when the
// process ends for it, it is gone.
constexpr DWORD kGnuException = 0x20474343;
struct Thrown {
    DWORD thread = 0;
    std::array<char, 256> type{};
    std::array<char, 512> text{};
};
Thrown g_thrown;
std::atomic_flag g_thrownLock;

class ThrownGuard {
  public:
    ThrownGuard() noexcept {
        while (g_thrownLock.test_and_set()) Sleep(0);
    }
    ThrownGuard(const ThrownGuard&) = delete;
    ThrownGuard& operator=(const ThrownGuard&) = delete;
    ~ThrownGuard() { g_thrownLock.clear(); }
};

#ifdef __GNUC__
// What g++'s runtime keeps in front of an exception (Itanium C++ ABI, 2.2.1).
struct ExceptionHeader {
    std::type_info* pType;
    void (*destructor)(void*);
    void (*unexpected)();
    void (*terminate)();
    ExceptionHeader* pNext;
    int handlerCount;
    int handlerSwitch;
    const unsigned char* pAction;
    const unsigned char* pLanguageData;
    _Unwind_Ptr catchTemp;
    void* pAdjusted;
    _Unwind_Exception unwind;
};

// Null where something else was thrown.
const ExceptionHeader* HeaderOf(const EXCEPTION_RECORD& record) noexcept {
    if (record.ExceptionCode != kGnuException || record.NumberParameters == 0) return nullptr;
    auto* const pUnwind = reinterpret_cast<_Unwind_Exception*>(record.ExceptionInformation[0]);
    constexpr std::uint64_t kCpp = 0x474E5543432B2B00;  // "GNUCC++\0"
    if (pUnwind == nullptr || pUnwind->exception_class != kCpp) return nullptr;
    return reinterpret_cast<const ExceptionHeader*>(reinterpret_cast<const char*>(pUnwind) -
                                                    offsetof(ExceptionHeader, unwind));
}

void NoteThrown(const EXCEPTION_RECORD& record) noexcept {
    const ExceptionHeader* const pHeader = HeaderOf(record);
    // The type stands in the module that threw.
    if (pHeader == nullptr || IsKit(pHeader->pType)) return;
    const ThrownGuard guard;
    g_thrown.thread = GetCurrentThreadId();
    std::snprintf(g_thrown.type.data(), g_thrown.type.size(), "%s", pHeader->pType->name());
    g_thrown.text[0] = '\0';
    void* pObject = const_cast<_Unwind_Exception*>(&pHeader->unwind) + 1;
    const auto& base = static_cast<const abi::__class_type_info&>(typeid(std::exception));
    if (pHeader->pType->__do_upcast(&base, &pObject)) {
        std::snprintf(g_thrown.text.data(), g_thrown.text.size(), "%s",
                      static_cast<const std::exception*>(pObject)->what());
    }
}
#else
void NoteThrown(const EXCEPTION_RECORD&) noexcept {}
#endif

// "testfilter.dll+0x1A2B"; false for an address of no module.
bool AddPlace(Text& text, const void* address) noexcept {
    HMODULE module = nullptr;
    constexpr DWORD kFlags =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    // Without an address the system would answer with the program itself.
    if (address == nullptr || !GetModuleHandleExW(kFlags, static_cast<const wchar_t*>(address), &module))
        return false;
    std::array<wchar_t, 1024> path{};
    GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size() - 1));
    const wchar_t* const pSlash = std::wcsrchr(path.data(), L'\\');
    text.Add(pSlash == nullptr ? path.data() : pSlash + 1);
    text.Add("+0x%llX", static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(address) -
                                                        reinterpret_cast<std::uintptr_t>(module)));
    return true;
}

// The address to which the function at hand returns, when it has only just been entered.
const void* CallerOf([[maybe_unused]] const CONTEXT& context) noexcept {
#if defined(_M_X64) || defined(__x86_64__)
    return *reinterpret_cast<const void* const*>(context.Rsp);
#elif defined(_M_IX86) || defined(__i386__)
    return *reinterpret_cast<const void* const*>(context.Esp);
#else
    return nullptr;
#endif
}

void AddException(Text& text, const EXCEPTION_RECORD& record) noexcept {
    const auto name = std::find_if(kNames.begin(), kNames.end(), [&](const ExceptionName& each) {
        return each.code == record.ExceptionCode;
    });
    text.Add("0x%08lX", record.ExceptionCode);
    if (name != kNames.end()) text.Add(" %s", name->name);
    if (record.ExceptionCode != EXCEPTION_ACCESS_VIOLATION || record.NumberParameters < 2) return;
    const char* const what = record.ExceptionInformation[0] == 0   ? "reading"
                             : record.ExceptionInformation[0] == 1 ? "writing"
                                                                   : "running";
    text.Add(" %s 0x%llX", what, static_cast<unsigned long long>(record.ExceptionInformation[1]));
}

// Tells the event and ends the process.
[[noreturn]] void End(std::uint32_t code, const char* words, const Thrown& thrown = {}) noexcept {
    Text line;
    // The event as WriteEvent would write it.
    line.Add(R"([%zu,{"crash":{"code":%lu,"text":")", Event(events::Crashed()).index(),
             static_cast<unsigned long>(code));
    line.AddEscaped(words);
    line.Add(R"(","type":")");
    line.AddEscaped(thrown.type.data());
    line.Add(R"(","what":")");
    line.AddEscaped(thrown.text.data());
    line.Add("\"}}]\n");
    if (g_tell != nullptr) g_tell(g_pContext, line.View());
    common::LeaveProcess(FilterFailed);
}

void AddCrash(Text& text, const EXCEPTION_POINTERS& exception) noexcept {
    const EXCEPTION_RECORD& record = *exception.ExceptionRecord;
    const void* address = record.ExceptionAddress;
    const bool isJump = record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && record.NumberParameters >= 2 &&
                        record.ExceptionInformation[1] == reinterpret_cast<std::uintptr_t>(address);
    if (isJump) address = CallerOf(*exception.ContextRecord);
    text.Add("%s crashed with ", IsKit(address) ? "the kit" : "the filter");
    AddException(text, record);
    text.Add(isJump ? ", called by " : " at ");
    if (!AddPlace(text, address)) {
        text.Add("address 0x%llX",
                 static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(address)));
    }
}

// What the thread tells of that waits for a crash; null when there is none and it can go.
std::atomic<const EXCEPTION_POINTERS*> g_pCrash = nullptr;
HANDLE g_wake = nullptr;

void WaitForCrash() noexcept {
    WaitForSingleObject(g_wake, INFINITE);
    const EXCEPTION_POINTERS* const pCrash = g_pCrash;
    if (pCrash == nullptr) return;
    Text text;
    AddCrash(text, *pCrash);
    End(pCrash->ExceptionRecord->ExceptionCode, text.Get());
}

// The crashed thread may have no stack left, so another one tells of it, and ends the process.
[[noreturn]] void HandOver(const EXCEPTION_POINTERS* pException) noexcept {
    const EXCEPTION_POINTERS* pNone = nullptr;
    if (g_pCrash.compare_exchange_strong(pNone, pException)) SetEvent(g_wake);
    for (;;) Sleep(INFINITE);
}

LONG CALLBACK NoteException(EXCEPTION_POINTERS* pException) {
    // There may be no room for what the system does before it finds that nobody handles it.
    if (pException->ExceptionRecord->ExceptionCode == EXCEPTION_STACK_OVERFLOW) HandOver(pException);
    NoteThrown(*pException->ExceptionRecord);
    return EXCEPTION_CONTINUE_SEARCH;
}

LONG WINAPI OnException(EXCEPTION_POINTERS* pException) { HandOver(pException); }

[[noreturn]] void OnAbort(int) {
    const bool isOwn = g_thrown.thread == GetCurrentThreadId();
    End(3, "the filter called abort", isOwn ? g_thrown : Thrown());
}

}  // namespace

const char* TypeOfThrown([[maybe_unused]] const EXCEPTION_RECORD& record) noexcept {
#ifdef __GNUC__
    const ExceptionHeader* const pHeader = HeaderOf(record);
    return pHeader == nullptr || IsKit(pHeader->pType) ? nullptr : pHeader->pType->name();
#else
    return nullptr;
#endif
}

std::string DescribeCrash(const EXCEPTION_POINTERS& exception) {
    Text text;
    AddCrash(text, exception);
    return text.Get();
}

CrashReport::CrashReport(Tell tell, void* pContext) {
    g_tell = tell;
    g_pContext = pContext;
    g_wake = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    m_thread = std::thread(WaitForCrash);
    m_pVectored = AddVectoredExceptionHandler(1, NoteException);
    SetUnhandledExceptionFilter(OnException);
    std::signal(SIGABRT, OnAbort);
}

CrashReport::~CrashReport() {
    std::signal(SIGABRT, SIG_DFL);
    SetUnhandledExceptionFilter(nullptr);
    RemoveVectoredExceptionHandler(m_pVectored);
    SetEvent(g_wake);
    m_thread.join();
    CloseHandle(g_wake);
    g_tell = nullptr;
}

}  // namespace devkit::filterhost
