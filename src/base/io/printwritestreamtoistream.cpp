#include "base/io/printwritestreamtoistream.h"

namespace base::io {

PrintWriteStreamToIStream::PrintWriteStreamToIStream(IPrintWriteStream* pStream)
    : PrintStreamAdapter(pStream) {}

HRESULT PrintWriteStreamToIStream::Write(const void* pBuffer, ULONG cb, ULONG* pcbWritten) {
    if (pBuffer == nullptr || pcbWritten == nullptr) return E_POINTER;
    if (const HRESULT hr = CoFileTimeNow(&m_modified); FAILED(hr)) return hr;
    if (cb == 0) return S_OK;
    *pcbWritten = 0;
    const HRESULT hr = m_pStream->WriteBytes(pBuffer, cb, pcbWritten);
    m_size += *pcbWritten;
    return hr;
}

HRESULT PrintWriteStreamToIStream::Stat(STATSTG* pRecord, DWORD flag) {
    if (pRecord == nullptr) return E_POINTER;
    *pRecord = {};
    pRecord->cbSize.QuadPart = m_size;
    return Describe(L"PrintWriteStream", *pRecord, flag);
}

platform::ComPtr<IStream> CreatePrintWriteStreamToIStream(IPrintWriteStream* pStream) {
    return platform::ComPtr<IStream>::Adopt(new PrintWriteStreamToIStream(pStream));
}

}  // namespace base::io
