#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "devkit/filterhost/devicefolder.h"
#include "devkit/package/xpsdocument.h"
#include "devkit/printschema/reader.h"
#include "devkit/prntvpt/device/device.h"
#include "devkit/prntvpt/merge/serializer.h"
#include "devkit/prntvpt/merge/validation.h"
#include "devkit/validate/battery.h"
#include "devkit/validate/judging.h"

namespace devkit::validate {
namespace {

using common::Check;
using package::FixedPage;
using package::XpsDocument;
using printschema::Element;
using printschema::QName;
using printschema::Tag;
using printschema::TypedValue;

constexpr std::size_t kPagesOfADocument = 150;
constexpr const char* kPageType = "application/vnd.ms-package.xps-fixedpage+xml";

// An option of a feature of the device as a ticket asks for it, with the parameters that it refers to.
struct Wish {
    QName feature;
    Element option;
    std::vector<Element> parameters;
};
using Wishes = std::vector<Wish>;

// What of an option of capabilities stands in a ticket: nothing that only describes it.
Wish WishFor(const QName& feature, const Element& option, const prntvpt::Device& device) {
    Wish wish{feature, {}, {}};
    wish.option.tag = Tag::Option;
    wish.option.name = option.name;
    for (const Element& child : option.children) {
        if (child.tag != Tag::ScoredProperty) continue;
        const Element* const pReference = child.Find(Tag::ParameterRef);
        if (pReference == nullptr && child.FindValue() == nullptr) continue;
        wish.option.children.push_back(child);
        if (pReference == nullptr) continue;
        if (const auto* const pParameter = device.FindParameter(*pReference->name)) {
            wish.parameters.push_back(
                printschema::ValueElement(Tag::ParameterInit, pParameter->name, pParameter->defaultValue));
        }
    }
    return wish;
}

// Each option of each feature of pages.
Wishes WishesOf(const prntvpt::Device& device) {
    Wishes wishes;
    for (const Element& feature : device.capabilities.children) {
        if (feature.tag != Tag::Feature || !feature.name || !feature.name->local.starts_with("Page"))
            continue;
        for (const Element& option : feature.children)
            if (option.tag == Tag::Option && option.name)
                wishes.push_back(WishFor(*feature.name, option, device));
    }
    return wishes;
}

std::vector<Wishes> OneByOne(const Wishes& wishes) {
    std::vector<Wishes> all;
    for (const Wish& wish : wishes) all.push_back({wish});
    return all;
}

std::vector<Wishes> InPairs(const Wishes& wishes) {
    std::vector<Wishes> all;
    for (std::size_t i = 0; i < wishes.size(); ++i) {
        for (std::size_t j = i + 1; j < wishes.size(); ++j)
            if (wishes[i].feature != wishes[j].feature) all.push_back({wishes[i], wishes[j]});
    }
    return all;
}

// The prefix that the driver's property bag names for its private names is one that the driver's tickets
// declare: docs/installing.md.
void DeclarePrefix(const std::string& prefix, const prntvpt::Device& device, std::string& ticket) {
    if (device.privateUris.empty() || ticket.find(" xmlns:" + prefix + "=") != std::string::npos) return;
    ticket.insert(ticket.find(" version=", ticket.find("PrintTicket")),
                  " xmlns:" + prefix + "=\"" + device.privateUris.front() + "\"");
}

std::string TicketOf(const Wishes& wishes, const prntvpt::Device& device, const std::string& prefix) {
    Element ticket;
    ticket.tag = Tag::PrintTicket;
    for (const Wish& wish : wishes) {
        Element feature;
        feature.tag = Tag::Feature;
        feature.name = wish.feature;
        feature.children.push_back(wish.option);
        ticket.children.push_back(std::move(feature));
        ticket.children.insert(ticket.children.end(), wish.parameters.begin(), wish.parameters.end());
    }
    std::string text = prntvpt::Serialize(ticket, {}, {device.privateUris, {}});
    DeclarePrefix(prefix, device, text);
    return text;
}

std::string TextOf(const Wishes& wishes) {
    std::string text;
    for (const Wish& wish : wishes)
        text += (text.empty() ? "" : " and ") + wish.feature.local + " " + wish.option.name->local;
    return text;
}

// The short document with a page for each of the wishes.
void WriteDocument(Trial& trial, const prntvpt::Device& device, const std::vector<Wishes>& pages,
                   const std::filesystem::path& path) {
    XpsDocument document = XpsDocument::Open(trial.Carried(kShort).path);
    std::deque<FixedPage>& all = document.sequence.documents.front().pages;
    const FixedPage first = all.front();
    const std::string markup = document.ReadMarkup(first);
    all.clear();
    for (const Wishes& wishes : pages) {
        const std::string number = std::to_string(all.size() + 1);
        FixedPage page;
        page.name = document.AddPart("/Documents/1/Pages/asked" + number + ".fpage", kPageType, markup);
        page.ticket = document.AddPart("/Documents/1/Metadata/asked" + number + "_PT.xml",
                                       package::kPrintTicketContentType,
                                       TicketOf(wishes, device, trial.Settings().host.nsPrefix));
        page.resources = first.resources;
        all.push_back(std::move(page));
    }
    document.Save(path);
}

Element ReadTicket(const std::string& text) {
    return printschema::ReadFramework(text, Tag::PrintTicket, printschema::Duplicates::KeepFirst).root;
}

// The option that a ticket selects of a feature; null when it names none.
const Element* SelectedOption(const Element& ticket, const QName& feature) {
    const Element* const pFeature = ticket.Find(Tag::Feature, feature);
    return pFeature == nullptr ? nullptr : pFeature->Find(Tag::Option);
}

// What a scored property says, by itself or by its parameter; null when it says nothing.
const TypedValue* ValueOf(const Element& ticket, const Element& property) {
    const Element* const pReference = property.Find(Tag::ParameterRef);
    if (pReference == nullptr || !pReference->name) return property.FindValue();
    const Element* const pParameter = ticket.Find(Tag::ParameterInit, *pReference->name);
    return pParameter == nullptr ? nullptr : pParameter->FindValue();
}

// Whether the second ticket has the option of the first, with what the option says there.
bool HasSame(const Element& ticket, const Element& option, const Element& other, const Element& otherOption) {
    if (option.name != otherOption.name) return false;
    return std::ranges::all_of(option.children, [&](const Element& property) {
        if (property.tag != Tag::ScoredProperty || !property.name) return true;
        const TypedValue* const pValue = ValueOf(ticket, property);
        const Element* const pOther = otherOption.Find(Tag::ScoredProperty, *property.name);
        const TypedValue* const pOtherValue = pOther == nullptr ? nullptr : ValueOf(other, *pOther);
        // What the other does not say it has nothing against.
        return pValue == nullptr || pOtherValue == nullptr || SameMeaning(*pValue, *pOtherValue);
    });
}

// "ISOA4 (MediaSizeWidth 210000, MediaSizeHeight 297000)".
std::string TextOf(const Element& ticket, const Element& option) {
    std::string values;
    for (const Element& property : option.children) {
        if (property.tag != Tag::ScoredProperty || !property.name) continue;
        if (const TypedValue* const pValue = ValueOf(ticket, property))
            values += (values.empty() ? "" : ", ") + property.name->local + " " + pValue->text;
    }
    const std::string name = option.name ? option.name->local : "an option without a name";
    return values.empty() ? name : name + " (" + values + ")";
}

std::optional<std::int64_t> NumberOf(const Element& ticket, const Element& option,
                                     std::string_view property) {
    const Element* const pProperty = option.Find(Tag::ScoredProperty, printschema::Keyword(property));
    const TypedValue* const pValue = pProperty == nullptr ? nullptr : ValueOf(ticket, *pProperty);
    return pValue == nullptr ? std::nullopt : printschema::ToInteger(*pValue);
}

const Element* OptionOfDevice(const prntvpt::Device& device, const QName& feature, std::string_view option) {
    const Element* const pFeature = device.capabilities.Find(Tag::Feature, feature);
    return pFeature == nullptr ? nullptr : pFeature->Find(Tag::Option, printschema::Keyword(option));
}

// A page that is turned asks for its sheet turned: a device may have one name for both directions.
bool IsSheetOfDeviceTurned(const prntvpt::Device& device, const Element& ticket, const Element& option) {
    const auto width = NumberOf(ticket, option, "MediaSizeWidth");
    const auto height = NumberOf(ticket, option, "MediaSizeHeight");
    const Element* const pSheets =
        device.capabilities.Find(Tag::Feature, printschema::Keyword("PageMediaSize"));
    if (!width || !height || pSheets == nullptr) return false;
    return std::ranges::any_of(pSheets->children, [&](const Element& sheet) {
        return NumberOf(device.capabilities, sheet, "MediaSizeWidth") == height &&
               NumberOf(device.capabilities, sheet, "MediaSizeHeight") == width;
    });
}

// A scale that is the same in both directions has two names, and a device may have either of them.
bool IsSquareScaleOfDevice(const prntvpt::Device& device, const Element& ticket, const Element& option) {
    const QName scaling = printschema::Keyword("PageScaling");
    const auto width = NumberOf(ticket, option, "ScaleWidth");
    return option.name == printschema::Keyword("Custom") && width &&
           width == NumberOf(ticket, option, "ScaleHeight") &&
           OptionOfDevice(device, scaling, "Custom") == nullptr &&
           OptionOfDevice(device, scaling, "CustomSquare") != nullptr;
}

// What a ticket may ask although the device does something else. The list is closed; docs/validating.md has
// it.
bool IsAllowed(const prntvpt::Device& device, const QName& feature, const Element& ticket,
               const Element& option) {
    if (feature == printschema::Keyword("PageMediaSize"))
        return IsSheetOfDeviceTurned(device, ticket, option);
    return feature == printschema::Keyword("PageScaling") && IsSquareScaleOfDevice(device, ticket, option);
}

// What the device makes otherwise of what a filter asks of it by a new ticket for a page; empty when it does
// all of that. What already stood in the ticket that the page came with is the document's.
std::string ChangedByDevice(const prntvpt::Device& device, const Element& before, const Element& after) {
    const Element validated = prntvpt::MergeAndValidate(device, {}, after, nullptr, kPTPageScope).ticket;
    for (const Element& feature : after.children) {
        if (feature.tag != Tag::Feature || !feature.name) continue;
        const Element* const pAsked = feature.Find(Tag::Option);
        if (pAsked == nullptr || device.capabilities.Find(Tag::Feature, *feature.name) == nullptr) continue;
        const Element* const pBefore = SelectedOption(before, *feature.name);
        if (pBefore != nullptr && HasSame(after, *pAsked, before, *pBefore)) continue;
        const Element* const pTaken = SelectedOption(validated, *feature.name);
        if (pTaken == nullptr || HasSame(after, *pAsked, validated, *pTaken)) continue;
        if (IsAllowed(device, *feature.name, after, *pAsked)) continue;
        return feature.name->local + " " + TextOf(after, *pAsked) + " becomes " + TextOf(validated, *pTaken);
    }
    return {};
}

// Whether there was a new ticket to judge.
bool JudgePages(Trial& trial, const Order& order, const RunResult& result, const prntvpt::Device& device,
                const std::vector<Wishes>& pages) {
    for (const std::string& failure : FailuresOf(result)) trial.Fail(order, result, failure);
    FailWithBreaches(trial, order, result);
    FailWith(trial, order, result, {Check::TicketFormat, Check::TicketTwoPrefixes, Check::TicketRule});
    std::size_t number = 0;
    bool isJudged = false;
    for (const filterhost::PartFacts& part : result.parts) {
        if (part.kind != "FixedPage" || ++number > pages.size()) continue;
        if (!part.newTicket || !part.ownTicket) continue;
        isJudged = true;
        try {
            const std::string changed =
                ChangedByDevice(device, ReadTicket(result.texts.All()[*part.ownTicket]),
                                ReadTicket(result.texts.All()[*part.newTicket]));
            if (changed.empty()) continue;
            trial.Fail(order, {{},
                               "of a page that asks for " + TextOf(pages[number - 1]) +
                                   " the filter asks what the device does not do: " + changed,
                               part.kind + " " + part.name,
                               {}});
        } catch (const printschema::FormatError&) {
            // The checks of what is sent have told of it.
        }
    }
    return isJudged;
}

// The user's device and another one.
std::vector<std::string> ModelsOf(const Trial& trial) {
    const std::string& users = trial.Settings().host.device;
    return {users, users == "longedge" ? "simprinter" : "longedge"};
}

// A test that asks each of the devices for what `combine` makes of its options, a page for each.
std::function<void(Trial&)> Asking(std::vector<Wishes> (*combine)(const Wishes& wishes)) {
    return [combine](Trial& trial) {
        if (trial.Settings().host.systemProvider) throw Skipped("what the system's device does is not known");
        bool isJudged = false;
        for (const std::string& model : ModelsOf(trial)) {
            const prntvpt::Device device = prntvpt::LoadDevice(filterhost::FindDeviceFolder(model));
            const std::vector<Wishes> all = combine(WishesOf(device));
            std::vector<Wishes> chosen;
            for (const unsigned number : trial.Choose(static_cast<unsigned>(all.size())))
                chosen.push_back(all[number - 1]);
            for (std::size_t from = 0; from < chosen.size(); from += kPagesOfADocument) {
                const auto begin = chosen.begin() + static_cast<std::ptrdiff_t>(from);
                const auto count = std::min(kPagesOfADocument, chosen.size() - from);
                const std::vector<Wishes> pages(begin, begin + static_cast<std::ptrdiff_t>(count));
                const Document document{"short.xps with a page for each wish", trial.NewPath("asked.xps")};
                WriteDocument(trial, device, pages, document.path);
                Order order = trial.OrderFor(document);
                order.host.device = model;
                order.host.recordTickets = true;
                isJudged = JudgePages(trial, order, trial.Run(order), device, pages) || isJudged;
            }
        }
        if (!isJudged) throw Skipped("the filter gives no page a new ticket");
    };
}

constexpr std::string_view kTicketAdvice =
    "ask a page's new ticket only for what the capabilities have; a provider that merges and validates it "
    "shows what becomes of it";

}  // namespace

std::vector<Test> TicketTests() {
    return {
        {"each-option-asked-for", 5,
         "whichever option of the device a page asks for, its new ticket asks for what the device does",
         kTicketAdvice, Asking(&OneByOne)},
        {"options-in-pairs", 5,
         "whichever two options of the device a page asks for, its new ticket asks for what the device does",
         kTicketAdvice, Asking(&InPairs)},
    };
}

}  // namespace devkit::validate
