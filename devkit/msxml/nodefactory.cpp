#include "devkit/msxml/nodefactory.h"

#include <algorithm>
#include <array>

#include "devkit/msxml/attributes.h"
#include "devkit/msxml/comerror.h"
#include "devkit/msxml/comtext.h"
#include "devkit/msxml/element.h"
#include "devkit/msxml/leaves.h"
#include "devkit/msxml/variants.h"

namespace devkit::msxml {

namespace {

struct NamedKind {
    std::wstring_view name;
    DOMNodeType type;
};

constexpr std::array kinds = {
    NamedKind{L"element", NODE_ELEMENT},
    NamedKind{L"attribute", NODE_ATTRIBUTE},
    NamedKind{L"text", NODE_TEXT},
    NamedKind{L"cdatasection", NODE_CDATA_SECTION},
    NamedKind{L"entityreference", NODE_ENTITY_REFERENCE},
    NamedKind{L"processinginstruction", NODE_PROCESSING_INSTRUCTION},
    NamedKind{L"comment", NODE_COMMENT},
    NamedKind{L"documentfragment", NODE_DOCUMENT_FRAGMENT},
};

}  // namespace

DOMNodeType NodeTypeOf(const VARIANT& type) {
    if (type.vt == VT_BSTR) {
        const std::wstring_view wanted = View(type.bstrVal);
        const auto* const pKind = std::find_if(
            kinds.begin(), kinds.end(), [wanted](const NamedKind& kind) { return kind.name == wanted; });
        if (pKind != kinds.end()) return pKind->type;
    }
    platform::Variant number;
    try {
        Convert(type, VT_I4, number);
    } catch (const ComError&) {
        throw ComError{E_INVALIDARG};
    }
    return static_cast<DOMNodeType>(number.Get().lVal);
}

NodeRef MakeNamedNode(Document& document, DOMNodeType type, std::wstring_view name, std::wstring_view uri) {
    switch (type) {
        case NODE_ELEMENT:
            return NodeRef(new Element(document, ValidName(name, uri)));
        case NODE_ATTRIBUTE:
            return MakeAttribute(document, ValidName(name, uri), {});
        case NODE_TEXT:
            return MakeText(document, {});
        case NODE_CDATA_SECTION:
            return MakeCdataSection(document, {});
        case NODE_COMMENT:
            return MakeComment(document, {});
        case NODE_DOCUMENT_FRAGMENT:
            return MakeFragment(document);
        case NODE_PROCESSING_INSTRUCTION: {
            SharedName pTarget = ValidTarget(name);
            const bool isDeclaration = pTarget->Qualified() == L"xml";
            return MakeInstruction(document, std::move(pTarget), isDeclaration ? L"version=\"1.0\"" : L"");
        }
        case NODE_ENTITY_REFERENCE:
            return MakeEntityReference(document, ValidTarget(name));
        default:
            throw ComError{E_INVALIDARG};
    }
}

}  // namespace devkit::msxml
