#pragma once

#include "platform/windows.h"

#include <string>
#include <vector>

#include "devkit/filterhost/runresult.h"
#include "devkit/filterhost/settings.h"

namespace devkit::filterhost {

// How the run of a bad job came to its end.
struct FuzzEnd {
    enum Kind : int {
        Passed,       // the filter succeeded
        Refused,      // it failed with a code that is documented for bad jobs
        Unreadable,   // it was never run: the document cannot be read
        SystemCrash,  // a component of the system crashed, not the filter
        // From here on somebody has to look at it.
        Breach,    // the filter broke a rule of the pipeline, or left something behind
        BadCode,   // it failed with another code
        Hang,      // it made no progress
        Crash,     // it ended its process, or damaged it
        KitCrash,  // the kit did
    };

    Kind kind = Passed;
    std::string text;   // one line
    std::string cause;  // what ends for the same reason have in common
};
[[nodiscard]] const char* NameOf(FuzzEnd::Kind kind) noexcept;
[[nodiscard]] constexpr bool IsFinding(FuzzEnd::Kind kind) noexcept { return kind >= FuzzEnd::Breach; }
// RuleBroken for a breach, Done for what is no finding, else FilterFailed.
[[nodiscard]] ExitStatus StatusOf(FuzzEnd::Kind kind) noexcept;

// The codes by which a filter may refuse a bad document or ticket, whatever the
// filter.
[[nodiscard]] const std::vector<HRESULT>& DocumentedCodes();

// What the run came to, after Conclude: `allowed` are the codes that it may
// fail with.
[[nodiscard]] FuzzEnd EndOf(const RunResult& result, const HostSettings& settings,
                            const std::vector<HRESULT>& allowed);
// A crash by the module that it was in: one of the filters or a library that
// only does what its caller says is the filter's, one of the kit's is the
// kit's, any other the system's.
[[nodiscard]] FuzzEnd EndOf(const Crash& crash, const HostSettings& settings);

}  // namespace devkit::filterhost
