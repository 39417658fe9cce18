#include "devkit/filterhost/fuzzend.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "devkit/common/file.h"
#include "devkit/common/hresult.h"
#include "devkit/common/text.h"

namespace devkit::filterhost {
namespace {

constexpr std::array<const char*, 9> kNames{
    "passed",   "refused", "unreadable", "crash in the system", "breach",
    "bad code", "hang",    "crash",      "crash of the kit"};

// What they do they were told by their caller, and a damaged heap shows in
// them.
constexpr std::array<std::string_view, 8> kRuntimes{"ntdll.dll",    "kernel32.dll", "kernelbase.dll",
                                                    "msvcrt.dll",   "ucrtbase.dll", "vcruntime140.dll",
                                                    "msvcp140.dll", "combase.dll"};

// "msxml3.dll+0x1A2B" of "the filter crashed with ... at msxml3.dll+0x1A2B";
// empty where the text names no module.
std::string PlaceIn(std::string_view text) {
    const std::size_t plus = text.rfind("+0x");
    return plus == std::string_view::npos ? std::string()
                                          : std::string(text.substr(text.rfind(' ', plus) + 1));
}

bool IsFilters(std::string_view module, const HostSettings& settings) {
    const auto isNamed = [module](std::string_view name) { return common::EqualIgnoringCase(module, name); };
    return std::ranges::any_of(kRuntimes, isNamed) ||
           std::ranges::any_of(settings.filters, [&](const FilterSettings& filter) {
               return isNamed(common::PathText(filter.dll.filename()));
           });
}

std::vector<HRESULT> CodesOf(const RunEnd& end) {
    std::vector<HRESULT> codes{end.initialized, end.result};
    for (const FilterEnd& filter : end.filters) {
        if (filter.operation) codes.push_back(*filter.operation);
        codes.insert(codes.end(), filter.shutdownCodes.begin(), filter.shutdownCodes.end());
    }
    return codes;
}

}  // namespace

const char* NameOf(FuzzEnd::Kind kind) noexcept { return kNames[static_cast<std::size_t>(kind)]; }

ExitStatus StatusOf(FuzzEnd::Kind kind) noexcept {
    if (!IsFinding(kind)) return Done;
    return kind == FuzzEnd::Breach ? RuleBroken : FilterFailed;
}

const std::vector<HRESULT>& DocumentedCodes() {
    static const std::vector<HRESULT> kCodes{
        E_FAIL,
        E_UNEXPECTED,
        static_cast<HRESULT>(0x80040003L),  // E_PRINTTICKET_FORMAT
        static_cast<HRESULT>(0x80040005L),  // E_DELTA_PRINTTICKET_FORMAT
        static_cast<HRESULT>(0x8007000DL),  // ERROR_INVALID_DATA
        static_cast<HRESULT>(0xC00CE56EL),  // of the XML parser: an attribute's prefix
    };
    return kCodes;
}

FuzzEnd EndOf(const Crash& crash, const HostSettings& settings) {
    // Where it was, without the address that it wanted.
    const std::string place = PlaceIn(crash.text);
    const std::string cause = place.empty() ? crash.text : place;
    if (crash.text.starts_with("the kit")) return {FuzzEnd::KitCrash, crash.text, cause};
    const bool isSystems = !place.empty() && !IsFilters(place.substr(0, place.find('+')), settings);
    return {isSystems ? FuzzEnd::SystemCrash : FuzzEnd::Crash, TextOf(crash), cause};
}

FuzzEnd EndOf(const RunResult& result, const HostSettings& settings, const std::vector<HRESULT>& allowed) {
    if (result.crash) return EndOf(*result.crash, settings);
    if (!result.end) {
        const std::string text = result.errors.empty() ? "the filter was not run" : result.errors.front();
        return {result.status == UnreadableInput ? FuzzEnd::Unreadable : FuzzEnd::BadCode, text, text};
    }
    const RunEnd& end = *result.end;
    if (end.threadEnded) return {FuzzEnd::Crash, "the filter ended its thread", "thread"};
    if (end.hung) return {FuzzEnd::Hang, "the filter did not end when it was cancelled", "cancelled"};
    if (!result.breaches.empty()) {
        const Problem& first = result.breaches.front();
        return {FuzzEnd::Breach, first.id + ": " + first.text, first.id};
    }
    const std::vector<HRESULT> codes = CodesOf(end);
    const auto isBad = [&allowed](HRESULT code) {
        return FAILED(code) && code != E_PENDING && std::ranges::find(allowed, code) == allowed.end();
    };
    const auto bad = std::ranges::find_if(codes, isBad);
    if (bad != codes.end()) {
        const std::string code = common::Describe(*bad);
        return {FuzzEnd::BadCode, "the filter failed with " + code, code};
    }
    if (FAILED(end.result)) return {FuzzEnd::Refused, {}, common::Describe(end.result)};
    return {};
}

}  // namespace devkit::filterhost
