#include "devkit/prntvpt/merge/optionscore.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace devkit::prntvpt {
namespace {

constexpr int NameScore = 1000;
constexpr int PropertyScore = 10;
constexpr int MaxDistance = 9;

// From 1 to 9, by how much the numbers differ in proportion to the greater.
[[nodiscard]] int Distance(std::int64_t left, std::int64_t right) {
    const double wide =
        std::max({std::abs(static_cast<double>(left)), std::abs(static_cast<double>(right)), 1.0});
    const double part = std::abs(static_cast<double>(left) - static_cast<double>(right)) / wide;
    return std::clamp(static_cast<int>(part * (MaxDistance + 1)), 1, MaxDistance);
}

struct PropertyMatch {
    bool equal = false;
    int score = 0;
};

[[nodiscard]] PropertyMatch CompareWithParameter(const Element& asked, const QName& parameter,
                                                 const ParameterSource& parameters) {
    const Element* const pReference = asked.Find(Tag::ParameterRef);
    if (pReference != nullptr && pReference->name == parameter) return {true, PropertyScore};
    const TypedValue* const pValue = ResolveValue(asked, parameters.ticket);
    const ParameterDefinition* const pDefinition = parameters.device.FindParameter(parameter);
    if (pValue == nullptr || pDefinition == nullptr || !pDefinition->Accepts(*pValue)) return {};
    return {true, PropertyScore};
}

[[nodiscard]] PropertyMatch CompareWithValue(const Element& asked, const TypedValue& offered,
                                             const ParameterSource& parameters) {
    const TypedValue* const pValue = ResolveValue(asked, parameters.ticket);
    if (pValue == nullptr) return {};
    if (SameMeaning(*pValue, offered)) return {true, PropertyScore};
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
    result.score = result.nameEqual ? NameScore : 0;
    result.exact = true;
    CompareProperties(asked, offered, parameters, result);
    // An option without a name is what its scored properties say.
    result.exact = result.exact && (result.nameEqual || !asked.name);
    return result;
}

const TypedValue* ResolveValue(const Element& scoredProperty, const Element& ticket) {
    const Element* const pReference = scoredProperty.Find(Tag::ParameterRef);
    if (pReference == nullptr) return scoredProperty.FindValue();
    const Element* const pInit = ticket.Find(Tag::ParameterInit, *pReference->name);
    return pInit == nullptr ? nullptr : pInit->FindValue();
}

}  // namespace devkit::prntvpt
