#include "devkit/filterhost/pagefacts.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>
#include <utility>

#include "devkit/common/error.h"
#include "devkit/common/xmlreader.h"
#include "devkit/package/pagedimensions.h"

namespace devkit::filterhost {
namespace {

using pipeline::PartPtr;

std::optional<std::string> NameOf(const PartPtr& part) {
    return part == nullptr ? std::nullopt : std::optional(part->Name());
}

// The six numbers of a matrix in its abbreviated form ("0,1,-1,0,793.7,0").
std::optional<std::array<double, 6>> ReadMatrix(std::string_view text) {
    std::array<double, 6> matrix{};
    const char* place = text.data();
    const char* const end = place + text.size();
    for (double& number : matrix) {
        while (place != end && (*place == ',' || *place == ' ' || *place == '+')) ++place;
        const auto [after, failure] = std::from_chars(place, end, number);
        if (failure != std::errc()) return std::nullopt;
        place = after;
    }
    return matrix;
}

// Whether the matrix turns by a right angle, whatever it scales and moves.
bool TurnsByARightAngle(const std::array<double, 6>& matrix) {
    constexpr double kNothing = 1e-3;
    return std::abs(matrix[0]) < kNothing && std::abs(matrix[3]) < kNothing &&
           std::abs(matrix[1]) > kNothing && std::abs(matrix[2]) > kNothing;
}

// Whether the current element is a canvas that turns by a right angle.
bool IsTurningCanvas(const common::XmlReader& reader) {
    if (reader.LocalName() != "Canvas") return false;
    const auto matrix = ReadMatrix(reader.Attribute("RenderTransform").value_or(std::string()));
    return matrix && TurnsByARightAngle(*matrix);
}

std::optional<PageSize> SizeOf(const std::optional<package::PageDimensions>& page) {
    if (!page || !std::isfinite(page->width) || !std::isfinite(page->height)) return std::nullopt;
    return PageSize{page->width, page->height};
}

void LookAtMarkup(const std::string& markup, const std::string& name, PageFacts& facts) {
    common::XmlLimits limits = common::Limits().page;
    limits.maxDepth = std::numeric_limits<int>::max();
    try {
        common::XmlReader reader(markup, name, limits);
        if (!reader.NextElement()) return;
        facts.after = SizeOf(package::ReadPageDimensions(reader));
        std::size_t contents = 0;
        bool isTurned = false;
        while (reader.NextElement()) {
            if (reader.Depth() != 1) continue;
            isTurned = ++contents == 1 && IsTurningCanvas(reader);
        }
        facts.turned = facts.rewritten && isTurned;
    } catch (const common::Error& error) {
        facts.malformed = error.what();
    }
}

PageFacts LookAtPage(const pipeline::SentPart& page) {
    const PartPtr& part = page.part;
    PageFacts facts;
    facts.rewritten = page.MarkupRewritten();
    facts.ticketReplaced = page.TicketReplaced();
    const pipeline::Bytes before = part->ReadInput();
    const pipeline::Bytes after = part->Read();
    facts.bytesBefore = before->size();
    facts.bytesAfter = after->size();
    LookAtMarkup(*after, page.name, facts);
    facts.before =
        facts.rewritten || part->IsNew() ? SizeOf(package::ReadPageDimensions(*before)) : facts.after;
    if (facts.ticketReplaced && part->ticket != nullptr) {
        facts.newTicket = printschema::ReadFacts(*part->ticket->Read());
    }
    return facts;
}

}  // namespace

PartFacts LookAtPart(const pipeline::SentPart& part) {
    PartFacts facts;
    facts.kind = pipeline::NameOf(part.kind);
    facts.name = part.name;
    if (part.part == nullptr) return facts;
    facts.ticketBefore = NameOf(part.part->inputTicket);
    facts.ticketAfter = NameOf(part.part->ticket);
    if (part.kind == pipeline::PartKind::FixedPage) facts.page = LookAtPage(part);
    return facts;
}

TicketTexts ReadTickets(const pipeline::SentPart& part) {
    TicketTexts texts;
    if (part.part == nullptr) return texts;
    if (const PartPtr& own = part.part->inputTicket; own != nullptr) texts.own = *own->ReadInput();
    const PartPtr& ticket = part.part->ticket;
    if (part.TicketReplaced() && ticket != nullptr) texts.replacement = *ticket->Read();
    return texts;
}

}  // namespace devkit::filterhost
