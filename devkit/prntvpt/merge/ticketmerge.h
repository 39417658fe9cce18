#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "devkit/printschema/element.h"
#include "devkit/prntvpt/device/device.h"
#include "devkit/prntvpt/merge/switches.h"
#include "platform/prntvpt.h"

namespace devkit::prntvpt {

// Where each root entry stands, by kind and name.
using EntryPositions = std::map<std::pair<Tag, QName>, std::size_t>;
[[nodiscard]] EntryPositions PositionsOf(const Element& ticket);

// Removes the root entries of a wider scope. A name without a scope prefix gives a note.
void KeepScope(Element& ticket, EPrintTicketScope scope, std::vector<std::string>& notes);

// Puts the root entries of the delta over those of the same kind and name, whole, and adds the others at the
// end.
[[nodiscard]] Element MergeTickets(Element base, const Element* pDelta);

struct NamespaceFilterResult {
    bool removed = false;
    // Root entries with foreign names, as they were; only private=all keeps them.
    std::vector<Element> foreign;
};

// Removes what has a name of a namespace that the device does not know, at any level; under private=strict
// also the root entries, and with strict=options the options, whose names are not public.
[[nodiscard]] NamespaceFilterResult FilterNamespaces(Element& ticket, const Device& device,
                                                     const Switches& behaviour);

}  // namespace devkit::prntvpt
