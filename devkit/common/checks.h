#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace devkit::common {

// What the kit looks for in a run of a filter: rules that it can break, and what is odd but breaks none.
// docs/checks.md says of each what the host then says, where the rule comes from and what to do.
enum class Check : std::uint8_t {
    OrderDocument,
    OrderSequence,
    OrderPage,
    OneDocument,
    OneSequence,
    SentOnce,
    SequenceMissing,
    Kind,
    NullArgument,
    SenderOpen,
    SenderOnce,
    AfterClose,
    ChangedAfterSend,
    OpenWhenSent,
    OpenWhenAttached,
    TwoWriters,
    StreamLeft,
    StreamTwice,
    WriteAfterClose,
    ForeignTicket,
    ForeignPart,
    ForeignThumbnail,
    NewKind,
    NoResource,
    FontName,
    JobTicketEarly,
    ErrorInfo,
    Exception,
    Leak,
    FilterLeak,
    ModuleLeak,
    OverRelease,
    Token,
    Impersonating,
    Apartment,
    Uninitialize,
    ThreadLeft,
    HangOperation,
    HangShutdown,
    ThreadSetup,
    HandleClosed,
    HandleUnknown,
    HandleThread,
    HandleCloseThread,
    HandleLeft,
    // Odd, but no rule is broken.
    UnusedPart,
    MalformedMarkup,
    SilentFailure,
    ProviderFailure,
    ProviderNote,
    Document,
    ForeignOutput,
    PropertyReplaced,
    PropertyRemoved,
    TicketFormat,
    TicketTwoPrefixes,
    TicketRule,
    ResourceDeleted,
    ResourceUnrelated,
    PageSize,
};

struct CheckFacts {
    Check check;
    std::string_view id;      // stable: reports and lists of known problems name it
    std::string_view advice;  // what to do
};

// In the order of the enumeration.
[[nodiscard]] std::span<const CheckFacts> AllChecks() noexcept;
[[nodiscard]] const CheckFacts& FactsOf(Check check) noexcept;
// Null for an id that is none.
[[nodiscard]] const CheckFacts* FindCheck(std::string_view id) noexcept;

}  // namespace devkit::common
