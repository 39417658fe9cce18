#include "devkit/prntvpt/merge/passes.h"

#include <utility>

#include "devkit/prntvpt/device/ticketselection.h"
#include "devkit/prntvpt/merge/optionchoice.h"

namespace devkit::prntvpt {

using namespace printschema;

namespace {

// Where the device's option refers to a parameter and the ticket's states the value itself.
void CarryValues(const ChosenOption& choice, PassState& state) {
    for (const Element& property : choice.pOffered->children) {
        if (property.tag != Tag::ScoredProperty) continue;
        const Element* const pReference = property.Find(Tag::ParameterRef);
        const Element* const pAsked = choice.pAsked->Find(Tag::ScoredProperty, *property.name);
        if (pReference == nullptr || pAsked == nullptr) continue;
        const Element* const pAskedReference = pAsked->Find(Tag::ParameterRef);
        if (pAskedReference != nullptr && pAskedReference->name == pReference->name) continue;
        const TypedValue* const pValue = ResolveValue(*pAsked, state.ticket);
        if (pValue != nullptr) state.carried[*pReference->name] = *pValue;
    }
}

[[nodiscard]] Element EmitOption(const ChosenOption& choice, PassState& state) {
    Element option = SelectOption(*choice.pOffered);
    if (choice.pAsked == nullptr) return option;
    CarryValues(choice, state);
    if (choice.exact && state.behaviour.optionProperties == OptionProperties::KeepPerfect) {
        for (const Element& child : choice.pAsked->children) {
            if (child.tag == Tag::Property) option.children.push_back(child);
        }
    }
    return option;
}

[[nodiscard]] const Element* FindFeature(const Element* pParent, const QName& name) {
    return pParent == nullptr ? nullptr : pParent->Find(Tag::Feature, name);
}

void NoteUnknownFeatures(const Element& asked, const Element& offered, PassState& state) {
    for (const Element& child : asked.children) {
        if (child.tag == Tag::Feature && offered.Find(Tag::Feature, *child.name) == nullptr) {
            state.conflict = true;
        }
    }
}

[[nodiscard]] Element ValidateFeature(const Element& offered, const Element* pAsked, const Element* pDefault,
                                      PassState& state) {
    Element feature;
    feature.tag = Tag::Feature;
    feature.name = offered.name;
    for (const ChosenOption& choice : ChooseOptions(offered, pAsked, pDefault, state)) {
        feature.children.push_back(EmitOption(choice, state));
    }
    for (const Element& child : offered.children) {
        if (child.tag != Tag::Feature) continue;
        Element nested = ValidateFeature(child, FindFeature(pAsked, *child.name),
                                         FindFeature(pDefault, *child.name), state);
        if (!nested.children.empty()) feature.children.push_back(std::move(nested));
    }
    if (pAsked == nullptr) return feature;
    NoteUnknownFeatures(*pAsked, offered, state);
    for (const Element& child : pAsked->children) {
        if (child.tag == Tag::Property) feature.children.push_back(child);
    }
    return feature;
}

void NoteUnknownParameters(PassState& state) {
    for (const Element& entry : state.ticket.children) {
        if (entry.tag == Tag::ParameterInit && state.device.FindParameter(*entry.name) == nullptr) {
            state.conflict = true;
        }
    }
}

}  // namespace

std::vector<Element> ValidateFeatures(PassState& state) {
    const Element& capabilities = state.device.capabilities;
    std::vector<Element> features;
    for (const Element& offered : capabilities.children) {
        if (offered.tag != Tag::Feature || !state.TakesPart(*offered.name)) continue;
        Element feature =
            ValidateFeature(offered, state.ticket.Find(Tag::Feature, *offered.name),
                            state.device.defaultTicket.Find(Tag::Feature, *offered.name), state);
        if (!feature.children.empty()) features.push_back(std::move(feature));
    }
    NoteUnknownFeatures(state.ticket, capabilities, state);
    return features;
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
        // A parameter that nothing refers to any longer would come back as if it had been asked for.
        if (!isNeeded && definition.mandatory == Mandatory::Conditional &&
            (state.behaviour.orphans == Orphans::Prune || dropped.contains(definition.name))) {
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
