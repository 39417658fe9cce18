#pragma once

#include "platform/windows.h"

#include <chrono>
#include <memory>
#include <string>
#include <utility>

#include "mockobject.h"
#include "platform/comptr.h"

PLATFORM_INTERFACE_EXTENDS(IStream, ISequentialStream)

namespace devkit::prntvpt {

// A stream over bytes in memory. Only Read, Write and Seek work.
class MemoryStream final : public tests::MockObject<IStream> {
  public:
    MemoryStream(std::string bytes, std::size_t position) : m_bytes(std::move(bytes)), m_position(position) {}
    // Made with one reference, positioned at `position`.
    [[nodiscard]] static platform::ComPtr<MemoryStream> Make(std::string bytes = {},
                                                             std::size_t position = 0);

    [[nodiscard]] const std::string& Bytes() const noexcept { return m_bytes; }
    [[nodiscard]] std::size_t Position() const noexcept { return m_position; }
    [[nodiscard]] int Seeks() const noexcept { return m_seeks; }
    // No Read and no Write moves more than that.
    void LimitBlocks(ULONG most) noexcept { m_most = most; }
    // Read and Write take one off the counter, which streams can share, and fail with STG_E_INVALIDFUNCTION
    // at zero.
    void FailAtZero(std::shared_ptr<int> counter) noexcept { m_counter = std::move(counter); }
    // The Read that reaches the end answers S_FALSE, as streams may.
    void TellTheEnd() noexcept { m_tellsEnd = true; }
    [[nodiscard]] int Reads() const noexcept { return m_reads; }
    // Every Read and every Write takes so long.
    void TakeTime(std::chrono::milliseconds time) noexcept { m_time = time; }
    // Every Read, every Write fails with this.
    void FailReads(HRESULT hr) noexcept { m_readResult = hr; }
    void FailWrites(HRESULT hr) noexcept { m_writeResult = hr; }

    HRESULT STDMETHODCALLTYPE Read(void* pBuffer, ULONG cb, ULONG* pcbRead) override;
    HRESULT STDMETHODCALLTYPE Write(const void* pBuffer, ULONG cb, ULONG* pcbWritten) override;
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* pPosition) override;
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Revert() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG*, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return E_NOTIMPL; }

  private:
    [[nodiscard]] bool IsAtZero() const noexcept { return m_counter && (*m_counter)-- == 0; }

    std::shared_ptr<int> m_counter;
    std::string m_bytes;
    std::size_t m_position;
    ULONG m_most = 0xFFFFFFFF;
    bool m_tellsEnd = false;
    int m_reads = 0;
    int m_seeks = 0;
    std::chrono::milliseconds m_time{0};
    HRESULT m_readResult = S_OK;
    HRESULT m_writeResult = S_OK;
};

}  // namespace devkit::prntvpt
