#include "devkit/msxml/com/documentsettings.h"

#include <algorithm>
#include <array>

#include "devkit/msxml/com/answer.h"
#include "devkit/msxml/com/values.h"

namespace devkit::msxml {

namespace {

struct Flag {
    std::wstring_view name;
    bool& (*get)(DocumentSettings&);
};

template <bool DocumentSettings::*kMember>
bool& Own(DocumentSettings& settings) noexcept {
    return settings.*kMember;
}

template <bool ParseRules::*kMember>
bool& Rule(DocumentSettings& settings) noexcept {
    return settings.rules.*kMember;
}

constexpr std::array kFlags = {
    Flag{L"ProhibitDTD", Rule<&ParseRules::prohibitDtd>},
    Flag{L"NewParser", Rule<&ParseRules::newParser>},
    Flag{L"ResolveExternals", Own<&DocumentSettings::resolveExternals>},
    Flag{L"ValidateOnParse", Own<&DocumentSettings::validateOnParse>},
    Flag{L"AllowDocumentFunction", Own<&DocumentSettings::allowDocumentFunction>},
    Flag{L"AllowXsltScript", Own<&DocumentSettings::allowXsltScript>},
    Flag{L"UseInlineSchema", Own<&DocumentSettings::useInlineSchema>},
    Flag{L"MultipleErrorMessages", Own<&DocumentSettings::multipleErrorMessages>},
    Flag{L"NormalizeAttributeValues", Own<&DocumentSettings::normalizeAttributeValues>},
    Flag{L"ServerHTTPRequest", Own<&DocumentSettings::serverHttpRequest>},
    Flag{L"ForcedResync", Own<&DocumentSettings::forcedResync>},
};

const Flag* FindFlag(std::wstring_view name) noexcept {
    const auto* const pFlag =
        std::find_if(kFlags.begin(), kFlags.end(), [name](const Flag& flag) { return flag.name == name; });
    return pFlag == kFlags.end() ? nullptr : pFlag;
}

// Throws common::HresultError with E_FAIL for a value that has no such form.
VARIANT As(const VARIANT& value, VARTYPE type) {
    platform::Variant converted;
    const HRESULT result = Guarded([&] {
        Convert(value, type, converted);
        return S_OK;
    });
    if (FAILED(result)) throw common::HresultError(E_FAIL);
    return converted.Get();
}

std::wstring_view Text(const VARIANT& value) {
    if (value.vt != VT_BSTR) throw common::HresultError(E_FAIL);
    return View(value.bstrVal);
}

void SetNamespaces(DocumentSettings& settings, Selector& selector, std::wstring_view text) {
    selector.namespaces.clear();
    settings.selectionNamespaces.clear();
    selector.namespaces = ParseSelectionNamespaces(text);
    settings.selectionNamespaces = text;
}

}  // namespace

void SetProperty(DocumentSettings& settings, Selector& selector, std::wstring_view name,
                 const VARIANT& value) {
    if (name == L"SelectionNamespaces") return SetNamespaces(settings, selector, Text(value));
    if (name == L"SelectionLanguage") {
        if (Text(value) != L"XPath") throw common::HresultError(E_FAIL);
    } else if (name == L"MaxElementDepth") {
        const long depth = As(value, VT_I4).lVal;
        if (depth < 0) throw common::HresultError(E_INVALIDARG);
        settings.rules.maxElementDepth = depth;
    } else {
        const Flag* const pFlag = FindFlag(name);
        if (pFlag == nullptr) throw common::HresultError(E_FAIL);
        pFlag->get(settings) = As(value, VT_BOOL).boolVal != VARIANT_FALSE;
    }
}

HRESULT GetProperty(const DocumentSettings& settings, std::wstring_view name, VARIANT* pValue) noexcept {
    if (pValue == nullptr) return E_INVALIDARG;
    if (name == L"SelectionNamespaces") return ReturnText(settings.selectionNamespaces, pValue);
    if (name == L"SelectionLanguage") return ReturnText(L"XPath", pValue);
    if (name == L"MaxElementDepth") {
        VariantInit(pValue);
        pValue->vt = VT_I4;
        pValue->lVal = settings.rules.maxElementDepth;
        return S_OK;
    }
    const Flag* const pFlag = FindFlag(name);
    if (pFlag == nullptr) return E_FAIL;
    VariantInit(pValue);
    pValue->vt = VT_BOOL;
    pValue->boolVal = pFlag->get(const_cast<DocumentSettings&>(settings)) ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

}  // namespace devkit::msxml
