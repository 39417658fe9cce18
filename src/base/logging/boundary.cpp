#include "base/logging/boundary.h"

#include <exception>
#include <new>

#include "base/logging/exceptions.h"

namespace base::logging {

HRESULT HresultOfCurrentException() noexcept {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (const exception::HresultError& error) {
        return error.GetHresult();
    } catch (const std::exception&) {
        return E_FAIL;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

}  // namespace base::logging
