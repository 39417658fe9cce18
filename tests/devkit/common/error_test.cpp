#include "devkit/common/error.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "thrown.h"

namespace devkit::common {
namespace {

TEST(Boundary, WhatTheBodyReturnsIsTheResult) {
    EXPECT_EQ(S_FALSE, Guarded([] { return S_FALSE; }));
    EXPECT_EQ(E_ABORT, Guarded([] { return E_ABORT; }));
}

TEST(Boundary, EachExceptionHasItsCode) {
    EXPECT_EQ(E_OUTOFMEMORY, Guarded([]() -> HRESULT { throw std::bad_alloc(); }));
    EXPECT_EQ(STG_E_READFAULT, Guarded([]() -> HRESULT { throw HresultError(STG_E_READFAULT); }));
    EXPECT_EQ(E_FAIL, Guarded([]() -> HRESULT { throw std::runtime_error("reason"); }));
    EXPECT_EQ(E_FAIL, Guarded([]() -> HRESULT { throw StorageError("is gone", "a.xps"); }));
    EXPECT_EQ(E_UNEXPECTED, Guarded([]() -> HRESULT { throw 1; }));
}

TEST(Errors, AreOneLineWithAPlaceOrWithout) {
    EXPECT_STREQ("is missing, /1.fpage", Error("is missing", "/1.fpage").what());
    EXPECT_STREQ("is missing", Error("is missing").what());
    EXPECT_STREQ("is?missing, /1?.fpage", Error("is\nmissing", "/1\x7F.fpage").what());
}

TEST(Errors, ACodeThatFailsIsThrownAndDescribed) {
    EXPECT_NO_THROW(ThrowIfFailed(S_FALSE));
    EXPECT_EQ(E_ABORT, tests::ThrownCode<HresultError>([] { ThrowIfFailed(E_ABORT); }));
    EXPECT_EQ("0x80004004 E_ABORT", tests::MessageOf<HresultError>([] { ThrowIfFailed(E_ABORT); }));
}

}  // namespace
}  // namespace devkit::common
