#pragma once

#include "platform/windows.h"

#include <exception>
#include <new>
#include <utility>

namespace platform {

// The HRESULT for the exception that is being handled; call it inside a catch block only. std::bad_alloc
// gives E_OUTOFMEMORY, a CodedError what its GetHresult() says, any other std::exception E_FAIL, anything
// else E_UNEXPECTED.
template <typename CodedError>
[[nodiscard]] HRESULT HresultOfCurrentException() noexcept {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (const CodedError& error) {
        return error.GetHresult();
    } catch (const std::exception&) {
        return E_FAIL;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

// Runs the body of a COM method: what it returns is the method's result, what it throws becomes the mapped
// code.
template <typename CodedError, typename Body>
[[nodiscard]] HRESULT Guarded(Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        return HresultOfCurrentException<CodedError>();
    }
}

}  // namespace platform
