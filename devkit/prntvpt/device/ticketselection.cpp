#include "devkit/prntvpt/device/ticketselection.h"

namespace devkit::prntvpt {
namespace {

void StripProperties(Element& element) {
    std::erase_if(element.children, [](const Element& child) { return child.tag == Tag::Property; });
    for (Element& child : element.children) StripProperties(child);
}

void CollectReferences(const Element& element, std::set<QName>& references) {
    if (element.tag == Tag::ParameterRef) references.insert(*element.name);
    for (const Element& child : element.children) CollectReferences(child, references);
}

}  // namespace

Element SelectOption(const Element& offered) {
    Element option = offered;
    option.constrained.reset();
    StripProperties(option);
    return option;
}

std::set<QName> ReferencesOf(const std::vector<Element>& elements) {
    std::set<QName> references;
    for (const Element& element : elements) CollectReferences(element, references);
    return references;
}

const TypedValue* ResolveValue(const Element& scoredProperty, const Element& ticket) {
    const Element* const pReference = scoredProperty.Find(Tag::ParameterRef);
    if (pReference == nullptr) return scoredProperty.FindValue();
    const Element* const pInit = ticket.Find(Tag::ParameterInit, *pReference->name);
    return pInit == nullptr ? nullptr : pInit->FindValue();
}

}  // namespace devkit::prntvpt
