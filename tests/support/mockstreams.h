#pragma once

#include "platform/windows.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <utility>

#include "callrecorder.h"
#include "mockobject.h"
#include "platform/comptr.h"
#include "platform/filterpipeline.h"

namespace tests {

// A read stream over bytes in memory, shared like any COM object. Calls are noted as "Seek OFFSET ORIGIN" and
// "ReadBytes COUNT".
class MockReadStream : public MockObject<IPrintReadStream> {
  public:
    MockReadStream(CallRecorder& calls, std::string bytes) : m_calls(calls), m_bytes(std::move(bytes)) {}

    // No read gives more than this.
    void SetShortReads(ULONG most) { m_most = most; }
    // The end flag comes alone, after the last data, and not with it.
    void SetEndAfterData() { m_endAfterData = true; }
    // A read that is made to fail has given this many bytes before it does.
    void SetGivenByFailure(ULONG count) { m_givenByFailure = count; }

    HRESULT STDMETHODCALLTYPE Seek(LONGLONG offset, DWORD origin, ULONGLONG* pNewPosition) override {
        const HRESULT hr = m_calls.Enter("Seek " + std::to_string(offset) + " " + std::to_string(origin));
        if (FAILED(hr)) return hr;
        const LONGLONG size = static_cast<LONGLONG>(m_bytes.size());
        const LONGLONG from = origin == STREAM_SEEK_SET ? 0 : origin == STREAM_SEEK_CUR ? m_position : size;
        if (origin > STREAM_SEEK_END || from + offset < 0) return STG_E_INVALIDFUNCTION;
        m_position = from + offset;
        if (pNewPosition != nullptr) *pNewPosition = static_cast<ULONGLONG>(m_position);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE ReadBytes(void* pBuffer, ULONG cbWanted, ULONG* pcbRead,
                                        BOOL* pEndOfFile) override {
        const HRESULT hr = m_calls.Enter("ReadBytes " + std::to_string(cbWanted));
        if (FAILED(hr) && m_givenByFailure == 0) return hr;
        const LONGLONG left = std::max<LONGLONG>(static_cast<LONGLONG>(m_bytes.size()) - m_position, 0);
        const LONGLONG read = std::min<LONGLONG>({left, cbWanted, FAILED(hr) ? m_givenByFailure : m_most});
        if (read != 0) std::memcpy(pBuffer, m_bytes.data() + m_position, static_cast<std::size_t>(read));
        m_position += read;
        *pcbRead = static_cast<ULONG>(read);
        *pEndOfFile = read == left && (read == 0 || !m_endAfterData);
        return hr;
    }

  private:
    CallRecorder& m_calls;
    std::string m_bytes;
    LONGLONG m_position = 0;
    ULONG m_most = std::numeric_limits<ULONG>::max();
    ULONG m_givenByFailure = 0;
    bool m_endAfterData = false;
};

// A write stream into memory. Calls are noted as "WriteBytes COUNT" and "Close".
class MockWriteStream : public MockObject<IPrintWriteStream> {
  public:
    explicit MockWriteStream(CallRecorder& calls) : m_calls(calls) {}

    // No write takes more than this.
    void SetShortWrites(ULONG most) { m_most = most; }
    // A write that is made to fail has taken this many bytes before it does.
    void SetTakenByFailure(ULONG count) { m_takenByFailure = count; }
    [[nodiscard]] const std::string& Bytes() const noexcept { return m_bytes; }
    [[nodiscard]] int Closes() const noexcept { return m_closes; }

    HRESULT STDMETHODCALLTYPE WriteBytes(const void* pBuffer, ULONG cb, ULONG* pcbWritten) override {
        const HRESULT hr = m_calls.Enter("WriteBytes " + std::to_string(cb));
        if (FAILED(hr) && m_takenByFailure == 0) return hr;
        if (m_closes != 0) return FAILED(hr) ? hr : STG_E_INVALIDFUNCTION;
        *pcbWritten = std::min(cb, FAILED(hr) ? m_takenByFailure : m_most);
        m_bytes.append(static_cast<const char*>(pBuffer), *pcbWritten);
        return hr;
    }
    void STDMETHODCALLTYPE Close() override {
        static_cast<void>(m_calls.Enter("Close"));
        ++m_closes;
    }

  private:
    CallRecorder& m_calls;
    std::string m_bytes;
    ULONG m_most = std::numeric_limits<ULONG>::max();
    ULONG m_takenByFailure = 0;
    int m_closes = 0;
};

// Gives a new stream over the same bytes at each call of "GetStream"; with null bytes it succeeds with none.
class MockReadStreamFactory : public MockObject<IPrintReadStreamFactory> {
  public:
    MockReadStreamFactory(CallRecorder& calls, std::string bytes)
        : m_calls(calls), m_bytes(std::move(bytes)) {}

    HRESULT STDMETHODCALLTYPE GetStream(IPrintReadStream** ppStream) override {
        *ppStream = nullptr;
        const HRESULT hr = m_calls.Enter("GetStream");
        if (FAILED(hr)) return hr;
        *ppStream = MakeMock<MockReadStream>(m_calls, m_bytes).Detach();
        return S_OK;
    }

  private:
    CallRecorder& m_calls;
    std::string m_bytes;
};

}  // namespace tests
