#include "devkit/msxml/text/serialiser.h"

#include "devkit/msxml/text/encoding.h"
#include "devkit/msxml/text/markup.h"
#include "devkit/msxml/text/namespacescope.h"
#include "devkit/msxml/tree/attributes.h"
#include "devkit/msxml/tree/data.h"
#include "devkit/msxml/tree/xmldeclaration.h"

namespace devkit::msxml {

namespace {

class Serialiser {
  public:
    explicit Serialiser(Output output) : m_output(output) {
        m_scope.Enter();
        m_scope.Declare(L"xml", kXmlUri);
        m_scope.Declare(L"xmlns", kXmlnsUri);
    }

    void Write(const Node& root);
    [[nodiscard]] std::wstring Take() noexcept { return std::move(m_out); }

  private:
    void Open(const Node& node);
    void Close(const Node& node);
    void EndLine(const Document& document);
    void Indent(bool hasSpace);
    void OpenElement(const Node& element);
    void WriteDeclarations(const Node& element);
    void WriteInstruction(const Node& instruction);
    void WriteAttribute(std::wstring_view name, std::wstring_view value);
    void Require(const Name& name);

    Output m_output;
    std::size_t m_depth = 0;  // of open elements
    std::wstring m_out;
    std::wstring m_room;
    NamespaceScope<std::wstring, std::wstring_view> m_scope;
};

// Walks without recursion: trees made by calls may be of any depth.
void Serialiser::Write(const Node& root) {
    const Node* pNode = &root;
    for (;;) {
        if (pNode != &root) Indent(pNode->hasSpaceBefore);
        Open(*pNode);
        // An attribute's children are its value, which is written with it.
        if (!pNode->Is(Kind::Attribute) && pNode->Children().pFirst != nullptr) {
            pNode = pNode->Children().pFirst;
            continue;
        }
        for (;;) {
            Close(*pNode);
            if (pNode == &root) return;
            if (pNode->Parent()->Is(Kind::Document)) EndLine(pNode->OwnerDocument());
            if (pNode->Next() != nullptr) break;
            pNode = pNode->Parent();
        }
        pNode = pNode->Next();
    }
}

void Serialiser::Open(const Node& node) {
    switch (node.What()) {
        case Kind::Element:
            return OpenElement(node);
        case Kind::Attribute:
            return AppendAttribute(m_out, node.GetName()->Qualified(), RawText(node, m_room));
        case Kind::Text:
            return AppendText(m_out, node.Data(), m_output == Output::Shown ? L"\r\n" : L"\n");
        case Kind::CdataSection:
            return AppendCdata(m_out, node.Data());
        case Kind::Comment:
            return AppendComment(m_out, node.Data());
        case Kind::Instruction:
            return WriteInstruction(node);
        case Kind::EntityReference:
            m_out.append(L"&").append(node.GetName()->Qualified()).append(L";");
            return;
        default:
            return;  // a document and a fragment are their children
    }
}

void Serialiser::Close(const Node& node) {
    if (!node.Is(Kind::Element)) return;
    --m_depth;
    if (node.Children().pFirst != nullptr) {
        Indent(node.hasSpaceAtEnd);
        m_out.append(L"</").append(node.GetName()->Qualified()).append(L">");
    }
    m_scope.Leave();
}

// Stands for white space that was dropped.
void Serialiser::Indent(bool hasSpace) {
    if (hasSpace && m_output == Output::Shown) m_out.append(L"\r\n").append(m_depth, L'\t');
}

void Serialiser::EndLine(const Document& document) {
    if (!document.preservesWhiteSpace) m_out += L"\r\n";
}

void Serialiser::OpenElement(const Node& element) {
    m_scope.Enter();
    m_out.append(L"<").append(element.GetName()->Qualified());
    WriteDeclarations(element);
    for (const Node* pNode = element.Attributes().pFirst; pNode != nullptr; pNode = pNode->Next()) {
        const std::wstring_view value = RawText(*pNode, m_room);
        if (pNode->GetName()->IsDeclaration() && !IsInForce(element, *pNode->GetName(), value)) continue;
        WriteAttribute(pNode->GetName()->Qualified(), value);
    }
    m_out += element.Children().pFirst == nullptr ? L"/>" : L">";
    ++m_depth;
}

// Notes what the element declares, then declares what it uses beyond that.
void Serialiser::WriteDeclarations(const Node& element) {
    bool hasDefault = false;
    for (const Node* pNode = element.Attributes().pFirst; pNode != nullptr; pNode = pNode->Next()) {
        const Name& name = *pNode->GetName();
        if (!name.IsDeclaration()) continue;
        const std::wstring_view value = RawText(*pNode, m_room);
        if (!IsInForce(element, name, value)) continue;
        hasDefault = hasDefault || name.DeclaredPrefix().empty();
        m_scope.Declare(name.DeclaredPrefix(), value);
    }
    // A default namespace that was put on an element without a namespace is left to have its way.
    if (!hasDefault || !element.GetName()->Prefix().empty()) Require(*element.GetName());
    for (const Node* pNode = element.Attributes().pFirst; pNode != nullptr; pNode = pNode->Next()) {
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
    if (instruction.IsXmlDeclaration()) {
        // Its attributes may have been removed.
        XmlDeclaration declaration = data.starts_with(L"version")
                                         ? ParseXmlDeclaration(data)
                                         : ParseXmlDeclaration(L"version=\"1.0\" " + data);
        if (m_output == Output::Shown && !IsUtf16(declaration.encoding)) declaration.encoding.clear();
        data = Format(declaration);
    }
    AppendInstruction(m_out, instruction.GetName()->Qualified(), data);
}

}  // namespace

std::wstring Serialise(const Node& node, Output output) {
    Serialiser serialiser(output);
    serialiser.Write(node);
    return serialiser.Take();
}

std::string SavedBytes(const Document& document) {
    const Node* const pDeclaration = document.Declaration();
    const Node* const pEncoding =
        pDeclaration == nullptr ? nullptr : FindAttribute(*pDeclaration, L"encoding");
    const std::wstring text = Serialise(document, Output::Saved);
    if (text.empty()) return {};
    return Encode(text, pEncoding == nullptr ? L"utf-8" : RawText(*pEncoding));
}

}  // namespace devkit::msxml
