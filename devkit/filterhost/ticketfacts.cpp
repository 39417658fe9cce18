#include "devkit/filterhost/ticketfacts.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <memory>

namespace devkit::filterhost {
namespace {

constexpr std::string_view frameworkUri =
    "http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework";

struct FreeDocument {
    void operator()(xmlDoc* pDocument) const noexcept { xmlFreeDoc(pDocument); }
};
struct FreeText {
    void operator()(xmlChar* text) const noexcept { xmlFree(text); }
};

std::string_view View(const xmlChar* text) {
    return text == nullptr ? std::string_view() : std::string_view(reinterpret_cast<const char*>(text));
}

std::string_view LocalPart(std::string_view name) { return name.substr(name.find(':') + 1); }

std::string NameOf(const xmlNode& element) {
    const std::unique_ptr<xmlChar, FreeText> name(
        xmlGetNoNsProp(&element, reinterpret_cast<const xmlChar*>("name")));
    return std::string(LocalPart(View(name.get())));
}

bool IsFramework(const xmlNode& node, std::string_view localName) {
    return node.type == XML_ELEMENT_NODE && View(node.name) == localName && node.ns != nullptr &&
           View(node.ns->href) == frameworkUri;
}

// The first child element of the kind, and of the name when one is given; null when there is none.
const xmlNode* Child(const xmlNode* pParent, std::string_view localName, std::string_view name = {}) {
    for (const xmlNode* child = pParent == nullptr ? nullptr : pParent->children; child != nullptr;
         child = child->next) {
        if (IsFramework(*child, localName) && (name.empty() || NameOf(*child) == name)) return child;
    }
    return nullptr;
}

// The text of a property's value.
std::optional<std::string> ValueOf(const xmlNode* pOption, std::string_view property) {
    const xmlNode* holder = Child(pOption, "ScoredProperty", property);
    if (holder == nullptr) holder = Child(pOption, "Property", property);
    const xmlNode* value = Child(holder, "Value");
    if (value == nullptr) return std::nullopt;
    const std::unique_ptr<xmlChar, FreeText> text(xmlNodeGetContent(value));
    return std::string(LocalPart(View(text.get())));
}

const xmlNode* SelectedOption(const xmlNode* pRoot, std::string_view feature) {
    return Child(Child(pRoot, "Feature", feature), "Option");
}

std::optional<std::string> MediaSizeOf(const xmlNode* pRoot) {
    const xmlNode* option = SelectedOption(pRoot, "PageMediaSize");
    if (option == nullptr) return std::nullopt;
    if (std::string name = NameOf(*option); !name.empty()) return name;
    const std::optional<std::string> width = ValueOf(option, "MediaSizeWidth");
    const std::optional<std::string> height = ValueOf(option, "MediaSizeHeight");
    return width && height ? std::optional(*width + " x " + *height + " um") : std::nullopt;
}

}  // namespace

TicketFacts ReadTicketFacts(std::string_view ticket) {
    const std::unique_ptr<xmlDoc, FreeDocument> document(
        xmlReadMemory(ticket.data(), static_cast<int>(ticket.size()), nullptr, nullptr,
                      XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
    TicketFacts facts;
    const xmlNode* root = document == nullptr ? nullptr : xmlDocGetRootElement(document.get());
    if (root == nullptr || !IsFramework(*root, "PrintTicket")) return facts;
    facts.mediaSize = MediaSizeOf(root);
    for (const char* bin : {"PageInputBin", "DocumentInputBin", "JobInputBin"}) {
        if (!facts.feedDirection) facts.feedDirection = ValueOf(SelectedOption(root, bin), "FeedDirection");
    }
    return facts;
}

}  // namespace devkit::filterhost
