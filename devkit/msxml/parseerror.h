#pragma once

#include <utility>

#include "devkit/msxml/comobject.h"
#include "devkit/msxml/parsefailure.h"
#include "platform/msxml6.h"

namespace devkit::msxml {

// What parseError gives: how the last load ended when it was asked for.
class ParseError final : public ComObject<IXMLDOMParseError> {
  public:
    explicit ParseError(ParseFailure failure) noexcept : m_failure(std::move(failure)) {}

    // S_FALSE with 0 when the last load did not fail.
    HRESULT STDMETHODCALLTYPE get_errorCode(long* pCode) override;
    HRESULT STDMETHODCALLTYPE get_url(BSTR* pUrl) override;
    HRESULT STDMETHODCALLTYPE get_reason(BSTR* pReason) override;
    HRESULT STDMETHODCALLTYPE get_srcText(BSTR* pText) override;
    HRESULT STDMETHODCALLTYPE get_line(long* pLine) override;
    HRESULT STDMETHODCALLTYPE get_linepos(long* pPosition) override;
    HRESULT STDMETHODCALLTYPE get_filepos(long* pPosition) override;

  private:
    const ParseFailure m_failure;
};

}  // namespace devkit::msxml
