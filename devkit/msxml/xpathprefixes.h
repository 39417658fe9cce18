#pragma once

#include <string_view>
#include <vector>

namespace devkit::msxml {

// The namespace prefixes in an XPath expression, in order and with repetitions. Literals and axis names are
// told apart. The expression need not be valid.
[[nodiscard]] std::vector<std::wstring_view> PrefixesIn(std::wstring_view expression);

}  // namespace devkit::msxml
