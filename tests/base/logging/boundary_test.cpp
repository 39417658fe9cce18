#include "base/logging/boundary.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "base/logging/exceptions.h"

namespace base::logging {
namespace {

TEST(BoundaryTest, ReturnsWhatTheBodyReturns) {
    EXPECT_EQ(S_FALSE, Guarded([] { return S_FALSE; }));
}

TEST(BoundaryTest, MapsEveryKindOfException) {
    EXPECT_EQ(E_OUTOFMEMORY, Guarded([]() -> HRESULT { throw std::bad_alloc(); }));
    EXPECT_EQ(E_ABORT, Guarded([]() -> HRESULT { throw exception::HresultError(E_ABORT, "f", 1); }));
    EXPECT_EQ(E_FAIL, Guarded([]() -> HRESULT { throw std::logic_error("x"); }));
    EXPECT_EQ(E_FAIL, Guarded([]() -> HRESULT { throw exception::Error("x"); }));
    EXPECT_EQ(E_FAIL, Guarded([]() -> HRESULT { throw exception::NotSupportedException("x"); }));
    EXPECT_EQ(E_UNEXPECTED, Guarded([]() -> HRESULT { throw 7; }));
}

}  // namespace
}  // namespace base::logging
