#pragma once

#include "platform/windows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

#include "mockobject.h"

namespace devkit::msxml::tests {

// A stream that offers nothing but Read and Write, and those as a test asks for: in small steps, with
// S_FALSE, failing at a chosen call. Any other method fails the test. It lives on the test's stack.
template <typename Interface>
class ScriptedStream : public ::tests::OwnedFake<Interface> {
  public:
    static constexpr int kNever = std::numeric_limits<int>::max();

    explicit ScriptedStream(std::string_view content = {}) : m_content(content) {}
    ~ScriptedStream() override { EXPECT_EQ(1U, this->References()) << "references to the stream are left"; }

    ULONG step = 0xFFFFFFFF;   // the most that one call takes or gives
    HRESULT success = S_OK;    // what a call that works returns
    int failingCall = kNever;  // the call that fails, counted from 1
    HRESULT failure = STG_E_READFAULT;
    int calls = 0;
    std::string written;

    HRESULT STDMETHODCALLTYPE Read(void* pBuffer, ULONG count, ULONG* pRead) override {
        *pRead = 0;
        if (++calls == failingCall) return failure;
        const auto size = static_cast<ULONG>(std::min<std::size_t>(std::min(count, step), m_content.size()));
        std::memcpy(pBuffer, m_content.data(), size);
        m_content.remove_prefix(size);
        *pRead = size;
        return success;
    }
    HRESULT STDMETHODCALLTYPE Write(const void* pBytes, ULONG count, ULONG* pWritten) override {
        *pWritten = 0;
        if (++calls == failingCall) return failure;
        const ULONG size = std::min(count, step);
        written.append(static_cast<const char*>(pBytes), size);
        *pWritten = size;
        return success;
    }

  private:
    std::string_view m_content;
};

class ScriptedIStream final : public ScriptedStream<IStream> {
  public:
    using ScriptedStream::ScriptedStream;

    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER, DWORD, ULARGE_INTEGER*) override {
        return Unexpected("Seek");
    }
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return Unexpected("SetSize"); }
    HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override {
        return Unexpected("CopyTo");
    }
    HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return Unexpected("Commit"); }
    HRESULT STDMETHODCALLTYPE Revert() override { return Unexpected("Revert"); }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return Unexpected("LockRegion");
    }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return Unexpected("UnlockRegion");
    }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG*, DWORD) override { return Unexpected("Stat"); }
    HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return Unexpected("Clone"); }

  private:
    static HRESULT Unexpected(const char* name) {
        ADD_FAILURE() << name << " was called";
        return E_NOTIMPL;
    }
};

using ScriptedSequence = ScriptedStream<ISequentialStream>;

}  // namespace devkit::msxml::tests
