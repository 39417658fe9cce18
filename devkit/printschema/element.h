#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devkit/printschema/names.h"

namespace devkit::printschema {

// The elements of the Print Schema Framework.
enum class Tag : std::uint8_t {
    PrintTicket,
    PrintCapabilities,
    Feature,
    Option,
    ScoredProperty,
    Property,
    ParameterDef,
    ParameterInit,
    ParameterRef,
    Value,
};
inline constexpr std::size_t kTagCount = 10;

[[nodiscard]] std::string_view TagName(Tag tag);
[[nodiscard]] std::optional<Tag> TagByName(std::string_view name);

// The content of a Value element.
struct TypedValue {
    QName type;        // xsi:type, xsd:string when the element states none
    std::string text;  // as it stands in the document
    // What the text names when it begins with a bound prefix; for the type QName it is the value itself.
    std::optional<QName> name;

    // Of a QName the name counts, not the prefix that it is written with; else the text.
    friend bool operator==(const TypedValue& left, const TypedValue& right);
};

[[nodiscard]] TypedValue IntegerValue(std::int64_t number);
[[nodiscard]] TypedValue StringValue(std::string text);
[[nodiscard]] TypedValue NameValue(QName name);

// Whether two values mean the same: numbers by value, names by namespace and local name, and a bare word
// equals the name that ends with it, because producers write keywords in all three ways.
[[nodiscard]] bool SameMeaning(const TypedValue& left, const TypedValue& right);

// The value as a whole number; white space around it does not count. A number beyond 64 bits becomes the
// nearest that fits; nothing when the text is no whole number.
[[nodiscard]] std::optional<std::int64_t> ToInteger(const TypedValue& value);

// A node of a ticket or of capabilities.
struct Element {
    Tag tag = Tag::PrintTicket;
    std::optional<QName> name;
    std::optional<QName> constrained;  // options of capabilities
    TypedValue value;                  // Tag::Value
    std::vector<Element> children;

    // The first child of that tag (and name), null when there is none.
    [[nodiscard]] const Element* Find(Tag childTag) const;
    [[nodiscard]] const Element* Find(Tag childTag, const QName& childName) const;
    [[nodiscard]] Element* Find(Tag childTag, const QName& childName);
    // The content of the first Value child, null when there is none.
    [[nodiscard]] const TypedValue* FindValue() const;
    // The content of the Value of the child Property of that name, null when there is none.
    [[nodiscard]] const TypedValue* FindProperty(const QName& property) const;

    friend bool operator==(const Element&, const Element&) = default;
};

// An element with a single Value child, as ScoredProperty, Property and ParameterInit are.
[[nodiscard]] Element ValueElement(Tag tag, QName name, TypedValue value);

}  // namespace devkit::printschema
