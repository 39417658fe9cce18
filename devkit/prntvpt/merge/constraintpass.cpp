#include "devkit/prntvpt/merge/constraintpass.h"

#include <algorithm>
#include <optional>

#include "devkit/prntvpt/device/ticketselection.h"

namespace devkit::prntvpt {

using namespace printschema;

namespace {

// More rounds than any sensible set of constraints needs; a circle of constraints ends here.
constexpr int kMaxRounds = 32;

[[nodiscard]] bool IsOneOf(const std::optional<QName>& name, const std::vector<QName>& names) {
    return name && std::find(names.begin(), names.end(), *name) != names.end();
}

[[nodiscard]] bool IsAbove(const Element& option, const Condition& condition) {
    const Element* const pProperty = option.Find(Tag::ScoredProperty, condition.scoredProperty);
    const TypedValue* const pValue = pProperty == nullptr ? nullptr : pProperty->FindValue();
    const std::optional<std::int64_t> number = pValue == nullptr ? std::nullopt : ToInteger(*pValue);
    return number && *number > condition.limit;
}

template <typename Features>
[[nodiscard]] auto FindFeature(Features& features, const QName& name) {
    return std::find_if(features.begin(), features.end(),
                        [&](const Element& feature) { return feature.name == name; });
}

// Puts the device's option in the place of those that are selected; not when there is no such option.
bool Select(const Device& device, const Constraint& constraint, std::vector<Element>& features) {
    const auto feature = FindFeature(features, constraint.feature);
    const Element* const pOffered = device.capabilities.Find(Tag::Feature, constraint.feature);
    const Element* const pOption =
        pOffered == nullptr ? nullptr : pOffered->Find(Tag::Option, constraint.option);
    if (feature == features.end() || pOption == nullptr) return false;
    std::erase_if(feature->children, [](const Element& child) { return child.tag == Tag::Option; });
    feature->children.insert(feature->children.begin(), SelectOption(*pOption));
    return true;
}

}  // namespace

bool Meets(const Condition& condition, const std::vector<Element>& features) {
    const auto feature = FindFeature(features, condition.feature);
    const Element* const pOption = feature == features.end() ? nullptr : feature->Find(Tag::Option);
    if (pOption == nullptr) return false;
    switch (condition.kind) {
        case Condition::Kind::OneOf:
            return IsOneOf(pOption->name, condition.options);
        case Condition::Kind::NoneOf:
            return !IsOneOf(pOption->name, condition.options);
        case Condition::Kind::Above:
            return IsAbove(*pOption, condition);
    }
    return false;
}

bool Violates(const Constraint& constraint, const std::vector<Element>& features) {
    return Meets(constraint.when, features) && Meets(constraint.with, features);
}

// One constraint's resolution can violate another that was met before, so all are tried again until nothing
// changes. Their order in the model decides which setting gives way.
bool ResolveConstraints(const Device& device, std::vector<Element>& features) {
    bool changedAny = false;
    bool changed = true;
    for (int round = 0; changed && round < kMaxRounds; ++round) {
        changed = false;
        for (const Constraint& constraint : device.constraints) {
            if (Violates(constraint, features) && Select(device, constraint, features)) changed = true;
        }
        changedAny = changedAny || changed;
    }
    return changedAny;
}

}  // namespace devkit::prntvpt
