#include "devkit/common/startprocess.h"

#include <system_error>

namespace devkit::common {
namespace {

constexpr int kMostAttempts = 10;

}  // namespace

UniqueHandle StartProcess(const std::wstring& program, std::wstring line, STARTUPINFOW start) {
    start.cb = sizeof(start);
    DWORD error = ERROR_INTERNAL_ERROR;
    for (int attempt = 0; attempt < kMostAttempts && error == ERROR_INTERNAL_ERROR; ++attempt) {
        if (attempt > 0) Sleep(10);
        PROCESS_INFORMATION process{};
        if (CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start,
                           &process)) {
            CloseHandle(process.hThread);
            return UniqueHandle(process.hProcess);
        }
        error = GetLastError();
    }
    throw std::system_error(static_cast<int>(error), std::system_category(), "CreateProcess");
}

}  // namespace devkit::common
