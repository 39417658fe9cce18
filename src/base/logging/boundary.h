#pragma once

#include "platform/windows.h"

#include <utility>

#include "base/logging/exceptions.h"
#include "platform/guarded.h"

namespace base::logging {

// Runs the body of a COM method: what it returns is the method's result. A thrown HresultError becomes its
// own code, std::bad_alloc E_OUTOFMEMORY, any other std::exception E_FAIL, anything else E_UNEXPECTED.
template <typename Body>
[[nodiscard]] HRESULT Guarded(Body&& body) noexcept {
    return platform::Guarded<exception::HresultError>(std::forward<Body>(body));
}

}  // namespace base::logging
