#include "devkit/prntvpt/merge/ticketmerge.h"

#include <algorithm>
#include <utility>

#include "devkit/printschema/names.h"

namespace devkit::prntvpt {

using namespace printschema;

namespace {

[[nodiscard]] bool IsForeign(const Element& element, const Device& device) {
    return element.name && !device.Knows(element.name->uri);
}

bool RemoveForeign(Element& element, const Device& device) {
    const auto first = std::remove_if(element.children.begin(), element.children.end(),
                                      [&](const Element& child) { return IsForeign(child, device); });
    bool removed = first != element.children.end();
    element.children.erase(first, element.children.end());
    for (Element& child : element.children) removed = RemoveForeign(child, device) || removed;
    return removed;
}

// Private entries of a strict filter: root entries, and options where those count, too.
bool RemovePrivate(Element& element, bool isRoot, bool alsoOptions) {
    const auto isPrivate = [&](const Element& child) {
        const bool counts = isRoot || (alsoOptions && child.tag == Tag::Option);
        return counts && child.name && !IsPublicNamespace(child.name->uri);
    };
    const auto first = std::remove_if(element.children.begin(), element.children.end(), isPrivate);
    bool removed = first != element.children.end();
    element.children.erase(first, element.children.end());
    for (Element& child : element.children) {
        if (child.tag == Tag::Feature) removed = RemovePrivate(child, false, alsoOptions) || removed;
    }
    return removed;
}

}  // namespace

EntryPositions PositionsOf(const Element& ticket) {
    EntryPositions positions;
    for (std::size_t index = 0; index < ticket.children.size(); ++index) {
        const Element& entry = ticket.children[index];
        positions.emplace(std::pair(entry.tag, *entry.name), index);
    }
    return positions;
}

void KeepScope(Element& ticket, EPrintTicketScope scope, std::vector<std::string>& notes) {
    for (const Element& entry : ticket.children) {
        if (ScopePrefixOf(entry.name->local)) continue;
        notes.push_back("the name " + entry.name->local + " begins with none of Job, Document and Page");
    }
    std::erase_if(ticket.children, [&](const Element& entry) { return ScopeOf(*entry.name) > scope; });
}

Element MergeTickets(Element base, const Element* pDelta) {
    if (pDelta == nullptr) return base;
    const EntryPositions positions = PositionsOf(base);
    for (const Element& entry : pDelta->children) {
        const auto present = positions.find({entry.tag, *entry.name});
        if (present != positions.end()) {
            base.children[present->second] = entry;
        } else {
            base.children.push_back(entry);
        }
    }
    return base;
}

NamespaceFilterResult FilterNamespaces(Element& ticket, const Device& device, const Switches& behaviour) {
    NamespaceFilterResult result;
    if (behaviour.privateNames == PrivateNames::All) {
        for (const Element& entry : ticket.children) {
            if (IsForeign(entry, device)) result.foreign.push_back(entry);
        }
        std::erase_if(ticket.children, [&](const Element& entry) { return IsForeign(entry, device); });
    }
    result.removed = RemoveForeign(ticket, device);
    if (behaviour.privateNames == PrivateNames::Strict) {
        const bool alsoOptions = behaviour.strictExtent == StrictExtent::Options;
        result.removed = RemovePrivate(ticket, true, alsoOptions) || result.removed;
    }
    return result;
}

}  // namespace devkit::prntvpt
