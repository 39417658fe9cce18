#include "devkit/pipeline/partiterator.h"

#include "devkit/pipeline/boundary.h"
#include "devkit/pipeline/partobject.h"
#include "devkit/pipeline/text.h"
#include "platform/bstr.h"

namespace devkit::pipeline {

PartIterator::PartIterator(ContextPtr context, const PartPtr& page)
    : ComObject(std::move(context), "PartIterator " + page->Name()), m_parts(page->resources) {
    if (page->ticket != nullptr) m_parts.insert(m_parts.begin(), page->ticket);
}

void PartIterator::Reset() {
    Context().Calls().Note("IXpsPartIterator::Reset");
    m_index = 0;
}

HRESULT PartIterator::Current(BSTR* pUri, IUnknown** ppPart) {
    if (pUri != nullptr) *pUri = nullptr;
    if (ppPart != nullptr) *ppPart = nullptr;
    return Guarded([&]() -> HRESULT {
        if (const HRESULT hr = Context().Calls().Enter("IXpsPartIterator::Current"); FAILED(hr)) return hr;
        if (pUri == nullptr || ppPart == nullptr) return E_POINTER;
        if (m_index >= m_parts.size()) return E_ELEMENT_NOT_FOUND;
        platform::Bstr uri(Widen(m_parts[m_index]->Name()));
        *ppPart = MakePartObject(SharedContext(), m_parts[m_index]).Detach();
        *pUri = uri.Detach();
        return S_OK;
    });
}

BOOL PartIterator::IsDone() { return m_index >= m_parts.size() ? TRUE : FALSE; }

void PartIterator::Next() {
    Context().Calls().Note("IXpsPartIterator::Next");
    if (m_index < m_parts.size()) ++m_index;
}

}  // namespace devkit::pipeline
