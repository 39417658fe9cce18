#include "devkit/pipeline/communicator.h"

#include <utility>

#include "devkit/common/boundary.h"

namespace devkit::pipeline {

Communicator::Communicator(ContextPtr context, platform::ComPtr<DocumentProvider> provider,
                           platform::ComPtr<DocumentConsumer> consumer)
    : ComIdentity(std::move(context), "Communicator"),
      m_provider(std::move(provider)),
      m_consumer(std::move(consumer)) {}

HRESULT Communicator::RequestReader(void** ppReader) {
    return Request("IInterFilterCommunicator::RequestReader", Context().GetBehaviour().reader,
                   static_cast<IXpsDocumentProvider*>(m_provider.Get()), ppReader);
}

HRESULT Communicator::RequestWriter(void** ppWriter) {
    const HRESULT hr = Request("IInterFilterCommunicator::RequestWriter", Context().GetBehaviour().writer,
                               static_cast<IXpsDocumentConsumer*>(m_consumer.Get()), ppWriter);
    if (SUCCEEDED(hr) && *ppWriter != nullptr) m_writerGiven = true;
    return hr;
}

template <typename Interface>
HRESULT Communicator::Request(const char* method, StreamKind kind, Interface* pStream, void** ppStream) {
    if (ppStream == nullptr) return E_POINTER;
    *ppStream = nullptr;
    return common::Guarded([&]() -> HRESULT {
        if (const HRESULT hr = Context().Calls().Enter(method); FAILED(hr)) return hr;
        if (kind != StreamKind::None) *ppStream = platform::ComPtr<Interface>(pStream).Detach();
        return S_OK;
    });
}

}  // namespace devkit::pipeline
