#include "devkit/prntvpt/merge/capabilities.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "devkit/printschema/names.h"
#include "devkit/prntvpt/device/imageablesize.h"
#include "devkit/prntvpt/device/ticketselection.h"
#include "devkit/prntvpt/merge/constraintpass.h"

namespace devkit::prntvpt {

using namespace printschema;

namespace {

[[nodiscard]] Element LengthProperty(std::string_view name, std::int64_t length) {
    return ValueElement(Tag::Property, Keyword(name), IntegerValue(length));
}

[[nodiscard]] Element Group(std::string_view name, std::vector<Element> children) {
    Element group;
    group.tag = Tag::Property;
    group.name = Keyword(name);
    group.children = std::move(children);
    return group;
}

[[nodiscard]] Element DescribeSize(const ImageableSize& size) {
    return Group(
        "PageImageableSize",
        {LengthProperty("ImageableSizeWidth", size.width), LengthProperty("ImageableSizeHeight", size.height),
         Group("ImageableArea",
               {LengthProperty("OriginWidth", size.originX), LengthProperty("OriginHeight", size.originY),
                LengthProperty("ExtentWidth", size.extentX), LengthProperty("ExtentHeight", size.extentY)})});
}

void ReplaceImageableSize(const Device& device, const Switches& behaviour, const Element& ticket,
                          Element& capabilities) {
    const QName name = Keyword("PageImageableSize");
    std::optional<ImageableSize> size;
    if (behaviour.variants.imageable != ImageableArea::Absent) {
        size = ImageableSizeOf(device, ticket, behaviour.variants.imageable == ImageableArea::Oriented);
    }
    Element* const pPresent = capabilities.Find(Tag::Property, name);
    if (!size) {
        std::erase_if(capabilities.children,
                      [&](const Element& child) { return child.tag == Tag::Property && child.name == name; });
    } else if (pPresent != nullptr) {
        *pPresent = DescribeSize(*size);
    } else {
        capabilities.children.push_back(DescribeSize(*size));
    }
}

// Whether the ticket, with that option in the place of what the feature selects, breaks a constraint that
// concerns the feature.
[[nodiscard]] bool IsBlocked(const Device& device, const Element& option, std::size_t featureIndex,
                             std::vector<Element>& selected) {
    Element& feature = selected[featureIndex];
    const std::vector<Element> saved = feature.children;
    feature.children = {SelectOption(option)};
    const bool blocked =
        std::any_of(device.constraints.begin(), device.constraints.end(), [&](const Constraint& constraint) {
            const bool concerns =
                constraint.when.feature == feature.name || constraint.with.feature == feature.name;
            return concerns && Violates(constraint, selected);
        });
    feature.children = saved;
    return blocked;
}

void MarkOptions(const Device& device, const Element& ticket, Element& capabilities) {
    std::vector<Element> selected;
    for (const Element& entry : ticket.children) {
        if (entry.tag == Tag::Feature) selected.push_back(entry);
    }
    for (std::size_t index = 0; index < selected.size(); ++index) {
        Element* const pFeature = capabilities.Find(Tag::Feature, *selected[index].name);
        if (pFeature == nullptr) continue;
        for (Element& option : pFeature->children) {
            const bool isFree = !option.constrained || option.constrained == Keyword("None");
            if (option.tag == Tag::Option && isFree && IsBlocked(device, option, index, selected)) {
                option.constrained = Keyword("PrintTicketSettings");
            }
        }
    }
}

}  // namespace

Element CapabilitiesFor(const Device& device, const Switches& behaviour, const Element& ticket) {
    Element capabilities = device.capabilities;
    MarkOptions(device, ticket, capabilities);
    ReplaceImageableSize(device, behaviour, ticket, capabilities);
    return capabilities;
}

}  // namespace devkit::prntvpt
