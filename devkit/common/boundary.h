#pragma once

#include "platform/windows.h"

#include <utility>

namespace devkit::common {

// The HRESULT for the exception that is being handled; call it inside a catch block only. std::bad_alloc
// gives E_OUTOFMEMORY, HresultError its own code, any other std::exception E_FAIL, anything else
// E_UNEXPECTED.
[[nodiscard]] HRESULT HresultOfCurrentException() noexcept;

// Runs the body of a COM method of the kit: what it returns is the method's result, what it throws becomes
// the mapped code.
template <typename Body>
[[nodiscard]] HRESULT Guarded(Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        return HresultOfCurrentException();
    }
}

}  // namespace devkit::common
