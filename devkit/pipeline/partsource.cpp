#include "devkit/pipeline/partsource.h"

#include <utility>

namespace devkit::pipeline {
namespace {

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

std::optional<GivenPart> JobParts::Next() { return GivenPart{NextPart(), nullptr}; }

PartPtr JobParts::NextPart() {
    const unsigned number = m_next++;
    if (number == 1) return MakeXpsDocument(*m_job);
    if (number == 2) return MakeTicketed(PartKind::FixedDocumentSequence, m_job->sequence, m_job->ticket);
    if (m_document == m_job->documents.size()) {
        --m_next;
        return nullptr;
    }
    const DocumentInput& document = m_job->documents[m_document];
    if (!m_inDocument) {
        m_inDocument = document.PageCount() != 0;
        if (!m_inDocument) ++m_document;
        return MakeTicketed(PartKind::FixedDocument, document.markup, document.ticket);
    }
    const PagePlace place{static_cast<std::uint32_t>(m_document), static_cast<std::uint32_t>(m_page)};
    const PageInput page = document.PageAt(m_page++);
    if (m_page == document.PageCount()) {
        m_inDocument = false;
        m_page = 0;
        ++m_document;
    }
    PartPtr part = MakePage(page);
    part->place = place;
    return part;
}

void PartChannel::Put(const PartPtr& part) { Put(GivenPart{HandOn(part), nullptr}); }

void PartChannel::Put(platform::ComPtr<IUnknown> foreign) { Put(GivenPart{nullptr, std::move(foreign)}); }

void PartChannel::Put(GivenPart given) {
    std::unique_lock guard(m_lock);
    m_changed.wait(guard, [this] { return m_waiting.size() < m_room || m_closed || m_abandoned; });
    if (m_closed || m_abandoned) return;
    m_waiting.push_back(std::move(given));
    m_changed.notify_all();
}

void PartChannel::Close() {
    const std::lock_guard guard(m_lock);
    m_closed = true;
    m_changed.notify_all();
}

void PartChannel::Abandon() {
    std::deque<GivenPart> dropped;
    const std::lock_guard guard(m_lock);
    m_abandoned = true;
    m_waiting.swap(dropped);
    m_changed.notify_all();
}

std::optional<GivenPart> PartChannel::Next() {
    std::unique_lock guard(m_lock);
    m_changed.wait(guard, [this] { return !m_waiting.empty() || m_closed || m_abandoned; });
    if (m_abandoned) return std::nullopt;
    if (m_waiting.empty()) return GivenPart();
    GivenPart given = std::move(m_waiting.front());
    m_waiting.pop_front();
    m_changed.notify_all();
    return given;
}

PartPtr PartChannel::HandOn(const PartPtr& part) {
    if (part == nullptr) return nullptr;
    const std::lock_guard guard(m_handedLock);
    if (const auto known = m_handed.find(part); known != m_handed.end()) return known->second;
    const auto handOn = [this](const PartPtr& other) -> PartPtr {
        if (other == nullptr) return nullptr;
        PartPtr& handed = m_handed[other];
        if (handed == nullptr) handed = std::make_shared<Part>(Part::HandedOn{}, *other);
        return handed;
    };
    PartPtr handed = std::make_shared<Part>(Part::HandedOn{}, *part);
    handed->ticket = handOn(part->ticket);
    handed->inputTicket = handOn(part->inputTicket);
    handed->thumbnail = handOn(part->thumbnail);
    for (const PartPtr& resource : part->resources) handed->resources.push_back(handOn(resource));
    return handed;
}

}  // namespace devkit::pipeline
