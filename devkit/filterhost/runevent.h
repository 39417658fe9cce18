#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "devkit/filterhost/runresult.h"

namespace devkit::filterhost {

// What a trace shows of a thread. Times are nanoseconds by std::chrono::steady_clock, which is one for all
// processes of the machine.
struct TraceMoment {
    enum Kind : int {
        Begin,   // something begins, with a name
        End,     // what began last on the thread, and has not ended, ends
        Whole,   // something that has begun and ended
        Thread,  // the thread's name
    };

    Kind kind = Begin;
    std::string name;
    std::string category;
    std::string detail;
    std::uint32_t thread = 0;
    std::int64_t at = 0;
    std::int64_t duration = 0;  // of a whole one
    std::int64_t own = 0;       // of it, without the caller's streams: a call of the ticket provider
};

// What a run tells while it goes on, as it happens.
namespace events {

// The document is open: what a filter will be given of it, and what the user's ticket says.
struct Opened {
    std::size_t parts = 0;
    std::size_t pages = 0;
    std::vector<std::string> findings;
    printschema::TicketFacts userTicket;
    std::optional<std::string> userTicketText;
};
// A call of the filter begins ("StartOperation"), and has come back.
struct CallBegun {
    std::string call;
};
struct CallEnded {
    std::string call;
};
// The filter asked for part `number`, counted from 1, and was given one ("FixedPage /1.fpage").
struct PartAsked {
    unsigned number = 0;
};
struct PartGiven {
    std::string part;
};
struct PartSent {
    PartFacts part;
    TicketTexts tickets;
};
struct ProviderCalled {
    MadeCall made;
};
// A rule is broken, by the id of its check.
struct Breached {
    std::string id;
    std::string text;
};
struct InputFailed {
    std::string text;
};
struct Found {
    std::string id;
    std::string text;
};
// The filter asked for something that the job does not have ("property X").
struct Missed {
    std::string what;
};
// For a user who wants to know everything.
struct Noted {
    std::string text;
};
// The filter calls the pipeline's objects, though nothing else is to be told.
struct Alive {};
// For a trace, when one is wanted.
struct Traced {
    TraceMoment moment;
};
struct RunEnded {
    RunEnd end;
};
// What the simulated provider saw; its calls were told as they were made.
struct ProviderEnded {
    prntvpt::ProviderReport report;
};
struct Timed {
    RunTimes times;
};
struct OutputWritten {
    std::string output;
};
// The input cannot be read, the filter not be made, or the output not be written.
struct Failed {
    std::string text;
    ExitStatus status = FilterFailed;
};
// The filter's DLL or the settings are of no use for any input.
struct Refused {
    std::string text;
    ExitStatus status = WrongUsage;
};
struct Crashed {
    Crash crash;
};
// What a probe found, for whoever ordered it.
struct Told {
    std::string text;
};
// Nothing comes after it.
struct Finished {};

}  // namespace events

using Event =
    std::variant<events::Opened, events::CallBegun, events::CallEnded, events::PartAsked, events::PartGiven,
                 events::PartSent, events::ProviderCalled, events::Breached, events::InputFailed,
                 events::Found, events::Missed, events::Noted, events::Alive, events::Traced,
                 events::RunEnded, events::ProviderEnded, events::Timed, events::OutputWritten,
                 events::Failed, events::Refused, events::Crashed, events::Told, events::Finished>;

// Takes the events of a run, on whatever thread they happen, several at a time.
using EventSink = std::function<void(const Event&)>;

// An event as one line of JSON without its line feed, and back; nlohmann::json::exception for what is none.
[[nodiscard]] std::string WriteEvent(const Event& event);
[[nodiscard]] Event ReadEvent(std::string_view line);

// Adds what the event says to the result.
void Apply(const Event& event, RunResult& result);

// After the last event: brings the print ticket provider's breaches and failures into the lists, and sets the
// status. When `strict`, a finding counts as a broken rule there.
void Conclude(RunResult& result, bool strict = false);

}  // namespace devkit::filterhost
