#pragma once

#include <string>
#include <string_view>

namespace base::xps::printschema {

// The text as an XPath 1.0 string: between double quotes, or, since XPath knows no escapes, put together from
// pieces when it holds a double quote itself.
[[nodiscard]] std::wstring XPathLiteral(std::wstring_view text);

}  // namespace base::xps::printschema
