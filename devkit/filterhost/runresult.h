#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "devkit/common/checks.h"
#include "devkit/common/recordlist.h"
#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/pagefacts.h"
#include "devkit/filterhost/texttable.h"
#include "devkit/pipeline/filtercalls.h"
#include "devkit/printschema/summary.h"
#include "devkit/prntvpt/control/messages.h"

namespace devkit::filterhost {

// What one filter of a run answered.
struct FilterEnd {
    std::string name;
    // Of InitializeFilter, StartOperation and ShutdownOperation; unset where one was not called, or has not
    // come back.
    std::optional<HRESULT> initialized;
    std::optional<HRESULT> operation;
    std::optional<HRESULT> shutdownOperation;
    std::vector<HRESULT> shutdownCodes;  // RequestShutdown, in order
    pipeline::CallCounts pipelineCalls;  // to the pipeline's objects
};

// How the filter's work ended, as the pipeline saw it; of a chain that of the filter that decided it.
struct RunEnd {
    std::string filter;                  // its name in a chain
    HRESULT initialized = E_PENDING;     // InitializeFilter
    HRESULT result = E_PENDING;          // StartOperation, or what stopped the run before it
    std::vector<HRESULT> shutdownCodes;  // RequestShutdown, in order
    bool hung = false;         // StartOperation or ShutdownOperation did not come back after a cancellation
    bool threadEnded = false;  // the filter ended the thread of StartOperation
    bool cancelled = false;
    bool whole = false;                // the whole document came through
    std::optional<std::size_t> bytes;  // that came out, of a filter that writes a stream
    std::vector<FilterEnd> filters;    // in their order
};

// How the process of a filter came to its end in the middle.
struct Crash {
    std::uint32_t code = 0;  // of the exception, or the status of the process
    std::string text;        // "the filter crashed with 0xC0000005 ACCESS_VIOLATION at testfilter.dll+0x1234"
    // Of the C++ exception that the thread threw last, as the compiler names its type; empty when it threw
    // none.
    std::string type{};
    std::string what{};
};

// In words: "the filter called abort; the last exception that it threw is std::runtime_error (no paper)".
[[nodiscard]] std::string TextOf(const Crash& crash);

// A breach or a finding.
struct Problem {
    std::string id{};  // of common::Check
    std::string text{};
    std::string part{};  // that the filter had in hand: "FixedPage /1.fpage"; empty for none
    std::string call{};  // that was under way: "StartOperation"; empty for none

    friend bool operator==(const Problem&, const Problem&) = default;
};
[[nodiscard]] Problem ProblemOf(common::Check check, std::string text, std::string part = {},
                                std::string call = {});

// A call of the print ticket provider, and what the filter had in hand when it made it ("FixedPage
// /1.fpage").
struct MadeCall {
    prntvpt::ProviderCall call;  // in a result without the tickets
    std::string part;
    // In the texts of the result.
    std::optional<TextId> base{};
    std::optional<TextId> delta{};
    std::optional<TextId> output{};
};

template <typename Visit>
void RecordFields(Visit& visit, common::MaybeConst<MadeCall> auto& made) {
    visit(made.call, made.part, made.base, made.delta, made.output);
}

// Where the time of StartOperation of one filter went, in seconds. What threads of its own do is not in it,
// but for the time that StartOperation waits for them. In a chain the pipeline's time is also that of waiting
// for the filter before and the one behind.
struct FilterTimes {
    std::string name;
    double filter = 0;                     // its own code, and what of the system it uses
    std::optional<double> ticketProvider;  // unset where the system's is used, which is in the filter's time
    double pipeline = 0;                   // the reading of parts is in it
    double observer = 0;                   // looking at what is sent, and telling of it
};

// Where the time of a run went, in seconds.
struct RunTimes {
    double total = 0;       // from the opening of the input until the output was whole
    double operations = 0;  // of it from the first filter's StartOperation until the last one's return
    std::vector<FilterTimes> filters;

    // What the filters' operations have no part in: reading the document's structure, looking at what was
    // sent, writing the output.
    [[nodiscard]] double Rest() const noexcept;
};

// What became of one input of `filterhost run`. What there is of each part and each call is not kept in
// memory: a job may have any number of pages.
struct RunResult {
    std::string input;
    std::optional<std::string> output;  // set when it was written
    // Why the input cannot be read, the filter not be made, the output not be written; what never struck.
    std::vector<std::string> errors;
    std::size_t inputParts = 0;  // of a document that was opened: what a filter is given
    std::size_t inputPages = 0;
    printschema::TicketFacts userTicket;
    std::optional<TextId> userTicketText;
    TextTable texts;                         // of tickets, where they are recorded
    unsigned asked = 0;                      // parts that the filter asked for
    common::RecordList<std::string> given;   // parts that it was given: "FixedPage /1.fpage"
    std::vector<std::string> underWay;       // calls of the filter that have not come back, the last one last
    common::RecordList<PartFacts> parts;     // in sending order
    std::vector<Problem> breaches;           // of the pipeline's rules, then of the ticket provider's
    std::vector<std::string> inputFailures;  // parts of the input that cannot be read
    std::vector<Problem> findings;           // what is odd about the input or the pages, but breaks no rule
    std::vector<std::string> missing;        // what the filter asked for and the job does not have
    std::vector<std::string> told;           // by a probe
    common::RecordList<MadeCall> providerCalls;
    std::optional<prntvpt::ProviderReport> provider;  // set when the run ended; without the calls
    std::optional<RunEnd> end;  // unset when the filter was not run, or ended the process
    std::optional<Crash> crash;
    std::optional<RunTimes> times;  // unset when the filter was not run, or ended the process
    ExitStatus status = Done;
};

}  // namespace devkit::filterhost
