#include "devkit/package/documentreader.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "devkit/package/documentmarkup.h"
#include "devkit/package/partname.h"

namespace devkit::package {

namespace {

constexpr std::string_view kImpliedSequence = "/FixedDocumentSequence.fdseq";

std::string Quoted(const std::string& reference) { return "'" + reference + "'"; }

}  // namespace

XpsTree DocumentReader::Read() {
    m_findings = m_package.Findings();
    const std::vector<Relationship> relationships = m_package.Relationships("/");
    XpsTree tree;
    tree.sequence.name = FindStartPart(relationships);
    ReadSequence(tree.sequence);
    if (std::ranges::all_of(tree.sequence.documents, [](const auto& each) { return each.pages.empty(); }))
        throw common::Error("has no pages", tree.sequence.name);
    for (const Relationship& each : relationships) {
        if (each.external || each.type != kThumbnailRelationship || tree.thumbnail) continue;
        if (const std::optional<PartInfo> part = Target("/", each.target)) tree.thumbnail = part->name;
    }
    return tree;
}

std::string DocumentReader::FindStartPart(const std::vector<Relationship>& relationships) {
    const Relationship* pStart = nullptr;
    for (const Relationship& each : relationships) {
        if (each.external || !IsEither(each.type, &Vocabulary::startPart)) continue;
        if (pStart != nullptr) Note("has several start parts, the last is taken", m_package.Where());
        pStart = &each;
    }
    if (pStart == nullptr) throw common::Error("has no start part", m_package.Where());
    if (pStart->type == VocabularyOf(Flavour::OpenXps).startPart) m_flavour = Flavour::OpenXps;
    const std::optional<PartInfo> part = Target("/", pStart->target);
    if (!part) throw common::Error("the start part is missing", pStart->target);
    return part->name;
}

void DocumentReader::ReadSequence(FixedDocumentSequence& sequence) {
    DocumentMarkup markup =
        ParseDocumentMarkup(ReadStructure(sequence.name), sequence.name, m_package.GetLimits().structure);
    if (markup.root == DocumentRoot::FixedDocumentSequence) {
        sequence.ticket = TicketOf(sequence.name);
        AddDocuments(sequence, markup.references);
        return;
    }
    Note("is the start part, but a fixed document", sequence.name);
    FixedDocument document;
    document.name = std::exchange(sequence.name, kImpliedSequence);
    sequence.implied = true;
    document.ticket = TicketOf(document.name);
    AddPages(document, std::move(markup.references));
    sequence.documents.push_back(std::move(document));
}

void DocumentReader::AddDocuments(FixedDocumentSequence& sequence,
                                  const std::vector<std::string>& references) {
    for (const std::string& reference : references) {
        std::optional<std::string> name = NextPart(sequence.name, reference);
        if (!name) continue;
        DocumentMarkup markup =
            ParseDocumentMarkup(ReadStructure(*name), *name, m_package.GetLimits().structure);
        if (markup.root != DocumentRoot::FixedDocument) throw common::Error("is not a fixed document", *name);
        FixedDocument document;
        document.name = std::move(*name);
        document.ticket = TicketOf(document.name);
        AddPages(document, std::move(markup.references));
        sequence.documents.push_back(std::move(document));
    }
}

void DocumentReader::AddPages(FixedDocument& document, std::vector<std::string> references) {
    for (std::string& each : references) {
        // Of a document of many pages the one list grows as the other is let go.
        const std::string reference = std::move(each);
        std::optional<std::string> name = NextPart(document.name, reference);
        if (!name) continue;
        FixedPage page;
        page.name = std::move(*name);
        ReadHangers(page);
        document.pages.push_back(std::move(page));
    }
    if (document.pages.empty()) Note("has no pages", document.name);
}

void DocumentReader::ReadHangers(FixedPage& page) {
    const std::vector<Relationship> relationships = RelationshipsOf(page.name);
    page.ticket = TicketOf(page.name, relationships);
    std::unordered_set<std::string> seen;
    for (const Relationship& each : relationships) {
        const bool isResource = IsEither(each.type, &Vocabulary::requiredResource) ||
                                IsEither(each.type, &Vocabulary::restrictedFont);
        if (each.external || !isResource) continue;
        const std::optional<PartInfo> part = Target(page.name, each.target);
        if (!part) {
            Note("the resource " + Quoted(each.target) + " is missing", page.name);
        } else if (seen.insert(NameKey(part->name)).second) {
            page.resources.push_back(part->name);
        }
    }
}

std::optional<std::string> DocumentReader::TicketOf(const std::string& part,
                                                    const std::vector<Relationship>& relationships) {
    std::optional<std::string> ticket;
    for (const Relationship& each : relationships) {
        if (each.external || !IsEither(each.type, &Vocabulary::printTicket)) continue;
        const std::optional<PartInfo> target = Target(part, each.target);
        if (!target) {
            Note("the print ticket " + Quoted(each.target) + " is missing", part);
        } else if (ticket) {
            Note("has several print tickets, the first is taken", part);
        } else {
            ticket = target->name;
        }
    }
    return ticket;
}

std::optional<std::string> DocumentReader::TicketOf(const std::string& part) {
    return TicketOf(part, RelationshipsOf(part));
}

std::vector<Relationship> DocumentReader::RelationshipsOf(const std::string& part) {
    try {
        return m_package.Relationships(part);
    } catch (const common::StorageError&) {
        throw;
    } catch (const common::Error& failure) {
        m_findings.emplace_back(failure.what());
        return {};
    }
}

std::string DocumentReader::ReadStructure(const std::string& part) const {
    const std::optional<PartInfo> info = m_package.Find(part);
    if (info && info->size > m_package.GetLimits().structure.maxBytes)
        throw common::Error(
            "is larger than " + std::to_string(m_package.GetLimits().structure.maxBytes) + " bytes", part);
    return m_package.Read(part);
}

std::optional<PartInfo> DocumentReader::Target(std::string_view source, const std::string& reference) const {
    std::optional<PartInfo> part = m_package.Find(ResolveReference(source, reference));
    const std::size_t hash = reference.find('#');
    if (part || hash == std::string::npos) return part;
    // A producer that does not encode its names means a part by what reads as a fragment.
    std::string literal = reference;
    literal.replace(hash, 1, "%23");
    return m_package.Find(ResolveReference(source, literal));
}

std::optional<std::string> DocumentReader::NextPart(const std::string& source, const std::string& reference) {
    if (++m_references > m_package.GetLimits().maxReferences)
        throw common::Error("refers to more than " + std::to_string(m_package.GetLimits().maxReferences) +
                                " documents and pages",
                            source);
    const std::optional<PartInfo> part = Target(source, reference);
    if (!part)
        throw common::Error("is missing", ResolveReference(source, reference) + " (from " + source + ")");
    if (!part->whole) throw common::Error("lacks a piece", part->name);
    if (part->number >= m_seen.size()) m_seen.resize(part->number + std::size_t{1});
    if (!m_seen[part->number]) {
        m_seen[part->number] = true;
        return part->name;
    }
    Note("is referred to again, which is passed over", part->name);
    return std::nullopt;
}

void DocumentReader::Note(std::string_view what, std::string_view where) {
    // As the error would read that it is not.
    m_findings.emplace_back(common::Error(what, where).what());
}

}  // namespace devkit::package
