#include "devkit/msxml/processinginstruction.h"

#include <utility>

#include "devkit/msxml/attributes.h"
#include "devkit/msxml/leaves.h"
#include "devkit/msxml/tree.h"
#include "devkit/msxml/xmldeclaration.h"

namespace devkit::msxml {

ProcessingInstruction::ProcessingInstruction(Document& document, SharedName pTarget) noexcept
    : NodeObject(NODE_PROCESSING_INSTRUCTION, document, std::move(pTarget)) {}

const NodeChain* ProcessingInstruction::Attributes() const noexcept {
    return IsXmlDeclaration(*this) ? &m_attributes : nullptr;
}

void ProcessingInstruction::SetData(std::wstring data) {
    if (!IsXmlDeclaration(*this)) return Node::SetData(std::move(data));
    const XmlDeclaration declaration = ParseXmlDeclaration(data);
    while (m_attributes.pFirst != nullptr) Tree::Detach(*m_attributes.pFirst);
    AddAttribute(L"version", declaration.version);
    if (!declaration.encoding.empty()) AddAttribute(L"encoding", declaration.encoding);
    if (!declaration.standalone.empty()) AddAttribute(L"standalone", declaration.standalone);
    Node::SetData(Format(declaration));
}

void ProcessingInstruction::AddAttribute(std::wstring_view name, const std::wstring& value) {
    const NodeRef pAttribute =
        MakeAttribute(OwnerDocument(), std::make_shared<const Name>(name, std::wstring_view()), value);
    Tree::Attach(*this, *pAttribute.Get(), nullptr);
}

}  // namespace devkit::msxml
