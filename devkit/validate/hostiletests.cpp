#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "devkit/common/text.h"
#include "devkit/package/xpsdocument.h"
#include "devkit/validate/battery.h"
#include "devkit/validate/judging.h"

namespace devkit::validate {
namespace {

using package::FixedPage;
using package::XpsDocument;

// A run over a document that asks much of a filter: it may fail, and has to say so.
void ExpectADecentEnd(Trial& trial, const Order& order, const RunResult& result) {
    FailWithBreaches(trial, order, result);
    FailWith(trial, order, result, {common::Check::SilentFailure});
    const bool isDecent = result.end && !result.crash && !result.end->hung && !result.end->threadEnded;
    if (isDecent || !result.inputFailures.empty()) return;
    for (const std::string& failure : FailuresOf(result)) trial.Fail(order, result, failure);
}

// Something hostile by its name.
struct Hostile {
    const char* name;
    std::string bytes;
};

// Runs the filter over the short document with each of them in the place that `put` puts it.
using Put = void (*)(XpsDocument& document, FixedPage& page, const std::string& bytes);
std::function<void(Trial&)> WithEach(std::vector<Hostile> (*make)(), Put put) {
    return [make, put](Trial& trial) {
        for (const Hostile& hostile : make()) {
            XpsDocument document = XpsDocument::Open(trial.Carried(kShort).path);
            put(document, document.sequence.documents.front().pages.front(), hostile.bytes);
            const Document changed{std::string("short.xps with ") + hostile.name,
                                   trial.NewPath("hostile.xps")};
            document.Save(changed.path);
            const Order order = trial.OrderFor(changed);
            ExpectADecentEnd(trial, order, trial.Run(order));
        }
    };
}

std::string Repeated(std::string_view text, std::size_t count) {
    std::string all;
    all.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i) all += text;
    return all;
}

std::string PageOf(std::string_view attributes, std::string_view content) {
    return "<FixedPage xmlns=\"http://schemas.microsoft.com/xps/2005/06\" xml:lang=\"en\" " +
           std::string(attributes) + ">" + std::string(content) + "</FixedPage>";
}

std::vector<Hostile> HostilePages() {
    constexpr std::string_view kSize = "Width=\"793.76\" Height=\"1122.56\"";
    constexpr std::string_view kPath = "<Path Data=\"M 0,0 L 9,9\" Fill=\"#FF000000\"/>";
    constexpr std::size_t kMany = 20000;
    constexpr std::size_t kDeep = 2000;
    return {
        {"an empty page", ""},
        {"a page of white space", "  \r\n\t "},
        {"a page that is no XML", "%PDF-1.4"},
        {"a page that ends in the middle of a tag", PageOf(kSize, kPath).substr(0, 120)},
        {"a page that ends in the middle", PageOf(kSize, "<Canvas>").substr(0, 150)},
        {"two roots", PageOf(kSize, "") + PageOf(kSize, "")},
        {"another root", "<Canvas xmlns=\"http://schemas.microsoft.com/xps/2005/06\"/>"},
        {"a root of no namespace", "<FixedPage Width=\"793.76\" Height=\"1122.56\"/>"},
        {"no size", PageOf("", kPath)},
        {"a negative size", PageOf("Width=\"-793.76\" Height=\"-1122.56\"", kPath)},
        {"a size of nothing", PageOf("Width=\"0\" Height=\"0\"", kPath)},
        {"a size that is no number", PageOf("Width=\"wide\" Height=\"NaN\"", kPath)},
        {"a size beyond all numbers", PageOf("Width=\"1e400\" Height=\"1e308\"", kPath)},
        {"a box that is none",
         PageOf("Width=\"9\" Height=\"9\" BleedBox=\"1,2,3\" ContentBox=\",,,,\"", kPath)},
        {"a document type",
         "<!DOCTYPE FixedPage [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;\">]>" +
             PageOf(kSize, "&b;&b;&b;")},
        {"an entity that is not declared", PageOf(kSize, "<Glyphs UnicodeString=\"&nothing;\"/>")},
        {"a character that XML does not know", PageOf(kSize, "<Glyphs UnicodeString=\"&#1;\"/>")},
        {"UTF-8 that is none", PageOf(kSize, "<Glyphs UnicodeString=\"\xC3\x28\xFF\"/>")},
        {"a byte order mark", "\xEF\xBB\xBF" + PageOf(kSize, kPath)},
        {"an encoding that is not the one declared",
         "<?xml version=\"1.0\" encoding=\"utf-16\"?>" + PageOf(kSize, kPath)},
        {"many elements", PageOf(kSize, Repeated(kPath, kMany))},
        {"many attributes", PageOf(
                                std::string(kSize) +
                                    [] {
                                        std::string all;
                                        for (int i = 0; i < 1000; ++i)
                                            all += " a" + std::to_string(i) + "=\"\"";
                                        return all;
                                    }(),
                                kPath)},
        {"deep elements", PageOf(kSize, Repeated("<Canvas>", kDeep) + Repeated("</Canvas>", kDeep))},
        {"a long attribute", PageOf(kSize, "<Path Data=\"" + Repeated("L 1,1 ", kMany * 10) + "\"/>")},
        {"a long name", PageOf(kSize, "<" + Repeated("A", kMany) + "/>")},
        {"comments and instructions",
         "<!-- --><?a b?>" + PageOf(kSize, "<!-- < --><?c d?><![CDATA[<]]>") + "<!-- -->"},
        {"prefixes that are not declared", PageOf(kSize, "<a:Path b:Data=\"\"/>")},
    };
}

std::string TicketOf(std::string_view body) {
    return "<psf:PrintTicket "
           "xmlns:psf=\"http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework\" "
           "xmlns:psk=\"http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords\" "
           "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
           "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" "
           "version=\"1\">" +
           std::string(body) + "</psf:PrintTicket>";
}

std::string SheetOf(std::string_view width, std::string_view height) {
    const auto property = [](std::string_view name, std::string_view value) {
        return "<psf:ScoredProperty name=\"psk:MediaSize" + std::string(name) +
               "\"><psf:Value xsi:type=\"xsd:integer\">" + std::string(value) +
               "</psf:Value></psf:ScoredProperty>";
    };
    return TicketOf("<psf:Feature name=\"psk:PageMediaSize\"><psf:Option name=\"psk:CustomMediaSize\">" +
                    property("Width", width) + property("Height", height) + "</psf:Option></psf:Feature>");
}

std::vector<Hostile> HostileTickets() {
    constexpr std::string_view kFeature =
        "<psf:Feature name=\"psk:PageOrientation\"><psf:Option name=\"psk:Portrait\"/></psf:Feature>";
    constexpr std::size_t kMany = 2000;
    return {
        {"an empty ticket", ""},
        {"a ticket that is no XML", "portrait"},
        {"a ticket that ends in the middle", TicketOf(kFeature).substr(0, 300)},
        {"a ticket of another kind", "<html/>"},
        {"a ticket without anything in it", TicketOf("")},
        {"a ticket with a feature twice", TicketOf(std::string(kFeature) + std::string(kFeature))},
        {"a ticket with a feature without a name", TicketOf("<psf:Feature><psf:Option/></psf:Feature>")},
        {"a ticket with a feature without an option", TicketOf("<psf:Feature name=\"psk:PageMediaSize\"/>")},
        {"a ticket with an option that nobody has",
         TicketOf(
             "<psf:Feature name=\"psk:PageMediaSize\"><psf:Option name=\"psk:Nothing\"/></psf:Feature>")},
        {"a ticket with a prefix that is not declared", TicketOf("<psf:Feature name=\"none:X\"/>")},
        {"a ticket with a name that is none",
         TicketOf("<psf:Feature name=\":::\"><psf:Option name=\"\"/></psf:Feature>")},
        {"a sheet of nothing", SheetOf("0", "0")},
        {"a sheet less than nothing", SheetOf("-210000", "-297000")},
        {"a sheet beyond all numbers", SheetOf("99999999999999999999", "2147483648")},
        {"a sheet without numbers", SheetOf("", "wide")},
        {"a sheet as long as a road", SheetOf("210000", "2147483647")},
        {"many features", TicketOf([] {
             std::string all;
             for (std::size_t i = 0; i < kMany; ++i) {
                 all += "<psf:Feature name=\"psk:PageX" + std::to_string(i) +
                        "\"><psf:Option name=\"psk:A\"/></psf:Feature>";
             }
             return all;
         }())},
        {"deep features",
         TicketOf(Repeated("<psf:Feature name=\"psk:PageX\">", 200) + Repeated("</psf:Feature>", 200))},
        {"a long name in a ticket",
         TicketOf("<psf:Feature name=\"psk:Page" + Repeated("X", 100000) + "\"/>")},
        {"a ticket with a document type", "<!DOCTYPE a [<!ENTITY b \"c\">]>" + TicketOf(kFeature)},
    };
}

void PutMarkup(XpsDocument&, FixedPage& page, const std::string& bytes) {
    page.markup = common::Content(bytes);
}

std::string AddTicket(XpsDocument& document, const std::string& bytes) {
    return document.AddPart("/Metadata/hostile_PT.xml", package::kPrintTicketContentType,
                            common::Content(bytes));
}

void PutPageTicket(XpsDocument& document, FixedPage& page, const std::string& bytes) {
    page.ticket = AddTicket(document, bytes);
}

void PutJobTicket(XpsDocument& document, FixedPage&, const std::string& bytes) {
    document.sequence.ticket = AddTicket(document, bytes);
}

// What the pipeline gives for a reader or a writer that is of no use.
void NoStreams(Trial& trial) {
    for (const char* const text : {"reader=null", "writer=null", "reader=unknown", "writer=unknown"}) {
        Order order = trial.OrderFor(trial.Carried(kShort));
        order.host.pipelineSwitches.emplace_back(text);
        const RunResult result = trial.Run(order);
        if (!IsIdle(result)) ExpectADecentEnd(trial, order, result);
    }
}

}  // namespace

std::vector<Test> HostileTests() {
    return {
        {"hostile-pages", 9, "whatever the markup of a page is, the filter ends decently",
         "let an XML reader with limits read the page, and take every failure of it for one",
         WithEach(&HostilePages, &PutMarkup)},
        {"hostile-page-tickets", 9, "whatever the ticket of a page is, the filter ends decently",
         "look at every code of the DOM and of the ticket provider",
         WithEach(&HostileTickets, &PutPageTicket)},
        {"hostile-job-tickets", 9, "whatever the ticket of a job is, the filter ends decently",
         "look at every code of the DOM and of the ticket provider",
         WithEach(&HostileTickets, &PutJobTicket)},
        {"no-streams", 9, "without a reader or a writer that it knows the filter ends decently",
         "look at the pointers that RequestReader and RequestWriter give, and query them", NoStreams},
    };
}

}  // namespace devkit::validate
