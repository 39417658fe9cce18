#include "devkit/msxml/treebuilder.h"

#include <algorithm>
#include <utility>

#include "devkit/msxml/attributes.h"
#include "devkit/msxml/comerror.h"
#include "devkit/msxml/document.h"
#include "devkit/msxml/element.h"
#include "devkit/msxml/leaves.h"
#include "devkit/msxml/tree.h"
#include "devkit/msxml/unicode.h"

namespace devkit::msxml {

namespace {

constexpr std::string_view narrowXmlUri = "http://www.w3.org/XML/1998/namespace";
constexpr std::string_view narrowXmlnsUri = "http://www.w3.org/2000/xmlns/";

bool IsDeclaration(std::string_view name) noexcept { return name == "xmlns" || name.starts_with("xmlns:"); }

// Empty for a name without a colon. The parser has checked the characters, but it takes colons anywhere.
std::string_view PrefixOf(std::string_view qualified) {
    const std::size_t colon = qualified.find(':');
    if (colon == std::string_view::npos) return {};
    if (colon == 0) throw BuildFailure{XmlBadStartNameChar, {}};
    const std::string_view local = qualified.substr(colon + 1);
    if (local.find(':') != std::string_view::npos) throw BuildFailure{XmlMultipleColons, {}};
    // What starts a name is known to the wide check, which knows no colon.
    if (local.empty()) throw BuildFailure{XmlBadStartNameChar, {}};
    try {
        CheckQualifiedName(WideFromUtf8(local));
    } catch (const ComError&) {
        throw BuildFailure{XmlBadStartNameChar, {}};
    }
    return qualified.substr(0, colon);
}

// No two attributes may have the same local name in the same namespace.
void CheckDistinct(const NodeChain& attributes) {
    using Key = std::pair<std::wstring_view, std::wstring_view>;
    std::vector<Key> keys;
    for (const Node* pNode = attributes.pFirst; pNode != nullptr; pNode = pNode->Next()) {
        const Name& name = *pNode->GetName();
        if (!name.Prefix().empty()) keys.emplace_back(name.Uri(), name.Local());
    }
    std::sort(keys.begin(), keys.end());
    if (std::adjacent_find(keys.begin(), keys.end()) != keys.end())
        throw BuildFailure{XmlDuplicateAttribute, {}};
}

}  // namespace

TreeBuilder::TreeBuilder(Document& document)
    : m_document(document), m_pCurrent(&document), m_preserves{document.Settings().preserveWhiteSpace} {
    m_scope.Enter();
    m_scope.Declare("xml", narrowXmlUri);
    m_scope.Declare("xmlns", narrowXmlnsUri);
}

void TreeBuilder::Declaration(std::string_view data) {
    try {
        Append(MakeInstruction(m_document, ValidTarget(L"xml"), WideFromUtf8(data)));
    } catch (const ComError&) {
        throw BuildFailure{XmlBadDeclaration, {}};
    }
}

void TreeBuilder::StartElement(std::string_view name, const std::vector<RawAttribute>& attributes) {
    FlushText();
    const long limit = m_document.Settings().maxElementDepth;
    if (limit != 0 && m_preserves.size() > static_cast<std::size_t>(limit))
        throw BuildFailure{XmlElementDepth, {}};
    m_scope.Enter();
    for (const RawAttribute& attribute : attributes) Declare(attribute);
    const NodeRef pElement(new Element(m_document, ElementName(name)));
    AddAttributes(*pElement.Get(), attributes);
    Append(pElement);
    m_pCurrent = pElement;
    m_preserves.push_back(PreservesSpace(attributes));
}

void TreeBuilder::EndElement() {
    FlushText();
    m_pCurrent = NodeRef(m_pCurrent->Parent());
    m_preserves.pop_back();
    m_scope.Leave();
}

void TreeBuilder::Characters(std::string_view text) { m_text += text; }

void TreeBuilder::Cdata(std::string_view text) {
    FlushText();
    Append(MakeCdataSection(m_document, WideFromUtf8(text)));
}

void TreeBuilder::Comment(std::string_view text) {
    FlushText();
    Append(MakeComment(m_document, WideFromUtf8(text)));
}

void TreeBuilder::Instruction(std::string_view target, std::string_view data) {
    FlushText();
    Append(MakeInstruction(m_document, Intern(target, {}), WideFromUtf8(data)));
}

void TreeBuilder::FlushText() {
    if (m_text.empty()) return;
    std::wstring text = WideFromUtf8(std::exchange(m_text, {}));
    const bool isKept = m_pCurrent->Type() == NODE_ELEMENT && (m_preserves.back() || !IsWhiteSpace(text));
    if (isKept) Append(MakeText(m_document, std::move(text)));
}

void TreeBuilder::Append(const NodeRef& pNode) { Tree::Attach(*m_pCurrent.Get(), *pNode.Get(), nullptr); }

void TreeBuilder::Declare(const RawAttribute& attribute) {
    if (!IsDeclaration(attribute.name)) return;
    const std::string_view prefix =
        PrefixOf(attribute.name).empty() ? std::string_view() : attribute.name.substr(6);
    const bool isXmlPrefix = prefix == "xml";
    const bool isXmlUri = attribute.value == narrowXmlUri;
    if (prefix == "xmlns" || isXmlPrefix != isXmlUri || attribute.value == narrowXmlnsUri) {
        throw BuildFailure{XmlReservedNamespace, {}};
    }
    if (!prefix.empty() && attribute.value.empty())
        throw BuildFailure{XmlPrefixUndeclared, std::string(prefix)};
    m_scope.Declare(prefix, attribute.value);
}

void TreeBuilder::AddAttributes(Node& element, const std::vector<RawAttribute>& attributes) {
    for (const RawAttribute& attribute : attributes) {
        const NodeRef pAttribute =
            MakeAttribute(m_document, AttributeName(attribute.name), WideFromUtf8(attribute.value));
        Tree::Attach(element, *pAttribute.Get(), nullptr);
    }
    CheckDistinct(*element.Attributes());
}

bool TreeBuilder::PreservesSpace(const std::vector<RawAttribute>& attributes) const {
    for (const RawAttribute& attribute : attributes) {
        if (attribute.name == "xml:space") return attribute.value == "preserve" || m_preserves.front();
    }
    return m_preserves.back();
}

const SharedName& TreeBuilder::ElementName(std::string_view qualified) {
    const std::string_view prefix = PrefixOf(qualified);
    if (prefix == "xmlns") throw BuildFailure{XmlReservedNamespace, {}};
    const std::string* const pUri = m_scope.Find(prefix);
    if (pUri == nullptr && !prefix.empty()) throw BuildFailure{XmlPrefixUndeclared, std::string(prefix)};
    return Intern(qualified, pUri == nullptr ? std::string_view() : *pUri);
}

const SharedName& TreeBuilder::AttributeName(std::string_view qualified) {
    if (IsDeclaration(qualified)) return Intern(qualified, narrowXmlnsUri);
    const std::string_view prefix = PrefixOf(qualified);
    if (prefix.empty()) return Intern(qualified, {});
    const std::string* const pUri = m_scope.Find(prefix);
    if (pUri == nullptr) throw BuildFailure{XmlPrefixUndeclared, std::string(prefix)};
    return Intern(qualified, *pUri);
}

const SharedName& TreeBuilder::Intern(std::string_view qualified, std::string_view uri) {
    std::vector<KnownName>& known = m_names[std::string(qualified)];
    for (const KnownName& name : known) {
        if (name.uri == uri) return name.pName;
    }
    known.push_back(
        {std::string(uri), std::make_shared<const Name>(WideFromUtf8(qualified), WideFromUtf8(uri))});
    return known.back().pName;
}

}  // namespace devkit::msxml
