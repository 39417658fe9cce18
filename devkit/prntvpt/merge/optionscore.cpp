#include "devkit/prntvpt/merge/optionscore.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "devkit/prntvpt/device/ticketselection.h"

namespace devkit::prntvpt {

using namespace printschema;

namespace {

// The platform documents what counts, a common name above all and the scored properties after it, and leaves
// the numbers to the provider. A name outweighs any number of properties that a real option has; an equal
// property outweighs the greatest distance of another, so that one thing in common is always worth having.
constexpr int kNameScore = 1000;
constexpr int kPropertyScore = 10;
constexpr int kMaxDistance = 9;

// From 1 to 9, by how much the numbers differ in proportion to the greater.
[[nodiscard]] int Distance(std::int64_t left, std::int64_t right) {
    const double wide =
        std::max({std::abs(static_cast<double>(left)), std::abs(static_cast<double>(right)), 1.0});
    const double part = std::abs(static_cast<double>(left) - static_cast<double>(right)) / wide;
    return std::clamp(static_cast<int>(part * (kMaxDistance + 1)), 1, kMaxDistance);
}

struct PropertyMatch {
    bool equal = false;
    int score = 0;
};

[[nodiscard]] PropertyMatch CompareWithParameter(const Element& asked, const QName& parameter,
                                                 const ParameterSource& parameters) {
    const Element* const pReference = asked.Find(Tag::ParameterRef);
    if (pReference != nullptr && pReference->name == parameter) return {true, kPropertyScore};
    const TypedValue* const pValue = ResolveValue(asked, parameters.ticket);
    const ParameterDefinition* const pDefinition = parameters.device.FindParameter(parameter);
    if (pValue == nullptr || pDefinition == nullptr || !pDefinition->Accepts(*pValue)) return {};
    return {true, kPropertyScore};
}

[[nodiscard]] PropertyMatch CompareWithValue(const Element& asked, const TypedValue& offered,
                                             const ParameterSource& parameters) {
    const TypedValue* const pValue = ResolveValue(asked, parameters.ticket);
    if (pValue == nullptr) return {};
    if (SameMeaning(*pValue, offered)) return {true, kPropertyScore};
    const auto left = ToInteger(*pValue);
    const auto right = ToInteger(offered);
    return {false, left && right ? -Distance(*left, *right) : 0};
}

void CompareProperties(const Element& asked, const Element& offered, const ParameterSource& parameters,
                       OptionScore& result) {
    for (const Element& property : asked.children) {
        if (property.tag != Tag::ScoredProperty) continue;
        const Element* const pOffered = offered.Find(Tag::ScoredProperty, *property.name);
        if (pOffered == nullptr) {
            result.exact = false;
            continue;
        }
        PropertyMatch match;
        if (const Element* const pReference = pOffered->Find(Tag::ParameterRef)) {
            match = CompareWithParameter(property, *pReference->name, parameters);
        } else if (const TypedValue* const pValue = pOffered->FindValue()) {
            match = CompareWithValue(property, *pValue, parameters);
        } else {
            // It only groups others.
            CompareProperties(property, *pOffered, parameters, result);
            continue;
        }
        result.score += match.score;
        result.equalProperties += match.equal ? 1 : 0;
        result.exact = result.exact && match.equal;
    }
}

}  // namespace

OptionScore ScoreOption(const Element& asked, const Element& offered, const ParameterSource& parameters) {
    OptionScore result;
    result.nameEqual = asked.name && asked.name == offered.name;
    result.score = result.nameEqual ? kNameScore : 0;
    result.exact = true;
    CompareProperties(asked, offered, parameters, result);
    // An option without a name is what its scored properties say.
    result.exact = result.exact && (result.nameEqual || !asked.name);
    return result;
}

}  // namespace devkit::prntvpt
