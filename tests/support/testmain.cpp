#include "platform/windows.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "closingline.h"
#include "leakchecklistener.h"

int main(int argc, char** argv) {
    const tests::ClosingLine closingLine;
    testing::InitGoogleTest(&argc, argv);
    // Behind the printer: the end of a test reaches the last listener first. The list owns it.
    testing::UnitTest::GetInstance()->listeners().Append(new tests::LeakCheckListener);
    const HRESULT entered = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    if (FAILED(entered)) return 1;
    int result = RUN_ALL_TESTS();
    CoUninitialize();
    // A filter that no test matches, or a program that lost its tests, proves nothing.
    const bool areListed = testing::GTEST_FLAG(list_tests);
    if (!areListed && testing::UnitTest::GetInstance()->test_to_run_count() == 0) {
        std::puts("No test was selected.");
        result = 1;
    }
    return closingLine.Print(result);
}
