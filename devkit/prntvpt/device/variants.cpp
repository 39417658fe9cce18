#include "devkit/prntvpt/device/variants.h"

#include "platform/windows.h"

#include <wincrypt.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "devkit/printschema/names.h"
#include "devkit/prntvpt/device/ticketselection.h"

namespace devkit::prntvpt {

using namespace printschema;

namespace {

constexpr std::string_view kFallbackPrivateUri = "http://schemas.example.com/printing/simdevice/v1";
constexpr unsigned kFirstUserForm = 256;

void RemoveFeature(Device& device, const QName& name) {
    const auto isFeature = [&](const Element& entry) {
        return entry.tag == Tag::Feature && entry.name == name;
    };
    std::erase_if(device.capabilities.children, isFeature);
    std::erase_if(device.defaultTicket.children, isFeature);
    std::erase_if(device.constraints, [&](const Constraint& constraint) {
        return constraint.when.feature == name || constraint.with.feature == name ||
               constraint.feature == name;
    });
}

void RemoveParameters(Device& device, const std::set<QName>& names) {
    const auto isParameter = [&](const Element& entry) {
        const bool counts = entry.tag == Tag::ParameterDef || entry.tag == Tag::ParameterInit;
        return counts && names.contains(*entry.name);
    };
    std::erase_if(device.capabilities.children, isParameter);
    std::erase_if(device.defaultTicket.children, isParameter);
}

void RemoveScaling(Device& device) {
    const QName name = Keyword("PageScaling");
    const Element* const pScaling = device.capabilities.Find(Tag::Feature, name);
    if (pScaling == nullptr) return;
    const std::set<QName> parameters = ReferencesOf({*pScaling});
    RemoveFeature(device, name);
    RemoveParameters(device, parameters);
}

void RenameFeature(Device& device, const QName& from, const QName& to) {
    const auto rename = [&](QName& name) {
        if (name == from) name = to;
    };
    for (Element* const pRoot : {&device.capabilities, &device.defaultTicket}) {
        if (Element* const pFeature = pRoot->Find(Tag::Feature, from)) pFeature->name = to;
    }
    for (Constraint& constraint : device.constraints) {
        rename(constraint.when.feature);
        rename(constraint.with.feature);
        rename(constraint.feature);
    }
}

void MoveBins(Device& device, BinScope scope) {
    if (scope == BinScope::Job) return;
    RenameFeature(device, Keyword("JobInputBin"),
                  Keyword(scope == BinScope::Document ? "DocumentInputBin" : "PageInputBin"));
}

void StateFeedAs(Element& element, FeedStatement statement, bool isTicket) {
    const QName name = Keyword("FeedDirection");
    if (element.tag == Tag::Option) {
        const auto isFeed = [&](const Element& child) {
            return child.tag == Tag::ScoredProperty && child.name == name;
        };
        // A ticket's options have no properties.
        if (statement == FeedStatement::Absent || isTicket) {
            std::erase_if(element.children, isFeed);
        } else if (Element* const pFeed = element.Find(Tag::ScoredProperty, name)) {
            pFeed->tag = Tag::Property;
        }
    }
    for (Element& child : element.children) StateFeedAs(child, statement, isTicket);
}

void StateFeed(Device& device, FeedStatement statement) {
    if (statement == FeedStatement::ScoredProperty) return;
    StateFeedAs(device.capabilities, statement, false);
    StateFeedAs(device.defaultTicket, statement, true);
}

void MakeLetterDefault(Device& device) {
    const QName feature = Keyword("PageMediaSize");
    const QName letter = Keyword("NorthAmericaLetter");
    const Element* const pOffered = device.capabilities.Find(Tag::Feature, feature);
    const Element* const pLetter = pOffered == nullptr ? nullptr : pOffered->Find(Tag::Option, letter);
    Element* const pDefault = device.defaultTicket.Find(Tag::Feature, feature);
    if (pLetter == nullptr || pDefault == nullptr) {
        throw DeviceError("us=1: the device has no NorthAmericaLetter");
    }
    pDefault->children = {SelectOption(*pLetter)};
}

[[nodiscard]] const std::string& PrivateUri(const Device& device, const std::string& fallback) {
    return device.privateUris.empty() ? fallback : device.privateUris.front();
}

[[nodiscard]] Element SnapshotDefinition(const QName& name, std::size_t length) {
    Element definition;
    definition.tag = Tag::ParameterDef;
    definition.name = name;
    const auto add = [&](std::string_view property, TypedValue value) {
        definition.children.push_back(ValueElement(Tag::Property, FrameworkName(property), std::move(value)));
    };
    add("DataType", NameValue(SchemaType("string")));
    add("UnitType", StringValue("base64"));
    add("MinLength", IntegerValue(0));
    add("MaxLength", IntegerValue(static_cast<std::int64_t>(length)));
    add("DefaultValue", StringValue(""));
    add("Mandatory", NameValue(Keyword("Optional")));
    return definition;
}

[[nodiscard]] std::string Base64(const std::string& bytes) {
    const auto* const pBytes = reinterpret_cast<const BYTE*>(bytes.data());
    const auto size = static_cast<DWORD>(bytes.size());
    constexpr DWORD kForm = CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF;
    DWORD length = 0;
    // The length counts the zero at the end here, and does not below.
    if (!CryptBinaryToStringA(pBytes, size, kForm, nullptr, &length))
        throw DeviceError("snapshot: no base64");
    std::string text(length, '\0');
    if (!CryptBinaryToStringA(pBytes, size, kForm, text.data(), &length))
        throw DeviceError("snapshot: no base64");
    text.resize(length);
    return text;
}

// The bytes count up, so that a cut or a shift shows.
void AddSnapshot(Device& device, unsigned bytes) {
    std::string content(bytes, '\0');
    for (unsigned index = 0; index < bytes; ++index) content[index] = static_cast<char>(index % 251);
    const std::string text = Base64(content);
    const std::string fallback(kFallbackPrivateUri);
    const QName name{PrivateUri(device, fallback), "PageDevmodeSnapshot"};
    std::vector<Element>& definitions = device.capabilities.children;
    definitions.insert(definitions.begin(), SnapshotDefinition(name, text.size()));
    std::vector<Element>& entries = device.defaultTicket.children;
    entries.insert(entries.begin(), ValueElement(Tag::ParameterInit, name, StringValue(text)));
}

[[nodiscard]] std::string UserForm(unsigned index) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "User%010u", kFirstUserForm + index);
    return text.data();
}

void RenameOptions(std::vector<QName>& names, const std::map<QName, QName>& renamed) {
    for (QName& name : names) {
        if (const auto found = renamed.find(name); found != renamed.end()) name = found->second;
    }
}

void RenameSelected(Element& feature, const std::map<QName, QName>& renamed) {
    for (Element& option : feature.children) {
        if (option.tag != Tag::Option || !option.name) continue;
        if (const auto found = renamed.find(*option.name); found != renamed.end()) {
            option.name = found->second;
        }
    }
}

// All fixed sheets; CustomMediaSize is none.
void HideSizeNames(Device& device) {
    const QName feature = Keyword("PageMediaSize");
    Element* const pOffered = device.capabilities.Find(Tag::Feature, feature);
    Element* const pDefault = device.defaultTicket.Find(Tag::Feature, feature);
    if (pOffered == nullptr || pDefault == nullptr) return;
    const std::string fallback(kFallbackPrivateUri);
    const std::string uri = PrivateUri(device, fallback);
    std::map<QName, QName> renamed;
    unsigned index = 0;
    for (const Element& option : pOffered->children) {
        const bool isSheet = option.tag == Tag::Option && option.name && ReferencesOf({option}).empty();
        if (isSheet) renamed[*option.name] = {uri, UserForm(index++)};
    }
    RenameSelected(*pOffered, renamed);
    RenameSelected(*pDefault, renamed);
    std::map<QName, Margins> margins;
    for (const auto& [option, value] : device.optionMargins) {
        const auto found = renamed.find(option);
        margins[found == renamed.end() ? option : found->second] = value;
    }
    device.optionMargins = std::move(margins);
    for (Constraint& constraint : device.constraints) {
        if (constraint.when.feature == feature) RenameOptions(constraint.when.options, renamed);
        if (constraint.with.feature == feature) RenameOptions(constraint.with.options, renamed);
        if (constraint.feature == feature && renamed.contains(constraint.option)) {
            constraint.option = renamed[constraint.option];
        }
    }
}

}  // namespace

void ApplyVariants(const Variants& variants, Device& device) {
    if (variants.noScaling) RemoveScaling(device);
    if (variants.noCopies) {
        RemoveParameters(device, {Keyword("JobCopiesAllDocuments"), Keyword("DocumentCopiesAllPages"),
                                  Keyword("PageCopies")});
    }
    MoveBins(device, variants.bins);
    StateFeed(device, variants.feed);
    if (variants.letterDefault) MakeLetterDefault(device);
    if (variants.privateSizeNames) HideSizeNames(device);
    if (variants.snapshotBytes != 0) AddSnapshot(device, variants.snapshotBytes);
    device.Index();
}

}  // namespace devkit::prntvpt
