#include "platform/windows.h"

#include <gtest/gtest.h>

#include "leakchecklistener.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    // Behind the printer: the end of a test reaches the last listener first. The list owns it.
    testing::UnitTest::GetInstance()->listeners().Append(new tests::LeakCheckListener);
    const HRESULT entered = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    if (FAILED(entered)) return 1;
    const int result = RUN_ALL_TESTS();
    CoUninitialize();
    return result;
}
