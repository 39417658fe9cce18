#include "devkit/msxml/com/documentparts.h"

#include "devkit/msxml/com/values.h"

namespace devkit::msxml {

namespace {

bool EqualsName(std::wstring_view a, std::wstring_view b) noexcept {
    return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()),
                                TRUE) == CSTR_EQUAL;
}

}  // namespace

HRESULT ParseError::get_errorCode(long* pCode) {
    const HRESULT result = ReturnNumber(static_cast<long>(m_failure.code), pCode);
    return result == S_OK && m_failure.code == 0 ? S_FALSE : result;
}

HRESULT ParseError::get_url(BSTR* pUrl) { return ReturnNoText(pUrl); }

HRESULT ParseError::get_reason(BSTR* pReason) { return ReturnTextIfAny(m_failure.reason, pReason); }

HRESULT ParseError::get_srcText(BSTR* pText) { return ReturnTextIfAny(m_failure.sourceText, pText); }

HRESULT ParseError::get_line(long* pLine) { return ReturnNumber(m_failure.line, pLine); }

HRESULT ParseError::get_linepos(long* pPosition) { return ReturnNumber(m_failure.linePosition, pPosition); }

HRESULT ParseError::get_filepos(long* pPosition) { return ReturnNumber(m_failure.filePosition, pPosition); }

HRESULT DomImplementation::hasFeature(BSTR feature, BSTR version, VARIANT_BOOL* pHas) {
    if (feature == nullptr) return E_INVALIDARG;
    const std::wstring_view name = View(feature);
    const std::wstring_view wanted = View(version);
    const bool isOwn = EqualsName(name, L"MS-DOM");
    const bool isKnown = isOwn || EqualsName(name, L"XML") || EqualsName(name, L"DOM");
    // No version at all asks for any; the empty one is none.
    const bool isVersion = version == nullptr || wanted == L"1.0" || (isOwn && wanted == L"2.0");
    return ReturnFlag(isKnown && isVersion, pHas);
}

}  // namespace devkit::msxml
