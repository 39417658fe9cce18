#include "base/logging/check.h"

namespace base::logging {

void ThrowHresult(HRESULT hr, const std::source_location& where) {
    throw exception::HresultError(hr, SourcePath(where), static_cast<int>(where.line()));
}

}  // namespace base::logging
