#pragma once

#include "platform/windows.h"

#include <string>
#include <utility>

#include "callrecorder.h"
#include "mockobject.h"
#include "mockstreams.h"
#include "platform/bstr.h"
#include "platform/comptr.h"
#include "platform/filterpipeline.h"

namespace tests {

// A print ticket part over bytes in memory; a call of GetStream is noted as "GetStream".
class MockPrintTicket : public MockObject<IPartPrintTicket> {
  public:
    MockPrintTicket(CallRecorder& calls, std::wstring uri, std::string bytes)
        : m_calls(calls), m_uri(std::move(uri)), m_bytes(std::move(bytes)) {}

    HRESULT STDMETHODCALLTYPE GetUri(BSTR* pUri) override {
        *pUri = platform::Bstr(m_uri).Detach();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetStream(IPrintReadStream** ppStream) override {
        *ppStream = nullptr;
        const HRESULT hr = m_calls.Enter("GetStream");
        if (FAILED(hr)) return hr;
        *ppStream = MakeMock<MockReadStream>(m_calls, m_bytes).Detach();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetPartCompression(EXpsCompressionOptions*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetPartCompression(EXpsCompressionOptions) override { return E_NOTIMPL; }

  private:
    CallRecorder& m_calls;
    std::wstring m_uri;
    std::string m_bytes;
};

// What sequence, document and page share: a part name and at most one ticket. Calls are noted as
// "GetPrintTicket URI" and "SetPrintTicket URI".
template <typename Part>
class MockTicketedPart : public MockObject<Part> {
  public:
    MockTicketedPart(CallRecorder& calls, std::wstring uri, platform::ComPtr<IPartPrintTicket> pTicket = {})
        : m_calls(calls), m_uri(std::move(uri)), m_pTicket(std::move(pTicket)) {}

    [[nodiscard]] IPartPrintTicket* Ticket() const noexcept { return m_pTicket.Get(); }

    HRESULT STDMETHODCALLTYPE GetUri(BSTR* pUri) override {
        *pUri = platform::Bstr(m_uri).Detach();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetPrintTicket(IPartPrintTicket** ppTicket) override {
        *ppTicket = nullptr;
        const HRESULT hr = m_calls.Enter("GetPrintTicket " + Narrow(m_uri.c_str()));
        if (FAILED(hr)) return hr;
        if (!m_pTicket) return E_ELEMENT_NOT_FOUND;
        *ppTicket = platform::ComPtr<IPartPrintTicket>(m_pTicket).Detach();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetPrintTicket(IPartPrintTicket* pTicket) override {
        const HRESULT hr = m_calls.Enter("SetPrintTicket " + Narrow(m_uri.c_str()));
        if (SUCCEEDED(hr)) m_pTicket = platform::ComPtr<IPartPrintTicket>(pTicket);
        return hr;
    }

  protected:
    CallRecorder& m_calls;
    std::wstring m_uri;
    platform::ComPtr<IPartPrintTicket> m_pTicket;
};

using MockFixedDocumentSequence = MockTicketedPart<IFixedDocumentSequence>;
using MockFixedDocument = MockTicketedPart<IFixedDocument>;

class MockXpsDocument : public MockObject<IXpsDocument> {
  public:
    HRESULT STDMETHODCALLTYPE GetThumbnail(IPartThumbnail**) override { return E_ELEMENT_NOT_FOUND; }
    HRESULT STDMETHODCALLTYPE SetThumbnail(IPartThumbnail*) override { return E_NOTIMPL; }
};

// A page over markup in memory. Calls are noted as "GetStream URI" and "GetWriteStream URI"; the old markup
// stays readable while the new is written, and the new one is kept beside it.
class MockFixedPage : public MockTicketedPart<IFixedPage> {
  public:
    MockFixedPage(CallRecorder& calls, std::wstring uri, std::string markup,
                  platform::ComPtr<IPartPrintTicket> pTicket = {})
        : MockTicketedPart(calls, std::move(uri), std::move(pTicket)), m_markup(std::move(markup)) {}

    // Null when the page was not rewritten.
    [[nodiscard]] const MockWriteStream* Written() const noexcept { return m_pWritten.Get(); }

    HRESULT STDMETHODCALLTYPE GetStream(IPrintReadStream** ppStream) override {
        *ppStream = nullptr;
        const HRESULT hr = m_calls.Enter("GetStream " + Narrow(m_uri.c_str()));
        if (FAILED(hr)) return hr;
        *ppStream = MakeMock<MockReadStream>(m_calls, m_markup).Detach();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetWriteStream(IPrintWriteStream** ppStream) override {
        *ppStream = nullptr;
        const HRESULT hr = m_calls.Enter("GetWriteStream " + Narrow(m_uri.c_str()));
        if (FAILED(hr)) return hr;
        m_pWritten = MakeMock<MockWriteStream>(m_calls);
        *ppStream = platform::ComPtr<IPrintWriteStream>(m_pWritten.Get()).Detach();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetPartCompression(EXpsCompressionOptions*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetPartCompression(EXpsCompressionOptions) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPagePart(const wchar_t*, IUnknown**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetPagePart(IUnknown*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DeleteResource(const wchar_t*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetXpsPartIterator(IXpsPartIterator**) override { return E_NOTIMPL; }

  private:
    std::string m_markup;
    platform::ComPtr<MockWriteStream> m_pWritten;
};

}  // namespace tests
