#include "devkit/prntvpt/merge/parameterpass.h"

#include <utility>

namespace devkit::prntvpt {
namespace {

void CollectReferences(const Element& element, std::set<QName>& references) {
    if (element.tag == Tag::ParameterRef) references.insert(*element.name);
    for (const Element& child : element.children) CollectReferences(child, references);
}

void NoteUnknownParameters(PassState& state) {
    for (const Element& entry : state.ticket.children) {
        if (entry.tag == Tag::ParameterInit && state.device.FindParameter(*entry.name) == nullptr) {
            state.conflict = true;
        }
    }
}

}  // namespace

std::set<QName> ReferencesOf(const std::vector<Element>& features) {
    std::set<QName> references;
    for (const Element& feature : features) CollectReferences(feature, references);
    return references;
}

std::vector<Element> ValidateParameters(PassState& state, const std::set<QName>& references,
                                        const std::set<QName>& dropped) {
    NoteUnknownParameters(state);
    std::vector<Element> parameters;
    for (const ParameterDefinition& definition : state.device.parameters) {
        if (!state.TakesPart(definition.name)) continue;
        const bool isReferenced = references.contains(definition.name);
        const Element* const pInit = state.ticket.Find(Tag::ParameterInit, definition.name);
        const auto carried = state.carried.find(definition.name);
        const bool isPresent = pInit != nullptr || carried != state.carried.end();
        const bool isNeeded = isReferenced || definition.mandatory == Mandatory::Unconditional;
        if (!isPresent && !isNeeded) continue;
        if (!isNeeded && definition.mandatory == Mandatory::Conditional &&
            (state.switches.orphans == Orphans::Prune || dropped.contains(definition.name))) {
            continue;
        }
        const TypedValue* const pGiven = carried != state.carried.end() ? &carried->second
                                         : pInit != nullptr             ? pInit->FindValue()
                                                                        : nullptr;
        CheckedValue checked = CheckParameter(definition, pGiven);
        if (isPresent && checked.changed) state.conflict = true;
        parameters.push_back(ValueElement(Tag::ParameterInit, definition.name, std::move(checked.value)));
    }
    return parameters;
}

}  // namespace devkit::prntvpt
