#include "devkit/msxml/xpathtree.h"

#include <libxml/xpath.h>

#include <new>

#include "devkit/msxml/attributes.h"
#include "devkit/msxml/document.h"
#include "devkit/msxml/leaves.h"
#include "devkit/msxml/textcontent.h"
#include "devkit/msxml/tree.h"
#include "devkit/msxml/unicode.h"

namespace devkit::msxml {

namespace {

const xmlChar* Chars(const std::string& text) noexcept {
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

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

XPathTree::XPathTree(Node& root)
    : m_pRoot(&root), m_changes(root.OwnerDocument().Changes()), m_pDocument(Checked(xmlNewDoc(nullptr))) {
    // The library takes the first namespace of a document for the one of "xml".
    static_cast<void>(Namespace(Name(L"xml:xml", xmlUri)));
    for (Node* pNode = &root; pNode != nullptr; pNode = Tree::NextWithin(root, *pNode)) Add(*pNode);
    // Numbers the elements, which makes sorting results cheap.
    xmlXPathOrderDocElems(m_pDocument.get());
}

bool XPathTree::IsCurrent(const Node& root) const noexcept {
    return m_pRoot == &root && m_changes == root.OwnerDocument().Changes();
}

xmlNode* XPathTree::LibraryNodeOf(const Node& node) noexcept {
    return static_cast<xmlNode*>(node.pXPathNode);
}

Node* XPathTree::NodeOf(const xmlNode& node) noexcept { return static_cast<Node*>(node._private); }

void XPathTree::Add(Node& node) {
    node.pXPathNode = nullptr;
    if (node.Type() == NODE_DOCUMENT || node.Type() == NODE_DOCUMENT_FRAGMENT) {
        node.pXPathNode = LibraryRoot();
        m_pDocument->_private = &node;
        return;
    }
    const bool isInAttribute = m_pRoot->Type() == NODE_ATTRIBUTE;
    const bool isSeen = !isInAttribute && node.Type() != NODE_ENTITY_REFERENCE && !IsXmlDeclaration(node);
    if (!isSeen) return;
    xmlNode* const pParent = &node == m_pRoot ? LibraryRoot() : LibraryNodeOf(*node.Parent());
    xmlNode* const pCopy = Checked(Copy(node));
    Link(*pParent, *pCopy);
    pCopy->_private = &node;
    node.pXPathNode = pCopy;
    if (node.Type() == NODE_ELEMENT) AddAttributes(node, *pCopy);
}

xmlNode* XPathTree::Copy(const Node& node) {
    xmlDoc* const pDocument = m_pDocument.get();
    const std::string data = Utf8FromWide(node.Data());
    switch (node.Type()) {
        case NODE_ELEMENT:
            return xmlNewDocNode(pDocument, Namespace(*node.GetName()),
                                 Chars(Utf8FromWide(node.GetName()->Local())), nullptr);
        case NODE_CDATA_SECTION:
            return xmlNewCDataBlock(pDocument, Chars(data), static_cast<int>(data.size()));
        case NODE_COMMENT:
            return xmlNewDocComment(pDocument, Chars(data));
        case NODE_PROCESSING_INSTRUCTION:
            return xmlNewDocPI(pDocument, Chars(Utf8FromWide(node.GetName()->Qualified())), Chars(data));
        default:
            return xmlNewDocText(pDocument, Chars(data));
    }
}

void XPathTree::AddAttributes(const Node& element, xmlNode& copy) {
    for (Node* pNode = element.Attributes()->pFirst; pNode != nullptr; pNode = pNode->Next()) {
        pNode->pXPathNode = nullptr;
        for (Node* pText = pNode->Children().pFirst; pText != nullptr; pText = pText->Next()) {
            pText->pXPathNode = nullptr;
        }
        const Name& name = *pNode->GetName();
        if (name.IsDeclaration()) continue;
        xmlAttr* const pAttribute = Checked(xmlNewNsProp(
            &copy, Namespace(name), Chars(Utf8FromWide(name.Local())), Chars(Utf8FromWide(RawText(*pNode)))));
        pAttribute->_private = pNode;
        pNode->pXPathNode = pAttribute;
    }
}

// Null for no namespace.
xmlNs* XPathTree::Namespace(const Name& name) {
    if (name.Uri().empty()) return nullptr;
    xmlNs*& pNamespace = m_namespaces[{std::wstring(name.Prefix()), std::wstring(name.Uri())}];
    if (pNamespace != nullptr) return pNamespace;
    const std::string prefix = Utf8FromWide(name.Prefix());
    const std::string uri = Utf8FromWide(name.Uri());
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
