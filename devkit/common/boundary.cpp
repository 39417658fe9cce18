#include "devkit/common/boundary.h"

#include <exception>
#include <new>

#include "devkit/common/error.h"

namespace devkit::common {

HRESULT HresultOfCurrentException() noexcept {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (const HresultError& error) {
        return error.GetHresult();
    } catch (const std::exception&) {
        return E_FAIL;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

}  // namespace devkit::common
