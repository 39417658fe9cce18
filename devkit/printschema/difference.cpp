#include "devkit/printschema/difference.h"

#include <algorithm>
#include <limits>
#include <tuple>
#include <utility>

#include "devkit/printschema/summary.h"

namespace devkit::printschema {
namespace {

using Prefixes = std::vector<PrefixBinding>;

// The prefixes of the first ticket, and of the second those that are bound to other namespaces. One that
// means something else in the first gets marks behind it.
[[nodiscard]] Prefixes Join(const Prefixes& first, const Prefixes& second) {
    Prefixes joined = first;
    for (PrefixBinding binding : second) {
        const auto has = [&](const auto& member, const std::string& value) {
            return std::any_of(joined.begin(), joined.end(),
                               [&](const PrefixBinding& each) { return each.*member == value; });
        };
        if (has(&PrefixBinding::uri, binding.uri)) continue;
        while (has(&PrefixBinding::prefix, binding.prefix)) binding.prefix += '\'';
        joined.push_back(std::move(binding));
    }
    return joined;
}

// Features keep their order; what stands inside them is sorted, so that equal settings have equal texts.
void Sort(Element& element) {
    for (Element& child : element.children) Sort(child);
    if (element.tag == Tag::PrintTicket) return;
    std::stable_sort(element.children.begin(), element.children.end(),
                     [](const Element& left, const Element& right) {
                         return std::tie(left.tag, left.name) < std::tie(right.tag, right.name);
                     });
}

// The settings with those of one name joined: whole texts to compare, and short ones to show.
struct Named {
    std::string name;
    std::string whole;
    std::string shown;
};

[[nodiscard]] std::vector<Named> NamedSettings(Element ticket, const Prefixes& prefixes) {
    Sort(ticket);
    const std::vector<Setting> whole = SettingsOf(ticket, prefixes, std::numeric_limits<std::size_t>::max());
    const std::vector<Setting> shown = SettingsOf(ticket, prefixes);
    std::vector<Named> named;
    for (std::size_t index = 0; index < whole.size(); ++index) {
        const auto same = std::find_if(named.begin(), named.end(),
                                       [&](const Named& each) { return each.name == whole[index].name; });
        if (same == named.end()) {
            named.push_back({whole[index].name, whole[index].value, shown[index].value});
        } else {
            same->whole += " and " + whole[index].value;
            same->shown += " and " + shown[index].value;
        }
    }
    return named;
}

}  // namespace

std::vector<Difference> CompareTickets(const FrameworkDocument& before, const FrameworkDocument& after) {
    const Prefixes prefixes = Join(before.prefixes, after.prefixes);
    const std::vector<Named> first = NamedSettings(before.root, prefixes);
    std::vector<Named> second = NamedSettings(after.root, prefixes);
    std::vector<Difference> differences;
    for (const Named& setting : first) {
        const auto other = std::find_if(second.begin(), second.end(),
                                        [&](const Named& each) { return each.name == setting.name; });
        if (other == second.end()) {
            differences.push_back({setting.name, setting.shown, std::nullopt});
            continue;
        }
        if (other->whole != setting.whole) differences.push_back({setting.name, setting.shown, other->shown});
        second.erase(other);
    }
    for (const Named& setting : second) differences.push_back({setting.name, std::nullopt, setting.shown});
    return differences;
}

}  // namespace devkit::printschema
