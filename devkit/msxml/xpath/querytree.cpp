#include "devkit/msxml/xpath/querytree.h"

#include <libxml/xpath.h>

#include <new>

#include "devkit/msxml/tree/data.h"
#include "platform/utf.h"

namespace devkit::msxml {

namespace {

template <typename Object>
Object* Checked(Object* pObject) {
    if (pObject == nullptr) throw std::bad_alloc();
    return pObject;
}

// The library's own way to add a child joins text nodes, which have to stay apart here.
void Link(xmlNode& parent, xmlNode& child) noexcept {
    child.parent = &parent;
    child.prev = parent.last;
    (parent.last != nullptr ? parent.last->next : parent.children) = &child;
    parent.last = &child;
}

}  // namespace

QueryTree::QueryTree(Node& root)
    : m_pRoot(&root), m_changes(root.OwnerDocument().Changes()), m_pDocument(Checked(xmlNewDoc(nullptr))) {
    // The library takes the first namespace of a document for the one of "xml".
    static_cast<void>(Namespace(Name(L"xml:xml", kXmlUri)));
    for (Node* pNode = &root; pNode != nullptr; pNode = pNode->NextWithin(root)) Add(*pNode);
    // Numbers the elements, which makes sorting results cheap.
    xmlXPathOrderDocElems(m_pDocument.get());
}

bool QueryTree::IsCurrent(const Node& root) const noexcept {
    return m_pRoot == &root && m_changes == root.OwnerDocument().Changes();
}

xmlNode* QueryTree::LibraryNodeOf(const Node& node) noexcept {
    return static_cast<xmlNode*>(node.pQueryNode);
}

Node* QueryTree::NodeOf(const xmlNode& node) noexcept { return static_cast<Node*>(node._private); }

void QueryTree::Add(Node& node) {
    node.pQueryNode = nullptr;
    if (node.Is(Kind::Document) || node.Is(Kind::Fragment)) {
        node.pQueryNode = LibraryRoot();
        m_pDocument->_private = &node;
        return;
    }
    const bool isInAttribute = m_pRoot->Is(Kind::Attribute);
    const bool isSeen = !isInAttribute && !node.Is(Kind::EntityReference) && !node.IsXmlDeclaration();
    if (!isSeen) return;
    xmlNode* const pParent = &node == m_pRoot ? LibraryRoot() : LibraryNodeOf(*node.Parent());
    xmlNode* const pCopy = Checked(Copy(node));
    Link(*pParent, *pCopy);
    pCopy->_private = &node;
    node.pQueryNode = pCopy;
    if (node.Is(Kind::Element)) AddAttributes(node, *pCopy);
}

xmlNode* QueryTree::Copy(const Node& node) {
    xmlDoc* const pDocument = m_pDocument.get();
    const std::string data = platform::ToUtf8(node.Data());
    switch (node.What()) {
        case Kind::Element:
            return xmlNewDocNode(pDocument, Namespace(*node.GetName()),
                                 Chars(platform::ToUtf8(node.GetName()->Local())), nullptr);
        case Kind::CdataSection:
            return xmlNewCDataBlock(pDocument, Chars(data), static_cast<int>(data.size()));
        case Kind::Comment:
            return xmlNewDocComment(pDocument, Chars(data));
        case Kind::Instruction:
            return xmlNewDocPI(pDocument, Chars(platform::ToUtf8(node.GetName()->Qualified())), Chars(data));
        default:
            return xmlNewDocText(pDocument, Chars(data));
    }
}

void QueryTree::AddAttributes(const Node& element, xmlNode& copy) {
    for (Node* pNode = element.Attributes().pFirst; pNode != nullptr; pNode = pNode->Next()) {
        pNode->pQueryNode = nullptr;
        for (Node* pText = pNode->Children().pFirst; pText != nullptr; pText = pText->Next()) {
            pText->pQueryNode = nullptr;
        }
        const Name& name = *pNode->GetName();
        if (name.IsDeclaration()) continue;
        xmlAttr* const pAttribute =
            Checked(xmlNewNsProp(&copy, Namespace(name), Chars(platform::ToUtf8(name.Local())),
                                 Chars(platform::ToUtf8(RawText(*pNode)))));
        pAttribute->_private = pNode;
        pNode->pQueryNode = pAttribute;
    }
}

// Null for no namespace.
xmlNs* QueryTree::Namespace(const Name& name) {
    if (name.Uri().empty()) return nullptr;
    xmlNs*& pNamespace = m_namespaces[{std::wstring(name.Prefix()), std::wstring(name.Uri())}];
    if (pNamespace != nullptr) return pNamespace;
    const std::string prefix = platform::ToUtf8(name.Prefix());
    const std::string uri = platform::ToUtf8(name.Uri());
    // An unlinked namespace, since the library refuses to make one for "xml".
    auto* const pNew = static_cast<xmlNs*>(xmlMalloc(sizeof(xmlNs)));
    *Checked(pNew) = {};
    pNew->type = XML_LOCAL_NAMESPACE;
    pNew->href = xmlStrdup(Chars(uri));
    pNew->prefix = prefix.empty() ? nullptr : xmlStrdup(Chars(prefix));
    (m_pLastNamespace == nullptr ? m_pDocument->oldNs : m_pLastNamespace->next) = pNew;
    m_pLastNamespace = pNew;
    pNamespace = pNew;
    return pNew;
}

}  // namespace devkit::msxml
