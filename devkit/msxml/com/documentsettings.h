#pragma once

#include "platform/windows.h"

#include <string>
#include <string_view>

#include "devkit/msxml/text/parser.h"
#include "devkit/msxml/xpath/selection.h"

namespace devkit::msxml {

// What a document's flags and second-level properties say. Flags of features that this library does not have
// (validation, external resources, documents loaded in the background) are kept and given back, and have no
// effect.
struct DocumentSettings {
    ParseRules rules;
    bool async = true;
    bool validateOnParse = true;
    bool resolveExternals = false;
    bool allowDocumentFunction = false;
    bool allowXsltScript = false;
    bool useInlineSchema = false;
    bool multipleErrorMessages = false;
    bool normalizeAttributeValues = false;
    bool serverHttpRequest = false;
    bool forcedResync = true;
    std::wstring selectionNamespaces;
};

// setProperty. Names count in their letter case. Throws common::HresultError with E_FAIL for an unknown name,
// a value of the wrong type, a selection language other than XPath and for malformed selection namespaces,
// which also end those that were in force.
void SetProperty(DocumentSettings& settings, Selector& selector, std::wstring_view name,
                 const VARIANT& value);

// getProperty. E_FAIL for an unknown name, with *pValue left alone; E_INVALIDARG for a null pValue.
[[nodiscard]] HRESULT GetProperty(const DocumentSettings& settings, std::wstring_view name,
                                  VARIANT* pValue) noexcept;

}  // namespace devkit::msxml
