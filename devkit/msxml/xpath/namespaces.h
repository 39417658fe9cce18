#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace devkit::msxml {

// A prefix and the namespace that it stands for in XPath expressions.
using SelectionNamespace = std::pair<std::wstring, std::wstring>;

// Reads space-separated xmlns:p='uri' items, in either quotes. A default namespace is taken and means
// nothing, since names without a prefix never match one. Refused with XmlNotAllowed for anything else.
[[nodiscard]] std::vector<SelectionNamespace> ParseSelectionNamespaces(std::wstring_view text);

// The namespace of a prefix; null when it is not declared.
[[nodiscard]] const std::wstring* FindUri(const std::vector<SelectionNamespace>& namespaces,
                                          std::wstring_view prefix) noexcept;

// The namespace prefixes in an XPath expression, in order and with repetitions. Literals and axis names are
// told apart. The expression need not be valid.
[[nodiscard]] std::vector<std::wstring_view> PrefixesIn(std::wstring_view expression);

}  // namespace devkit::msxml
