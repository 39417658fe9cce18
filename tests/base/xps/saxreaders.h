#pragma once

#include "platform/windows.h"

#include <stdexcept>
#include <utility>
#include <vector>

#include "callrecorder.h"
#include "mockobject.h"
#include "platform/comptr.h"
#include "platform/msxml6.h"

namespace tests {

// The system's SAX reader behind one that notes what it is told, as "putContentHandler", "putContentHandler
// null", "parse" and, for all that takes a reader out of its defaults, "other".
class NotedSaxReader final : public MockObject<ISAXXMLReader> {
  public:
    NotedSaxReader(CallRecorder& calls, platform::ComPtr<ISAXXMLReader> pReader)
        : m_calls(calls), m_pReader(std::move(pReader)) {}

    // The handler that the reader holds now.
    [[nodiscard]] platform::ComPtr<ISAXContentHandler> Handler() const {
        platform::ComPtr<ISAXContentHandler> pHandler;
        if (FAILED(m_pReader->getContentHandler(pHandler.Put()))) throw std::runtime_error("no handler");
        return pHandler;
    }

    HRESULT STDMETHODCALLTYPE putContentHandler(ISAXContentHandler* pHandler) override {
        const HRESULT hr =
            m_calls.Enter(pHandler == nullptr ? "putContentHandler null" : "putContentHandler");
        return FAILED(hr) ? hr : m_pReader->putContentHandler(pHandler);
    }
    HRESULT STDMETHODCALLTYPE parse(VARIANT input) override {
        const HRESULT hr = m_calls.Enter("parse");
        return FAILED(hr) ? hr : m_pReader->parse(input);
    }

    HRESULT STDMETHODCALLTYPE getFeature(const wchar_t*, VARIANT_BOOL*) override { return Other(); }
    HRESULT STDMETHODCALLTYPE putFeature(const wchar_t*, VARIANT_BOOL) override { return Other(); }
    HRESULT STDMETHODCALLTYPE getProperty(const wchar_t*, VARIANT*) override { return Other(); }
    HRESULT STDMETHODCALLTYPE putProperty(const wchar_t*, VARIANT) override { return Other(); }
    HRESULT STDMETHODCALLTYPE getEntityResolver(ISAXEntityResolver**) override { return Other(); }
    HRESULT STDMETHODCALLTYPE putEntityResolver(ISAXEntityResolver*) override { return Other(); }
    HRESULT STDMETHODCALLTYPE getContentHandler(ISAXContentHandler**) override { return Other(); }
    HRESULT STDMETHODCALLTYPE getDTDHandler(ISAXDTDHandler**) override { return Other(); }
    HRESULT STDMETHODCALLTYPE putDTDHandler(ISAXDTDHandler*) override { return Other(); }
    HRESULT STDMETHODCALLTYPE getErrorHandler(ISAXErrorHandler**) override { return Other(); }
    HRESULT STDMETHODCALLTYPE putErrorHandler(ISAXErrorHandler*) override { return Other(); }
    HRESULT STDMETHODCALLTYPE getBaseURL(const wchar_t**) override { return Other(); }
    HRESULT STDMETHODCALLTYPE putBaseURL(const wchar_t*) override { return Other(); }
    HRESULT STDMETHODCALLTYPE getSecureBaseURL(const wchar_t**) override { return Other(); }
    HRESULT STDMETHODCALLTYPE putSecureBaseURL(const wchar_t*) override { return Other(); }
    HRESULT STDMETHODCALLTYPE parseURL(const wchar_t*) override { return Other(); }

  private:
    HRESULT Other() {
        static_cast<void>(m_calls.Enter("other"));
        return E_NOTIMPL;
    }

    CallRecorder& m_calls;
    platform::ComPtr<ISAXXMLReader> m_pReader;
};

// While it lives, every SAX reader that this apartment creates is a noted one, and is kept.
class KeptSaxReaders {
  public:
    explicit KeptSaxReaders(CallRecorder& calls) : m_pFactory(MakeMock<Factory>(calls)) {
        const auto require = [](HRESULT hr) {
            if (FAILED(hr)) throw std::runtime_error("the SAX reader's class cannot be replaced");
        };
        require(CoGetClassObject(platform::CLSID_SaxXmlReader60, CLSCTX_INPROC_SERVER, nullptr,
                                 __uuidof(IClassFactory), m_pFactory->pSystem.PutVoid()));
        require(CoRegisterClassObject(platform::CLSID_SaxXmlReader60, m_pFactory.Get(), CLSCTX_INPROC_SERVER,
                                      REGCLS_MULTIPLEUSE, &m_cookie));
    }
    KeptSaxReaders(const KeptSaxReaders&) = delete;
    KeptSaxReaders& operator=(const KeptSaxReaders&) = delete;
    ~KeptSaxReaders() { CoRevokeClassObject(m_cookie); }

    [[nodiscard]] const std::vector<platform::ComPtr<NotedSaxReader>>& Readers() const noexcept {
        return m_pFactory->readers;
    }

  private:
    class Factory final : public MockObject<IClassFactory> {
      public:
        explicit Factory(CallRecorder& recorder) : calls(recorder) {}

        HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pOuter, REFIID iid, void** ppObject) override {
            *ppObject = nullptr;
            platform::ComPtr<ISAXXMLReader> pReader;
            const HRESULT hr = pSystem->CreateInstance(pOuter, __uuidof(ISAXXMLReader), pReader.PutVoid());
            if (FAILED(hr)) return hr;
            readers.push_back(MakeMock<NotedSaxReader>(calls, std::move(pReader)));
            return readers.back()->QueryInterface(iid, ppObject);
        }
        HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

        CallRecorder& calls;
        platform::ComPtr<IClassFactory> pSystem;
        std::vector<platform::ComPtr<NotedSaxReader>> readers;
    };

    platform::ComPtr<Factory> m_pFactory;
    DWORD m_cookie = 0;
};

}  // namespace tests
