#include <algorithm>
#include <cstddef>
#include <map>
#include <string>

#include "devkit/common/error.h"
#include "devkit/common/limits.h"
#include "devkit/common/text.h"
#include "devkit/common/xmlreader.h"
#include "devkit/package/xpsdocument.h"
#include "devkit/validate/battery.h"
#include "devkit/validate/judging.h"

namespace devkit::validate {
namespace {

using common::Check;

// What a test says of the plain run of each document.
using PlainJudge = void (*)(Trial& trial, const Order& order, const PlainRun& plain);

std::function<void(Trial&)> Judged(PlainJudge judge) {
    return [judge](Trial& trial) {
        for (const Document& document : trial.Documents({kShort, kEverything}))
            judge(trial, trial.OrderFor(document), trial.Plain(document));
    };
}

void ComesToAGoodEnd(Trial& trial, const Order& order, const PlainRun& plain) {
    for (const std::string& failure : FailuresOf(plain.result)) trial.Fail(order, plain.result, failure);
}

void KeepsTheOrder(Trial& trial, const Order& order, const PlainRun& plain) {
    FailWith(trial, order, plain.result,
             {Check::OrderDocument, Check::OrderSequence, Check::OrderPage, Check::OneDocument,
              Check::OneSequence});
    if (trial.FailureCount() != 0) return;
    ExpectWhole(plain.result);
    const std::vector<std::string> given = PartsGiven(plain.result);
    const std::vector<std::string> sent = PartsSent(plain.result);
    const std::vector<std::string> of = Beyond(given, Beyond(given, sent));
    const std::vector<std::string> kept = Beyond(sent, Beyond(sent, given));
    const auto [before, after] = std::ranges::mismatch(of, kept);
    if (before != of.end() && after != kept.end())
        trial.Fail(order, plain.result, *after + " was sent before " + *before);
}

void SendsEveryPartOnce(Trial& trial, const Order& order, const PlainRun& plain) {
    FailWith(trial, order, plain.result, {Check::SentOnce, Check::SequenceMissing});
    if (trial.FailureCount() != 0) return;
    // One that fails is another test's.
    const bool hasSucceeded = !plain.result.crash && plain.result.end && SUCCEEDED(plain.result.end->result);
    if (!hasSucceeded) ExpectWhole(plain.result);
    if (order.host.filters.front().input == pipeline::DataKind::Stream)
        throw Skipped("the filter reads no parts");
    if (order.host.filters.back().output == pipeline::DataKind::Stream)
        throw Skipped("the filter sends no parts");
    const std::vector<std::string> given = PartsGiven(plain.result);
    const std::vector<std::string> sent = PartsSent(plain.result);
    if (given.size() != plain.result.inputParts) {
        trial.Fail(order, plain.result,
                   "of " + common::Counted(plain.result.inputParts, "part") + " the filter read " +
                       std::to_string(given.size()));
    }
    for (const std::string& part : Beyond(given, sent))
        trial.Fail(order, plain.result, part + " was never sent");
}

void WritesAReadableDocument(Trial& trial, const Order& order, const PlainRun& plain) {
    ExpectWhole(plain.result);
    try {
        const auto before = package::XpsDocument::Open(order.job.input);
        const auto after = package::XpsDocument::Open(plain.output);
        for (const std::string& finding : Beyond(after.Findings(), before.Findings()))
            trial.Fail(order, plain.result, "the document that comes out: " + finding);
        for (const package::PartInfo& part : after.GetPackage().Parts())
            static_cast<void>(after.ReadPart(part.name));
    } catch (const common::Error& error) {
        trial.Fail(order, plain.result,
                   std::string("the document that comes out cannot be read: ") + error.what());
    }
}

// The elements that put something on a page.
std::size_t MarksOf(const std::string& markup, const std::string& where) {
    std::size_t marks = 0;
    common::XmlReader reader(markup, where, common::Limits().page);
    while (reader.NextElement()) {
        const std::string name = reader.LocalName();
        if (name == "Glyphs" || name == "Path") ++marks;
    }
    return marks;
}

// Of each page by its name.
std::map<std::string, std::size_t> MarksOfPages(const package::XpsDocument& document) {
    std::map<std::string, std::size_t> marks;
    for (const package::FixedDocument& each : document.sequence.documents) {
        for (const package::FixedPage& page : each.pages)
            marks[page.name] = MarksOf(document.ReadMarkup(page), page.name);
    }
    return marks;
}

void LeavesPagesTheirMarks(Trial& trial, const Order& order, const PlainRun& plain) {
    ExpectWhole(plain.result);
    try {
        const auto before = package::XpsDocument::Open(order.job.input);
        const auto after = package::XpsDocument::Open(plain.output);
        const std::map<std::string, std::size_t> had = MarksOfPages(before);
        for (const auto& [name, marks] : MarksOfPages(after)) {
            const auto found = had.find(name);
            if (marks == 0 && found != had.end() && found->second != 0)
                trial.Fail(order, plain.result, "the page " + name + " comes out blank");
        }
        for (const package::PartInfo& part : after.GetPackage().Parts()) {
            const auto found = before.GetPackage().Find(part.name);
            if (part.size == 0 && found && found->size != 0)
                trial.Fail(order, plain.result, part.name + " comes out empty");
        }
    } catch (const common::Error& error) {
        throw Skipped(std::string("a document cannot be read: ") + error.what());
    }
}

}  // namespace

std::vector<Test> DocumentTests() {
    return {
        {"comes-to-a-good-end", 2, "the filter takes a document through without a crash, a hang or a failure",
         "run the document with `filterhost run --in-process` in a debugger", Judged(&ComesToAGoodEnd)},
        {"order-kept", 2, "parts go on in the order in which they came", "send every part as it comes",
         Judged(&KeepsTheOrder)},
        {"every-part-once", 2, "every part of the document goes on, once", "send every part as it comes",
         Judged(&SendsEveryPartOnce)},
        {"output-readable", 2, "the document that comes out can be read from its first part to its last",
         "compare it with the input: `filterhost diff`", Judged(&WritesAReadableDocument)},
        {"pages-not-blank", 2, "a page that has something on it comes out with something on it",
         "copy the content of a page that is written anew", Judged(&LeavesPagesTheirMarks)},
        {"pages-well-formed", 2, "pages are well-formed XML and have their size",
         "write the page's markup whole, and read it back with an XML reader",
         ComesToNone({Check::MalformedMarkup, Check::PageSize})},
        {"resources-related", 2, "what the markup of a page uses is related by the page",
         "SetPagePart of what new markup names, and delete nothing that is used",
         ComesToNone({Check::ResourceDeleted, Check::ResourceUnrelated})},
        {"tickets-readable", 2, "print tickets that the filter writes keep the Print Schema",
         "write a ticket with a DOM, read it back, have a provider merge it",
         ComesToNone({Check::TicketFormat, Check::TicketTwoPrefixes, Check::TicketRule})},
    };
}

}  // namespace devkit::validate
