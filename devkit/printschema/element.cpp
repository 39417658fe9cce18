#include "devkit/printschema/element.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <utility>

#include "devkit/common/text.h"
#include "devkit/printschema/names.h"

namespace devkit::printschema {
namespace {

constexpr std::array<std::string_view, kTagCount> kTagNames{
    "PrintTicket", "PrintCapabilities", "Feature",       "Option",       "ScoredProperty",
    "Property",    "ParameterDef",      "ParameterInit", "ParameterRef", "Value"};

[[nodiscard]] const QName* NameOf(const TypedValue& value) {
    return value.name && value.type == SchemaType("QName") ? &*value.name : nullptr;
}

}  // namespace

std::string_view TagName(Tag tag) { return kTagNames[static_cast<std::size_t>(tag)]; }

std::optional<Tag> TagByName(std::string_view name) {
    const auto found = std::find(kTagNames.begin(), kTagNames.end(), name);
    if (found == kTagNames.end()) return std::nullopt;
    return static_cast<Tag>(found - kTagNames.begin());
}

bool operator==(const TypedValue& left, const TypedValue& right) {
    if (left.type != right.type) return false;
    const QName* const pLeft = NameOf(left);
    const QName* const pRight = NameOf(right);
    if (pLeft != nullptr && pRight != nullptr) return *pLeft == *pRight;
    return pLeft == pRight && left.text == right.text;
}

TypedValue IntegerValue(std::int64_t number) {
    return {SchemaType("integer"), std::to_string(number), std::nullopt};
}

TypedValue StringValue(std::string text) { return {SchemaType("string"), std::move(text), std::nullopt}; }

TypedValue NameValue(QName name) {
    std::string local = name.local;
    return {SchemaType("QName"), std::move(local), std::move(name)};
}

bool SameMeaning(const TypedValue& left, const TypedValue& right) {
    const std::optional<std::int64_t> leftNumber = ToInteger(left);
    if (leftNumber) return leftNumber == ToInteger(right);
    if (left.name && right.name) return *left.name == *right.name;
    const std::string_view leftWord =
        left.name ? std::string_view(left.name->local) : common::Trimmed(left.text);
    const std::string_view rightWord =
        right.name ? std::string_view(right.name->local) : common::Trimmed(right.text);
    return leftWord == rightWord;
}

std::optional<std::int64_t> ToInteger(const TypedValue& value) {
    std::string_view text = common::Trimmed(value.text);
    const bool negative = text.starts_with('-');
    // XML Schema allows a plus sign, from_chars does not.
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    std::int64_t number = 0;
    const auto [pEnd, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc::invalid_argument || pEnd != text.data() + text.size()) return std::nullopt;
    if (error == std::errc()) return number;
    return negative ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
}

const Element* Element::Find(Tag childTag) const {
    for (const Element& child : children) {
        if (child.tag == childTag) return &child;
    }
    return nullptr;
}

const Element* Element::Find(Tag childTag, const QName& childName) const {
    for (const Element& child : children) {
        if (child.tag == childTag && child.name == childName) return &child;
    }
    return nullptr;
}

Element* Element::Find(Tag childTag, const QName& childName) {
    for (Element& child : children) {
        if (child.tag == childTag && child.name == childName) return &child;
    }
    return nullptr;
}

const TypedValue* Element::FindValue() const {
    const Element* const pValue = Find(Tag::Value);
    return pValue == nullptr ? nullptr : &pValue->value;
}

const TypedValue* Element::FindProperty(const QName& property) const {
    const Element* const pProperty = Find(Tag::Property, property);
    return pProperty == nullptr ? nullptr : pProperty->FindValue();
}

Element ValueElement(Tag tag, QName name, TypedValue value) {
    Element element;
    element.tag = tag;
    element.name = std::move(name);
    Element& child = element.children.emplace_back();
    child.tag = Tag::Value;
    child.value = std::move(value);
    return element;
}

}  // namespace devkit::printschema
