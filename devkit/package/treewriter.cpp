#include "devkit/package/treewriter.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "devkit/package/documentmarkup.h"
#include "devkit/package/partname.h"

namespace devkit::package {

namespace {

using Keys = std::unordered_set<std::string>;

std::vector<std::string> NamesOf(const auto& nodes) {
    std::vector<std::string> names;
    for (const auto& node : nodes) names.push_back(node.name);
    return names;
}

template <typename Nodes>
bool HaveSameNames(const Nodes& left, const Nodes& right) {
    using Node = typename Nodes::value_type;
    return std::ranges::equal(left, right, {}, &Node::name, &Node::name);
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

// Null behind the end.
auto At(const auto& nodes, std::size_t place) { return place < nodes.size() ? &nodes[place] : nullptr; }

template <typename Node>
const Node& OrElse(const Node* pNode, const Node& other) {
    return pNode == nullptr ? other : *pNode;
}

// Finds the documents and pages of a tree. Nearly all are looked for at the place where they stand; the
// others by the keys of their names, for which an index is made when the first of them is.
class Finder {
  public:
    explicit Finder(const XpsTree& tree) noexcept : m_documents(tree.sequence.documents) {}

    [[nodiscard]] const FixedDocument* Document(std::size_t place, const std::string& name) {
        return Find(At(m_documents, place), name, &Index::documents);
    }
    [[nodiscard]] const FixedPage* Page(std::size_t document, std::size_t place, const std::string& name) {
        const FixedDocument* const pDocument = At(m_documents, document);
        return Find(pDocument == nullptr ? nullptr : At(pDocument->pages, place), name, &Index::pages);
    }

  private:
    template <typename Node>
    using ByKey = std::unordered_map<std::string, const Node*>;
    struct Index {
        ByKey<FixedDocument> documents;
        ByKey<FixedPage> pages;
    };

    template <typename Node>
    const Node* Find(const Node* pAtPlace, const std::string& name, ByKey<Node> Index::*nodes) {
        if (pAtPlace != nullptr && pAtPlace->name == name) return pAtPlace;
        if (!m_index) MakeIndex();
        const auto found = ((*m_index).*nodes).find(NameKey(name));
        return found == ((*m_index).*nodes).end() ? nullptr : found->second;
    }
    void MakeIndex() {
        m_index.emplace();
        for (const FixedDocument& document : m_documents) {
            m_index->documents.emplace(NameKey(document.name), &document);
            for (const FixedPage& page : document.pages) m_index->pages.emplace(NameKey(page.name), &page);
        }
    }

    const std::vector<FixedDocument>& m_documents;
    std::optional<Index> m_index;
};

// Tickets, documents and pages that do not stand any more where they stood. They may stand elsewhere.
std::vector<const std::string*> NamesMoved(const FixedDocumentSequence& before,
                                           const FixedDocumentSequence& after) {
    static const FixedDocument kNoDocument;
    static const FixedPage kNoPage;
    std::vector<const std::string*> moved;
    const auto compare = [&moved](const auto& was, const auto& is) {
        if (was.name != is.name) moved.push_back(&was.name);
        if (was.ticket && was.ticket != is.ticket) moved.push_back(&*was.ticket);
    };
    if (before.ticket && before.ticket != after.ticket) moved.push_back(&*before.ticket);
    for (std::size_t i = 0; i < before.documents.size(); ++i) {
        const FixedDocument& was = before.documents[i];
        const FixedDocument& is = OrElse(At(after.documents, i), kNoDocument);
        compare(was, is);
        for (std::size_t j = 0; j < was.pages.size(); ++j)
            compare(was.pages[j], OrElse(At(is.pages, j), kNoPage));
    }
    return moved;
}

const std::string* PointerTo(const std::optional<std::string>& name) { return name ? &*name : nullptr; }

bool IsResource(const Relationship& relationship) {
    return !relationship.external && (IsEither(relationship.type, &Vocabulary::requiredResource) ||
                                      IsEither(relationship.type, &Vocabulary::restrictedFont));
}

}  // namespace

void TreeWriter::Apply(const XpsTree& before, XpsTree& after) {
    Finder finder(before);
    ApplySequence(before.sequence, after.sequence);
    for (std::size_t i = 0; i < after.sequence.documents.size(); ++i) {
        FixedDocument& document = after.sequence.documents[i];
        ApplyDocument(finder.Document(i, document.name), document);
        for (std::size_t j = 0; j < document.pages.size(); ++j)
            ApplyPage(finder.Page(i, j, document.pages[j].name), document.pages[j]);
    }
    if (after.thumbnail != before.thumbnail) SetThumbnail(PointerTo(after.thumbnail));
    RemoveLost(before, after);
}

void TreeWriter::ApplySequence(const FixedDocumentSequence& before, FixedDocumentSequence& after) {
    const bool sameDocuments = HaveSameNames(before.documents, after.documents);
    if (after.implied && (after.ticket || !sameDocuments)) {
        MakeSequence(after);
    } else if (!sameDocuments) {
        SetReferences(after.name, DocumentRoot::FixedDocumentSequence, NamesOf(after.documents));
    }
    if (after.ticket != before.ticket) SetTicket(after.name, PointerTo(after.ticket));
}

void TreeWriter::ApplyDocument(const FixedDocument* pBefore, FixedDocument& after) {
    static const FixedDocument kNone;
    const FixedDocument& before = OrElse(pBefore, kNone);
    if (!HaveSameNames(before.pages, after.pages))
        SetReferences(after.name, DocumentRoot::FixedDocument, NamesOf(after.pages));
    if (after.ticket != before.ticket) SetTicket(after.name, PointerTo(after.ticket));
}

void TreeWriter::ApplyPage(const FixedPage* pBefore, FixedPage& after) {
    static const FixedPage kNone;
    const FixedPage& before = OrElse(pBefore, kNone);
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
    const std::vector<const std::string*> moved = NamesMoved(before.sequence, after.sequence);
    if (moved.empty()) return;
    const Keys kept = KeysOf(after);
    for (const std::string* const pName : moved) {
        if (!kept.contains(NameKey(*pName))) m_package.Remove(*pName);
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
