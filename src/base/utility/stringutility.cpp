#include "base/utility/stringutility.h"

namespace base::utility {

std::wstring_view DirectoryOf(std::wstring_view path) noexcept {
    return path.substr(0, path.find_last_of(L"/\\"));
}

}  // namespace base::utility
