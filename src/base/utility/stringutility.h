#pragma once

#include <string_view>

namespace base::utility {

// What stands before the last "/" or "\" of a path, as a view into it; the whole path when it has neither.
[[nodiscard]] std::wstring_view DirectoryOf(std::wstring_view path) noexcept;

}  // namespace base::utility
