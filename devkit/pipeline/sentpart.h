#pragma once

#include <string>
#include <vector>

#include "devkit/pipeline/part.h"

namespace devkit::pipeline {

// A part as it stood when the filter sent it. Names are the filter's own, UTF-8.
struct SentPart {
    PartKind kind = PartKind::Unknown;  // Unknown for all that came by SendXpsUnknown
    std::string name;                   // empty for the XPS document and for an object that is not the kit's
    PartPtr part;                       // null for an object that is not the kit's

    // Whether the filter replaced the bytes of a part of the input.
    [[nodiscard]] bool MarkupRewritten() const {
        return part != nullptr && !part->IsNew() && part->IsWritten();
    }
    // Whether the part has another ticket than the input gave it, or none where the input gave one.
    [[nodiscard]] bool TicketReplaced() const { return part != nullptr && part->ticket != part->inputTicket; }
};

}  // namespace devkit::pipeline
