#include "devkit/filterhost/pagefacts.h"

#include <gtest/gtest.h>

#include <memory>

#include "sentpages.h"
#include "tickets.h"

namespace devkit::filterhost {
namespace {

using pipeline::Part;
using pipeline::PartKind;
using pipeline::PartPtr;
using pipeline::SentPart;

SentPart Page(const std::string& before) {
    return {PartKind::FixedPage, "/1.fpage", PartOfInput(PartKind::FixedPage, "/1.fpage", before)};
}

PageFacts FactsOf(const SentPart& page) { return LookAtPart(page).page.value(); }

PageFacts AfterRewrite(const std::string& before, const std::string& after) {
    const SentPart page = Page(before);
    Write(*page.part, after);
    return FactsOf(page);
}

TEST(PageFacts, OfAPageThatIsLeftAlone) {
    const PageFacts facts = FactsOf(Page(Markup("<Path/>")));
    ASSERT_TRUE(facts.before && facts.after);
    EXPECT_EQ(816, facts.before->width);
    EXPECT_EQ(1056, facts.after->height);
    EXPECT_EQ(Markup("<Path/>").size(), facts.bytesBefore);
    EXPECT_EQ(facts.bytesBefore, facts.bytesAfter);
    EXPECT_FALSE(facts.rewritten);
    EXPECT_FALSE(facts.turned);
    EXPECT_FALSE(facts.ticketReplaced);
    EXPECT_EQ(printschema::TicketFacts(), facts.newTicket);
    EXPECT_EQ(std::nullopt, facts.malformed);
}

TEST(PageFacts, ACanvasOfARightAngleRoundTheContentIsATurn) {
    const PageFacts facts =
        AfterRewrite(Markup("<Path/>"),
                     Markup("<Canvas RenderTransform=\"0.00,-1.00,1.00,0.00,0.00,816.00\"><Path/></Canvas>",
                            "Width=\"1056\" Height=\"816\""));
    EXPECT_TRUE(facts.rewritten);
    EXPECT_TRUE(facts.turned);
    EXPECT_EQ((PageSize{816, 1056}), facts.before);
    EXPECT_EQ(1056, facts.after->width);
    EXPECT_EQ(816, facts.after->height);
}

TEST(PageFacts, ACanvasThatScalesIsNoTurn) {
    EXPECT_FALSE(
        AfterRewrite(Markup("<Path/>"), Markup("<Canvas RenderTransform=\"0.5,0,0,0.5,0,0\"/>")).turned);
    EXPECT_FALSE(AfterRewrite(Markup("<Path/>"), Markup("<Canvas RenderTransform=\"0,-1,1\"/>")).turned);
    EXPECT_FALSE(AfterRewrite(Markup("<Path/>"), Markup("<Canvas/>")).turned);
    EXPECT_FALSE(AfterRewrite(Markup("<Path/>"), Markup("")).turned);
}

TEST(PageFacts, ATurnedCanvasBesideOtherContentIsNoTurn) {
    const std::string canvas = "<Canvas RenderTransform=\"0,-1,1,0,0,816\"><Path/></Canvas>";
    EXPECT_FALSE(AfterRewrite(Markup("<Path/>"), Markup(canvas + "<Path/>")).turned);
    EXPECT_FALSE(AfterRewrite(Markup("<Path/>"), Markup("<Path/>" + canvas)).turned);
}

TEST(PageFacts, ATurnedCanvasOfTheInputsOwnIsNoTurnOfTheFilters) {
    EXPECT_FALSE(FactsOf(Page(Markup("<Canvas RenderTransform=\"0,-1,1,0,0,816\"/>"))).turned);
}

TEST(PageFacts, TheSheetIsThatOfTheNewTicket) {
    const SentPart page = Page(Markup(""));
    page.part->inputTicket = std::make_shared<Part>(PartKind::PrintTicket, "/old.xml");
    page.part->ticket = std::make_shared<Part>(PartKind::PrintTicket, "/a\\new.xml");
    Write(*page.part->ticket, tests::Ticket(tests::Select("psk:PageMediaSize", "psk:ISOA3")));
    const PartFacts facts = LookAtPart(page);
    EXPECT_EQ("FixedPage", facts.kind);
    EXPECT_EQ("/1.fpage", facts.name);
    EXPECT_EQ("/old.xml", facts.ticketBefore);
    EXPECT_EQ("/a\\new.xml", facts.ticketAfter);
    EXPECT_TRUE(facts.page->ticketReplaced);
    EXPECT_EQ("ISOA3", facts.page->newTicket.mediaSize);
}

TEST(PageFacts, APageThatTheFilterMadeHasASize) {
    const PartPtr part = std::make_shared<Part>(PartKind::FixedPage, "/new.fpage");
    Write(*part, Markup("<Path/>"));
    const PageFacts facts = FactsOf({PartKind::FixedPage, "/new.fpage", part});
    EXPECT_EQ(std::nullopt, facts.before);
    EXPECT_EQ((PageSize{816, 1056}), facts.after);
    EXPECT_FALSE(facts.rewritten);
}

TEST(PartFacts, OfAnObjectThatIsNotTheKits) {
    const PartFacts facts = LookAtPart({PartKind::Unknown, "", nullptr});
    EXPECT_EQ("Unknown", facts.kind);
    EXPECT_EQ("", facts.name);
    EXPECT_EQ(std::nullopt, facts.ticketBefore);
    EXPECT_FALSE(facts.page);
}

TEST(PageFacts, MarkupThatIsNotWellFormedIsTold) {
    const PageFacts facts = AfterRewrite(Markup(""), "<FixedPage Width=\"1\" Height=\"2\"><Canvas>");
    ASSERT_TRUE(facts.malformed);
    EXPECT_TRUE(facts.malformed->starts_with("is not well-formed XML (")) << *facts.malformed;
    EXPECT_EQ((PageSize{816, 1056}), facts.before);
    EXPECT_EQ(std::nullopt, facts.after);
}

}  // namespace
}  // namespace devkit::filterhost
