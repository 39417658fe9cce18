#pragma once

#include "platform/windows.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace devkit::msxml {

// A prefix and the namespace that it stands for in XPath expressions.
using SelectionNamespace = std::pair<std::wstring, std::wstring>;

// What a document's flags and second-level properties say. Flags of features that this library does not have
// (validation, external resources, documents loaded in the background) are kept and given back, and have no
// effect.
struct DocumentSettings {
    bool async = true;
    bool validateOnParse = true;
    bool resolveExternals = false;
    bool preserveWhiteSpace = false;
    bool prohibitDtd = true;
    bool newParser = false;
    bool allowDocumentFunction = false;
    bool allowXsltScript = false;
    bool useInlineSchema = false;
    bool multipleErrorMessages = false;
    bool normalizeAttributeValues = false;
    bool serverHttpRequest = false;
    bool forcedResync = true;
    long maxElementDepth = 256;  // 0: no limit
    std::wstring selectionNamespacesText;
    std::vector<SelectionNamespace> selectionNamespaces;

    // setProperty and getProperty. Names count in their letter case. E_FAIL for an unknown name, for a
    // selection language other than XPath and for malformed selection namespaces; DISP_E_TYPEMISMATCH for a
    // value of the wrong type. After a failure the settings are as they were.
    [[nodiscard]] HRESULT SetProperty(std::wstring_view name, const VARIANT& value) noexcept;
    [[nodiscard]] HRESULT GetProperty(std::wstring_view name, VARIANT* pValue) const noexcept;
};

// Reads space-separated xmlns:p='uri' items, in either quotes. A default namespace is taken and means
// nothing, since names without a prefix never match one. Throws ComError with E_FAIL for anything else.
[[nodiscard]] std::vector<SelectionNamespace> ParseSelectionNamespaces(std::wstring_view text);

}  // namespace devkit::msxml
