#include "devkit/filterhost/pagefacts.h"

#include <gtest/gtest.h>

#include <memory>

namespace devkit::filterhost {
namespace {

using pipeline::Part;
using pipeline::PartKind;
using pipeline::PartPtr;
using pipeline::SentPart;

std::string Markup(const std::string& content, const char* size = "Width=\"816\" Height=\"1056\"") {
    return "<FixedPage xmlns=\"http://schemas.microsoft.com/xps/2005/06\" " + std::string(size) + ">" +
           content + "</FixedPage>";
}

void Write(Part& part, const std::string& bytes) {
    const auto writing = part.BeginWriting();
    writing->Append(bytes.data(), bytes.size());
    writing->Close();
}

SentPart Page(const std::string& before) {
    const PartPtr part = std::make_shared<Part>(
        PartKind::FixedPage, pipeline::InputPart{"/1.fpage", "", [before] {
                                                     return std::make_shared<const std::string>(before);
                                                 }});
    return {PartKind::FixedPage, "/1.fpage", part};
}

PageFacts AfterRewrite(const std::string& before, const std::string& after) {
    const SentPart page = Page(before);
    Write(*page.part, after);
    return LookAtPage(page, {});
}

TEST(PageFacts, OfAPageThatIsLeftAlone) {
    const PageFacts facts = LookAtPage(Page(Markup("<Path/>")), {"ISOA4", "LongEdgeFirst"});
    EXPECT_EQ(facts.name, "/1.fpage");
    ASSERT_TRUE(facts.before && facts.after);
    EXPECT_EQ(facts.before->width, 816);
    EXPECT_EQ(facts.after->height, 1056);
    EXPECT_EQ(facts.bytesBefore, Markup("<Path/>").size());
    EXPECT_EQ(facts.bytesAfter, facts.bytesBefore);
    EXPECT_FALSE(facts.rewritten);
    EXPECT_FALSE(facts.turned);
    EXPECT_FALSE(facts.ticketReplaced);
    EXPECT_EQ(facts.mediaSize, "ISOA4");
    EXPECT_EQ(facts.feedDirection, "LongEdgeFirst");
    EXPECT_EQ(facts.malformed, std::nullopt);
}

TEST(PageFacts, ACanvasOfARightAngleRoundTheContentIsATurn) {
    const PageFacts facts =
        AfterRewrite(Markup("<Path/>"),
                     Markup("<Canvas RenderTransform=\"0.00,-1.00,1.00,0.00,0.00,816.00\"><Path/></Canvas>",
                            "Width=\"1056\" Height=\"816\""));
    EXPECT_TRUE(facts.rewritten);
    EXPECT_TRUE(facts.turned);
    EXPECT_EQ(facts.after->width, 1056);
    EXPECT_EQ(facts.after->height, 816);
}

TEST(PageFacts, ACanvasThatScalesIsNoTurn) {
    EXPECT_FALSE(
        AfterRewrite(Markup("<Path/>"), Markup("<Canvas RenderTransform=\"0.5,0,0,0.5,0,0\"/>")).turned);
    EXPECT_FALSE(AfterRewrite(Markup("<Path/>"), Markup("<Canvas RenderTransform=\"0,-1,1\"/>")).turned);
    EXPECT_FALSE(AfterRewrite(Markup("<Path/>"), Markup("<Canvas/>")).turned);
    EXPECT_FALSE(AfterRewrite(Markup("<Path/>"), Markup("")).turned);
}

TEST(PageFacts, ATurnedCanvasOfTheInputsOwnIsNoTurnOfTheFilters) {
    EXPECT_FALSE(LookAtPage(Page(Markup("<Canvas RenderTransform=\"0,-1,1,0,0,816\"/>")), {}).turned);
}

TEST(PageFacts, TheSheetIsThatOfTheNewTicket) {
    const SentPart page = Page(Markup(""));
    page.part->inputTicket = std::make_shared<Part>(PartKind::PrintTicket, "/old.xml");
    page.part->ticket = std::make_shared<Part>(PartKind::PrintTicket, "/a\\new.xml");
    Write(*page.part->ticket,
          "<psf:PrintTicket "
          "xmlns:psf=\"http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework\">"
          "<psf:Feature name=\"psk:PageMediaSize\"><psf:Option "
          "name=\"psk:ISOA3\"/></psf:Feature></psf:PrintTicket>");
    const PageFacts facts = LookAtPage(page, {"ISOA4", std::nullopt});
    EXPECT_TRUE(facts.ticketReplaced);
    EXPECT_EQ(facts.ticketBefore, "/old.xml");
    EXPECT_EQ(facts.ticketAfter, "/a\\new.xml");
    EXPECT_EQ(facts.mediaSize, "ISOA3");
}

TEST(PageFacts, MarkupThatIsNotWellFormedIsTold) {
    const PageFacts facts = AfterRewrite(Markup(""), "<FixedPage Width=\"1\" Height=\"2\"><Canvas>");
    ASSERT_TRUE(facts.malformed);
    EXPECT_TRUE(facts.malformed->starts_with("is not well-formed XML (")) << *facts.malformed;
}

}  // namespace
}  // namespace devkit::filterhost
