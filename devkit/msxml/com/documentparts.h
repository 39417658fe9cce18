#pragma once

#include <utility>

#include "devkit/msxml/com/dispatchobject.h"
#include "devkit/msxml/text/parsefailure.h"

namespace devkit::msxml {

// What parseError gives: how the last load ended when it was asked for.
class ParseError final : public DomObject<IXMLDOMParseError> {
  public:
    explicit ParseError(ParseFailure failure) noexcept : m_failure(std::move(failure)) {}

    // S_FALSE with 0 when the last load did not fail.
    HRESULT STDMETHODCALLTYPE get_errorCode(long* pCode) override;
    // Nothing is loaded from an address: S_FALSE.
    HRESULT STDMETHODCALLTYPE get_url(BSTR* pUrl) override;
    HRESULT STDMETHODCALLTYPE get_reason(BSTR* pReason) override;
    HRESULT STDMETHODCALLTYPE get_srcText(BSTR* pText) override;
    HRESULT STDMETHODCALLTYPE get_line(long* pLine) override;
    HRESULT STDMETHODCALLTYPE get_linepos(long* pPosition) override;
    HRESULT STDMETHODCALLTYPE get_filepos(long* pPosition) override;

  private:
    const ParseFailure m_failure;
};

// What implementation gives. The features are "XML", "DOM" and "MS-DOM", in versions 1.0 and, for the
// last, 2.0.
class DomImplementation final : public DomObject<IXMLDOMImplementation> {
  public:
    HRESULT STDMETHODCALLTYPE hasFeature(BSTR feature, BSTR version, VARIANT_BOOL* pHas) override;
};

}  // namespace devkit::msxml
