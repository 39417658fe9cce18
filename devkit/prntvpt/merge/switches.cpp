#include "devkit/prntvpt/merge/switches.h"

#include <array>
#include <charconv>
#include <span>
#include <stdexcept>
#include <type_traits>

namespace devkit::prntvpt {

using namespace printschema;

namespace {

constexpr unsigned kMaxSnapshotBytes = 4U * 1024U * 1024U;

// A switch in the table: its values stand in the order of its enumeration, so a value is its own index.
struct Entry {
    std::string_view key;
    std::span<const std::string_view> values;
    std::size_t (*get)(const Switches&);
    void (*set)(Switches&, std::size_t);
};

// One entry for the member that the path of pointers leads to.
template <auto Member>
[[nodiscard]] constexpr Entry Row(std::string_view key, std::span<const std::string_view> values) {
    return {key, values,
            [](const Switches& behaviour) { return static_cast<std::size_t>(behaviour.*Member); },
            [](Switches& behaviour, std::size_t index) {
                behaviour.*Member = static_cast<std::remove_reference_t<decltype(behaviour.*Member)>>(index);
            }};
}
template <auto Member>
[[nodiscard]] constexpr Entry VariantRow(std::string_view key, std::span<const std::string_view> values) {
    return {key, values,
            [](const Switches& behaviour) { return static_cast<std::size_t>(behaviour.variants.*Member); },
            [](Switches& behaviour, std::size_t index) {
                auto& member = behaviour.variants.*Member;
                member = static_cast<std::remove_reference_t<decltype(member)>>(index);
            }};
}

using Name = std::string_view;
constexpr std::array<Name, 2> kFlag{"0", "1"};
constexpr std::array<Name, 3> kPrivateValues{"known", "strict", "all"};
constexpr std::array<Name, 2> kStrictValues{"features", "options"};
constexpr std::array<Name, 5> kPrefixValues{"std", "mangled", "default-ns", "local", "collide"};
constexpr std::array<Name, 3> kOrderValues{"device", "input", "reversed"};
constexpr std::array<Name, 3> kEncodingValues{"utf8", "utf8-bom", "utf16le"};
constexpr std::array<Name, 3> kLayoutValues{"none", "pretty", "comments"};
constexpr std::array<Name, 2> kDuplicateValues{"refuse", "first"};
constexpr std::array<Name, 2> kMixedValueValues{"first", "refuse"};
constexpr std::array<Name, 2> kOrphanValues{"keep", "prune"};
constexpr std::array<Name, 2> kFallbackValues{"default", "nearest"};
constexpr std::array<Name, 2> kPropertyValues{"strip", "keep-perfect"};
constexpr std::array<Name, 3> kThreadValues{"enforce", "warn", "off"};
constexpr std::array<Name, 3> kBinValues{"job", "document", "page"};
constexpr std::array<Name, 3> kFeedValues{"scored", "property", "absent"};
constexpr std::array<Name, 3> kImageableValues{"oriented", "portrait", "absent"};

constexpr std::array<Entry, 20> kTable{{
    Row<&Switches::privateNames>("private", kPrivateValues),
    Row<&Switches::strictExtent>("strict", kStrictValues),
    Row<&Switches::prefixes>("prefixes", kPrefixValues),
    Row<&Switches::order>("order", kOrderValues),
    Row<&Switches::encoding>("encoding", kEncodingValues),
    Row<&Switches::layout>("whitespace", kLayoutValues),
    Row<&Switches::duplicates>("duplicates", kDuplicateValues),
    Row<&Switches::mixedValues>("mixed-values", kMixedValueValues),
    Row<&Switches::orphans>("orphans", kOrphanValues),
    Row<&Switches::fallback>("fallback", kFallbackValues),
    Row<&Switches::optionProperties>("option-props", kPropertyValues),
    Row<&Switches::dropIsConflict>("drop-is-conflict", kFlag),
    Row<&Switches::threadRule>("thread", kThreadValues),
    VariantRow<&Variants::bins>("bins", kBinValues),
    VariantRow<&Variants::noScaling>("no-scaling", kFlag),
    VariantRow<&Variants::noCopies>("no-copies", kFlag),
    VariantRow<&Variants::feed>("feed", kFeedValues),
    VariantRow<&Variants::imageable>("imageable", kImageableValues),
    VariantRow<&Variants::letterDefault>("us", kFlag),
    VariantRow<&Variants::privateSizeNames>("private-size-names", kFlag),
}};

constexpr std::string_view kSnapshotKey = "snapshot";

[[nodiscard]] std::invalid_argument Refuse(std::string_view key, std::string_view value,
                                           const std::string& expected) {
    return std::invalid_argument("switch " + std::string(key) + ": \"" + std::string(value) +
                                 "\" is none of " + expected);
}

[[nodiscard]] std::string Join(std::span<const Name> values) {
    std::string joined;
    for (const Name value : values) joined += (joined.empty() ? "" : ", ") + std::string(value);
    return joined;
}

void SetSnapshot(Switches& behaviour, std::string_view value) {
    unsigned bytes = 0;
    const char* const pEnd = value.data() + value.size();
    const auto [pStop, error] = std::from_chars(value.data(), pEnd, bytes);
    if (error != std::errc() || pStop != pEnd || bytes > kMaxSnapshotBytes) {
        throw Refuse(kSnapshotKey, value, "0 to " + std::to_string(kMaxSnapshotBytes));
    }
    behaviour.variants.snapshotBytes = bytes;
}

}  // namespace

void SetSwitch(Switches& behaviour, std::string_view key, std::string_view value) {
    if (key == kSnapshotKey) return SetSnapshot(behaviour, value);
    for (const Entry& entry : kTable) {
        if (entry.key != key) continue;
        for (std::size_t index = 0; index < entry.values.size(); ++index) {
            if (entry.values[index] == value) return entry.set(behaviour, index);
        }
        throw Refuse(key, value, Join(entry.values));
    }
    throw std::invalid_argument("there is no switch \"" + std::string(key) + "\"");
}

std::vector<std::string> DescribeSwitches(const Switches& behaviour) {
    std::vector<std::string> lines;
    for (const Entry& entry : kTable) {
        lines.push_back(std::string(entry.key) + "=" + std::string(entry.values[entry.get(behaviour)]));
    }
    lines.push_back(std::string(kSnapshotKey) + "=" + std::to_string(behaviour.variants.snapshotBytes));
    return lines;
}

}  // namespace devkit::prntvpt
