#include "devkit/pipeline/fixedpageobject.h"

#include <algorithm>

#include "devkit/common/text.h"
#include "devkit/pipeline/resourceobjects.h"
#include "platform/bstr.h"
#include "platform/utf.h"

namespace devkit::pipeline {
namespace {

using Resources = std::vector<PartPtr>;

Resources::iterator FindByName(Resources& parts, std::string_view name) {
    return std::find_if(parts.begin(), parts.end(), [name](const PartPtr& part) {
        return common::EqualIgnoringCase(part->Name(), name);
    });
}

// What the part iterator gives can be put back.
bool IsPagePart(PartKind kind) {
    return kind != PartKind::XpsDocument && kind != PartKind::FixedDocumentSequence &&
           kind != PartKind::FixedDocument && kind != PartKind::FixedPage;
}

}  // namespace

PartIterator::PartIterator(ContextPtr context, const PartPtr& page)
    : ComObject(std::move(context), "PartIterator " + page->Name()), m_parts(page->resources) {
    if (page->ticket != nullptr) m_parts.insert(m_parts.begin(), page->ticket);
}

void PartIterator::Reset() {
    const CallTime time = PipelineTime();
    Context().Calls().Note("IXpsPartIterator::Reset");
    m_index = 0;
}

HRESULT PartIterator::Current(BSTR* pUri, IUnknown** ppPart) {
    if (pUri != nullptr) *pUri = nullptr;
    if (ppPart != nullptr) *ppPart = nullptr;
    return Answer([&]() -> HRESULT {
        if (const HRESULT hr = Context().Calls().Enter("IXpsPartIterator::Current"); FAILED(hr)) return hr;
        if (pUri == nullptr || ppPart == nullptr) return E_POINTER;
        if (m_index >= m_parts.size()) return E_ELEMENT_NOT_FOUND;
        platform::Bstr uri(platform::ToUtf16(m_parts[m_index]->Name()));
        *ppPart = MakeResourceObject(SharedContext(), m_parts[m_index]).Detach();
        *pUri = uri.Detach();
        return S_OK;
    });
}

BOOL PartIterator::IsDone() { return m_index >= m_parts.size() ? TRUE : FALSE; }

void PartIterator::Next() {
    const CallTime time = PipelineTime();
    Context().Calls().Note("IXpsPartIterator::Next");
    if (m_index < m_parts.size()) ++m_index;
}

HRESULT FixedPageObject::GetPrintTicket(IPartPrintTicket** ppPrintTicket) {
    if (ppPrintTicket != nullptr) *ppPrintTicket = nullptr;
    return Call("IFixedPage::GetPrintTicket",
                [&] { return GetTicketOf(SharedContext(), *m_part, ppPrintTicket); });
}

HRESULT FixedPageObject::GetPagePart(const wchar_t* uri, IUnknown** ppPart) {
    if (ppPart != nullptr) *ppPart = nullptr;
    return Call("IFixedPage::GetPagePart", [&]() -> HRESULT {
        if (uri == nullptr || ppPart == nullptr) return E_POINTER;
        const std::string name = platform::ToUtf8(uri);
        PartPtr found;
        if (m_part->ticket != nullptr && common::EqualIgnoringCase(m_part->ticket->Name(), name)) {
            found = m_part->ticket;
        } else if (const auto place = FindByName(m_part->resources, name); place != m_part->resources.end()) {
            found = *place;
        }
        if (found == nullptr) return E_ELEMENT_NOT_FOUND;
        *ppPart = MakeResourceObject(SharedContext(), found).Detach();
        return S_OK;
    });
}

HRESULT FixedPageObject::GetWriteStream(IPrintWriteStream** ppWriteStream) {
    if (ppWriteStream != nullptr) *ppWriteStream = nullptr;
    return Call("IFixedPage::GetWriteStream", [&]() -> HRESULT {
        if (ppWriteStream == nullptr) return E_POINTER;
        if (const HRESULT hr = CheckNotSent("GetWriteStream"); FAILED(hr)) return hr;
        std::shared_ptr<Writing> writing = m_part->BeginWriting();
        if (writing == nullptr) {
            return Context().Breach(Check::TwoWriters, "GetWriteStream of " + m_part->Title() +
                                                           " came while another write stream is open");
        }
        *ppWriteStream =
            MakeObject<WriteStream>(SharedContext(), m_part->Name(), std::move(writing)).Detach();
        return S_OK;
    });
}

HRESULT FixedPageObject::SetPrintTicket(IPartPrintTicket* pPrintTicket) {
    return Call("IFixedPage::SetPrintTicket", [&]() -> HRESULT {
        if (const HRESULT hr = CheckNotSent("SetPrintTicket"); FAILED(hr)) return hr;
        return AttachTicket(Context(), *m_part, pPrintTicket);
    });
}

HRESULT FixedPageObject::SetPagePart(IUnknown* pPart) {
    return Call("IFixedPage::SetPagePart", [&]() -> HRESULT {
        if (const HRESULT hr = CheckNotSent("SetPagePart"); FAILED(hr)) return hr;
        if (pPart == nullptr) return E_POINTER;
        const PartPtr part = PartOf(pPart);
        if (part == nullptr || !IsPagePart(part->Kind())) {
            return Context().Breach(
                Check::ForeignPart,
                "SetPagePart was given an object that is not one of the pipeline's parts of a page",
                E_INVALIDARG);
        }
        if (part->IsBeingWritten()) {
            return Context().Breach(Check::OpenWhenAttached, "SetPagePart was given " + part->Title() +
                                                                 " while its write stream is open");
        }
        part->attached = true;
        const auto place = FindByName(m_part->resources, part->Name());
        if (part->Kind() == PartKind::PrintTicket) {
            m_part->ticket = part;
        } else if (place == m_part->resources.end()) {
            m_part->resources.push_back(part);
        } else {
            *place = part;
        }
        return S_OK;
    });
}

HRESULT FixedPageObject::DeleteResource(const wchar_t* uri) {
    return Call("IFixedPage::DeleteResource", [&]() -> HRESULT {
        if (const HRESULT hr = CheckNotSent("DeleteResource"); FAILED(hr)) return hr;
        if (uri == nullptr) return E_POINTER;
        const std::string name = platform::ToUtf8(uri);
        if (m_part->ticket != nullptr && common::EqualIgnoringCase(m_part->ticket->Name(), name)) {
            m_part->ticket = nullptr;
            return S_OK;
        }
        const auto place = FindByName(m_part->resources, name);
        if (place == m_part->resources.end()) {
            return Context().Breach(
                Check::NoResource,
                "DeleteResource of " + m_part->Title() + " names " + name + ", which the page does not have",
                E_ELEMENT_NOT_FOUND);
        }
        m_part->deleted.push_back((*place)->Name());
        m_part->resources.erase(place);
        return S_OK;
    });
}

HRESULT FixedPageObject::GetXpsPartIterator(IXpsPartIterator** ppIterator) {
    if (ppIterator != nullptr) *ppIterator = nullptr;
    return Call("IFixedPage::GetXpsPartIterator", [&]() -> HRESULT {
        if (ppIterator == nullptr) return E_POINTER;
        *ppIterator = MakeObject<PartIterator>(SharedContext(), m_part).Detach();
        return S_OK;
    });
}

}  // namespace devkit::pipeline
