#include "devkit/prntvpt/device/imageablesize.h"

#include <algorithm>
#include <utility>

#include "devkit/printschema/names.h"
#include "devkit/prntvpt/device/ticketselection.h"

namespace devkit::prntvpt {

using namespace printschema;

namespace {

[[nodiscard]] const Element* SelectedOption(const Element& ticket, std::string_view feature) {
    const Element* const pFeature = ticket.Find(Tag::Feature, Keyword(feature));
    return pFeature == nullptr ? nullptr : pFeature->Find(Tag::Option);
}

[[nodiscard]] std::optional<std::int64_t> Length(const Element& sheet, std::string_view property,
                                                 const Element& ticket) {
    const Element* const pProperty = sheet.Find(Tag::ScoredProperty, Keyword(property));
    const TypedValue* const pValue = pProperty == nullptr ? nullptr : ResolveValue(*pProperty, ticket);
    return pValue == nullptr ? std::nullopt : ToInteger(*pValue);
}

[[nodiscard]] Orientation OrientationOf(const Element& ticket) {
    const Element* const pOption = SelectedOption(ticket, "PageOrientation");
    if (pOption == nullptr || !pOption->name) return Orientation::Portrait;
    if (pOption->name == Keyword("Landscape")) return Orientation::Landscape;
    if (pOption->name == Keyword("ReversePortrait")) return Orientation::ReversePortrait;
    if (pOption->name == Keyword("ReverseLandscape")) return Orientation::ReverseLandscape;
    return Orientation::Portrait;
}

[[nodiscard]] const Margins& MarginsOf(const Device& device, const Element& sheet) {
    if (!sheet.name) return device.margins;
    const auto found = device.optionMargins.find(*sheet.name);
    return found == device.optionMargins.end() ? device.margins : found->second;
}

}  // namespace

Margins TurnMargins(const Margins& sheet, Orientation orientation) {
    switch (orientation) {
        case Orientation::Portrait:
            return sheet;
        case Orientation::Landscape:
            return {sheet.bottom, sheet.left, sheet.top, sheet.right};
        case Orientation::ReversePortrait:
            return {sheet.right, sheet.bottom, sheet.left, sheet.top};
        case Orientation::ReverseLandscape:
            return {sheet.top, sheet.right, sheet.bottom, sheet.left};
    }
    return sheet;
}

std::optional<ImageableSize> ImageableSizeOf(const Device& device, const Element& ticket,
                                             bool orientationCounts) {
    const Element* const pSheet = SelectedOption(ticket, "PageMediaSize");
    if (pSheet == nullptr) return std::nullopt;
    std::optional<std::int64_t> width = Length(*pSheet, "MediaSizeWidth", ticket);
    std::optional<std::int64_t> height = Length(*pSheet, "MediaSizeHeight", ticket);
    if (!width || !height) return std::nullopt;

    const Orientation orientation = orientationCounts ? OrientationOf(ticket) : Orientation::Portrait;
    if (orientation == Orientation::Landscape || orientation == Orientation::ReverseLandscape) {
        std::swap(width, height);
    }
    const Margins margins = TurnMargins(MarginsOf(device, *pSheet), orientation);
    // A sheet that is all margin still has an extent, because capabilities must not state none.
    return ImageableSize{*width,
                         *height,
                         margins.left,
                         margins.top,
                         std::max<std::int64_t>(*width - margins.left - margins.right, 1),
                         std::max<std::int64_t>(*height - margins.top - margins.bottom, 1)};
}

}  // namespace devkit::prntvpt
