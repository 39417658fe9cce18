// Each call that the filter makes of the DOM and of the SAX reader fails.

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "devkit/common/hresult.h"
#include "domfaults.h"
#include "importfaultstest.h"
#include "saxfaults.h"

namespace systemtest {
namespace {

using devkit::common::HexOf;
using tests::Import;
using tests::ImportFaults;
using tests::kImportFailure;

// What becomes of a job when a call of the DOM fails.
enum End : unsigned {
    Ended = 1,           // with the call's own code
    EndedWithEFail = 2,  // a sheet of which the ticket does not tell the size
    CameThrough = 4,     // as if the call had not failed
    KeptFeature = 8,     // with a new ticket that has a feature twice
    LostTicket = 16,     // with a new ticket that is empty
    Unknown = 32
};

// The calls whose failure need not end a job.
struct EndRule {
    const char* call;
    unsigned ends;
};
constexpr EndRule kEndRules[] = {
    // A document's stream that was just opened stands at its start.
    {"IStream::Seek", CameThrough},
    // A node of which the attributes cannot be had declares nothing.
    {"get_attributes", Ended | CameThrough},
    {"IXMLDOMNamedNodeMap::reset", Ended | CameThrough},
    {"IXMLDOMNamedNodeMap::nextNode", Ended | CameThrough},
    {"setNamedItem", CameThrough},
    // A setting that cannot be read counts as not stated; so does what it refers to. The size of a sheet must
    // be stated.
    {"selectSingleNode", Ended | EndedWithEFail | CameThrough | KeptFeature},
    {"getNamedItem", Ended | CameThrough},
    {"get_text", Ended | CameThrough},
    {"get_firstChild", EndedWithEFail | CameThrough},
    {"get_baseName", EndedWithEFail | CameThrough},
    {"get_namespaceURI", EndedWithEFail | CameThrough},
    {"get_nodeTypedValue", EndedWithEFail | CameThrough},
    // A feature that stays is not worth failing for.
    {"selectNodes", KeptFeature},
    {"IXMLDOMNodeList::get_item", Ended | KeptFeature},
    {"get_parentNode", KeptFeature},
    {"removeChild", KeptFeature},
    // What the document says of the saving of a new ticket is not looked at.
    {"save", LostTicket},
};

// A part that was sent, as ResultOf tells it: its markup, and behind "\nticket " its ticket.
std::string_view MarkupOf(std::string_view sent) { return sent.substr(0, sent.find("\nticket ")); }
std::string_view TicketOf(std::string_view sent) { return sent.substr(MarkupOf(sent).size()); }

// Whether the text is the other one with one feature more.
bool HasOneFeatureMore(std::string_view text, std::string_view other) {
    constexpr std::string_view kEnd = "</psf:Feature>";
    for (std::size_t start = 0; (start = text.find("<psf:Feature ", start)) != std::string_view::npos;
         ++start) {
        const std::size_t end = text.find(kEnd, start);
        if (end == std::string_view::npos) return false;
        std::string without(text);
        if (without.erase(start, end + kEnd.size() - start) == other) return true;
    }
    return false;
}

// What a part that is not the good one has instead.
End DifferenceOf(std::string_view sent, std::string_view good) {
    if (MarkupOf(sent) != MarkupOf(good)) return Unknown;
    const std::string_view ticket = TicketOf(sent);
    if (HasOneFeatureMore(ticket, TicketOf(good))) return KeptFeature;
    const bool isEmpty = ticket.ends_with(": ") && TicketOf(good).starts_with(ticket);
    return isEmpty ? LostTicket : Unknown;
}

// How the job ended, and what the parts lack that were sent.
unsigned EndOf(const JobResult& good, const JobResult& result) {
    if (result == good) return CameThrough;
    if (result.sent.size() > good.sent.size()) return Unknown;
    unsigned found = 0;
    for (std::size_t i = 0; i < result.sent.size(); ++i) {
        if (result.sent[i] != good.sent[i]) found |= DifferenceOf(result.sent[i], good.sent[i]);
    }
    const auto endsWith = [&](HRESULT code) {
        return result.result == code && result.shutdownCodes == std::vector{code};
    };
    if (endsWith(kImportFailure)) return found | Ended;
    if (endsWith(E_FAIL)) return found | EndedWithEFail;
    const bool isWhole = result.result == good.result && result.shutdownCodes == good.shutdownCodes &&
                         result.sent.size() == good.sent.size();
    return isWhole ? found : Unknown;
}

// When every call fails from one on, one of the later calls may end the job.
unsigned AllowedEnds(const Attempt& attempt) {
    const auto found =
        std::ranges::find_if(kEndRules, [&](const EndRule& rule) { return attempt.name == rule.call; });
    const unsigned ends = found == std::end(kEndRules) ? Ended : found->ends;
    return attempt.isForGood ? ends | Ended : ends;
}

bool StrikesDom(const char* name, const void* pCaller) {
    return ImportFaults::StrikesCallOf(Import::Dom, name, pCaller);
}
bool StrikesSax(const char* name, const void* pCaller) {
    return ImportFaults::StrikesCallOf(Import::Sax, name, pCaller);
}

using XmlFaultsTest = ImportFaultsTest;

TEST_F(XmlFaultsTest, ACallOfTheDomThatFailsEndsTheJobWithItsCodeUnlessTheFilterCanDoWithout) {
    const tests::DomFaults faults(&StrikesDom, kImportFailure);
    std::map<std::string, unsigned> met;
    FailCalls(Import::Dom, [&](const Job& job, const Attempt& attempt) {
        ASSERT_FALSE(attempt.notMade) << HexOf(*attempt.notMade);
        const unsigned end = EndOf(GoodResult(job), attempt.result);
        EXPECT_EQ(end, end & AllowedEnds(attempt)) << attempt.name << ": " << HexOf(attempt.result.result);
        if (!attempt.isForGood) met[attempt.name] |= end;
    });
    EXPECT_EQ(unsigned{Ended}, met["load"]);
    EXPECT_EQ(unsigned{Ended}, met["QueryInterface"]);
    if (!kTellsWaysApart) return;
    for (const EndRule& rule : kEndRules) EXPECT_EQ(rule.ends, met[rule.call]) << rule.call;
}

std::vector<std::string> TagsOf(std::string_view markup) {
    std::vector<std::string> tags;
    while (!markup.empty()) {
        const std::size_t end = std::min(markup.find('<', 1), markup.size());
        tags.emplace_back(markup.substr(0, end));
        markup.remove_prefix(end);
    }
    return tags;
}

// What the tag of an element is when its attributes cannot be read: a page then counts as one of no size.
std::string WithoutAttributes(const std::string& tag) {
    if (tag.starts_with("<FixedPage ")) return "<FixedPage Height=\"0.00\" Width=\"0.00\">";
    if (tag.starts_with("<Canvas RenderTransform"))
        return "<Canvas RenderTransform=\"0.00,-1.00,1.00,0.00,0.00,0.00\">";
    return tag.substr(0, tag.find_first_of(" >")) + ">";
}

// How many elements of a part have lost their attributes; -1 when anything else has changed.
int LostAttributes(const std::string& sent, const std::string& good) {
    if (TicketOf(sent) != TicketOf(good)) return -1;
    const std::vector<std::string> tags = TagsOf(MarkupOf(sent));
    const std::vector<std::string> goodTags = TagsOf(MarkupOf(good));
    if (tags.size() != goodTags.size()) return -1;
    int lost = 0;
    for (std::size_t i = 0; i < tags.size(); ++i) {
        if (tags[i] == goodTags[i]) continue;
        if (tags[i] != WithoutAttributes(goodTags[i])) return -1;
        // The canvas belongs to the page.
        lost += tags[i].starts_with("<Canvas") ? 0 : 1;
    }
    return lost;
}

// An element of which one attribute cannot be read has none; the page goes on.
TEST_F(XmlFaultsTest, ACallOfTheSaxReaderThatFailsEndsTheJobAndOneOfAttributesTakesThemFromTheElement) {
    const SaxFaults faults(&StrikesSax, kImportFailure);
    FailCalls(Import::Sax, [](const Job& job, const Attempt& attempt) {
        ASSERT_FALSE(attempt.notMade) << HexOf(*attempt.notMade);
        const JobResult& good = GoodResult(job);
        const JobResult& result = attempt.result;
        const bool isOfAttributes = attempt.name.starts_with("get");
        int lost = 0;
        ASSERT_LE(result.sent.size(), good.sent.size());
        for (std::size_t i = 0; i < result.sent.size(); ++i) {
            const int lostHere = LostAttributes(result.sent[i], good.sent[i]);
            EXPECT_LE(0, lostHere) << result.sent[i];
            lost += lostHere;
        }
        if (!isOfAttributes) {
            EXPECT_EQ(0, lost);
        } else if (attempt.isForGood) {
            EXPECT_LE(1, lost);
        } else {
            EXPECT_EQ(1, lost);
        }
        // The reader is let go all the same when it will not let its handler go. When nothing works any more
        // the next page cannot be read.
        const bool isLast = result.sent.size() == good.sent.size();
        const bool isEnded =
            attempt.isForGood ? !isLast : !isOfAttributes && attempt.nth != attempt.calls && !isLast;
        const std::vector<HRESULT> told = isEnded ? std::vector{kImportFailure} : good.shutdownCodes;
        EXPECT_EQ(isEnded ? kImportFailure : good.result, result.result) << HexOf(result.result);
        EXPECT_EQ(told, result.shutdownCodes);
        if (attempt.name == "parse") {
            EXPECT_TRUE(isEnded);
        }
    });
}

}  // namespace
}  // namespace systemtest
