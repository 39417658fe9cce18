#pragma once

#include "platform/windows.h"

#include <new>
#include <utility>

namespace devkit::msxml {

// A failing status on its way to the COM method that was called. It never leaves one.
struct ComError {
    HRESULT code;
};

inline void ThrowIfFailed(HRESULT result) {
    if (FAILED(result)) throw ComError{result};
}

// Runs the body of a COM method: what it returns is the method's result, what it throws becomes a status.
template <typename Body>
[[nodiscard]] HRESULT Guarded(Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (const ComError& error) {
        return error.code;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_FAIL;
    }
}

}  // namespace devkit::msxml
