#include "devkit/prntvpt/merge/behaviour.h"

#include <array>
#include <charconv>
#include <span>
#include <stdexcept>
#include <type_traits>

namespace devkit::prntvpt {
namespace {

constexpr unsigned MaxSnapshotBytes = 4U * 1024U * 1024U;

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
    return {key, values, [](const Switches& switches) { return static_cast<std::size_t>(switches.*Member); },
            [](Switches& switches, std::size_t index) {
                switches.*Member = static_cast<std::remove_reference_t<decltype(switches.*Member)>>(index);
            }};
}
template <auto Member>
[[nodiscard]] constexpr Entry VariantRow(std::string_view key, std::span<const std::string_view> values) {
    return {key, values,
            [](const Switches& switches) { return static_cast<std::size_t>(switches.variants.*Member); },
            [](Switches& switches, std::size_t index) {
                auto& member = switches.variants.*Member;
                member = static_cast<std::remove_reference_t<decltype(member)>>(index);
            }};
}

using Name = std::string_view;
constexpr std::array<Name, 2> Flag{"0", "1"};
constexpr std::array<Name, 3> PrivateValues{"known", "strict", "all"};
constexpr std::array<Name, 2> StrictValues{"features", "options"};
constexpr std::array<Name, 5> PrefixValues{"std", "mangled", "default-ns", "local", "collide"};
constexpr std::array<Name, 3> OrderValues{"device", "input", "reversed"};
constexpr std::array<Name, 3> EncodingValues{"utf8", "utf8-bom", "utf16le"};
constexpr std::array<Name, 3> LayoutValues{"none", "pretty", "comments"};
constexpr std::array<Name, 2> DuplicateValues{"refuse", "first"};
constexpr std::array<Name, 2> MixedValueValues{"first", "refuse"};
constexpr std::array<Name, 2> OrphanValues{"keep", "prune"};
constexpr std::array<Name, 2> FallbackValues{"default", "nearest"};
constexpr std::array<Name, 2> PropertyValues{"strip", "keep-perfect"};
constexpr std::array<Name, 3> ThreadValues{"enforce", "warn", "off"};
constexpr std::array<Name, 3> BinValues{"job", "document", "page"};
constexpr std::array<Name, 3> FeedValues{"scored", "property", "absent"};
constexpr std::array<Name, 3> ImageableValues{"oriented", "portrait", "absent"};

constexpr std::array<Entry, 20> Table{{
    Row<&Switches::privateNames>("private", PrivateValues),
    Row<&Switches::strictExtent>("strict", StrictValues),
    Row<&Switches::prefixes>("prefixes", PrefixValues),
    Row<&Switches::order>("order", OrderValues),
    Row<&Switches::encoding>("encoding", EncodingValues),
    Row<&Switches::layout>("whitespace", LayoutValues),
    Row<&Switches::duplicates>("duplicates", DuplicateValues),
    Row<&Switches::mixedValues>("mixed-values", MixedValueValues),
    Row<&Switches::orphans>("orphans", OrphanValues),
    Row<&Switches::fallback>("fallback", FallbackValues),
    Row<&Switches::optionProperties>("option-props", PropertyValues),
    Row<&Switches::dropIsConflict>("drop-is-conflict", Flag),
    Row<&Switches::threadRule>("thread", ThreadValues),
    VariantRow<&Variants::bins>("bins", BinValues),
    VariantRow<&Variants::noScaling>("no-scaling", Flag),
    VariantRow<&Variants::noCopies>("no-copies", Flag),
    VariantRow<&Variants::feed>("feed", FeedValues),
    VariantRow<&Variants::imageable>("imageable", ImageableValues),
    VariantRow<&Variants::letterDefault>("us", Flag),
    VariantRow<&Variants::privateSizeNames>("private-size-names", Flag),
}};

constexpr std::string_view SnapshotKey = "snapshot";

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

void SetSnapshot(Switches& switches, std::string_view value) {
    unsigned bytes = 0;
    const char* const pEnd = value.data() + value.size();
    const auto [pStop, error] = std::from_chars(value.data(), pEnd, bytes);
    if (error != std::errc() || pStop != pEnd || bytes > MaxSnapshotBytes) {
        throw Refuse(SnapshotKey, value, "0 to " + std::to_string(MaxSnapshotBytes));
    }
    switches.variants.snapshotBytes = bytes;
}

}  // namespace

void SetSwitch(Switches& switches, std::string_view key, std::string_view value) {
    if (key == SnapshotKey) return SetSnapshot(switches, value);
    for (const Entry& entry : Table) {
        if (entry.key != key) continue;
        for (std::size_t index = 0; index < entry.values.size(); ++index) {
            if (entry.values[index] == value) return entry.set(switches, index);
        }
        throw Refuse(key, value, Join(entry.values));
    }
    throw std::invalid_argument("there is no switch \"" + std::string(key) + "\"");
}

std::vector<std::string> DescribeSwitches(const Switches& switches) {
    std::vector<std::string> lines;
    for (const Entry& entry : Table) {
        lines.push_back(std::string(entry.key) + "=" + std::string(entry.values[entry.get(switches)]));
    }
    lines.push_back(std::string(SnapshotKey) + "=" + std::to_string(switches.variants.snapshotBytes));
    return lines;
}

}  // namespace devkit::prntvpt
