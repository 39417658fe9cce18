#include "devkit/msxml/text/treebuilder.h"

#include <algorithm>
#include <utility>

#include "devkit/msxml/tree/attributes.h"
#include "devkit/msxml/tree/characters.h"
#include "devkit/msxml/tree/data.h"
#include "platform/utf.h"

namespace devkit::msxml {

namespace {

using platform::ToUtf16;

constexpr std::string_view kNarrowXmlUri = "http://www.w3.org/XML/1998/namespace";
constexpr std::string_view kNarrowXmlnsUri = "http://www.w3.org/2000/xmlns/";

BuildFailure UndeclaredPrefix(std::string_view prefix) {
    return {XmlPrefixUndeclared, "Undeclared namespace prefix: " + std::string(prefix)};
}

// Empty for a name without a colon. The parser has checked the characters, but it takes colons anywhere.
std::string_view PrefixOf(std::string_view qualified) {
    const std::size_t colon = qualified.find(':');
    if (colon == std::string_view::npos) return {};
    try {
        CheckQualifiedName(ToUtf16(qualified));
    } catch (const Refused& refusal) {
        throw BuildFailure{refusal.code, "A name is malformed: " + std::string(qualified)};
    }
    return qualified.substr(0, colon);
}

// No two attributes may have the same local name in the same namespace.
void CheckDistinct(const NodeChain& attributes) {
    if (attributes.count < 2) return;
    using Key = std::pair<std::wstring_view, std::wstring_view>;
    std::vector<Key> keys;
    for (const Node* pNode = attributes.pFirst; pNode != nullptr; pNode = pNode->Next()) {
        const Name& name = *pNode->GetName();
        if (!name.Prefix().empty()) keys.emplace_back(name.Uri(), name.Local());
    }
    std::sort(keys.begin(), keys.end());
    if (std::adjacent_find(keys.begin(), keys.end()) != keys.end()) {
        throw BuildFailure{XmlDuplicateAttribute, "An attribute stands twice"};
    }
}

}  // namespace

TreeBuilder::TreeBuilder(Document& document, long maxElementDepth)
    : m_document(document),
      m_maxElementDepth(maxElementDepth),
      m_pCurrent(&document),
      m_preserves{document.preservesWhiteSpace} {
    m_scope.Enter();
    m_scope.Declare("xml", kNarrowXmlUri);
    m_scope.Declare("xmlns", kNarrowXmlnsUri);
}

void TreeBuilder::Declaration(std::string_view data) {
    try {
        Append(MakeDeclaration(m_document, ToUtf16(data)));
    } catch (const Refused& refusal) {
        throw BuildFailure{refusal.code, "The XML declaration is malformed"};
    }
}

void TreeBuilder::StartElement(std::string_view name, const std::vector<RawAttribute>& attributes) {
    FlushText();
    const bool isTooDeep =
        m_maxElementDepth != 0 && m_preserves.size() > static_cast<std::size_t>(m_maxElementDepth);
    if (isTooDeep) throw BuildFailure{XmlElementDepth, "Elements are nested deeper than MaxElementDepth"};
    m_scope.Enter();
    for (const RawAttribute& attribute : attributes) Declare(attribute);
    NodeRef pElement = MakeNode(Kind::Element, m_document, ElementName(name));
    AddAttributes(*pElement, attributes);
    Append(pElement);
    m_pCurrent = std::move(pElement);
    m_preserves.push_back(PreservesSpace(attributes));
}

void TreeBuilder::EndElement() {
    FlushText();
    m_pCurrent->hasSpaceAtEnd = std::exchange(m_hasDroppedSpace, false);
    m_pCurrent = NodeRef(m_pCurrent->Parent());
    m_preserves.pop_back();
    m_scope.Leave();
}

void TreeBuilder::Cdata(std::string_view text) {
    FlushText();
    Append(MakeNode(Kind::CdataSection, m_document, nullptr, ToUtf16(text)));
}

void TreeBuilder::Comment(std::string_view text) {
    FlushText();
    Append(MakeNode(Kind::Comment, m_document, nullptr, ToUtf16(text)));
}

void TreeBuilder::Instruction(std::string_view target, std::string_view data) {
    FlushText();
    Append(MakeNode(Kind::Instruction, m_document, ValidTarget(ToUtf16(target)), ToUtf16(data)));
}

void TreeBuilder::FlushText() {
    if (m_text.empty()) return;
    std::wstring text = ToUtf16(m_text);
    m_text.clear();
    if (!m_pCurrent->Is(Kind::Element)) return;
    if (m_preserves.back() || !IsWhiteSpace(text)) {
        Append(MakeNode(Kind::Text, m_document, nullptr, std::move(text)));
    } else {
        m_hasDroppedSpace = true;
    }
}

void TreeBuilder::Append(const NodeRef& pNode) {
    pNode->hasSpaceBefore = std::exchange(m_hasDroppedSpace, false);
    m_pCurrent->Attach(*pNode, nullptr);
}

void TreeBuilder::Declare(const RawAttribute& attribute) {
    if (!Known(attribute.name).isDeclaration) return;
    const std::string_view prefix = attribute.name.size() > 6 ? attribute.name.substr(6) : std::string_view();
    const bool isXmlPrefix = prefix == "xml";
    const bool isXmlUri = attribute.value == kNarrowXmlUri;
    if (prefix == "xmlns" || isXmlPrefix != isXmlUri || attribute.value == kNarrowXmlnsUri) {
        throw BuildFailure{XmlReservedNamespace, "A reserved prefix or namespace is declared"};
    }
    if (!prefix.empty() && attribute.value.empty()) throw UndeclaredPrefix(prefix);
    m_scope.Declare(prefix, attribute.value);
}

void TreeBuilder::AddAttributes(Node& element, const std::vector<RawAttribute>& attributes) {
    for (const RawAttribute& attribute : attributes) {
        const NodeRef pAttribute =
            MakeNode(Kind::Attribute, m_document, AttributeName(attribute.name), ToUtf16(attribute.value));
        element.Attach(*pAttribute, nullptr);
    }
    CheckDistinct(element.Attributes());
}

bool TreeBuilder::PreservesSpace(const std::vector<RawAttribute>& attributes) const {
    for (const RawAttribute& attribute : attributes) {
        if (attribute.name == "xml:space") return attribute.value == "preserve" || m_preserves.front();
    }
    return m_preserves.back();
}

TreeBuilder::KnownName& TreeBuilder::Known(std::string_view qualified) {
    const auto place = m_names.find(qualified);
    if (place != m_names.end()) return place->second;
    const std::string_view prefix = PrefixOf(qualified);
    const bool isDeclaration = qualified == "xmlns" || prefix == "xmlns";
    return m_names.emplace(qualified, KnownName{std::string(prefix), isDeclaration, {}}).first->second;
}

const SharedName& TreeBuilder::ElementName(std::string_view qualified) {
    KnownName& known = Known(qualified);
    if (known.prefix == "xmlns") throw BuildFailure{XmlReservedNamespace, "An element has the prefix xmlns"};
    const std::string* const pUri = m_scope.Find(known.prefix);
    if (pUri == nullptr && !known.prefix.empty()) throw UndeclaredPrefix(known.prefix);
    return Intern(known, qualified, pUri == nullptr ? std::string_view() : *pUri);
}

const SharedName& TreeBuilder::AttributeName(std::string_view qualified) {
    KnownName& known = Known(qualified);
    if (known.isDeclaration) return Intern(known, qualified, kNarrowXmlnsUri);
    if (known.prefix.empty()) return Intern(known, qualified, {});
    const std::string* const pUri = m_scope.Find(known.prefix);
    if (pUri == nullptr) throw UndeclaredPrefix(known.prefix);
    return Intern(known, qualified, *pUri);
}

const SharedName& TreeBuilder::Intern(KnownName& known, std::string_view qualified, std::string_view uri) {
    for (const auto& [knownUri, pName] : known.byUri) {
        if (knownUri == uri) return pName;
    }
    known.byUri.emplace_back(uri, std::make_shared<const Name>(ToUtf16(qualified), ToUtf16(uri)));
    return known.byUri.back().second;
}

}  // namespace devkit::msxml
