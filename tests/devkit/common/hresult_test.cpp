#include "devkit/common/hresult.h"

#include <gtest/gtest.h>

namespace devkit::common {
namespace {

TEST(Hresult, IsWrittenWithEightDigits) {
    EXPECT_EQ("0x00000000", HexOf(S_OK));
    EXPECT_EQ("0x80004005", HexOf(E_FAIL));
}

TEST(Hresult, KnowsTheNamesOfCommonCodes) {
    EXPECT_EQ("E_FAIL", NameOf(E_FAIL));
    EXPECT_EQ("ERROR_CANCELLED", NameOf(HRESULT_FROM_WIN32(ERROR_CANCELLED)));
    EXPECT_EQ("0x80041234", NameOf(static_cast<HRESULT>(0x80041234L)));
}

TEST(Hresult, IsDescribedByNumberAndName) {
    EXPECT_EQ("0x8007000E E_OUTOFMEMORY", Describe(E_OUTOFMEMORY));
    EXPECT_EQ("0x80041234", Describe(static_cast<HRESULT>(0x80041234L)));
}

TEST(Hresult, IsReadFromItsNumberOrItsName) {
    EXPECT_EQ(E_FAIL, ParseHresult("E_FAIL"));
    EXPECT_EQ(S_OK, ParseHresult("S_OK"));
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_CANCELLED), ParseHresult("ERROR_CANCELLED"));
    EXPECT_EQ(static_cast<HRESULT>(0x80041234L), ParseHresult("0x80041234"));
    for (const char* text : {"", "E_NOTHING", "0x", "0x8000400G", "80004005", "0x180004005", "0x80004005 "})
        EXPECT_EQ(std::nullopt, ParseHresult(text)) << text;
}

}  // namespace
}  // namespace devkit::common
