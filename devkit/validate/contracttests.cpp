#include <array>

#include "devkit/common/checks.h"
#include "devkit/validate/battery.h"
#include "devkit/validate/judging.h"

namespace devkit::validate {

using common::Check;

std::vector<Test> ContractTests() {
    const auto test = [](std::string_view name, std::string_view claim, std::string_view advice,
                         std::vector<Check> checks) {
        return Test{name, 3, claim, advice, ComesToNone(std::move(checks))};
    };
    return {
        test("references-given-back", "every reference is given back, and none is given back twice",
             "hold references in owners",
             {Check::Leak, Check::FilterLeak, Check::ModuleLeak, Check::OverRelease}),
        test("streams-closed", "a write stream is closed once, before its part goes on",
             "Close the stream, once, on every way out",
             {Check::OpenWhenSent, Check::OpenWhenAttached, Check::TwoWriters, Check::StreamLeft,
              Check::StreamTwice, Check::WriteAfterClose}),
        test("sender-closed", "CloseSender is called once, as the last call to the writer",
             "let one place close it, last", {Check::SenderOpen, Check::SenderOnce, Check::AfterClose}),
        test("parts-where-they-belong", "each part goes where its kind belongs, and comes from the pipeline",
             "make parts with GetNewEmptyPart, and send each with the method of its kind",
             {Check::Kind, Check::ForeignTicket, Check::ForeignPart, Check::ForeignThumbnail, Check::NewKind,
              Check::NoResource, Check::FontName, Check::UnusedPart}),
        test("null-not-passed", "no call to the pipeline passes null, but for the reserved argument",
             "check what was asked for before it is handed on", {Check::NullArgument, Check::ErrorInfo}),
        test("sent-parts-untouched", "a part that was sent is not changed any more",
             "change first, send then", {Check::ChangedAfterSend}),
        test("apartment-kept", "StartOperation leaves its thread in the apartment that it came in",
             "pair CoInitializeEx and CoUninitialize on every way out",
             {Check::Apartment, Check::Uninitialize}),
        test("user-token-kept", "the user's token stays open, and the thread goes back as it came",
             "RevertToSelf on every way out, and close no borrowed handle",
             {Check::Token, Check::Impersonating}),
        test("threads-joined", "no thread of the filter's own outlives the filter",
             "join every thread before the filter's last release", {Check::ThreadLeft}),
        test("exceptions-kept-in", "no exception leaves a method", "catch all of them, answer a code",
             {Check::Exception}),
        test("provider-handles",
             "the print ticket provider is used with living handles, on the thread that opened them",
             "open and close a provider on each thread that uses one",
             {Check::HandleClosed, Check::HandleUnknown, Check::HandleThread, Check::HandleCloseThread,
              Check::HandleLeft}),
        test("properties-kept", "the pipeline's properties stay as other filters expect them",
             "add properties under names of the filter's own",
             {Check::PropertyReplaced, Check::PropertyRemoved, Check::JobTicketEarly}),
        test("handles-of-others", "nothing is written to a handle that is not the filter's",
             "write to no handle that is not the filter's own", {Check::ForeignOutput}),
    };
}

}  // namespace devkit::validate
