#include "devkit/msxml/documentsettings.h"

#include <algorithm>
#include <array>

#include "devkit/msxml/comerror.h"
#include "devkit/msxml/comtext.h"
#include "devkit/msxml/name.h"
#include "devkit/msxml/variants.h"

namespace devkit::msxml {

namespace {

struct Flag {
    std::wstring_view name;
    bool DocumentSettings::*pMember;
};

constexpr std::array flags = {
    Flag{L"ProhibitDTD", &DocumentSettings::prohibitDtd},
    Flag{L"NewParser", &DocumentSettings::newParser},
    Flag{L"ResolveExternals", &DocumentSettings::resolveExternals},
    Flag{L"ValidateOnParse", &DocumentSettings::validateOnParse},
    Flag{L"AllowDocumentFunction", &DocumentSettings::allowDocumentFunction},
    Flag{L"AllowXsltScript", &DocumentSettings::allowXsltScript},
    Flag{L"UseInlineSchema", &DocumentSettings::useInlineSchema},
    Flag{L"MultipleErrorMessages", &DocumentSettings::multipleErrorMessages},
    Flag{L"NormalizeAttributeValues", &DocumentSettings::normalizeAttributeValues},
    Flag{L"ServerHTTPRequest", &DocumentSettings::serverHttpRequest},
    Flag{L"ForcedResync", &DocumentSettings::forcedResync},
};

const Flag* FindFlag(std::wstring_view name) noexcept {
    const auto* const pFlag =
        std::find_if(flags.begin(), flags.end(), [name](const Flag& flag) { return flag.name == name; });
    return pFlag == flags.end() ? nullptr : pFlag;
}

std::wstring_view Text(const VARIANT& value) {
    if (value.vt != VT_BSTR) throw ComError{DISP_E_TYPEMISMATCH};
    return View(value.bstrVal);
}

long DepthOf(const VARIANT& value) {
    platform::Variant number;
    Convert(value, VT_I4, number);
    const long depth = number.Get().lVal;
    if (depth < 0) throw ComError{E_INVALIDARG};
    return depth;
}

constexpr std::wstring_view space = L" \t\r\n";

// Takes one declaration off the text.
SelectionNamespace TakeNamespace(std::wstring_view& rest) {
    const std::size_t equals = rest.find(L'=');
    if (equals == std::wstring_view::npos) throw ComError{E_FAIL};
    const std::wstring_view name = rest.substr(0, rest.find_last_not_of(space, equals - 1) + 1);
    rest.remove_prefix(equals + 1);
    rest.remove_prefix(std::min(rest.find_first_not_of(space), rest.size()));
    if (!rest.starts_with(L'\'') && !rest.starts_with(L'"')) throw ComError{E_FAIL};
    const std::size_t end = rest.find(rest.front(), 1);
    if (end == std::wstring_view::npos) throw ComError{E_FAIL};
    std::wstring uri(rest.substr(1, end - 1));
    rest.remove_prefix(end + 1);
    if (!rest.empty() && space.find(rest.front()) == std::wstring_view::npos) throw ComError{E_FAIL};

    if (name == L"xmlns") return {std::wstring(), std::move(uri)};
    if (!name.starts_with(L"xmlns:") || uri.empty()) throw ComError{E_FAIL};
    try {
        CheckQualifiedName(name);
    } catch (const ComError&) {
        throw ComError{E_FAIL};
    }
    const Name declaration(name, {});
    return {std::wstring(declaration.DeclaredPrefix()), std::move(uri)};
}

}  // namespace

std::vector<SelectionNamespace> ParseSelectionNamespaces(std::wstring_view text) {
    std::vector<SelectionNamespace> namespaces;
    for (;;) {
        text.remove_prefix(std::min(text.find_first_not_of(space), text.size()));
        if (text.empty()) return namespaces;
        SelectionNamespace item = TakeNamespace(text);
        if (!item.first.empty()) namespaces.push_back(std::move(item));
    }
}

HRESULT DocumentSettings::SetProperty(std::wstring_view name, const VARIANT& value) noexcept {
    return Guarded([&] {
        if (name == L"SelectionNamespaces") {
            std::vector<SelectionNamespace> parsed = ParseSelectionNamespaces(Text(value));
            selectionNamespacesText = Text(value);
            selectionNamespaces = std::move(parsed);
            return S_OK;
        }
        if (name == L"SelectionLanguage") return Text(value) == L"XPath" ? S_OK : E_FAIL;
        if (name == L"MaxElementDepth") {
            maxElementDepth = DepthOf(value);
            return S_OK;
        }
        const Flag* const pFlag = FindFlag(name);
        if (pFlag == nullptr) return E_FAIL;
        platform::Variant flag;
        Convert(value, VT_BOOL, flag);
        this->*pFlag->pMember = flag.Get().boolVal != VARIANT_FALSE;
        return S_OK;
    });
}

HRESULT DocumentSettings::GetProperty(std::wstring_view name, VARIANT* pValue) const noexcept {
    if (pValue == nullptr) return E_INVALIDARG;
    VariantInit(pValue);
    if (name == L"SelectionNamespaces") return ReturnText(selectionNamespacesText, pValue);
    if (name == L"SelectionLanguage") return ReturnText(L"XPath", pValue);
    if (name == L"MaxElementDepth") {
        pValue->vt = VT_I4;
        pValue->lVal = maxElementDepth;
        return S_OK;
    }
    const Flag* const pFlag = FindFlag(name);
    if (pFlag == nullptr) return E_FAIL;
    pValue->vt = VT_BOOL;
    pValue->boolVal = this->*pFlag->pMember ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

}  // namespace devkit::msxml
