#include "devkit/common/checks.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace devkit::common {
namespace {

constexpr auto kChecks = std::to_array<CheckFacts>({
    {Check::OrderDocument, "order-document", "send every part as it comes"},
    {Check::OrderSequence, "order-sequence", "send every part as it comes"},
    {Check::OrderPage, "order-page", "send a fixed document before its pages"},
    {Check::OneDocument, "one-document", "send it once"},
    {Check::OneSequence, "one-sequence", "send it once"},
    {Check::SentOnce, "sent-once", "do not send in two branches; to double a page make another one"},
    {Check::SequenceMissing, "sequence-missing",
     "fail and call RequestShutdown where there is nothing to send"},
    {Check::Kind, "kind", "ask the part for its interfaces, from the most special on"},
    {Check::NullArgument, "null-argument", "check what was asked for before it is handed on"},
    {Check::SenderOpen, "sender-open", "close it on every way out of StartOperation"},
    {Check::SenderOnce, "sender-once", "let one place close it"},
    {Check::AfterClose, "after-close", "close last"},
    {Check::ChangedAfterSend, "changed-after-send", "change first, send then"},
    {Check::OpenWhenSent, "open-when-sent", "Close the stream before"},
    {Check::OpenWhenAttached, "open-when-attached", "Close the stream before"},
    {Check::TwoWriters, "two-writers", "Close the first"},
    {Check::StreamLeft, "stream-left", "Close on every way out that succeeds"},
    {Check::StreamTwice, "stream-twice", "let one place close it"},
    {Check::WriteAfterClose, "write-after-close", "write before"},
    {Check::ForeignTicket, "foreign-ticket", "make it there"},
    {Check::ForeignPart, "foreign-part", "make it there"},
    {Check::ForeignThumbnail, "foreign-thumbnail", "make it there"},
    {Check::NewKind, "new-kind",
     "ask for a ticket, an image, a font, a colour profile, a dictionary or a thumbnail"},
    {Check::NoResource, "no-resource", "look it up first"},
    {Check::FontName, "font-name", "name it by a GUID"},
    {Check::JobTicketEarly, "job-ticket-early", "read it in StartOperation"},
    {Check::ErrorInfo, "error-info", "pass null"},
    {Check::Exception, "exception", "catch all of them, answer a code"},
    {Check::Leak, "leak", "hold references in owners"},
    {Check::FilterLeak, "filter-leak", "look for a circle of references"},
    {Check::ModuleLeak, "module-leak", "count objects down, the factory's too"},
    {Check::OverRelease, "over-release", "hold references in owners"},
    {Check::Token, "token", "leave it open"},
    {Check::Impersonating, "impersonating", "RevertToSelf on every way out"},
    {Check::Apartment, "apartment", "pair them on every way out"},
    {Check::Uninitialize, "uninitialize",
     "call it where CoInitializeEx succeeded, S_FALSE included, and nowhere else"},
    {Check::ThreadLeft, "thread-left", "join every thread before the filter's last release"},
    {Check::HangOperation, "hang-operation", "look at the flag between parts, fail when GetXpsPart does"},
    {Check::HangShutdown, "hang-shutdown", "set a flag and return"},
    {Check::ThreadSetup, "thread-setup", "not the filter's doing: look at the system's memory and run again"},
    {Check::HandleClosed, "A00E", "use a handle before it is closed only"},
    {Check::HandleUnknown, "A00F", "use handles that PTOpenProvider gave out"},
    {Check::HandleThread, "A010", "open a provider on each thread that uses one"},
    {Check::HandleCloseThread, "A011", "close a provider on the thread that opened it"},
    {Check::HandleLeft, "A012", "close a provider on every way out of the thread that opened it"},
    {Check::UnusedPart, "unused-part", "attach or send what was made, or do not make it"},
    {Check::MalformedMarkup, "malformed-markup",
     "write the page's markup whole, and read it back with an XML reader"},
    {Check::SilentFailure, "silent-failure",
     "call RequestShutdown with the code before StartOperation fails: nobody else tells the user"},
    {Check::ProviderFailure, "provider-failure",
     "look at the ticket that was given and at the provider's text"},
    {Check::ProviderNote, "provider-note", "legal, but seldom meant"},
    {Check::Document, "document", "the document's maker has to look at it, not the filter's"},
    {Check::ForeignOutput, "foreign-output", "write to no handle that is not the filter's own"},
    {Check::PropertyReplaced, "property-replaced", "add properties under names of the filter's own"},
    {Check::PropertyRemoved, "property-removed", "leave it"},
    {Check::TicketFormat, "ticket-format", "write it with a DOM, read it back, have a provider merge it"},
    {Check::TicketTwoPrefixes, "ticket-two-prefixes",
     "compare names by namespace; [installing.md](installing.md#prefixes) says what a driver must set for "
     "the filter of this project"},
    {Check::TicketRule, "ticket-rule", "each text says what is missing or too much"},
    {Check::ResourceDeleted, "resource-deleted", "rewrite the markup with the resource, or leave it"},
    {Check::ResourceUnrelated, "resource-unrelated", "SetPagePart of what the new markup names"},
    {Check::PageSize, "page-size", "keep them when the markup is written anew"},
});

// A check is found by its number.
static_assert([] {
    for (std::size_t i = 0; i < kChecks.size(); ++i) {
        if (static_cast<std::size_t>(kChecks[i].check) != i) return false;
    }
    return static_cast<std::size_t>(Check::PageSize) + 1 == kChecks.size();
}());

}  // namespace

std::span<const CheckFacts> AllChecks() noexcept { return kChecks; }

const CheckFacts& FactsOf(Check check) noexcept { return kChecks[static_cast<std::size_t>(check)]; }

const CheckFacts* FindCheck(std::string_view id) noexcept {
    const auto found = std::ranges::find(kChecks, id, &CheckFacts::id);
    return found == kChecks.end() ? nullptr : &*found;
}

}  // namespace devkit::common
