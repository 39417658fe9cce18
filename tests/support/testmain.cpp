#include "platform/windows.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const HRESULT entered = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    if (FAILED(entered)) return 1;
    const int result = RUN_ALL_TESTS();
    CoUninitialize();
    return result;
}
