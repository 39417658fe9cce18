#include "devkit/common/leave.h"

#include "platform/windows.h"

#include <cstdlib>

#ifdef PAGEVALIDATE_COVERAGE
extern "C" {
#include <gcov.h>
}
#endif

namespace devkit::common {

void LeaveProcess(unsigned status) noexcept {
#ifdef PAGEVALIDATE_COVERAGE
    // The counters are written at a program's regular end, which this is not; one process at a time, and
    // apart from those of programs that come to theirs, which would not be added up with them.
    constexpr DWORD kWait = 20000;
    WaitForSingleObject(CreateMutexW(nullptr, FALSE, L"pagevalidate counters"), kWait);
    _putenv_s("GCOV_PREFIX", PAGEVALIDATE_COVERAGE);
    __gcov_dump();
#endif
    TerminateProcess(GetCurrentProcess(), status);
    std::abort();
}

}  // namespace devkit::common
