#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "devkit/package/pagedimensions.h"
#include "devkit/package/xpsdocument.h"

namespace devkit::package {
namespace {

using Texts = std::vector<std::string>;

XpsDocument Sample(const char* name) {
    return XpsDocument::Open(std::filesystem::path(SAMPLES_FOLDER) / name);
}

// One line for the sequence, each document and each page: its name, its ticket's, a page's size.
Texts Outline(const XpsDocument& document) {
    const auto line = [](const std::string& name, const std::optional<std::string>& ticket) {
        return name + " " + ticket.value_or("-");
    };
    Texts lines = {line(document.sequence.name, document.sequence.ticket)};
    for (const FixedDocument& each : document.sequence.documents) {
        lines.push_back(line(each.name, each.ticket));
        for (const FixedPage& page : each.pages) {
            const auto size = ReadPageDimensions(document.ReadMarkup(page));
            lines.push_back(line(page.name, page.ticket) + " " + std::to_string(std::lround(size->width)) +
                            "x" + std::to_string(std::lround(size->height)));
        }
    }
    return lines;
}

const Texts kSampleOutline = {
    "/FixedDocumentSequence.fdseq /Metadata/Job_PT.xml",
    "/Documents/1/FixedDocument.fdoc /Documents/1/Metadata/Document_PT.xml",
    "/Documents/1/Pages/1.fpage /Documents/1/Metadata/Portrait_PT.xml 794x1123",
    "/Documents/1/Pages/2.fpage - 794x1123",
    "/Documents/1/Pages/3.fpage /Documents/1/Metadata/Page3_PT.xml 1123x794",
    "/Documents/1/Pages/4.fpage /Documents/1/Metadata/Portrait_PT.xml 794x1123",
    "/Documents/2/FixedDocument.fdoc -",
    "/Documents/2/Pages/1.fpage /Documents/2/Metadata/Page1_PT.xml 816x1056",
    "/Documents/2/Pages/2.fpage - 1056x816",
    "/Documents/2/Pages/3.fpage /Documents/2/Metadata/Page3_PT.xml 816x1056",
    "/Documents/3/FixedDocument.fdoc /Documents/3/Metadata/Document_PT.xml",
    "/Documents/3/Pages/1.fpage /Documents/3/Metadata/Page1_PT.xml 265x378",
    "/Documents/3/Pages/2.fpage /Documents/3/Metadata/Page2_PT.xml 1123x1588",
    "/Documents/3/Pages/3.fpage - 794x1123",
};

TEST(SamplesTest, TheSampleIsReadInBothVocabulariesAndInterleaved) {
    for (const char* name : {"sample.xps", "sample.oxps", "streamed.xps"}) {
        const XpsDocument document = Sample(name);
        EXPECT_EQ(kSampleOutline, Outline(document)) << name;
        EXPECT_EQ("/Metadata/thumbnail.png", document.thumbnail) << name;
        EXPECT_TRUE(document.Findings().empty()) << name;
        EXPECT_EQ(std::string(name) == "sample.oxps" ? Flavour::OpenXps : Flavour::MicrosoftXps,
                  document.GetFlavour());
    }
}

TEST(SamplesTest, TheInterleavedSampleHoldsTheSamePartsAsTheSample) {
    const XpsDocument plain = Sample("sample.xps");
    const XpsDocument streamed = Sample("streamed.xps");
    ASSERT_EQ(plain.GetPackage().Parts().size(), streamed.GetPackage().Parts().size());
    for (const PartInfo& part : plain.GetPackage().Parts()) {
        EXPECT_EQ(plain.ReadPart(part.name), streamed.ReadPart(part.name)) << part.name;
        EXPECT_EQ(part.contentType, streamed.GetPackage().Find(part.name)->contentType) << part.name;
    }
}

TEST(SamplesTest, ResourcesOfPagesAreFound) {
    const XpsDocument document = Sample("sample.xps");
    const std::string font = "/Resources/Fonts/3F2504E0-4F89-41D3-9A0C-0305E82C3301.odttf";
    EXPECT_EQ((Texts{font, "/Resources/Images/corners.png"}),
              document.sequence.documents[0].pages[3].resources);
    EXPECT_EQ("application/vnd.ms-package.obfuscated-opentype",
              document.GetPackage().Find(font)->contentType);
    EXPECT_EQ(Texts{"/Resources/colours.dict"},
              Sample("resources.xps").sequence.documents[0].pages[1].resources);
}

TEST(SamplesTest, NamesAreFoundInAnySpelling) {
    EXPECT_EQ((Texts{"/docs/sequence.xml /docs/tickets/job.xml", "/docs/one/document.xml -",
                     "/docs/one/A%20Page.xml /docs/tickets/page.xml 794x1123"}),
              Outline(Sample("names.xps")));
    const XpsDocument document = Sample("names.xps");
    EXPECT_EQ(kFixedPageContentType, document.GetPackage().Find("/docs/one/a page.XML")->contentType);
    EXPECT_EQ(kPrintTicketContentType, document.GetPackage().Find("/docs/tickets/JOB.xml")->contentType);
    EXPECT_TRUE(document.Findings().empty());
}

TEST(SamplesTest, Utf16IsReadWithAndWithoutADeclaration) {
    EXPECT_EQ((Texts{"/s.fdseq -", "/d.fdoc -", "/p.fpage - 794x1123"}), Outline(Sample("utf16.xps")));
    EXPECT_EQ(kFixedPageContentType, Sample("utf16.xps").GetPackage().Find("/p.fpage")->contentType);
}

TEST(SamplesTest, TheSmallestSampleIsRead) {
    EXPECT_EQ((Texts{"/s.fdseq -", "/d.fdoc -", "/p.fpage - 794x1123"}), Outline(Sample("minimal.xps")));
}

}  // namespace
}  // namespace devkit::package
