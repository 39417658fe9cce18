#include "devkit/prntvpt/api/resultfaults.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "devkit/printschema/names.h"
#include "devkit/prntvpt/device/ticketselection.h"
#include "devkit/prntvpt/merge/optionchoice.h"

namespace devkit::prntvpt {

using namespace printschema;

namespace {

// Faults name a feature by its local name; a prefix says nothing.
[[nodiscard]] std::string_view LocalName(std::string_view argument) {
    const std::size_t colon = argument.find(':');
    return colon == std::string_view::npos ? argument : argument.substr(colon + 1);
}

[[nodiscard]] auto FindFeature(Element& ticket, std::string_view local) {
    return std::find_if(ticket.children.begin(), ticket.children.end(), [&](const Element& entry) {
        return entry.tag == Tag::Feature && entry.name->local == local;
    });
}

// Another option of the device in the place of the one that the feature selects.
void ChangeSetting(const Fault& fault, const Device& device, Element& ticket) {
    const std::string_view local =
        fault.argument.empty() ? std::string_view("PageOrientation") : LocalName(fault.argument);
    const auto feature = FindFeature(ticket, local);
    if (feature == ticket.children.end()) return;
    const Element* const pOffered = device.capabilities.Find(Tag::Feature, *feature->name);
    if (pOffered == nullptr) return;
    for (const Element& offered : pOffered->children) {
        if (offered.tag != Tag::Option || !IsSelectable(offered, Switches())) continue;
        Element option = SelectOption(offered);
        const auto selected = std::find_if(feature->children.begin(), feature->children.end(),
                                           [](const Element& child) { return child.tag == Tag::Option; });
        if (selected == feature->children.end() || *selected == option) continue;
        *selected = std::move(option);
        return;
    }
}

void DuplicateFeature(Element& ticket) {
    const auto feature = std::find_if(ticket.children.begin(), ticket.children.end(),
                                      [](const Element& entry) { return entry.tag == Tag::Feature; });
    if (feature != ticket.children.end()) ticket.children.push_back(Element(*feature));
}

// The first value below an entry of that name becomes a word.
bool SpoilNumber(Element& element, std::string_view local) {
    if (element.name && element.name->local == local) {
        for (Element& child : element.children) {
            if (child.tag != Tag::Value) continue;
            child.value.text = "wide";
            return true;
        }
    }
    return std::any_of(element.children.begin(), element.children.end(),
                       [&](Element& child) { return SpoilNumber(child, local); });
}

void ZeroExtent(Element& element) {
    for (Element& child : element.children) {
        const bool isExtent = element.name && element.name->local.starts_with("Extent");
        if (isExtent && child.tag == Tag::Value) child.value = IntegerValue(0);
        if (child.tag == Tag::Property) ZeroExtent(child);
    }
}

}  // namespace

void SpoilTicket(const ActiveFaults& faults, const Device& device, Element& ticket) {
    if (const Fault* const pFault = faults.Find(FaultMode::Conflict)) ChangeSetting(*pFault, device, ticket);
    if (const Fault* const pFault = faults.Find(FaultMode::ConflictSilent)) {
        ChangeSetting(*pFault, device, ticket);
    }
    if (const Fault* const pFault = faults.Find(FaultMode::OutMissing)) {
        const auto feature = FindFeature(ticket, LocalName(pFault->argument));
        if (feature != ticket.children.end()) ticket.children.erase(feature);
    }
    if (faults.Has(FaultMode::OutDuplicate)) DuplicateFeature(ticket);
    if (faults.Has(FaultMode::OutBadValue) && !SpoilNumber(ticket, "MediaSizeWidth")) {
        SpoilNumber(ticket, "PageMediaSizeMediaSizeWidth");
    }
    if (faults.Has(FaultMode::OutWrongRoot)) ticket.tag = Tag::PrintCapabilities;
}

void SpoilCapabilities(const ActiveFaults& faults, Element& capabilities) {
    const QName name = Keyword("PageImageableSize");
    if (faults.Has(FaultMode::CapabilitiesNoImageable)) {
        std::erase_if(capabilities.children,
                      [&](const Element& entry) { return entry.tag == Tag::Property && entry.name == name; });
    }
    if (faults.Has(FaultMode::CapabilitiesZeroExtent)) {
        if (Element* const pSize = capabilities.Find(Tag::Property, name)) ZeroExtent(*pSize);
    }
}

void SpoilBytes(const ActiveFaults& faults, std::string& bytes) {
    if (faults.Has(FaultMode::OutEmpty)) bytes.clear();
    if (faults.Has(FaultMode::OutTruncated)) bytes.resize(bytes.size() / 2);
    if (faults.Has(FaultMode::OutNotXml)) bytes = "This is no markup.";
}

}  // namespace devkit::prntvpt
