#pragma once

#include "platform/windows.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "mockobject.h"
#include "platform/filterpipeline.h"

namespace base::xps {

template <typename Interface>
using FakeObject = tests::OwnedFake<Interface>;

inline constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

// Streams over bytes in memory whose bytes, counts and failures are members, for tests of a page as a whole.
// Where the calls themselves are of interest, the streams of mockstreams.h record them.
class MemoryReadStream final : public FakeObject<IPrintReadStream> {
  public:
    explicit MemoryReadStream(std::string content) : m_content(std::move(content)) {}

    HRESULT STDMETHODCALLTYPE Seek(LONGLONG offset, DWORD origin, ULONGLONG* pNewPosition) override {
        m_calls.push_back("Seek " + std::to_string(offset) + " " + std::to_string(origin));
        if (FAILED(m_seekResult)) return m_seekResult;
        m_position = static_cast<std::size_t>(offset);
        if (pNewPosition != nullptr) *pNewPosition = m_position;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE ReadBytes(void* pBuffer, ULONG cbWanted, ULONG* pcbRead,
                                        BOOL* pEndOfFile) override {
        ++m_reads;
        *pcbRead = 0;
        *pEndOfFile = FALSE;
        if (m_reads == m_failingRead) return m_readResult;
        const std::size_t left = m_content.size() - m_position;
        const bool isEmpty = m_emptyAnswersBetween != 0 && m_reads % (m_emptyAnswersBetween + 1) != 0;
        const std::size_t count = isEmpty ? 0 : std::min({left, std::size_t{cbWanted}, m_mostPerRead});
        std::memcpy(pBuffer, m_content.data() + m_position, count);
        m_position += count;
        *pcbRead = static_cast<ULONG>(count);
        const bool isAtEnd = m_position == m_content.size();
        *pEndOfFile = m_endComesWithData ? isAtEnd : count == 0;
        return S_OK;
    }

    std::string m_content;
    std::size_t m_position = 0;
    std::size_t m_reads = 0;
    std::size_t m_mostPerRead = kNever;
    // How many answers without a byte come before each with some.
    std::size_t m_emptyAnswersBetween = 0;
    bool m_endComesWithData = true;
    // Counted from 1.
    std::size_t m_failingRead = kNever;
    HRESULT m_readResult = STG_E_READFAULT;
    HRESULT m_seekResult = S_OK;
    std::vector<std::string> m_calls;
};

class MemoryWriteStream final : public FakeObject<IPrintWriteStream> {
  public:
    HRESULT STDMETHODCALLTYPE WriteBytes(const void* pBuffer, ULONG cb, ULONG* pcbWritten) override {
        ++m_writes;
        *pcbWritten = 0;
        if (m_isClosed) return E_UNEXPECTED;
        if (m_writes == m_failingWrite) return m_writeResult;
        const std::size_t count = std::min(std::size_t{cb}, m_mostPerWrite);
        m_content.append(static_cast<const char*>(pBuffer), count);
        *pcbWritten = static_cast<ULONG>(count);
        return S_OK;
    }
    void STDMETHODCALLTYPE Close() override {
        ++m_closes;
        m_isClosed = true;
    }

    std::string m_content;
    std::size_t m_writes = 0;
    std::size_t m_mostPerWrite = kNever;
    // Counted from 1.
    std::size_t m_failingWrite = kNever;
    HRESULT m_writeResult = STG_E_MEDIUMFULL;
    int m_closes = 0;
    bool m_isClosed = false;
};

}  // namespace base::xps
