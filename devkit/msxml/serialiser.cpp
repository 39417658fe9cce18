#include "devkit/msxml/serialiser.h"

#include "devkit/msxml/attributes.h"
#include "devkit/msxml/document.h"
#include "devkit/msxml/leaves.h"
#include "devkit/msxml/markup.h"
#include "devkit/msxml/namespaces.h"
#include "devkit/msxml/namespacescope.h"
#include "devkit/msxml/textcontent.h"
#include "devkit/msxml/xmldeclaration.h"

namespace devkit::msxml {

namespace {

class Serialiser {
  public:
    explicit Serialiser(DeclaredEncoding encoding) : m_encoding(encoding) {
        m_scope.Enter();
        m_scope.Declare(L"xml", xmlUri);
        m_scope.Declare(L"xmlns", xmlnsUri);
    }

    void Write(const Node& root);
    [[nodiscard]] std::wstring Take() noexcept { return std::move(m_out); }

  private:
    void Open(const Node& node);
    void Close(const Node& node);
    void EndLine(const Document& document);
    void OpenElement(const Node& element);
    void WriteDeclarations(const Node& element);
    void WriteInstruction(const Node& instruction);
    void WriteAttribute(std::wstring_view name, std::wstring_view value);
    void Require(const Name& name);

    DeclaredEncoding m_encoding;
    std::wstring m_out;
    NamespaceScope<std::wstring, std::wstring_view> m_scope;
};

// Walks without recursion: trees made by calls may be of any depth.
void Serialiser::Write(const Node& root) {
    const Node* pNode = &root;
    for (;;) {
        Open(*pNode);
        // An attribute's children are its value, which is written with it.
        if (pNode->Type() != NODE_ATTRIBUTE && pNode->Children().pFirst != nullptr) {
            pNode = pNode->Children().pFirst;
            continue;
        }
        for (;;) {
            Close(*pNode);
            if (pNode == &root) return;
            if (pNode->Parent()->Type() == NODE_DOCUMENT) EndLine(pNode->OwnerDocument());
            if (pNode->Next() != nullptr) break;
            pNode = pNode->Parent();
        }
        pNode = pNode->Next();
    }
}

void Serialiser::Open(const Node& node) {
    switch (node.Type()) {
        case NODE_ELEMENT:
            return OpenElement(node);
        case NODE_ATTRIBUTE:
            return AppendAttribute(m_out, node.GetName()->Qualified(), RawText(node));
        case NODE_TEXT:
            return AppendText(m_out, node.Data());
        case NODE_CDATA_SECTION:
            return AppendCdata(m_out, node.Data());
        case NODE_COMMENT:
            return AppendComment(m_out, node.Data());
        case NODE_PROCESSING_INSTRUCTION:
            return WriteInstruction(node);
        case NODE_ENTITY_REFERENCE:
            m_out.append(L"&").append(node.GetName()->Qualified()).append(L";");
            return;
        default:
            return;  // a document and a fragment are their children
    }
}

void Serialiser::Close(const Node& node) {
    if (node.Type() != NODE_ELEMENT) return;
    if (node.Children().pFirst != nullptr)
        m_out.append(L"</").append(node.GetName()->Qualified()).append(L">");
    m_scope.Leave();
}

void Serialiser::EndLine(const Document& document) {
    if (!document.Settings().preserveWhiteSpace) m_out += L"\r\n";
}

void Serialiser::OpenElement(const Node& element) {
    m_scope.Enter();
    m_out.append(L"<").append(element.GetName()->Qualified());
    WriteDeclarations(element);
    for (const Node* pNode = element.Attributes()->pFirst; pNode != nullptr; pNode = pNode->Next()) {
        const std::wstring value = RawText(*pNode);
        if (pNode->GetName()->IsDeclaration() && !IsInForce(element, *pNode->GetName(), value)) continue;
        WriteAttribute(pNode->GetName()->Qualified(), value);
    }
    m_out += element.Children().pFirst == nullptr ? L"/>" : L">";
}

// Notes what the element declares, then declares what it uses beyond that.
void Serialiser::WriteDeclarations(const Node& element) {
    bool hasDefault = false;
    for (const Node* pNode = element.Attributes()->pFirst; pNode != nullptr; pNode = pNode->Next()) {
        const Name& name = *pNode->GetName();
        if (!name.IsDeclaration()) continue;
        const std::wstring value = RawText(*pNode);
        if (!IsInForce(element, name, value)) continue;
        hasDefault = hasDefault || name.DeclaredPrefix().empty();
        m_scope.Declare(name.DeclaredPrefix(), value);
    }
    // A default namespace that was put on an element without a namespace is left to have its way.
    if (!hasDefault || !element.GetName()->Prefix().empty()) Require(*element.GetName());
    for (const Node* pNode = element.Attributes()->pFirst; pNode != nullptr; pNode = pNode->Next()) {
        if (!pNode->GetName()->Prefix().empty()) Require(*pNode->GetName());
    }
}

void Serialiser::Require(const Name& name) {
    const std::wstring* const pBound = m_scope.Find(name.Prefix());
    if (pBound == nullptr ? name.Prefix().empty() && name.Uri().empty() : *pBound == name.Uri()) return;
    m_scope.Declare(name.Prefix(), name.Uri());
    const std::wstring declaration =
        name.Prefix().empty() ? L"xmlns" : L"xmlns:" + std::wstring(name.Prefix());
    WriteAttribute(declaration, name.Uri());
}

void Serialiser::WriteAttribute(std::wstring_view name, std::wstring_view value) {
    m_out += L' ';
    AppendAttribute(m_out, name, value);
}

void Serialiser::WriteInstruction(const Node& instruction) {
    std::wstring data = instruction.Data();
    if (IsXmlDeclaration(instruction) && m_encoding == DeclaredEncoding::Dropped) {
        XmlDeclaration declaration = ParseXmlDeclaration(data);
        declaration.encoding.clear();
        data = Format(declaration);
    }
    AppendInstruction(m_out, instruction.GetName()->Qualified(), data);
}

}  // namespace

std::wstring Serialise(const Node& node, DeclaredEncoding encoding) {
    Serialiser serialiser(encoding);
    serialiser.Write(node);
    return serialiser.Take();
}

}  // namespace devkit::msxml
