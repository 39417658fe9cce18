#include "devkit/msxml/leaves.h"

#include <utility>

#include "devkit/msxml/characterdata.h"
#include "devkit/msxml/processinginstruction.h"

namespace devkit::msxml {

namespace {

class DocumentFragment final : public NodeObject<IXMLDOMDocumentFragment> {
  public:
    explicit DocumentFragment(Document& document) noexcept
        : NodeObject(NODE_DOCUMENT_FRAGMENT, document, nullptr) {}
};

class EntityReference final : public NodeObject<IXMLDOMEntityReference> {
  public:
    EntityReference(Document& document, SharedName pName) noexcept
        : NodeObject(NODE_ENTITY_REFERENCE, document, std::move(pName)) {}
};

NodeRef WithData(Node* pNode, std::wstring data) {
    NodeRef owner(pNode);
    owner->SetData(std::move(data));
    return owner;
}

}  // namespace

NodeRef MakeText(Document& document, std::wstring data) {
    return WithData(new Text(document), std::move(data));
}

NodeRef MakeCdataSection(Document& document, std::wstring data) {
    return WithData(new CdataSection(document), std::move(data));
}

NodeRef MakeComment(Document& document, std::wstring data) {
    return WithData(new Comment(document), std::move(data));
}

NodeRef MakeFragment(Document& document) { return NodeRef(new DocumentFragment(document)); }

NodeRef MakeEntityReference(Document& document, SharedName pName) {
    return NodeRef(new EntityReference(document, std::move(pName)));
}

NodeRef MakeInstruction(Document& document, SharedName pTarget, std::wstring data) {
    return WithData(new ProcessingInstruction(document, std::move(pTarget)), std::move(data));
}

bool IsXmlDeclaration(const Node& node) noexcept {
    return node.Type() == NODE_PROCESSING_INSTRUCTION && node.GetName()->Qualified() == L"xml";
}

}  // namespace devkit::msxml
