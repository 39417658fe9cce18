#include "devkit/pipeline/writestream.h"

#include <algorithm>
#include <utility>

#include "devkit/pipeline/boundary.h"

namespace devkit::pipeline {

void Writing::Close() { m_closed = std::make_shared<const std::string>(std::exchange(m_open, {})); }

WriteStream::WriteStream(ContextPtr context, const std::string& name, std::shared_ptr<Writing> writing)
    : ComObject(std::move(context), "WriteStream " + name), m_name(name), m_writing(std::move(writing)) {}

WriteStream::~WriteStream() {
    if (!m_writing->IsClosed())
        Context().LeftOpen("the write stream of " + m_name + " was released without Close");
}

HRESULT WriteStream::WriteBytes(const void* pBuffer, ULONG cb, ULONG* pcbWritten) {
    if (pcbWritten != nullptr) *pcbWritten = 0;
    return Guarded([&]() -> HRESULT {
        if (const HRESULT hr = Context().Calls().Enter("IPrintWriteStream::WriteBytes", m_name); FAILED(hr))
            return hr;
        if (pBuffer == nullptr || pcbWritten == nullptr) {
            return Context().Breach("WriteBytes of " + m_name + " was called with a null pointer", E_POINTER);
        }
        if (m_writing->IsClosed()) return Context().Breach("WriteBytes of " + m_name + " came after Close");
        const ULONG most = Context().GetSwitches().maxBytesPerWrite;
        const ULONG count = most == 0 ? cb : std::min(cb, most);
        m_writing->Append(pBuffer, count);
        *pcbWritten = count;
        return S_OK;
    });
}

void WriteStream::Close() {
    static_cast<void>(Guarded([&]() -> HRESULT {
        Context().Calls().Note("IPrintWriteStream::Close", m_name);
        if (m_writing->IsClosed())
            return Context().Breach("the write stream of " + m_name + " was closed twice");
        m_writing->Close();
        return S_OK;
    }));
}

HRESULT WriteStream::FlushData() {
    return Context().Calls().Enter("IPrintWriteStreamFlush::FlushData", m_name);
}

}  // namespace devkit::pipeline
