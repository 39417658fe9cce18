#include "devkit/pipeline/part.h"

#include <algorithm>
#include <array>
#include <utility>

#include "devkit/common/text.h"
#include "devkit/pipeline/fontobfuscation.h"

namespace devkit::pipeline {
namespace {

struct TypeOfKind {
    std::string_view contentType;
    PartKind kind;
};

constexpr auto kTypes = std::to_array<TypeOfKind>({
    {"application/vnd.ms-printing.printticket+xml", PartKind::PrintTicket},
    {"image/jpeg", PartKind::Image},
    {"image/png", PartKind::Image},
    {"image/tiff", PartKind::Image},
    {"image/vnd.ms-photo", PartKind::Image},
    {kPlainFont, PartKind::Font},
    {kObfuscatedFont, PartKind::Font},
    {"application/vnd.ms-color.iccprofile", PartKind::ColorProfile},
    {"application/vnd.ms-package.xps-resourcedictionary+xml", PartKind::ResourceDictionary},
});

const Bytes& NoBytes() {
    static const Bytes kNone = std::make_shared<const std::string>();
    return kNone;
}

Bytes ReadAll(const common::Content& content) { return std::make_shared<const std::string>(content.Read()); }

}  // namespace

const char* NameOf(PartKind kind) {
    switch (kind) {
        case PartKind::XpsDocument:
            return "XpsDocument";
        case PartKind::FixedDocumentSequence:
            return "FixedDocumentSequence";
        case PartKind::FixedDocument:
            return "FixedDocument";
        case PartKind::FixedPage:
            return "FixedPage";
        case PartKind::PrintTicket:
            return "PrintTicket";
        case PartKind::Image:
            return "Image";
        case PartKind::Font:
            return "Font";
        case PartKind::ColorProfile:
            return "ColorProfile";
        case PartKind::ResourceDictionary:
            return "ResourceDictionary";
        case PartKind::Thumbnail:
            return "Thumbnail";
        case PartKind::Unknown:
            break;
    }
    return "Unknown";
}

PartKind KindOfContentType(std::string_view contentType) {
    contentType = contentType.substr(0, contentType.find(';'));
    while (contentType.ends_with(' ')) contentType.remove_suffix(1);
    for (const TypeOfKind& type : kTypes) {
        if (common::EqualIgnoringCase(type.contentType, contentType)) return type.kind;
    }
    return PartKind::Unknown;
}

Part::Part(PartKind kind, InputPart input)
    : m_kind(kind),
      m_input(std::move(input)),
      m_isObfuscated(kind == PartKind::Font &&
                     common::EqualIgnoringCase(m_input.contentType, kObfuscatedFont)) {}

Part::Part(PartKind kind, std::string name)
    : m_kind(kind), m_input{std::move(name), {}, nullptr}, m_isNew(true) {}

Part::Part(HandedOn, Part& part)
    : compression(part.compression),
      obfuscate(part.obfuscate),
      m_kind(part.m_kind),
      m_input(part.m_input),
      m_isNew(part.m_isNew),
      m_isObfuscated(part.m_isObfuscated),
      m_wasWritten(part.IsWritten()) {
    if (part.m_written != nullptr) {
        m_input.read = [bytes = part.m_written] { return bytes; };
    } else if (part.m_aside) {
        m_input.read = [content = *part.m_aside] { return ReadAll(content); };
    }
}

std::string Part::Title() const {
    return m_input.name.empty() ? NameOf(m_kind) : std::string(NameOf(m_kind)) + " " + m_input.name;
}

Bytes Part::Read() {
    TakeWritten();
    if (m_written != nullptr) return m_written;
    return m_aside ? ReadAll(*m_aside) : ReadInput();
}

Bytes Part::ReadPlain() {
    Bytes bytes = Read();
    if (!m_isObfuscated || IsNew() || IsWritten()) return bytes;
    return std::make_shared<const std::string>(ToggleObfuscation(*bytes, Name()));
}

common::Content Part::Packaged() {
    TakeWritten();
    if (obfuscate && IsNew()) return ToggleObfuscation(*Read(), Name());
    return m_written == nullptr && m_aside ? *m_aside : Read();
}

void Part::PutAside(common::ByteStore& store) {
    // Where nobody holds the bytes any more, it still has the memory of their owner.
    m_read.reset();
    TakeWritten();
    if (m_written == nullptr) return;
    m_aside = store.Keep(m_written);
    m_written = nullptr;
}

Bytes Part::ReadInput() {
    if (m_input.read == nullptr) return NoBytes();
    Bytes bytes = m_read.lock();
    if (bytes == nullptr) {
        bytes = m_input.read();
        m_read = bytes;
    }
    return bytes;
}

bool Part::IsWritten() {
    TakeWritten();
    return m_wasWritten || m_written != nullptr || m_aside;
}

bool Part::IsBeingWritten() {
    TakeWritten();
    return m_writing != nullptr;
}

bool Part::IsUntouched() { return !attached && !IsWritten() && !IsBeingWritten(); }

// Whether it is a page of the input of which nobody holds anything, and that has its resources as they came.
bool Part::IsAtRest() {
    if (!place || IsBeingWritten() || !deleted.empty()) return false;
    // The page has the ticket twice that it came with.
    if (ticket != nullptr && ticket.use_count() != (ticket == inputTicket ? 2 : 1)) return false;
    return std::ranges::all_of(
        resources, [](const PartPtr& each) { return each.use_count() == 1 && each->IsUntouched(); });
}

std::optional<PageChange> Part::FinalChange() {
    if (!IsAtRest()) return std::nullopt;
    PageChange change;
    if (IsWritten()) {
        if (!m_aside) return std::nullopt;
        change.markup = m_aside;
    }
    if (ticket == inputTicket) {
        if (ticket != nullptr && !ticket->IsUntouched()) return std::nullopt;
        return change;
    }
    change.ticketReplaced = true;
    if (ticket == nullptr) return change;
    if (!ticket->IsNew() || ticket->IsBeingWritten() || !ticket->m_aside) return std::nullopt;
    change.ticket = {ticket->Name(), *ticket->m_aside};
    return change;
}

std::shared_ptr<Writing> Part::BeginWriting() {
    if (IsBeingWritten()) return nullptr;
    m_writing = std::make_shared<Writing>();
    return m_writing;
}

void Part::TakeWritten() {
    if (m_writing == nullptr || !m_writing->IsClosed()) return;
    m_written = m_writing->Written();
    m_aside.reset();
    m_writing = nullptr;
}

}  // namespace devkit::pipeline
