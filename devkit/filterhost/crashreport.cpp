#include "devkit/filterhost/crashreport.h"

#include "platform/windows.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "devkit/filterhost/console.h"
#include "devkit/filterhost/exitstatus.h"
#include "platform/utf.h"

namespace devkit::filterhost {
namespace {

const CrashReport* current = nullptr;

// "pagevalidatefilter.dll+0x1234".
std::string PlaceOf(const void* address) {
    HMODULE module = nullptr;
    std::array<wchar_t, 1024> path{};
    if (!GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            static_cast<const wchar_t*>(address), &module)) {
        return "an unknown address";
    }
    GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size() - 1));
    const std::uintptr_t offset =
        reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(module);
    std::array<char, 24> text{};
    std::snprintf(text.data(), text.size(), "+0x%llX", static_cast<unsigned long long>(offset));
    return platform::ToUtf8(std::filesystem::path(path.data()).filename().wstring()) + text.data();
}

}  // namespace

struct CrashHandler {
    static LONG WINAPI Handle(EXCEPTION_POINTERS* pCrash) {
        if (current == nullptr) return EXCEPTION_CONTINUE_SEARCH;
        std::array<char, 24> code{};
        std::snprintf(code.data(), code.size(), "0x%08lX", pCrash->ExceptionRecord->ExceptionCode);
        std::string text = current->m_input + ": the filter crashed with exception " + code.data() + " at " +
                           PlaceOf(pCrash->ExceptionRecord->ExceptionAddress);
        const std::string part = current->m_lastPart();
        PrintProblem(part.empty() ? text : text + ", while it had " + part);
        TerminateProcess(GetCurrentProcess(), FilterFailed);
        return EXCEPTION_EXECUTE_HANDLER;
    }
};

CrashReport::CrashReport(std::string input, std::function<std::string()> lastPart)
    : m_input(std::move(input)), m_lastPart(std::move(lastPart)) {
    current = this;
    SetUnhandledExceptionFilter(CrashHandler::Handle);
}

CrashReport::~CrashReport() {
    SetUnhandledExceptionFilter(nullptr);
    current = nullptr;
}

}  // namespace devkit::filterhost
