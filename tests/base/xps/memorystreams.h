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
    explicit MemoryReadStream(std::string bytes) : content(std::move(bytes)) {}

    HRESULT STDMETHODCALLTYPE Seek(LONGLONG offset, DWORD origin, ULONGLONG* pNewPosition) override {
        calls.push_back("Seek " + std::to_string(offset) + " " + std::to_string(origin));
        if (FAILED(seekResult)) return seekResult;
        position = static_cast<std::size_t>(offset);
        if (pNewPosition != nullptr) *pNewPosition = position;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE ReadBytes(void* pBuffer, ULONG cbWanted, ULONG* pcbRead,
                                        BOOL* pEndOfFile) override {
        ++reads;
        *pcbRead = 0;
        *pEndOfFile = FALSE;
        if (reads == failingRead) return readResult;
        const std::size_t left = content.size() - position;
        const bool isEmpty = emptyAnswersBetween != 0 && reads % (emptyAnswersBetween + 1) != 0;
        const std::size_t count = isEmpty ? 0 : std::min({left, std::size_t{cbWanted}, mostPerRead});
        std::memcpy(pBuffer, content.data() + position, count);
        position += count;
        *pcbRead = static_cast<ULONG>(count);
        const bool isAtEnd = position == content.size();
        *pEndOfFile = endComesWithData ? isAtEnd : count == 0;
        return S_OK;
    }

    std::string content;
    std::size_t position = 0;
    std::size_t reads = 0;
    std::size_t mostPerRead = kNever;
    // How many answers without a byte come before each with some.
    std::size_t emptyAnswersBetween = 0;
    bool endComesWithData = true;
    // Counted from 1.
    std::size_t failingRead = kNever;
    HRESULT readResult = STG_E_READFAULT;
    HRESULT seekResult = S_OK;
    std::vector<std::string> calls;
};

class MemoryWriteStream final : public FakeObject<IPrintWriteStream> {
  public:
    HRESULT STDMETHODCALLTYPE WriteBytes(const void* pBuffer, ULONG cb, ULONG* pcbWritten) override {
        ++writes;
        *pcbWritten = 0;
        if (isClosed) return E_UNEXPECTED;
        if (writes == failingWrite) return writeResult;
        const std::size_t count = std::min(std::size_t{cb}, mostPerWrite);
        content.append(static_cast<const char*>(pBuffer), count);
        *pcbWritten = static_cast<ULONG>(count);
        return S_OK;
    }
    void STDMETHODCALLTYPE Close() override {
        ++closes;
        isClosed = true;
    }

    std::string content;
    std::size_t writes = 0;
    std::size_t mostPerWrite = kNever;
    // Counted from 1.
    std::size_t failingWrite = kNever;
    HRESULT writeResult = STG_E_MEDIUMFULL;
    int closes = 0;
    bool isClosed = false;
};

}  // namespace base::xps
