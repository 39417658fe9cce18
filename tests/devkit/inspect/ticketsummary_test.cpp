#include "devkit/inspect/ticketsummary.h"

#include <gtest/gtest.h>

#include "devkit/common/error.h"

namespace devkit::inspect {
namespace {

using Texts = std::vector<std::string>;

Texts Summarize(const std::string& content) {
    return SummarizeTicket(
        "<psf:PrintTicket "
        "xmlns:psf='http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework' "
        "xmlns:psk='http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords' version='1'>" +
            content + "</psf:PrintTicket>",
        "/ticket", {});
}

std::string ErrorOf(const std::string& ticket) {
    try {
        static_cast<void>(SummarizeTicket(ticket, "/ticket", {}));
    } catch (const common::Error& error) {
        return error.what();
    }
    return {};
}

TEST(TicketSummaryTest, FeaturesShowTheirOptionsWithProperties) {
    EXPECT_EQ(
        Summarize(
            "<psf:Feature name='psk:PageMediaSize'><psf:Option name='psk:ISOA4'>"
            "<psf:ScoredProperty name='psk:MediaSizeWidth'><psf:Value>210000</psf:Value></psf:ScoredProperty>"
            "<psf:ScoredProperty name='psk:Empty'/>"
            "<psf:Property name='psk:Note'>\n <psf:Value>x y</psf:Value>\n</psf:Property>"
            "</psf:Option></psf:Feature>"
            "<psf:Feature name='psk:PageOrientation'><psf:Option name='psk:Landscape'/></psf:Feature>"),
        (Texts{"psk:PageMediaSize = psk:ISOA4 (psk:MediaSizeWidth 210000, psk:Empty, psk:Note x y)",
               "psk:PageOrientation = psk:Landscape"}));
}

TEST(TicketSummaryTest, ParametersShowTheirValues) {
    EXPECT_EQ(
        Summarize(
            "<psf:ParameterInit name='psk:JobCopiesAllDocuments'><psf:Value>2</psf:Value></psf:ParameterInit>"
            "<psf:Feature name='psk:PageScaling'><psf:Option name='psk:CustomSquare'>"
            "<psf:ScoredProperty name='psk:Scale'><psf:ParameterRef name='psk:PageScalingScale'/>"
            "</psf:ScoredProperty></psf:Option></psf:Feature>"),
        (Texts{"psk:JobCopiesAllDocuments = 2",
               "psk:PageScaling = psk:CustomSquare (psk:Scale from psk:PageScalingScale)"}));
}

TEST(TicketSummaryTest, NestedFeaturesStandBehindTheirParents) {
    EXPECT_EQ(Summarize("<psf:Feature name='psk:NUp'><psf:Option/><psf:Feature name='psk:Direction'>"
                        "<psf:Property name='psk:Ignored'><psf:Value>1</psf:Value></psf:Property>"
                        "<psf:Option name='psk:RightBottom'/></psf:Feature></psf:Feature>"
                        "<psf:Feature><psf:Option name='a'/></psf:Feature>"),
              (Texts{"psk:NUp = (unnamed)", "psk:NUp/psk:Direction = psk:RightBottom", "(unnamed) = a"}));
}

TEST(TicketSummaryTest, LongValuesAreCounted) {
    EXPECT_EQ(Summarize("<psf:ParameterInit name='a'><psf:Value>" + std::string(1'000, 'x') +
                        "</psf:Value></psf:ParameterInit>"),
              Texts{"a = (1000 characters)"});
}

TEST(TicketSummaryTest, OtherElementsDoNotCount) {
    EXPECT_EQ(Summarize("<x/><psf:Option name='lost'/><Feature name='a'><Option name='b'/></Feature>"),
              Texts{});
}

TEST(TicketSummaryTest, WhatIsNoTicketIsAnError) {
    EXPECT_EQ(ErrorOf("<PrintTicket/>"), "is no print ticket, /ticket");
    EXPECT_EQ(ErrorOf(""), "is empty, /ticket");
    EXPECT_EQ(ErrorOf("<a></b>"),
              "is not well-formed XML (line 1: Opening and ending tag mismatch: a line 1 and b), /ticket");
}

}  // namespace
}  // namespace devkit::inspect
