#include <gtest/gtest.h>

#include <deque>
#include <fstream>

#include "devkit/filterhost/documentdifference.h"
#include "devkit/filterhost/files.h"
#include "devkit/filterhost/program.h"

// `filterhost diff`, and what it compares with.

namespace devkit::filterhost {
namespace {

using package::FixedPage;
using package::XpsDocument;
using Path = std::filesystem::path;
using Lines = std::vector<std::string>;

constexpr const char* kTicketType = "application/vnd.ms-printing.printticket+xml";

std::string Ticket(const std::string& color) {
    return "<psf:PrintTicket "
           "xmlns:psf=\"http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework\" "
           "xmlns:psk=\"http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords\" "
           "version=\"1\"><psf:Feature name=\"psk:PageOutputColor\"><psf:Option name=\"psk:" +
           color + "\"/></psf:Feature></psf:PrintTicket>";
}

// The sample with ten pages, and a copy that a test changes.
class DocumentDiff : public testing::Test {
  protected:
    Lines Diff() const { return DiffDocuments(m_before, m_after); }
    std::deque<FixedPage>& Pages() { return m_after.sequence.documents[0].pages; }

    XpsDocument m_before = XpsDocument::Open(Sample("sample.xps"));
    XpsDocument m_after = XpsDocument::Open(Sample("sample.xps"));
};

TEST_F(DocumentDiff, ADocumentIsItself) { EXPECT_EQ(Lines{}, Diff()); }

TEST_F(DocumentDiff, APageOfAnotherSizeIsToldWithBoth) {
    Pages()[0].markup =
        "<FixedPage xmlns=\"http://schemas.microsoft.com/xps/2005/06\" Width=\"816\" "
        "Height=\"1056\" xml:lang=\"en\"/>";
    const Lines lines = Diff();
    ASSERT_EQ(2U, lines.size());
    EXPECT_TRUE(lines[0].starts_with("document 1, page 1: ")) << lines[0];
    EXPECT_TRUE(lines[0].ends_with(" -> 816 x 1056 (215.9 x 279.4 mm), portrait")) << lines[0];
    EXPECT_TRUE(lines[1].starts_with("document 1, page 1: the markup differs, ")) << lines[1];
}

TEST_F(DocumentDiff, PagesBelongTogetherByTheirNames) {
    const std::string dropped = Pages()[1].name;
    Pages().erase(Pages().begin() + 1);
    EXPECT_EQ(Lines{"document 1, page 2 " + dropped + ": only in the first"}, Diff());
    std::swap(Pages()[0], Pages()[1]);
    EXPECT_EQ((Lines{"document 1: the pages come in another order",
                     "document 1, page 2 " + dropped + ": only in the first"}),
              Diff());
}

TEST_F(DocumentDiff, TheOrderOfPagesIsThatOfTheirListWhereverTheyLieInMemory) {
    for (XpsDocument* const pDocument : {&m_before, &m_after}) {
        std::deque<FixedPage>& pages = pDocument->sequence.documents[0].pages;
        for (int i = 0; i < 40; ++i) {
            const std::string wanted = "/front" + std::to_string(i) + ".fpage";
            pages.push_front(
                {pDocument->AddPart(wanted, "application/vnd.ms-package.xps-fixedpage+xml", "<p/>"),
                 {},
                 {},
                 {}});
        }
    }
    EXPECT_EQ(Lines{}, Diff());
    std::swap(Pages()[38], Pages()[39]);
    EXPECT_EQ(Lines{"document 1: the pages come in another order"}, Diff());
}

TEST_F(DocumentDiff, TicketsAreComparedFeatureByFeature) {
    m_after.sequence.ticket.reset();
    m_before.sequence.ticket = m_before.AddPart("/t.xml", kTicketType, Ticket("Color"));
    EXPECT_EQ(Lines{"job: a ticket only in the first"}, Diff());
    m_after.sequence.ticket = m_after.AddPart("/t.xml", kTicketType, Ticket("Monochrome"));
    EXPECT_EQ(Lines{"job: ticket: psk:PageOutputColor: psk:Color -> psk:Monochrome"}, Diff());
    m_after.sequence.ticket = m_after.AddPart("/u.xml", kTicketType, "<none/>");
    const Lines lines = Diff();
    ASSERT_EQ(1U, lines.size());
    EXPECT_TRUE(lines[0].starts_with("job: the tickets differ, and one is none: ")) << lines[0];
}

TEST_F(DocumentDiff, ResourcesAreThere) {
    FixedPage& page = Pages()[0];
    const std::string name = m_after.AddPart("/extra.png", "image/png", "x");
    page.resources.push_back(name);
    EXPECT_EQ(Lines{"document 1, page 1: resource " + name + " only in the second"}, Diff());
    m_before.sequence.documents[0].pages[0].resources.push_back(
        m_before.AddPart("/extra.png", "image/png", "y"));
    EXPECT_EQ(Lines{"document 1, page 1: the bytes of resource " + name + " differ"}, Diff());
}

TEST(DiffCommand, ComparesWhatAFilterMade) {
    const Path folder = FreshFolder("diff");
    const std::string output = Text(folder / "o.xps");
    const std::string input = Text(Sample("minimal.xps"));
    EXPECT_EQ(0U, RunProgram(RunArguments({input, "-o", output, "--quiet"}), "ticket").status);
    const Ended ended = RunProgram({"diff", input, output});
    EXPECT_EQ(1U, ended.status);
    EXPECT_EQ("document 1, page 1: a ticket only in the second\n", ended.out);
    const Ended same = RunProgram({"diff", input, input});
    EXPECT_EQ(0U, same.status);
    EXPECT_EQ("", same.out + same.error);
}

TEST(DiffCommand, ComparesTickets) {
    const Path folder = FreshFolder("difftickets");
    std::ofstream(folder / "a.xml") << Ticket("Color");
    std::ofstream(folder / "b.xml") << Ticket("Monochrome");
    std::ofstream(folder / "c.xml") << "<none/>";
    const auto diff = [&](const char* one, const char* other) {
        return RunProgram({"diff", Text(folder / one), Text(folder / other)});
    };
    const Ended ended = diff("a.xml", "b.xml");
    EXPECT_EQ(1U, ended.status);
    EXPECT_EQ("psk:PageOutputColor: psk:Color -> psk:Monochrome\n", ended.out);
    EXPECT_EQ(0U, diff("a.xml", "a.xml").status);
    const Ended none = diff("a.xml", "c.xml");
    EXPECT_EQ(3U, none.status);
    EXPECT_EQ("filterhost: " + Text(folder / "c.xml") +
                  ": is neither a document nor a print ticket: The root element is not PrintTicket\n",
              none.error);
    EXPECT_EQ(3U, diff("a.xml", "nowhere.xml").status);
    EXPECT_EQ(2U, RunProgram({"diff", Text(folder / "a.xml"), Text(Sample("minimal.xps"))}).status);
}

}  // namespace
}  // namespace devkit::filterhost
