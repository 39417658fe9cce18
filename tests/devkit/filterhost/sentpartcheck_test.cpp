#include "devkit/filterhost/sentpartcheck.h"

#include <gtest/gtest.h>

#include <memory>

#include "sentpages.h"
#include "tickets.h"

namespace devkit::filterhost {
namespace {

using pipeline::InputPart;
using pipeline::Part;
using pipeline::PartKind;
using pipeline::PartPtr;
using pipeline::SentPart;
using Lines = std::vector<std::string>;

std::string Image(const std::string& source) {
    return "<Path><Path.Fill><ImageBrush ImageSource=\"" + source + "\"/></Path.Fill></Path>";
}

std::string Glyphs(const std::string& font) { return "<Glyphs FontUri=\"" + font + "\"/>"; }

Lines TextsOf(const std::vector<SentPartFinding>& findings) {
    Lines texts;
    for (const SentPartFinding& finding : findings) texts.push_back(finding.text);
    return texts;
}

// A page of the input with one font, which is sent.
struct PageWithFont {
    explicit PageWithFont(const std::string& markup)
        : part(PartOfInput(PartKind::FixedPage, "/a/1.fpage", markup)) {
        part->resources.push_back(PartOfInput(PartKind::Font, "/a/Font.odttf", ""));
    }
    [[nodiscard]] SentPart Sent() const { return {PartKind::FixedPage, part->Name(), part}; }
    [[nodiscard]] Lines Look() const { return TextsOf(SentPartCheck().Look(Sent())); }

    PartPtr part;
};

Lines TextsAfterRewrite(const std::string& before, const std::string& after) {
    const PageWithFont page(before);
    Write(*page.part, after);
    return page.Look();
}

TEST(SentPartCheck, APageThatNamesWhatItRelatesIsFine) {
    EXPECT_EQ(Lines{}, TextsAfterRewrite(Markup(""), Markup(Glyphs("/a/font.ODTTF#2") + Glyphs("Font.odttf") +
                                                            Glyphs("../a/./Font.odttf") + Glyphs(""))));
}

TEST(SentPartCheck, MarkupThatNamesWhatThePageDoesNotRelateIsFound) {
    const auto line = [](const std::string& name) {
        return "the markup of FixedPage /a/1.fpage names " + name + ", which the page does not relate";
    };
    EXPECT_EQ(Lines{line("/b.odttf")}, TextsAfterRewrite(Markup(""), Markup(Glyphs("/b.odttf"))));
    EXPECT_EQ(Lines{line("/a/b.png")},
              TextsAfterRewrite(Markup(""), Markup(Image("b.png") + Image("b.png"))));
    EXPECT_EQ((Lines{line("/b.png"), line("/c.icc")}),
              TextsAfterRewrite(Markup(""), Markup(Image("{ColorConvertedBitmap /b.png   /c.icc}"))));
    EXPECT_EQ(
        Lines{line("/a/d.dict")},
        TextsAfterRewrite(Markup(""), Markup("<FixedPage.Resources><ResourceDictionary Source=\"d.dict\"/>"
                                             "</FixedPage.Resources>")));
}

TEST(SentPartCheck, WhatTheInputNamedAlreadyIsNotTheFilters) {
    EXPECT_EQ(Lines{}, TextsAfterRewrite(Markup(Glyphs("/b.odttf")), Markup(Glyphs("/b.odttf") + "<Path/>")));
    EXPECT_EQ(Lines{}, PageWithFont(Markup(Glyphs("/b.odttf"))).Look());
    EXPECT_EQ(Lines{}, TextsAfterRewrite(Markup("", ""), Markup("<Path/>", "")));
}

TEST(SentPartCheck, AResourceThatWasDeletedAndIsUsedIsFound) {
    const PageWithFont page(Markup(Glyphs("Font.odttf")));
    page.part->resources.clear();
    page.part->deleted = {"/a/Font.odttf"};
    EXPECT_EQ(
        Lines{
            "the markup of FixedPage /a/1.fpage uses /a/Font.odttf, which the filter deleted from the page"},
        page.Look());
    Write(*page.part, Markup("<Path/>"));
    EXPECT_EQ(Lines{}, page.Look());
    // Another one has taken its place.
    Write(*page.part, Markup(Glyphs("Font.odttf")));
    page.part->resources.push_back(std::make_shared<Part>(PartKind::Font, "\\a\\font.odttf"));
    EXPECT_EQ(Lines{}, page.Look());
}

TEST(SentPartCheck, APageThatLosesItsSizeIsFound) {
    const auto after = [](const char* size) {
        return TextsAfterRewrite(Markup(""), Markup("<Path/>", size));
    };
    EXPECT_EQ(Lines{"the markup of FixedPage /a/1.fpage has no Width"}, after("Height=\"1\""));
    EXPECT_EQ(Lines{"the markup of FixedPage /a/1.fpage has no Height"}, after("Width=\"1\""));
    EXPECT_EQ(Lines{"the markup of FixedPage /a/1.fpage has no Width and no Height"}, after(""));
}

TEST(SentPartCheck, APageThatTheFilterMadeHasASize) {
    const auto made = [](const char* size) {
        const PartPtr page = std::make_shared<Part>(PartKind::FixedPage, "/new.fpage");
        Write(*page, Markup("<Path/>", size));
        return TextsOf(SentPartCheck().Look({PartKind::FixedPage, page->Name(), page}));
    };
    EXPECT_EQ(Lines{}, made(kLetterSize));
    EXPECT_EQ(Lines{"the markup of FixedPage /new.fpage has no Width and no Height"}, made(""));
}

TEST(SentPartCheck, MarkupThatIsNoXmlIsToldByOthers) {
    EXPECT_EQ(Lines{}, TextsAfterRewrite(Markup(""), "<FixedPage>"));
    EXPECT_EQ(Lines{}, TextsAfterRewrite(Markup(""), ""));
}

PartPtr NewTicket(const std::string& name, const std::string& bytes) {
    const PartPtr ticket = std::make_shared<Part>(PartKind::PrintTicket, name);
    Write(*ticket, bytes);
    return ticket;
}

TEST(SentPartCheck, EachProblemOfTicketsIsToldOnce) {
    SentPartCheck check;
    const auto look = [&check](const std::string& name, const std::string& bytes) {
        const PageWithFont page(Markup(""));
        page.part->ticket = NewTicket(name, bytes);
        return TextsOf(check.Look(page.Sent()));
    };
    const std::string noOption = "<psf:Feature name=\"psk:PageX\"/>";
    EXPECT_EQ(Lines{}, look("/0.xml", tests::Ticket("")));
    EXPECT_EQ(
        Lines{"the print ticket /1.xml of FixedPage /a/1.fpage is no print ticket: The root element is not "
              "PrintTicket"},
        look("/1.xml", "<a/>"));
    EXPECT_EQ(Lines{}, look("/2.xml", "<a/>"));
    EXPECT_EQ(
        Lines{"the print ticket /3.xml of FixedPage /a/1.fpage does not keep the Print Schema: the feature "
              "psk:PageX holds neither an option nor a feature"},
        look("/3.xml", tests::Ticket(noOption)));
    EXPECT_EQ(Lines{}, look("/4.xml", "<a/>"));
    EXPECT_EQ(Lines{}, look("/5.xml", tests::Ticket(noOption)));
}

TEST(SentPartCheck, TicketsOfTheInputAreNotTheFilters) {
    const PageWithFont page(Markup(""));
    page.part->ticket = PartOfInput(PartKind::PrintTicket, "/t.xml", "<a/>");
    EXPECT_EQ(Lines{}, page.Look());
    page.part->ticket = nullptr;
    EXPECT_EQ(Lines{}, page.Look());
}

TEST(SentPartCheck, AnObjectThatIsNotTheKitsHasNothingToLookAt) {
    EXPECT_EQ(Lines{}, TextsOf(SentPartCheck().Look({PartKind::Unknown, "/x", nullptr})));
}

}  // namespace
}  // namespace devkit::filterhost
