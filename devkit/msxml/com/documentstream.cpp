#include "devkit/msxml/com/documentstream.h"

#include "devkit/msxml/com/answer.h"
#include "devkit/msxml/com/facade.h"
#include "devkit/msxml/com/loading.h"
#include "devkit/msxml/com/saving.h"
#include "devkit/msxml/text/serialiser.h"

namespace devkit::msxml {

DocumentStream::DocumentStream(DomState& document, IUnknown& object) noexcept
    : m_document(document), m_pObject(&object) {}

HRESULT DocumentStream::QueryInterface(REFIID iid, void** ppObject) {
    if (ppObject == nullptr) return E_POINTER;
    *ppObject = nullptr;
    // To this library, too, it is a stream and not the document behind it.
    if (iid == kIidOfNode) return E_NOINTERFACE;
    if (iid != __uuidof(IStream)) return m_pObject->QueryInterface(iid, ppObject);
    *ppObject = static_cast<IStream*>(this);
    AddRef();
    return S_OK;
}

ULONG DocumentStream::AddRef() { return AddReference(); }

ULONG DocumentStream::Release() {
    const ULONG left = DropReference();
    if (left != 0) return left;
    // There is nobody to tell of a failure but parseError.
    static_cast<void>(LoadWritten());
    delete this;
    return 0;
}

HRESULT DocumentStream::Read(void* pBuffer, ULONG count, ULONG* pRead) {
    if (pRead != nullptr) *pRead = 0;
    const HRESULT result = PrepareReading();
    return FAILED(result) ? result : m_pBytes->Read(pBuffer, count, pRead);
}

HRESULT DocumentStream::Write(const void* pBytes, ULONG count, ULONG* pWritten) {
    if (pWritten != nullptr) *pWritten = 0;
    const HRESULT result = PrepareWriting();
    if (FAILED(result)) return result;
    m_isPending = true;
    return m_pBytes->Write(pBytes, count, pWritten);
}

HRESULT DocumentStream::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* pPosition) {
    if (pPosition != nullptr) pPosition->QuadPart = 0;
    const HRESULT result = PrepareReading();
    return FAILED(result) ? result : m_pBytes->Seek(move, origin, pPosition);
}

HRESULT DocumentStream::SetSize(ULARGE_INTEGER size) {
    const HRESULT result = PrepareWriting();
    if (FAILED(result)) return result;
    return m_pBytes->SetSize(size);
}

HRESULT DocumentStream::CopyTo(IStream* pTarget, ULARGE_INTEGER count, ULARGE_INTEGER* pRead,
                               ULARGE_INTEGER* pWritten) {
    if (pRead != nullptr) pRead->QuadPart = 0;
    if (pWritten != nullptr) pWritten->QuadPart = 0;
    if (pTarget == nullptr) return STG_E_INVALIDPOINTER;
    const HRESULT result = PrepareReading();
    return FAILED(result) ? result : m_pBytes->CopyTo(pTarget, count, pRead, pWritten);
}

HRESULT DocumentStream::Commit(DWORD) { return LoadWritten(); }

HRESULT DocumentStream::Revert() { return E_NOTIMPL; }

HRESULT DocumentStream::LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) { return STG_E_INVALIDFUNCTION; }

HRESULT DocumentStream::UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) { return STG_E_INVALIDFUNCTION; }

HRESULT DocumentStream::Stat(STATSTG* pStat, DWORD flags) {
    if (pStat == nullptr) return STG_E_INVALIDPOINTER;
    *pStat = {};
    const HRESULT result = PrepareReading();
    return FAILED(result) ? result : m_pBytes->Stat(pStat, flags);
}

HRESULT DocumentStream::Clone(IStream** ppStream) {
    if (ppStream == nullptr) return STG_E_INVALIDPOINTER;
    *ppStream = nullptr;
    const HRESULT result = PrepareReading();
    return FAILED(result) ? result : m_pBytes->Clone(ppStream);
}

// The bytes of the document, unless there are bytes already.
HRESULT DocumentStream::PrepareReading() noexcept {
    if (m_pBytes) return S_OK;
    return Guarded([&] {
        const std::string bytes = SavedBytes(m_document);
        platform::ComPtr<IStream> pBytes;
        common::ThrowIfFailed(CreateStreamOnHGlobal(nullptr, TRUE, pBytes.Put()));
        WriteWhole(*pBytes.Get(), bytes);
        common::ThrowIfFailed(pBytes->Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr));
        m_pBytes = std::move(pBytes);
        return S_OK;
    });
}

HRESULT DocumentStream::PrepareWriting() noexcept {
    if (m_isWriting) return S_OK;
    platform::ComPtr<IStream> pBytes;
    const HRESULT result = CreateStreamOnHGlobal(nullptr, TRUE, pBytes.Put());
    if (FAILED(result)) return result;
    m_pBytes = std::move(pBytes);
    m_isWriting = true;
    return S_OK;
}

HRESULT DocumentStream::LoadWritten() noexcept {
    if (!m_isPending) return S_OK;
    m_isPending = false;
    return Guarded([&] {
        // A second stream on the bytes leaves the position of the first one alone.
        platform::ComPtr<IStream> pReader;
        common::ThrowIfFailed(m_pBytes->Clone(pReader.Put()));
        common::ThrowIfFailed(pReader->Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr));
        return LoadBytes(m_document, ReadToEnd(*pReader.Get()));
    });
}

}  // namespace devkit::msxml
