#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "callrecorder.h"
#include "mockobject.h"
#include "mockparts.h"
#include "mockstreams.h"
#include "platform/comptr.h"
#include "platform/filterpipeline.h"

namespace tests {

// Calls are noted as "RequestShutdown CODE", followed by " with a reason" for an error object, and
// "FilterFinished".
class MockPipelineControl : public MockObject<IPrintPipelineManagerControl> {
  public:
    explicit MockPipelineControl(CallRecorder& calls) : m_calls(calls) {}

    HRESULT STDMETHODCALLTYPE RequestShutdown(HRESULT reason, IImgErrorInfo* pErrorInfo) override {
        return m_calls.Enter("RequestShutdown " + HresultText(reason) +
                             (pErrorInfo == nullptr ? "" : " with a reason"));
    }
    HRESULT STDMETHODCALLTYPE FilterFinished() override { return m_calls.Enter("FilterFinished"); }

  private:
    CallRecorder& m_calls;
};

// Hands out the reader and the writer that it was given, either of which may be null or of another kind.
// Calls are noted as "RequestReader" and "RequestWriter".
class MockCommunicator : public MockObject<IInterFilterCommunicator> {
  public:
    explicit MockCommunicator(CallRecorder& calls) : m_calls(calls) {}

    void SetReader(IUnknown* pReader) { m_pReader = platform::ComPtr<IUnknown>(pReader); }
    void SetWriter(IUnknown* pWriter) { m_pWriter = platform::ComPtr<IUnknown>(pWriter); }

    HRESULT STDMETHODCALLTYPE RequestReader(void** ppReader) override {
        return HandOut("RequestReader", m_pReader, ppReader);
    }
    HRESULT STDMETHODCALLTYPE RequestWriter(void** ppWriter) override {
        return HandOut("RequestWriter", m_pWriter, ppWriter);
    }

  private:
    HRESULT HandOut(const char* call, const platform::ComPtr<IUnknown>& object, void** ppObject) {
        *ppObject = nullptr;
        const HRESULT hr = m_calls.Enter(call);
        // Mocks with one interface: its pointer is the object's.
        if (SUCCEEDED(hr)) *ppObject = platform::ComPtr<IUnknown>(object).Detach();
        return hr;
    }

    CallRecorder& m_calls;
    platform::ComPtr<IUnknown> m_pReader;
    platform::ComPtr<IUnknown> m_pWriter;
};

// Gives its parts one by one, then S_OK with null; calls are noted as "GetXpsPart". A part that was given is
// forgotten.
class MockDocumentProvider : public MockObject<IXpsDocumentProvider> {
  public:
    explicit MockDocumentProvider(CallRecorder& calls) : m_calls(calls) {}

    void Add(IUnknown* pPart) { m_parts.emplace_back(pPart); }
    // Called with the number of the part that is asked for, counted from 1, before it is given.
    void SetHook(std::function<void(std::size_t)> hook) { m_hook = std::move(hook); }

    HRESULT STDMETHODCALLTYPE GetXpsPart(IUnknown** ppPart) override {
        *ppPart = nullptr;
        const HRESULT hr = m_calls.Enter("GetXpsPart");
        if (m_hook) m_hook(m_next + 1);
        if (FAILED(hr) || m_next == m_parts.size()) return hr;
        *ppPart = std::exchange(m_parts[m_next++], {}).Detach();
        return S_OK;
    }

  private:
    CallRecorder& m_calls;
    std::vector<platform::ComPtr<IUnknown>> m_parts;
    std::size_t m_next = 0;
    std::function<void(std::size_t)> m_hook;
};

// Keeps what was sent, in order. Calls are noted by the method's name, GetNewEmptyPart as
// "GetNewEmptyPart URI"; it makes print tickets alone.
class MockDocumentConsumer : public MockObject<IXpsDocumentConsumer> {
  public:
    explicit MockDocumentConsumer(CallRecorder& calls) : m_calls(calls) {}

    [[nodiscard]] const std::vector<platform::ComPtr<IUnknown>>& Sent() const noexcept { return m_sent; }
    // The streams of the new parts, in order.
    [[nodiscard]] const std::vector<platform::ComPtr<MockWriteStream>>& NewParts() const noexcept {
        return m_newParts;
    }
    void Clear() {
        m_sent.clear();
        m_newParts.clear();
    }

    HRESULT STDMETHODCALLTYPE SendXpsUnknown(IUnknown* pPart) override {
        return Send("SendXpsUnknown", pPart);
    }
    HRESULT STDMETHODCALLTYPE SendXpsDocument(IXpsDocument* pPart) override {
        return Send("SendXpsDocument", pPart);
    }
    HRESULT STDMETHODCALLTYPE SendFixedDocumentSequence(IFixedDocumentSequence* pPart) override {
        return Send("SendFixedDocumentSequence", pPart);
    }
    HRESULT STDMETHODCALLTYPE SendFixedDocument(IFixedDocument* pPart) override {
        return Send("SendFixedDocument", pPart);
    }
    HRESULT STDMETHODCALLTYPE SendFixedPage(IFixedPage* pPart) override {
        return Send("SendFixedPage", pPart);
    }
    HRESULT STDMETHODCALLTYPE CloseSender() override { return m_calls.Enter("CloseSender"); }
    HRESULT STDMETHODCALLTYPE GetNewEmptyPart(const wchar_t* uri, REFIID iid, void** ppPart,
                                              IPrintWriteStream** ppStream) override {
        *ppPart = nullptr;
        *ppStream = nullptr;
        const HRESULT hr = m_calls.Enter("GetNewEmptyPart " + Narrow(uri));
        if (FAILED(hr)) return hr;
        const HRESULT found = MakeMock<MockPrintTicket>(m_calls, uri, "")->QueryInterface(iid, ppPart);
        if (FAILED(found)) return found;
        m_newParts.push_back(MakeMock<MockWriteStream>(m_calls));
        *ppStream = platform::ComPtr<IPrintWriteStream>(m_newParts.back().Get()).Detach();
        return S_OK;
    }

  private:
    HRESULT Send(const char* call, IUnknown* pPart) {
        const HRESULT hr = m_calls.Enter(call);
        if (SUCCEEDED(hr)) m_sent.emplace_back(pPart);
        return hr;
    }

    CallRecorder& m_calls;
    std::vector<platform::ComPtr<IUnknown>> m_sent;
    std::vector<platform::ComPtr<MockWriteStream>> m_newParts;
};

}  // namespace tests
