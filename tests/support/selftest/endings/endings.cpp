#include "platform/windows.h"

#include <gtest/gtest.h>

#include <cstdlib>

// A test program that ends as --gtest_filter wants it to. endings_test.py has each of them judged.

namespace {

// Writes through a null pointer when the process ends.
struct CrashAtTheEnd {
    ~CrashAtTheEnd() {
        volatile int* volatile pNothing = nullptr;
        *pNothing = 1;
    }
};

TEST(Endings, Passes) { SUCCEED(); }

TEST(Endings, Fails) { FAIL() << "as it should"; }

TEST(Endings, IsSkipped) { GTEST_SKIP() << "a skipped test is no failure"; }

TEST(Endings, Crashes) {
    volatile int* volatile pNothing = nullptr;
    *pNothing = 1;
}

TEST(Endings, CallsExit) { std::exit(0); }

TEST(Endings, CallsExitProcess) { ExitProcess(0); }

TEST(Endings, CallsExitThread) { ExitThread(0); }

TEST(Endings, CallsTerminateProcess) { TerminateProcess(GetCurrentProcess(), 0); }

TEST(Endings, Aborts) { std::abort(); }

TEST(Endings, Hangs) { Sleep(INFINITE); }

TEST(Endings, CrashesAtTheEnd) {
    static const CrashAtTheEnd s_crash;
    SUCCEED() << &s_crash;
}

}  // namespace
