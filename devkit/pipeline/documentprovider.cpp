#include "devkit/pipeline/documentprovider.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "devkit/common/boundary.h"
#include "devkit/pipeline/partfactory.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

PartPtr MakeTicket(const std::optional<InputPart>& ticket) {
    return ticket ? std::make_shared<Part>(PartKind::PrintTicket, *ticket) : nullptr;
}

PartPtr MakeTicketed(PartKind kind, const InputPart& markup, const std::optional<InputPart>& ticket) {
    PartPtr part = std::make_shared<Part>(kind, markup);
    part->ticket = MakeTicket(ticket);
    part->inputTicket = part->ticket;
    return part;
}

PartPtr MakePage(const PageInput& page) {
    PartPtr part = MakeTicketed(PartKind::FixedPage, page.markup, page.ticket);
    for (const ResourceInput& resource : page.resources) {
        part->resources.push_back(std::make_shared<Part>(resource.kind, resource.part));
    }
    return part;
}

PartPtr MakeXpsDocument(const JobInput& job) {
    PartPtr part = std::make_shared<Part>(PartKind::XpsDocument, std::string());
    if (job.thumbnail) part->thumbnail = std::make_shared<Part>(PartKind::Thumbnail, *job.thumbnail);
    return part;
}

}  // namespace

DocumentProvider::DocumentProvider(ContextPtr context, std::shared_ptr<const JobInput> input,
                                   std::vector<ExtraPart> extraParts, std::function<void(unsigned)> onAsked)
    : ComIdentity(std::move(context), "DocumentProvider"),
      m_input(std::move(input)),
      m_extraParts(std::move(extraParts)),
      m_onAsked(std::move(onAsked)) {}

std::string DocumentProvider::LastGiven() const {
    const std::lock_guard guard(m_lock);
    return m_lastGiven;
}

HRESULT DocumentProvider::QueryInterface(REFIID iid, void** ppObject) {
    if (Context().GetBehaviour().reader == StreamKind::Unrecognised && !IsEqualIID(iid, __uuidof(IUnknown))) {
        if (ppObject == nullptr) return E_POINTER;
        *ppObject = nullptr;
        return E_NOINTERFACE;
    }
    return ComIdentity::QueryInterface(iid, ppObject);
}

HRESULT DocumentProvider::GetXpsPart(IUnknown** ppPart) {
    if (ppPart == nullptr) return E_POINTER;
    *ppPart = nullptr;
    return common::Guarded([&]() -> HRESULT {
        if (m_onAsked != nullptr) m_onAsked(++m_asked);
        if (const HRESULT hr = Context().Calls().Enter("IXpsDocumentProvider::GetXpsPart"); FAILED(hr))
            return hr;
        const Behaviour& behaviour = Context().GetBehaviour();
        if (behaviour.slowPart.count() > 0) Context().WaitUnlessCancelled(behaviour.slowPart);
        if (Context().IsCancelled()) {
            if (behaviour.afterCancel == AfterCancel::FailGetXpsPart) return kJobCancelled;
            if (behaviour.afterCancel == AfterCancel::EndOfParts) return S_OK;
        }
        *ppPart = NextObject().Detach();
        return S_OK;
    });
}

ComPtr<IUnknown> DocumentProvider::NextObject() {
    const auto extra = std::find_if(m_extraParts.begin(), m_extraParts.end(),
                                    [this](const ExtraPart& part) { return part.before == m_next; });
    if (extra != m_extraParts.end()) {
        ComPtr<IUnknown> object = extra->make(SharedContext());
        m_extraParts.erase(extra);
        const std::lock_guard guard(m_lock);
        m_lastGiven = "an extra part";
        return object;
    }
    const PartPtr part = NextPart();
    const std::lock_guard guard(m_lock);
    m_lastGiven = part == nullptr ? "the end of the parts" : part->Title();
    if (part == nullptr) return nullptr;
    if (part->Kind() == PartKind::XpsDocument && Context().GetBehaviour().ambiguousDocument) {
        return MakeAmbiguousDocument(SharedContext(), part);
    }
    return MakePartObject(SharedContext(), part);
}

PartPtr DocumentProvider::NextPart() {
    const unsigned number = m_next++;
    if (number == 1) return MakeXpsDocument(*m_input);
    if (number == 2) return MakeTicketed(PartKind::FixedDocumentSequence, m_input->sequence, m_input->ticket);
    if (m_document == m_input->documents.size()) {
        --m_next;
        return nullptr;
    }
    const DocumentInput& document = m_input->documents[m_document];
    if (!m_inDocument) {
        m_inDocument = !document.pages.empty();
        if (!m_inDocument) ++m_document;
        return MakeTicketed(PartKind::FixedDocument, document.markup, document.ticket);
    }
    const PageInput& page = document.pages[m_page++];
    if (m_page == document.pages.size()) {
        m_inDocument = false;
        m_page = 0;
        ++m_document;
    }
    return MakePage(page);
}

}  // namespace devkit::pipeline
