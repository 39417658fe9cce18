#include "devkit/pipeline/communicator.h"

#include <utility>

namespace devkit::pipeline {

Communicator::Communicator(ContextPtr context, StreamEnd reader, StreamEnd writer)
    : ComObject(std::move(context), "Communicator"),
      m_reader(std::move(reader)),
      m_writer(std::move(writer)) {}

HRESULT Communicator::RequestReader(void** ppReader) {
    return Request("IInterFilterCommunicator::RequestReader", Context().GetBehaviour().reader, m_reader,
                   ppReader);
}

HRESULT Communicator::RequestWriter(void** ppWriter) {
    const HRESULT hr = Request("IInterFilterCommunicator::RequestWriter", Context().GetBehaviour().writer,
                               m_writer, ppWriter);
    if (SUCCEEDED(hr) && *ppWriter != nullptr) m_writerGiven = true;
    return hr;
}

HRESULT Communicator::Request(const char* method, StreamKind kind, const StreamEnd& end, void** ppStream) {
    if (ppStream == nullptr) return E_POINTER;
    *ppStream = nullptr;
    return Answer([&]() -> HRESULT {
        if (const HRESULT hr = Context().Calls().Enter(method); FAILED(hr)) return hr;
        Context().Used(end.pInterface == m_reader.pInterface ? "reader" : "writer");
        if (kind == StreamKind::None) return S_OK;
        end.owner->AddRef();
        *ppStream = end.pInterface;
        return S_OK;
    });
}

}  // namespace devkit::pipeline
