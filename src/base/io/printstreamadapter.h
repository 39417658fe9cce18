#pragma once

#include "platform/windows.h"

#include <algorithm>
#include <cwchar>
#include <string_view>

#include "base/logging/check.h"
#include "platform/comobject.h"
#include "platform/comptr.h"

namespace base::io {

// What the two IStream adapters have in common: identity, the pipeline stream, a size, three times and the
// methods that neither supports. No method throws. One thread uses an adapter at a time.
template <typename PipelineStream>
class PrintStreamAdapter : public platform::ComIdentity<platform::ReferenceCount, IStream> {
  public:
    HRESULT STDMETHODCALLTYPE Read(void*, ULONG, ULONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Write(const void*, ULONG, ULONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER, DWORD, ULARGE_INTEGER*) override { return E_NOTIMPL; }
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
    HRESULT STDMETHODCALLTYPE Clone(IStream** ppStream) override {
        if (ppStream != nullptr) *ppStream = nullptr;
        return E_NOTIMPL;
    }

  protected:
    // HresultError with E_POINTER for a null stream, with the system's code when it cannot tell the time.
    explicit PrintStreamAdapter(PipelineStream* pStream) : m_pStream(pStream) {
        if (pStream == nullptr) logging::ThrowHresult(E_POINTER);
        logging::ThrowIfFailed(CoFileTimeNow(&m_modified));
        logging::ThrowIfFailed(CoFileTimeNow(&m_created));
        logging::ThrowIfFailed(CoFileTimeNow(&m_accessed));
    }
    ~PrintStreamAdapter() override = default;

    // Fills a record that is all zeroes, its size excepted. The name, given with flag 0 alone, is the
    // caller's to free.
    [[nodiscard]] HRESULT Describe(std::wstring_view name, STATSTG& record, DWORD flag) const noexcept {
        if (flag == STATFLAG_DEFAULT) {
            // Four times the room that the name needs.
            record.pwcsName = static_cast<LPOLESTR>(CoTaskMemAlloc((name.size() + 1) * 8));
            if (record.pwcsName == nullptr) return E_OUTOFMEMORY;
            *std::copy(name.begin(), name.end(), record.pwcsName) = L'\0';
        }
        record.type = STGTY_STREAM;
        record.mtime = m_modified;
        record.ctime = m_created;
        record.atime = m_accessed;
        record.grfMode = STGM_READ | STGM_SHARE_DENY_WRITE;
        record.grfLocksSupported = LOCK_WRITE;
        return S_OK;
    }

    platform::ComPtr<PipelineStream> m_pStream;
    ULONGLONG m_size = 0;
    FILETIME m_modified = {};
    FILETIME m_created = {};
    FILETIME m_accessed = {};
};

}  // namespace base::io
