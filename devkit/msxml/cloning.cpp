#include "devkit/msxml/cloning.h"

#include <utility>

#include "devkit/msxml/attributes.h"
#include "devkit/msxml/comerror.h"
#include "devkit/msxml/document.h"
#include "devkit/msxml/element.h"
#include "devkit/msxml/leaves.h"
#include "devkit/msxml/textcontent.h"
#include "devkit/msxml/tree.h"

namespace devkit::msxml {

namespace {

NodeRef CopyElement(const Node& node, Document& document) {
    NodeRef pCopy(new Element(document, node.GetName()));
    for (const Node* pNode = node.Attributes()->pFirst; pNode != nullptr; pNode = pNode->Next()) {
        const NodeRef pAttribute = MakeAttribute(document, pNode->GetName(), RawText(*pNode));
        Tree::Attach(*pCopy.Get(), *pAttribute.Get(), nullptr);
    }
    return pCopy;
}

NodeRef CopyDocument(const Document& document) {
    const platform::ComPtr<Document> pCopy(new Document);
    pCopy->Settings() = document.Settings();
    return NodeRef(pCopy.Get());
}

// The node alone, for the document that is to own it.
NodeRef CopyOne(const Node& node, Document& document) {
    switch (node.Type()) {
        case NODE_ELEMENT:
            return CopyElement(node, document);
        case NODE_ATTRIBUTE:
            return MakeAttribute(document, node.GetName(), RawText(node));
        case NODE_TEXT:
            return MakeText(document, node.Data());
        case NODE_CDATA_SECTION:
            return MakeCdataSection(document, node.Data());
        case NODE_COMMENT:
            return MakeComment(document, node.Data());
        case NODE_PROCESSING_INSTRUCTION:
            return MakeInstruction(document, node.GetName(), node.Data());
        case NODE_ENTITY_REFERENCE:
            return MakeEntityReference(document, node.GetName());
        case NODE_DOCUMENT_FRAGMENT:
            return MakeFragment(document);
        case NODE_DOCUMENT:
            return CopyDocument(node.OwnerDocument());
        default:
            throw ComError{E_NOTIMPL};
    }
}

}  // namespace

NodeRef Clone(const Node& node, bool isDeep) {
    NodeRef pRoot = CopyOne(node, node.OwnerDocument());
    if (!isDeep || node.Type() == NODE_ATTRIBUTE) return pRoot;
    Document& document = pRoot->OwnerDocument();
    // Follows the original in document order with the copy of the last node at hand. It is held, so that
    // keeping a new node below it does not go up the whole tree.
    const Node* pNode = &node;
    NodeRef pCopy = pRoot;
    while (const Node* const pNext = Tree::NextWithin(node, *pNode)) {
        if (pNext->Parent() != pNode) {
            for (const Node* pOpen = pNode; pOpen->Parent() != pNext->Parent(); pOpen = pOpen->Parent()) {
                pCopy = NodeRef(pCopy->Parent());
            }
            pCopy = NodeRef(pCopy->Parent());
        }
        NodeRef pChild = CopyOne(*pNext, document);
        Tree::Attach(*pCopy.Get(), *pChild.Get(), nullptr);
        pNode = pNext;
        pCopy = std::move(pChild);
    }
    return pRoot;
}

}  // namespace devkit::msxml
