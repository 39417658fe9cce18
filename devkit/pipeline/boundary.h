#pragma once

#include "platform/windows.h"

#include <new>
#include <utility>

namespace devkit::pipeline {

// Runs the body of a COM method of the kit: an exception becomes E_OUTOFMEMORY or E_FAIL.
template <typename Body>
[[nodiscard]] HRESULT Guarded(Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_FAIL;
    }
}

}  // namespace devkit::pipeline
