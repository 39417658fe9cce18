#include "devkit/common/content.h"

#include <exception>

#include "devkit/common/error.h"

namespace devkit::common {

std::string Content::Read() const {
    std::string bytes(static_cast<std::size_t>(Size()), '\0');
    std::size_t count = 0;
    try {
        count = m_source->ReadAt(0, bytes.data(), bytes.size());
    } catch (const Error&) {
        throw;
    } catch (const std::exception& failure) {
        throw StorageError(failure.what());
    }
    if (count != bytes.size()) throw StorageError("what was put aside is cut off");
    return bytes;
}

}  // namespace devkit::common
