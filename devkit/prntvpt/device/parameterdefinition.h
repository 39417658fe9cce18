#pragma once

#include <cstdint>
#include <optional>

#include "devkit/printschema/element.h"

namespace devkit::prntvpt {

using printschema::Element;
using printschema::QName;
using printschema::Tag;
using printschema::TypedValue;

enum class ParameterKind { Integer, Decimal, Text };

enum class Mandatory {
    Unconditional,  // every ticket has a value
    Conditional,    // a ticket whose options refer to it has one
    Optional,
};

// What capabilities say of a parameter.
struct ParameterDefinition {
    QName name;
    ParameterKind kind = ParameterKind::Text;
    Mandatory mandatory = Mandatory::Optional;
    // Of an integer its value; of a text its length in characters.
    std::optional<std::int64_t> min;
    std::optional<std::int64_t> max;
    std::int64_t multiple = 1;  // integers
    std::optional<double> decimalMin;
    std::optional<double> decimalMax;
    TypedValue defaultValue;

    [[nodiscard]] bool Contains(std::int64_t number) const;
    // Whether the value is of the type and in the range; the multiple does not count.
    [[nodiscard]] bool Accepts(const TypedValue& value) const;
};

// Reads a ParameterDef element. FormatError when it lacks a type or a default of that type.
[[nodiscard]] ParameterDefinition ReadParameterDefinition(const Element& element);

struct CheckedValue {
    TypedValue value;
    bool changed = false;
};

// The value that a ticket may hold for the parameter: a number is brought into the range and to the nearest
// multiple; what is missing, of another type or a text of a wrong length becomes the default.
[[nodiscard]] CheckedValue CheckParameter(const ParameterDefinition& definition, const TypedValue* pGiven);

}  // namespace devkit::prntvpt
