#include "devkit/msxml/parseerror.h"

#include "devkit/msxml/comtext.h"

namespace devkit::msxml {

namespace {

HRESULT ReturnNumber(long number, long* pOut) noexcept {
    if (pOut == nullptr) return E_INVALIDARG;
    *pOut = number;
    return S_OK;
}

HRESULT ReturnTextOrNone(const std::wstring& text, BSTR* pOut) noexcept {
    return text.empty() ? ReturnNoText(pOut) : ReturnText(text, pOut);
}

}  // namespace

HRESULT ParseError::get_errorCode(long* pCode) {
    const HRESULT result = ReturnNumber(m_failure.code, pCode);
    return result == S_OK && m_failure.code == S_OK ? S_FALSE : result;
}

HRESULT ParseError::get_url(BSTR* pUrl) { return ReturnTextOrNone(m_failure.url, pUrl); }

HRESULT ParseError::get_reason(BSTR* pReason) { return ReturnTextOrNone(m_failure.reason, pReason); }

HRESULT ParseError::get_srcText(BSTR* pText) { return ReturnTextOrNone(m_failure.sourceText, pText); }

HRESULT ParseError::get_line(long* pLine) { return ReturnNumber(m_failure.line, pLine); }

HRESULT ParseError::get_linepos(long* pPosition) { return ReturnNumber(m_failure.linePosition, pPosition); }

HRESULT ParseError::get_filepos(long* pPosition) { return ReturnNumber(m_failure.filePosition, pPosition); }

}  // namespace devkit::msxml
