#pragma once

#include "platform/windows.h"

#include <string>
#include <string_view>
#include <thread>

namespace devkit::filterhost {

// "the filter crashed with 0xC0000005 ACCESS_VIOLATION reading 0x0 at testfilter.dll+0x1234", or "the kit
// crashed with ..." where that was in this program or in its print ticket provider.
[[nodiscard]] std::string DescribeCrash(const EXCEPTION_POINTERS& exception);

// The type of a C++ exception that a module of g++ throws, as the compiler names it; null for any other, and
// for the kit's own.
[[nodiscard]] const char* TypeOfThrown(const EXCEPTION_RECORD& record) noexcept;

// While it lives, an exception that nobody handles, a stack that is used up, and abort, are told as one event
// line, with its line feed, to `tell`, and end the process. `tell` is called on a thread of its own, while
// others may have been stopped anywhere: it may take no memory and wait for nobody for long. One at a time.
class CrashReport {
  public:
    using Tell = void (*)(void* pContext, std::string_view line) noexcept;

    CrashReport(Tell tell, void* pContext);
    CrashReport(const CrashReport&) = delete;
    CrashReport& operator=(const CrashReport&) = delete;
    ~CrashReport();

  private:
    void* m_pVectored;
    std::thread m_thread;
};

}  // namespace devkit::filterhost
