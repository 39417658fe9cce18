#include "devkit/pipeline/readstreamfactory.h"

#include <utility>

#include "devkit/pipeline/boundary.h"

namespace devkit::pipeline {

ReadStreamFactory::ReadStreamFactory(ContextPtr context, std::string name, Bytes bytes)
    : ComObject(std::move(context), "ReadStreamFactory " + name),
      m_name(std::move(name)),
      m_bytes(std::move(bytes)) {}

HRESULT ReadStreamFactory::GetStream(IPrintReadStream** ppStream) {
    if (ppStream == nullptr) return E_POINTER;
    *ppStream = nullptr;
    return Guarded([&]() -> HRESULT {
        if (const HRESULT hr = Context().Calls().Enter("IPrintReadStreamFactory::GetStream", m_name);
            FAILED(hr)) {
            return hr;
        }
        *ppStream = MakeObject<ReadStream>(SharedContext(), m_name, m_bytes).Detach();
        return S_OK;
    });
}

}  // namespace devkit::pipeline
