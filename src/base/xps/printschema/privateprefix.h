#pragma once

#include <string>
#include <string_view>

namespace base::xps::printschema {

// The prefix that stands for the maker's private namespace in the documents of this process. Any thread may
// set and read it.

// The prefix of last resort, which is no document's own choice.
inline constexpr wchar_t kFallbackPrefix[] = L"ns0000:";

// Without the colon. An empty text leaves the prefix unset, until the next document gets "ns0000".
void SetPrivatePrefix(std::wstring_view prefix);

// With its colon; empty while it is unset.
[[nodiscard]] std::wstring PrivatePrefix();

// Makes "ns0000" the private prefix when it is unset.
void EnsurePrivatePrefix();

}  // namespace base::xps::printschema
