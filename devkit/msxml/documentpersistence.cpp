#include "devkit/msxml/documentpersistence.h"

#include "devkit/msxml/comerror.h"
#include "devkit/msxml/document.h"
#include "devkit/msxml/loading.h"
#include "devkit/msxml/saving.h"

namespace devkit::msxml {

HRESULT DocumentPersistence::QueryInterface(REFIID iid, void** ppObject) {
    return m_document.QueryInterface(iid, ppObject);
}

ULONG DocumentPersistence::AddRef() { return m_document.AddRef(); }

ULONG DocumentPersistence::Release() { return m_document.Release(); }

HRESULT DocumentPersistence::GetClassID(CLSID* pClass) {
    if (pClass == nullptr) return E_POINTER;
    *pClass = platform::CLSID_DomDocument60;
    return S_OK;
}

HRESULT DocumentPersistence::IsDirty() { return m_document.Changes() == m_cleanChanges ? S_FALSE : S_OK; }

HRESULT DocumentPersistence::Load(IStream* pStream) {
    if (pStream == nullptr) return E_INVALIDARG;
    return Guarded([&] {
        const HRESULT result = LoadBytes(m_document, ReadToEnd(*pStream), {});
        m_cleanChanges = m_document.Changes();
        return result;
    });
}

HRESULT DocumentPersistence::Save(IStream* pStream, BOOL clearDirty) {
    if (pStream == nullptr) return E_INVALIDARG;
    return Guarded([&] {
        WriteWhole(*pStream, SavedBytes(m_document));
        if (clearDirty) m_cleanChanges = m_document.Changes();
        return S_OK;
    });
}

HRESULT DocumentPersistence::GetSizeMax(ULARGE_INTEGER* pSize) {
    if (pSize != nullptr) pSize->QuadPart = 0;
    return E_NOTIMPL;
}

HRESULT DocumentPersistence::InitNew() {
    Empty(m_document);
    m_cleanChanges = m_document.Changes();
    return S_OK;
}

}  // namespace devkit::msxml
