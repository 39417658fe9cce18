#include "devkit/common/startprocess.h"

#include <gtest/gtest.h>

#include <system_error>

#include "devkit/common/importtable.h"

namespace devkit::common {
namespace {

// The system's CreateProcessW, which refuses as often as is wanted first, while it lives. One at a time.
class RefusedStarts {
  public:
    RefusedStarts(int count, DWORD error) {
        s_left = count;
        s_error = error;
        EXPECT_EQ(1U, ReplaceImports(GetModuleHandleW(nullptr),
                                     {{"CreateProcessW", ReplaceWith(&Create, s_system)}}));
    }
    RefusedStarts(const RefusedStarts&) = delete;
    RefusedStarts& operator=(const RefusedStarts&) = delete;
    ~RefusedStarts() {
        decltype(s_system) before = nullptr;
        ReplaceImports(GetModuleHandleW(nullptr), {{"CreateProcessW", ReplaceWith(s_system, before)}});
    }
    [[nodiscard]] static int Left() { return s_left; }

  private:
    static BOOL WINAPI Create(LPCWSTR program, LPWSTR line, LPSECURITY_ATTRIBUTES process,
                              LPSECURITY_ATTRIBUTES thread, BOOL inherits, DWORD flags, LPVOID environment,
                              LPCWSTR folder, LPSTARTUPINFOW start, LPPROCESS_INFORMATION information) {
        if (s_left > 0) {
            --s_left;
            SetLastError(s_error);
            return FALSE;
        }
        return s_system(program, line, process, thread, inherits, flags, environment, folder, start,
                        information);
    }

    static inline int s_left = 0;
    static inline DWORD s_error = 0;
    static inline decltype(&CreateProcessW) s_system = nullptr;
};

// The status with which the system's own interpreter of commands ends.
DWORD StatusOfExit(const std::wstring& status) {
    std::wstring folder(MAX_PATH, L'\0');
    folder.resize(GetSystemDirectoryW(folder.data(), MAX_PATH));
    const UniqueHandle process = StartProcess(folder + L"\\cmd.exe", L"cmd /c exit " + status);
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(process.get(), 60'000));
    DWORD ended = 0;
    EXPECT_TRUE(GetExitCodeProcess(process.get(), &ended));
    return ended;
}

// The code with which a start fails; 0 when it does not.
int ErrorOfStart() {
    try {
        static_cast<void>(StatusOfExit(L"0"));
    } catch (const std::system_error& error) {
        return error.code().value();
    }
    return 0;
}

TEST(StartProcess, TheProgramRunsWithItsCommandLine) { EXPECT_EQ(7U, StatusOfExit(L"7")); }

TEST(StartProcess, AStartThatTheSystemGaveUpIsTriedAgain) {
    const RefusedStarts starts(9, ERROR_INTERNAL_ERROR);
    EXPECT_EQ(7U, StatusOfExit(L"7"));
    EXPECT_EQ(0, starts.Left());
}

TEST(StartProcess, TheTenthRefusalIsTheLast) {
    const RefusedStarts starts(11, ERROR_INTERNAL_ERROR);
    EXPECT_EQ(ERROR_INTERNAL_ERROR, ErrorOfStart());
    EXPECT_EQ(1, starts.Left());
}

TEST(StartProcess, AnyOtherRefusalIsTheLast) {
    const RefusedStarts starts(2, ERROR_ACCESS_DENIED);
    EXPECT_EQ(ERROR_ACCESS_DENIED, ErrorOfStart());
    EXPECT_EQ(1, starts.Left());
}

}  // namespace
}  // namespace devkit::common
