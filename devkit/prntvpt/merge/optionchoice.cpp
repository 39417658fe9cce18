#include "devkit/prntvpt/merge/optionchoice.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>

#include "devkit/printschema/names.h"
#include "devkit/prntvpt/device/ticketselection.h"
#include "devkit/prntvpt/merge/optionscore.h"

namespace devkit::prntvpt {

using namespace printschema;

namespace {

using Choices = std::vector<ChosenOption>;

[[nodiscard]] bool IsPickMany(const Element& feature) {
    const TypedValue* const pValue = feature.FindProperty(FrameworkName("SelectionType"));
    return pValue != nullptr && SameMeaning(*pValue, NameValue(Keyword("PickMany")));
}

[[nodiscard]] bool IsIdentity(const ChosenOption& choice) {
    const TypedValue* const pValue = choice.pOffered->FindProperty(FrameworkName("IdentityOption"));
    return pValue != nullptr && pValue->text == "True";
}

struct Candidate {
    const Element* pOption = nullptr;
    OptionScore score;
};

// The best of the options, the first of equals: the order of the capabilities is the device's preference.
[[nodiscard]] Candidate FindBest(const Element& asked, const Element& offeredFeature,
                                 const ParameterSource& parameters, const Switches& behaviour) {
    Candidate best;
    for (const Element& offered : offeredFeature.children) {
        if (offered.tag != Tag::Option || !IsSelectable(offered, behaviour)) continue;
        const OptionScore score = ScoreOption(asked, offered, parameters);
        if (!score.Matches()) continue;
        if (best.pOption == nullptr || score.score > best.score.score) best = {&offered, score};
    }
    return best;
}

// The device has what is asked for, but it cannot be selected. Then the default is better than the next best
// match: who asks for a tray that is not fitted wants no other tray that happens to hold the same paper.
[[nodiscard]] bool IsBarred(const Element& asked, const Candidate& best, const Element& offeredFeature) {
    if (!asked.name || best.score.nameEqual) return false;
    return std::any_of(
        offeredFeature.children.begin(), offeredFeature.children.end(),
        [&](const Element& offered) { return offered.tag == Tag::Option && offered.name == asked.name; });
}

[[nodiscard]] std::optional<std::int64_t> NumberOf(const Element& option, const QName& property,
                                                   const Element& ticket) {
    const Element* const pProperty = option.Find(Tag::ScoredProperty, property);
    const TypedValue* const pValue = pProperty == nullptr ? nullptr : ResolveValue(*pProperty, ticket);
    return pValue == nullptr ? std::nullopt : ToInteger(*pValue);
}

// The sheet of the device whose width and height differ least from those asked for, in sum.
[[nodiscard]] const Element* FindNearestSheet(const Element& asked, const Element& offeredFeature,
                                              const PassState& state) {
    const QName widthName = Keyword("MediaSizeWidth");
    const QName heightName = Keyword("MediaSizeHeight");
    const auto width = NumberOf(asked, widthName, state.ticket);
    const auto height = NumberOf(asked, heightName, state.ticket);
    if (!width || !height) return nullptr;
    const Element* pNearest = nullptr;
    double least = std::numeric_limits<double>::max();
    for (const Element& offered : offeredFeature.children) {
        if (offered.tag != Tag::Option || !IsSelectable(offered, state.behaviour)) continue;
        const Element none;
        const auto offeredWidth = NumberOf(offered, widthName, none);
        const auto offeredHeight = NumberOf(offered, heightName, none);
        if (!offeredWidth || !offeredHeight) continue;
        const double difference =
            std::abs(static_cast<double>(*width) - static_cast<double>(*offeredWidth)) +
            std::abs(static_cast<double>(*height) - static_cast<double>(*offeredHeight));
        if (difference < least) {
            least = difference;
            pNearest = &offered;
        }
    }
    return pNearest;
}

// What stands for one option of the ticket, none when the device has nothing like it.
[[nodiscard]] ChosenOption ChooseFor(const Element& asked, const Element& offeredFeature, PassState& state) {
    const Candidate best = FindBest(asked, offeredFeature, {state.ticket, state.device}, state.behaviour);
    if (best.pOption != nullptr && !IsBarred(asked, best, offeredFeature)) {
        if (!best.score.nameEqual && !best.score.exact) state.conflict = true;
        return {best.pOption, &asked, best.score.exact};
    }
    state.conflict = true;
    if (state.behaviour.fallback == Fallback::Nearest && offeredFeature.name == Keyword("PageMediaSize")) {
        return {FindNearestSheet(asked, offeredFeature, state), nullptr, false};
    }
    return {};
}

[[nodiscard]] Choices DefaultChoices(const Element& offeredFeature, const Element* pDefaultFeature,
                                     const PassState& state) {
    Choices choices;
    const ParameterSource parameters{state.device.defaultTicket, state.device};
    if (pDefaultFeature != nullptr) {
        for (const Element& option : pDefaultFeature->children) {
            if (option.tag != Tag::Option) continue;
            const Candidate best = FindBest(option, offeredFeature, parameters, state.behaviour);
            if (best.pOption != nullptr && best.score.exact) choices.push_back({best.pOption, nullptr, true});
        }
    }
    if (!choices.empty()) return choices;
    const auto first = std::find_if(
        offeredFeature.children.begin(), offeredFeature.children.end(), [&](const Element& offered) {
            return offered.tag == Tag::Option && IsSelectable(offered, state.behaviour);
        });
    if (first != offeredFeature.children.end()) choices.push_back({&*first, nullptr, true});
    return choices;
}

// Of several options, an identity option stays alone, and none stays twice.
void Reduce(Choices& choices, PassState& state) {
    const auto identity = std::find_if(choices.begin(), choices.end(), IsIdentity);
    if (identity != choices.end() && choices.size() > 1) {
        choices = {*identity};
        state.conflict = true;
    }
    for (auto choice = choices.begin(); choice != choices.end(); ++choice) {
        choices.erase(
            std::remove_if(choice + 1, choices.end(),
                           [&](const ChosenOption& other) { return other.pOffered == choice->pOffered; }),
            choices.end());
    }
}

}  // namespace

bool IsSelectable(const Element& option, const Switches& behaviour) {
    if (option.constrained == Keyword("AdminSettings")) return false;
    if (option.constrained == Keyword("DeviceSettings")) return false;
    const bool strict =
        behaviour.privateNames == PrivateNames::Strict && behaviour.strictExtent == StrictExtent::Options;
    return !strict || !option.name || IsPublicNamespace(option.name->uri);
}

std::vector<ChosenOption> ChooseOptions(const Element& offeredFeature, const Element* pAskedFeature,
                                        const Element* pDefaultFeature, PassState& state) {
    Choices choices;
    const bool many = IsPickMany(offeredFeature);
    bool isFirst = true;
    if (pAskedFeature != nullptr) {
        for (const Element& asked : pAskedFeature->children) {
            if (asked.tag != Tag::Option) continue;
            if (!many && !isFirst) {
                state.conflict = true;
                break;
            }
            isFirst = false;
            const ChosenOption choice = ChooseFor(asked, offeredFeature, state);
            if (choice.pOffered != nullptr) choices.push_back(choice);
        }
    }
    Reduce(choices, state);
    return choices.empty() ? DefaultChoices(offeredFeature, pDefaultFeature, state) : choices;
}

}  // namespace devkit::prntvpt
