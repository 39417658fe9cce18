#include "devkit/prntvpt/merge/validation.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "devkit/prntvpt/device/ticketselection.h"
#include "devkit/prntvpt/merge/constraintpass.h"
#include "devkit/prntvpt/merge/passes.h"
#include "devkit/prntvpt/merge/ticketmerge.h"

namespace devkit::prntvpt {

using namespace printschema;

namespace {

[[nodiscard]] std::set<QName> Difference(const std::set<QName>& left, const std::set<QName>& right) {
    std::set<QName> rest;
    std::set_difference(left.begin(), left.end(), right.begin(), right.end(),
                        std::inserter(rest, rest.end()));
    return rest;
}

// Entries stand where the merged ticket had them; what it lacked comes after, in the device's order.
void OrderAsInput(Element& ticket, const Element& merged) {
    const EntryPositions positions = PositionsOf(merged);
    std::multimap<std::size_t, Element> sorted;
    for (Element& entry : ticket.children) {
        const auto found = positions.find({entry.tag, *entry.name});
        const std::size_t position = found == positions.end() ? positions.size() : found->second;
        sorted.emplace(position, std::move(entry));
    }
    ticket.children.clear();
    for (auto& [position, entry] : sorted) ticket.children.push_back(std::move(entry));
}

void Append(std::vector<Element>&& elements, Element& ticket) {
    std::move(elements.begin(), elements.end(), std::back_inserter(ticket.children));
}

[[nodiscard]] ValidatedTicket Validate(const Device& device, const Switches& behaviour, Element base,
                                       const Element* pDelta, EPrintTicketScope scope) {
    ValidatedTicket result;
    KeepScope(base, scope, result.notes);
    std::optional<Element> delta;
    if (pDelta != nullptr) KeepScope(delta.emplace(*pDelta), scope, result.notes);
    Element merged = MergeTickets(std::move(base), delta ? &*delta : nullptr);

    PassState state{device, behaviour, scope, merged, {}, false};
    NamespaceFilterResult filtered = FilterNamespaces(state.ticket, device, behaviour);
    state.conflict = filtered.removed && behaviour.dropIsConflict;

    // Features come first: which parameters are needed follows from the options that are selected in the end.
    std::vector<Element> features = ValidateFeatures(state);
    const std::set<QName> referencesBefore = ReferencesOf(features);
    if (ResolveConstraints(device, features)) state.conflict = true;
    const std::set<QName> references = ReferencesOf(features);

    result.ticket.tag = Tag::PrintTicket;
    Append(ValidateParameters(state, references, Difference(referencesBefore, references)), result.ticket);
    Append(std::move(features), result.ticket);
    for (const Element& entry : state.ticket.children) {
        if (entry.tag == Tag::Property) result.ticket.children.push_back(entry);
    }
    Append(std::move(filtered.foreign), result.ticket);
    if (behaviour.order == ElementOrder::Input) OrderAsInput(result.ticket, merged);
    result.conflict = state.conflict;
    return result;
}

}  // namespace

ValidatedTicket MergeAndValidate(const Device& device, const Switches& behaviour, Element base,
                                 const Element* pDelta, EPrintTicketScope scope) {
    ValidatedTicket result = Validate(device, behaviour, std::move(base), pDelta, scope);
#ifndef NDEBUG
    const ValidatedTicket again = Validate(device, behaviour, result.ticket, nullptr, scope);
    assert(!again.conflict && again.ticket == result.ticket);
#endif
    return result;
}

}  // namespace devkit::prntvpt
