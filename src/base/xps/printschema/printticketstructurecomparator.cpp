#include "base/xps/printschema/printticketstructurecomparator.h"

#include "base/logging/check.h"
#include "platform/bstr.h"
#include "platform/comptr.h"

namespace base::xps::printschema {

using logging::ThrowIfFailed;
using platform::Bstr;
using platform::ComPtr;

namespace {

[[nodiscard]] Bstr NameOf(IXMLDOMNode* pNode) {
    Bstr name;
    ThrowIfFailed(pNode->get_nodeName(name.Put()));
    return name;
}

// Null for a node of a kind that has no attributes, such as text.
[[nodiscard]] ComPtr<IXMLDOMNamedNodeMap> AttributesOf(IXMLDOMNode* pNode) {
    ComPtr<IXMLDOMNamedNodeMap> pAttributes;
    ThrowIfFailed(pNode->get_attributes(pAttributes.Put()));
    return pAttributes;
}

[[nodiscard]] ComPtr<IXMLDOMNode> NameAttribute(IXMLDOMNamedNodeMap* pAttributes) {
    static const Bstr kName(L"name");
    ComPtr<IXMLDOMNode> pAttribute;
    ThrowIfFailed(pAttributes->getNamedItem(kName.Get(), pAttribute.Put()));
    return pAttribute;
}

[[nodiscard]] Bstr TextOf(IXMLDOMNode* pNode) {
    Bstr text;
    ThrowIfFailed(pNode->get_text(text.Put()));
    return text;
}

}  // namespace

bool PrintTicketStructureComparator::IsSameNode(IXMLDOMNode* pFirst, IXMLDOMNode* pSecond) const {
    if (NameOf(pFirst).View() != NameOf(pSecond).View()) return false;

    const ComPtr<IXMLDOMNamedNodeMap> pFirstAttributes = AttributesOf(pFirst);
    const ComPtr<IXMLDOMNamedNodeMap> pSecondAttributes = AttributesOf(pSecond);
    if (!pFirstAttributes || !pSecondAttributes) return !pFirstAttributes && !pSecondAttributes;

    const ComPtr<IXMLDOMNode> pFirstName = NameAttribute(pFirstAttributes.Get());
    const ComPtr<IXMLDOMNode> pSecondName = NameAttribute(pSecondAttributes.Get());
    if (!pFirstName || !pSecondName) return !pFirstName && !pSecondName;

    return TextOf(pFirstName.Get()).View() == TextOf(pSecondName.Get()).View();
}

// The qualified name, whether there are attributes, and the text of "name" among them: a name holds neither
// of the two separators.
std::optional<std::wstring> PrintTicketStructureComparator::KeyOf(IXMLDOMNode* pNode) const {
    std::wstring key(NameOf(pNode).View());
    const ComPtr<IXMLDOMNamedNodeMap> pAttributes = AttributesOf(pNode);
    if (!pAttributes) return key;
    key += L'>';
    const ComPtr<IXMLDOMNode> pName = NameAttribute(pAttributes.Get());
    if (pName) key.append(L"=").append(TextOf(pName.Get()).View());
    return key;
}

}  // namespace base::xps::printschema
