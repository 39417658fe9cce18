#include "devkit/pipeline/hresult.h"

#include <gtest/gtest.h>

namespace devkit::pipeline {
namespace {

TEST(Hresult, IsWrittenWithEightDigits) {
    EXPECT_EQ(HexOf(S_OK), "0x00000000");
    EXPECT_EQ(HexOf(E_FAIL), "0x80004005");
}

TEST(Hresult, KnowsTheNamesOfCommonCodes) {
    EXPECT_EQ(NameOf(E_FAIL), "E_FAIL");
    EXPECT_EQ(NameOf(HRESULT_FROM_WIN32(ERROR_CANCELLED)), "ERROR_CANCELLED");
    EXPECT_EQ(NameOf(static_cast<HRESULT>(0x80041234L)), "0x80041234");
}

TEST(Hresult, IsDescribedByNumberAndName) {
    EXPECT_EQ(Describe(E_OUTOFMEMORY), "0x8007000E E_OUTOFMEMORY");
    EXPECT_EQ(Describe(static_cast<HRESULT>(0x80041234L)), "0x80041234");
}

}  // namespace
}  // namespace devkit::pipeline
