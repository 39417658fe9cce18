#include "devkit/prntvpt/device/parameterdefinition.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>
#include <utility>

#include "devkit/printschema/names.h"
#include "devkit/printschema/reader.h"

namespace devkit::prntvpt {

using namespace printschema;

namespace {

[[nodiscard]] std::optional<double> ToDecimal(const TypedValue& value) {
    const std::size_t first = value.text.find_first_not_of(" \t\r\n+");
    if (first == std::string::npos) return std::nullopt;
    const std::size_t end = value.text.find_last_not_of(" \t\r\n") + 1;
    double number = 0;
    const char* const pEnd = value.text.data() + end;
    const auto [pStop, error] =
        std::from_chars(value.text.data() + first, pEnd, number, std::chars_format::fixed);
    if (error != std::errc() || pStop != pEnd || !std::isfinite(number)) return std::nullopt;
    return number;
}

[[nodiscard]] TypedValue DecimalValue(double number) {
    char text[400];
    const auto [pEnd, error] = std::to_chars(text, text + sizeof(text), number, std::chars_format::fixed);
    return {SchemaType("decimal"), std::string(text, pEnd), std::nullopt};
}

// Characters of UTF-8: every byte but those that continue one.
[[nodiscard]] std::int64_t Length(const std::string& text) {
    return std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; });
}

// The multiple that is nearest to the number.
[[nodiscard]] std::int64_t Round(std::int64_t number, std::int64_t multiple) {
    const std::int64_t rest = ((number % multiple) + multiple) % multiple;
    return rest * 2 < multiple ? number - rest : number - rest + multiple;
}

[[nodiscard]] std::int64_t Fit(const ParameterDefinition& definition, std::int64_t number) {
    // First the range, so that the rounding cannot overflow; what rounding takes out of it comes back.
    if (definition.min) number = std::max(number, *definition.min);
    if (definition.max) number = std::min(number, *definition.max);
    if (definition.multiple <= 1 || number % definition.multiple == 0) return number;
    number = Round(number, definition.multiple);
    if (definition.max && number > *definition.max) number -= definition.multiple;
    if (definition.min && number < *definition.min) number += definition.multiple;
    return number;
}

[[nodiscard]] CheckedValue CheckInteger(const ParameterDefinition& definition, const TypedValue& given) {
    const std::optional<std::int64_t> number = ToInteger(given);
    if (!number) return {definition.defaultValue, true};
    const std::int64_t fitted = Fit(definition, *number);
    return {IntegerValue(fitted), fitted != *number};
}

[[nodiscard]] CheckedValue CheckDecimal(const ParameterDefinition& definition, const TypedValue& given) {
    const std::optional<double> number = ToDecimal(given);
    if (!number) return {definition.defaultValue, true};
    double fitted = *number;
    if (definition.decimalMin) fitted = std::max(fitted, *definition.decimalMin);
    if (definition.decimalMax) fitted = std::min(fitted, *definition.decimalMax);
    if (fitted < *number || fitted > *number) return {DecimalValue(fitted), true};
    return {{SchemaType("decimal"), given.text, std::nullopt}, false};
}

[[nodiscard]] CheckedValue CheckText(const ParameterDefinition& definition, const TypedValue& given) {
    if (!definition.Contains(Length(given.text))) return {definition.defaultValue, true};
    return {StringValue(given.text), false};
}

[[nodiscard]] std::optional<std::int64_t> IntegerProperty(const Element& element, std::string_view name) {
    const TypedValue* const pValue = element.FindProperty(FrameworkName(name));
    return pValue == nullptr ? std::nullopt : ToInteger(*pValue);
}

[[nodiscard]] std::optional<double> DecimalProperty(const Element& element, std::string_view name) {
    const TypedValue* const pValue = element.FindProperty(FrameworkName(name));
    return pValue == nullptr ? std::nullopt : ToDecimal(*pValue);
}

[[nodiscard]] ParameterKind ReadKind(const Element& element) {
    const TypedValue* const pType = element.FindProperty(FrameworkName("DataType"));
    if (pType != nullptr && SameMeaning(*pType, NameValue(SchemaType("integer")))) {
        return ParameterKind::Integer;
    }
    if (pType != nullptr && SameMeaning(*pType, NameValue(SchemaType("decimal")))) {
        return ParameterKind::Decimal;
    }
    if (pType != nullptr && SameMeaning(*pType, NameValue(SchemaType("string")))) return ParameterKind::Text;
    throw FormatError("The parameter " + element.name->local + " has no known DataType");
}

[[nodiscard]] Mandatory ReadMandatory(const Element& element) {
    const TypedValue* const pValue = element.FindProperty(FrameworkName("Mandatory"));
    if (pValue != nullptr && SameMeaning(*pValue, NameValue(Keyword("Unconditional")))) {
        return Mandatory::Unconditional;
    }
    if (pValue != nullptr && SameMeaning(*pValue, NameValue(Keyword("Conditional")))) {
        return Mandatory::Conditional;
    }
    return Mandatory::Optional;
}

}  // namespace

bool ParameterDefinition::Contains(std::int64_t number) const {
    return (!min || number >= *min) && (!max || number <= *max);
}

bool ParameterDefinition::Accepts(const TypedValue& value) const {
    if (kind != ParameterKind::Integer) return !CheckParameter(*this, &value).changed;
    const std::optional<std::int64_t> number = ToInteger(value);
    return number && Contains(*number);
}

ParameterDefinition ReadParameterDefinition(const Element& element) {
    ParameterDefinition definition;
    definition.name = *element.name;
    definition.kind = ReadKind(element);
    definition.mandatory = ReadMandatory(element);
    const bool isText = definition.kind == ParameterKind::Text;
    definition.min = IntegerProperty(element, isText ? "MinLength" : "MinValue");
    definition.max = IntegerProperty(element, isText ? "MaxLength" : "MaxValue");
    definition.decimalMin = DecimalProperty(element, "MinValue");
    definition.decimalMax = DecimalProperty(element, "MaxValue");
    definition.multiple = std::max<std::int64_t>(IntegerProperty(element, "Multiple").value_or(1), 1);
    const TypedValue* const pDefault = element.FindProperty(FrameworkName("DefaultValue"));
    if (pDefault == nullptr) throw FormatError("The parameter " + definition.name.local + " has no default");
    definition.defaultValue = *pDefault;
    CheckedValue checked = CheckParameter(definition, pDefault);
    if (checked.changed) {
        throw FormatError("The default of the parameter " + definition.name.local + " is out of range");
    }
    definition.defaultValue = std::move(checked.value);
    return definition;
}

CheckedValue CheckParameter(const ParameterDefinition& definition, const TypedValue* pGiven) {
    if (pGiven == nullptr) return {definition.defaultValue, true};
    switch (definition.kind) {
        case ParameterKind::Integer:
            return CheckInteger(definition, *pGiven);
        case ParameterKind::Decimal:
            return CheckDecimal(definition, *pGiven);
        case ParameterKind::Text:
            return CheckText(definition, *pGiven);
    }
    return {definition.defaultValue, true};
}

}  // namespace devkit::prntvpt
