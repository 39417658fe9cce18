#include "base/xps/sequentialreadstream.h"

#include <utility>

namespace base::xps {

SequentialReadStream::SequentialReadStream(platform::ComPtr<IPrintReadStream> pStream) noexcept
    : m_pStream(std::move(pStream)) {}

HRESULT STDMETHODCALLTYPE SequentialReadStream::Read(void* pBuffer, ULONG cb, ULONG* pcbRead) {
    if (pcbRead == nullptr) return E_INVALIDARG;
    *pcbRead = 0;
    if (pBuffer == nullptr && cb != 0) return E_INVALIDARG;

    HRESULT result = S_OK;
    int emptyAnswers = 0;
    while (SUCCEEDED(result) && !m_endOfFile && *pcbRead < cb) {
        ULONG count = 0;
        BOOL isEnd = FALSE;
        result = m_pStream->ReadBytes(static_cast<BYTE*>(pBuffer) + *pcbRead, cb - *pcbRead, &count, &isEnd);
        *pcbRead += count;
        if (isEnd) m_endOfFile = TRUE;
        emptyAnswers = count == 0 ? emptyAnswers + 1 : 0;
        if (SUCCEEDED(result) && !isEnd && emptyAnswers == kMostEmptyAnswers) result = STG_E_READFAULT;
    }
    if (FAILED(result)) return result;
    return *pcbRead < cb ? S_FALSE : S_OK;
}

}  // namespace base::xps
