#include "base/io/printreadstreamtoistream.h"

namespace base::io {

PrintReadStreamToIStream::PrintReadStreamToIStream(IPrintReadStream* pStream) : PrintStreamAdapter(pStream) {}

HRESULT PrintReadStreamToIStream::Read(void* pBuffer, ULONG cb, ULONG* pcbRead) {
    if (pBuffer == nullptr || pcbRead == nullptr) return E_POINTER;
    if (const HRESULT hr = CoFileTimeNow(&m_accessed); FAILED(hr)) return hr;
    if (cb == 0) return S_OK;
    BOOL endOfFile = FALSE;
    *pcbRead = 0;
    return m_pStream->ReadBytes(pBuffer, cb, pcbRead, &endOfFile);
}

HRESULT PrintReadStreamToIStream::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* pPosition) {
    ULONGLONG position = 0;
    const HRESULT hr = m_pStream->Seek(move.QuadPart, origin, &position);
    if (SUCCEEDED(hr) && pPosition != nullptr) pPosition->QuadPart = position;
    return hr;
}

HRESULT PrintReadStreamToIStream::Stat(STATSTG* pRecord, DWORD flag) {
    if (pRecord == nullptr) return E_POINTER;
    *pRecord = {};
    if (const HRESULT hr = MeasureSize(); FAILED(hr)) return hr;
    pRecord->cbSize.QuadPart = m_size;
    return Describe(L"PrintReadStream", *pRecord, flag);
}

HRESULT PrintReadStreamToIStream::MeasureSize() noexcept {
    if (m_size != 0) return S_OK;
    ULONGLONG position = 0;
    ULONGLONG size = 0;
    if (const HRESULT hr = m_pStream->Seek(0, STREAM_SEEK_CUR, &position); FAILED(hr)) return hr;
    if (const HRESULT hr = m_pStream->Seek(0, STREAM_SEEK_END, &size); FAILED(hr)) return hr;
    const HRESULT hr = m_pStream->Seek(static_cast<LONGLONG>(position), STREAM_SEEK_SET, nullptr);
    if (SUCCEEDED(hr)) m_size = size;
    return hr;
}

platform::ComPtr<IStream> CreatePrintReadStreamToIStream(IPrintReadStream* pStream) {
    return platform::ComPtr<IStream>::Adopt(new PrintReadStreamToIStream(pStream));
}

}  // namespace base::io
