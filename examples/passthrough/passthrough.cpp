// A complete XPS filter that hands every part on as it came: the ground to build a filter of your own on.
// Change OnFixedPage first.

#include <wrl/client.h>

#include <atomic>
#include <new>

#include "platform/filterpipeline.h"

using Microsoft::WRL::ComPtr;

namespace {

// {6B1F0C8E-6D0B-4B57-9D0F-5C6F3E4A7D21}: make one of your own, and name it in the driver's pipeline
// configuration.
constexpr CLSID CLSID_PassThrough = {
    0x6b1f0c8e, 0x6d0b, 0x4b57, {0x9d, 0x0f, 0x5c, 0x6f, 0x3e, 0x4a, 0x7d, 0x21}};

// Objects and server locks that are alive: the pipeline asks DllCanUnloadNow before it unloads the module.
std::atomic<long> g_alive = 0;

class PassThrough final : public IPrintPipelineFilter {
  public:
    PassThrough() noexcept { ++g_alive; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override {
        if (ppObject == nullptr) return E_POINTER;
        const bool known = iid == __uuidof(IUnknown) || iid == __uuidof(IPrintPipelineFilter);
        *ppObject = known ? this : nullptr;
        if (!known) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --m_references;
        if (left == 0) delete this;
        return left;
    }

    // The place to keep the pipeline's objects and to read the property bag. A code other than S_OK or
    // S_FALSE ends the job.
    HRESULT STDMETHODCALLTYPE InitializeFilter(IInterFilterCommunicator* pCommunicator,
                                               IPrintPipelinePropertyBag* pProperties,
                                               IPrintPipelineManagerControl* pControl) override {
        if (pCommunicator == nullptr || pProperties == nullptr || pControl == nullptr) return E_POINTER;
        m_communicator = pCommunicator;
        m_control = pControl;
        return S_OK;
    }

    // The job is cancelled, or another filter failed. Comes on any thread, while StartOperation runs.
    HRESULT STDMETHODCALLTYPE ShutdownOperation() override {
        m_stop = true;
        return m_control ? m_control->FilterFinished() : S_OK;
    }

    // Does all the work. A filter that uses COM objects of its own (a DOM, a SAX reader) enters an apartment
    // here and leaves it at the end. No C++ exception may leave this or any other method.
    HRESULT STDMETHODCALLTYPE StartOperation() override {
        if (!m_communicator) return E_UNEXPECTED;
        ComPtr<IXpsDocumentProvider> reader;
        ComPtr<IXpsDocumentConsumer> writer;
        HRESULT hr = m_communicator->RequestReader(reinterpret_cast<void**>(reader.GetAddressOf()));
        if (SUCCEEDED(hr)) {
            hr = m_communicator->RequestWriter(reinterpret_cast<void**>(writer.GetAddressOf()));
        }
        if (SUCCEEDED(hr) && (!reader || !writer)) hr = E_POINTER;
        if (SUCCEEDED(hr)) hr = PassParts(reader.Get(), writer.Get());
        // Before the sender is closed: a closed sender alone means that the document is complete.
        if (FAILED(hr)) m_control->RequestShutdown(hr, nullptr);
        if (writer) {
            const HRESULT closed = writer->CloseSender();
            if (SUCCEEDED(hr)) hr = closed;
        }
        return hr;
    }

  private:
    ~PassThrough() { --g_alive; }

    HRESULT PassParts(IXpsDocumentProvider* pReader, IXpsDocumentConsumer* pWriter) {
        while (!m_stop) {
            ComPtr<IUnknown> part;
            HRESULT hr = pReader->GetXpsPart(part.GetAddressOf());
            if (FAILED(hr) || !part) return hr;  // a success without a part is the end of the document
            hr = PassPart(part.Get(), pWriter);
            if (FAILED(hr)) return hr;
        }
        return HRESULT_FROM_WIN32(ERROR_CANCELLED);
    }

    // What a part is, QueryInterface tells. What this filter does not know, another one may: it goes on as
    // well.
    HRESULT PassPart(IUnknown* pPart, IXpsDocumentConsumer* pWriter) {
        ComPtr<IXpsDocument> document;
        ComPtr<IFixedDocumentSequence> sequence;
        ComPtr<IFixedDocument> fixedDocument;
        ComPtr<IFixedPage> page;
        if (SUCCEEDED(pPart->QueryInterface(IID_PPV_ARGS(&page)))) return OnFixedPage(page.Get(), pWriter);
        if (SUCCEEDED(pPart->QueryInterface(IID_PPV_ARGS(&fixedDocument)))) {
            return pWriter->SendFixedDocument(fixedDocument.Get());
        }
        if (SUCCEEDED(pPart->QueryInterface(IID_PPV_ARGS(&sequence)))) {
            return pWriter->SendFixedDocumentSequence(sequence.Get());
        }
        if (SUCCEEDED(pPart->QueryInterface(IID_PPV_ARGS(&document)))) {
            return pWriter->SendXpsDocument(document.Get());
        }
        return pWriter->SendXpsUnknown(pPart);
    }

    HRESULT OnFixedPage(IFixedPage* pPage, IXpsDocumentConsumer* pWriter) {
        return pWriter->SendFixedPage(pPage);
    }

    std::atomic<ULONG> m_references = 1;
    std::atomic<bool> m_stop = false;
    ComPtr<IInterFilterCommunicator> m_communicator;
    ComPtr<IPrintPipelineManagerControl> m_control;
};

// The one factory lives as long as the module.
class Factory final : public IClassFactory {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override {
        if (ppObject == nullptr) return E_POINTER;
        const bool known = iid == __uuidof(IUnknown) || iid == __uuidof(IClassFactory);
        *ppObject = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pOuter, REFIID iid, void** ppObject) override {
        if (ppObject == nullptr) return E_POINTER;
        *ppObject = nullptr;
        if (pOuter != nullptr) return CLASS_E_NOAGGREGATION;
        PassThrough* filter = new (std::nothrow) PassThrough;
        if (filter == nullptr) return E_OUTOFMEMORY;
        const HRESULT hr = filter->QueryInterface(iid, ppObject);
        filter->Release();
        return hr;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
        g_alive += lock ? 1 : -1;
        return S_OK;
    }
};

}  // namespace

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** ppObject) {
    static Factory factory;
    if (ppObject == nullptr) return E_POINTER;
    *ppObject = nullptr;
    return clsid == CLSID_PassThrough ? factory.QueryInterface(iid, ppObject) : CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow() { return g_alive == 0 ? S_OK : S_FALSE; }
