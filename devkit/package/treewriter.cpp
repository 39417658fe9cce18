#include "devkit/package/treewriter.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "devkit/package/documentmarkup.h"
#include "devkit/package/partname.h"

namespace devkit::package {

namespace {

using Keys = std::unordered_set<std::string>;

template <typename Node>
std::vector<std::string> NamesOf(const std::vector<Node>& nodes) {
    std::vector<std::string> names;
    for (const Node& node : nodes) names.push_back(node.name);
    return names;
}

// All parts that the tree names.
Keys KeysOf(const XpsTree& tree) {
    Keys keys;
    const auto add = [&keys](const std::optional<std::string>& name) {
        if (name) keys.insert(NameKey(*name));
    };
    add(tree.thumbnail);
    add(tree.sequence.ticket);
    for (const FixedDocument& document : tree.sequence.documents) {
        add(document.name);
        add(document.ticket);
        for (const FixedPage& page : document.pages) {
            add(page.name);
            add(page.ticket);
            for (const std::string& resource : page.resources) add(resource);
        }
    }
    return keys;
}

// The documents and pages of a tree, by the keys of their names.
struct Index {
    explicit Index(const XpsTree& tree) {
        for (const FixedDocument& document : tree.sequence.documents) {
            documents.emplace(NameKey(document.name), &document);
            for (const FixedPage& page : document.pages) pages.emplace(NameKey(page.name), &page);
        }
    }
    template <typename Node>
    static const Node* Find(const std::unordered_map<std::string, const Node*>& nodes,
                            const std::string& name) {
        const auto found = nodes.find(NameKey(name));
        return found == nodes.end() ? nullptr : found->second;
    }

    std::unordered_map<std::string, const FixedDocument*> documents;
    std::unordered_map<std::string, const FixedPage*> pages;
};

const std::string* PointerTo(const std::optional<std::string>& name) { return name ? &*name : nullptr; }

bool IsResource(const Relationship& relationship) {
    return !relationship.external && (IsEither(relationship.type, &Vocabulary::requiredResource) ||
                                      IsEither(relationship.type, &Vocabulary::restrictedFont));
}

}  // namespace

void TreeWriter::Apply(const XpsTree& before, XpsTree& after) {
    const Index index(before);
    ApplySequence(before.sequence, after.sequence);
    for (FixedDocument& document : after.sequence.documents) {
        ApplyDocument(Index::Find(index.documents, document.name), document);
        for (FixedPage& page : document.pages) ApplyPage(Index::Find(index.pages, page.name), page);
    }
    if (after.thumbnail != before.thumbnail) SetThumbnail(PointerTo(after.thumbnail));
    RemoveLost(before, after);
}

void TreeWriter::ApplySequence(const FixedDocumentSequence& before, FixedDocumentSequence& after) {
    const std::vector<std::string> documents = NamesOf(after.documents);
    const bool sameDocuments = documents == NamesOf(before.documents);
    if (after.implied && (after.ticket || !sameDocuments)) {
        MakeSequence(after);
    } else if (!sameDocuments) {
        SetReferences(after.name, DocumentRoot::FixedDocumentSequence, documents);
    }
    if (after.ticket != before.ticket) SetTicket(after.name, PointerTo(after.ticket));
}

void TreeWriter::ApplyDocument(const FixedDocument* pBefore, FixedDocument& after) {
    static const FixedDocument kNone;
    const FixedDocument& before = pBefore == nullptr ? kNone : *pBefore;
    const std::vector<std::string> pages = NamesOf(after.pages);
    if (pages != NamesOf(before.pages)) SetReferences(after.name, DocumentRoot::FixedDocument, pages);
    if (after.ticket != before.ticket) SetTicket(after.name, PointerTo(after.ticket));
}

void TreeWriter::ApplyPage(const FixedPage* pBefore, FixedPage& after) {
    static const FixedPage kNone;
    const FixedPage& before = pBefore == nullptr ? kNone : *pBefore;
    CheckPart(after.name);
    if (after.markup) m_package.Replace(after.name, std::move(*std::exchange(after.markup, std::nullopt)));
    if (after.ticket != before.ticket) SetTicket(after.name, PointerTo(after.ticket));
    if (after.resources != before.resources) SetResources(before, after);
}

void TreeWriter::MakeSequence(FixedDocumentSequence& sequence) {
    sequence.name = m_package.Add(
        sequence.name, kFixedDocumentSequenceContentType,
        NewDocumentMarkup(m_flavour, DocumentRoot::FixedDocumentSequence, NamesOf(sequence.documents)));
    sequence.implied = false;
    std::vector<Relationship> relationships = m_package.Relationships("/");
    for (Relationship& each : relationships) {
        if (!each.external && IsEither(each.type, &Vocabulary::startPart)) each.target = sequence.name;
    }
    m_package.SetRelationships("/", relationships);
}

void TreeWriter::RemoveLost(const XpsTree& before, const XpsTree& after) {
    const Keys kept = KeysOf(after);
    const auto removeUnlessKept = [&](const std::optional<std::string>& name) {
        if (name && !kept.contains(NameKey(*name))) m_package.Remove(*name);
    };
    removeUnlessKept(before.sequence.ticket);
    for (const FixedDocument& document : before.sequence.documents) {
        removeUnlessKept(document.name);
        removeUnlessKept(document.ticket);
        for (const FixedPage& page : document.pages) {
            removeUnlessKept(page.name);
            removeUnlessKept(page.ticket);
        }
    }
}

void TreeWriter::SetTicket(const std::string& source, const std::string* pTarget) {
    std::vector<Relationship> relationships = RelationshipsOf(source);
    std::erase_if(relationships, [](const Relationship& each) {
        return !each.external && IsEither(each.type, &Vocabulary::printTicket);
    });
    AddTo(relationships, VocabularyOf(m_flavour).printTicket, pTarget);
    m_package.SetRelationships(source, relationships);
}

void TreeWriter::SetThumbnail(const std::string* pTarget) {
    std::vector<Relationship> relationships = m_package.Relationships("/");
    std::erase_if(relationships,
                  [](const Relationship& each) { return each.type == kThumbnailRelationship; });
    AddTo(relationships, kThumbnailRelationship, pTarget);
    m_package.SetRelationships("/", relationships);
}

void TreeWriter::SetResources(const FixedPage& before, const FixedPage& after) {
    Keys had;
    for (const std::string& resource : before.resources) had.insert(NameKey(resource));
    Keys lost = had;
    for (const std::string& resource : after.resources) lost.erase(NameKey(resource));

    std::vector<Relationship> relationships = RelationshipsOf(after.name);
    std::erase_if(relationships, [&](const Relationship& each) {
        return IsResource(each) && lost.contains(NameKey(ResolveReference(after.name, each.target)));
    });
    for (const std::string& resource : after.resources) {
        if (had.insert(NameKey(resource)).second)
            AddTo(relationships, VocabularyOf(m_flavour).requiredResource, &resource);
    }
    m_package.SetRelationships(after.name, relationships);
}

void TreeWriter::SetReferences(const std::string& part, DocumentRoot root,
                               const std::vector<std::string>& targets) {
    for (const std::string& target : targets) CheckPart(target);
    const std::string markup = m_package.Read(part);
    m_package.Replace(part, markup.empty() ? NewDocumentMarkup(m_flavour, root, targets)
                                           : WithReferences(markup, part, targets));
}

void TreeWriter::AddTo(std::vector<Relationship>& relationships, std::string_view type,
                       const std::string* pTarget) const {
    if (pTarget == nullptr) return;
    CheckPart(*pTarget);
    relationships.push_back({FreeId(relationships), std::string(type), *pTarget, false});
}

void TreeWriter::CheckPart(const std::string& name) const {
    if (!m_package.Contains(name)) throw common::Error("the tree names a part that is missing", name);
}

std::vector<Relationship> TreeWriter::RelationshipsOf(const std::string& source) const {
    try {
        return m_package.Relationships(source);
    } catch (const common::StorageError&) {
        throw;
    } catch (const common::Error&) {
        // The reader took relationships that cannot be read for none, with a finding.
        return {};
    }
}

}  // namespace devkit::package
