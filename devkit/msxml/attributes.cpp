#include "devkit/msxml/attributes.h"

#include <utility>

#include "devkit/msxml/attribute.h"
#include "devkit/msxml/comerror.h"
#include "devkit/msxml/namespaces.h"
#include "devkit/msxml/textcontent.h"
#include "devkit/msxml/tree.h"

namespace devkit::msxml {

NodeRef MakeAttribute(Document& document, SharedName pName, std::wstring value) {
    NodeRef pAttribute(new Attribute(document, std::move(pName)));
    SetTextContent(*pAttribute.Get(), std::move(value));
    return pAttribute;
}

Node* FindAttribute(const NodeChain& attributes, std::wstring_view qualified) noexcept {
    for (Node* pNode = attributes.pFirst; pNode != nullptr; pNode = pNode->Next()) {
        if (pNode->GetName()->Qualified() == qualified) return pNode;
    }
    return nullptr;
}

Node* FindAttribute(const NodeChain& attributes, std::wstring_view local, std::wstring_view uri) noexcept {
    for (Node* pNode = attributes.pFirst; pNode != nullptr; pNode = pNode->Next()) {
        if (pNode->GetName()->Local() == local && pNode->GetName()->Uri() == uri) return pNode;
    }
    return nullptr;
}

void SetAttributeValue(Node& attribute, std::wstring value) {
    const Node* const pOwner = attribute.Parent();
    if (pOwner != nullptr) {
        if (pOwner->Type() != NODE_ELEMENT) throw ComError{E_FAIL};
        CheckPrefixes(*pOwner, attribute, value);
    }
    SetTextContent(attribute, std::move(value));
}

NodeRef PutAttribute(Node& element, Node& attribute) {
    if (attribute.Parent() != nullptr || element.Type() != NODE_ELEMENT) throw ComError{E_FAIL};
    CheckPrefixes(element, attribute, RawText(attribute));
    const Name& name = *attribute.GetName();
    Node* pOld = FindAttribute(*element.Attributes(), name.Qualified());
    if (pOld == nullptr && !name.Uri().empty()) {
        pOld = FindAttribute(*element.Attributes(), name.Local(), name.Uri());
    }
    NodeRef pReplaced(pOld);
    Node* const pNext = pOld == nullptr ? nullptr : pOld->Next();
    if (pOld != nullptr) Tree::Detach(*pOld);
    Tree::Attach(element, attribute, pNext);
    return pReplaced;
}

}  // namespace devkit::msxml
