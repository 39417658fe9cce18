#include "devkit/filterhost/documentprinter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <sstream>
#include <string>

#include "devkit/common/file.h"

namespace devkit::filterhost {
namespace {

using package::XpsDocument;

std::string Printed(const XpsDocument& document) {
    std::ostringstream output;
    PrintDocument(output, document);
    return output.str();
}

std::string PrintedSample(const char* name) {
    return Printed(XpsDocument::Open(std::filesystem::path(SAMPLES_FOLDER) / name));
}

TEST(SizeTextTest, SizesAreGivenInUnitsAndMillimetres) {
    EXPECT_EQ("793.76 x 1122.56 (210.0 x 297.0 mm), portrait", SizeText({793.76, 1122.56, {}, {}}));
    EXPECT_EQ("1056 x 816 (279.4 x 215.9 mm), landscape", SizeText({1056, 816, {}, {}}));
    EXPECT_EQ("96 x 96 (25.4 x 25.4 mm), square", SizeText({96, 96, {}, {}}));
}

TEST(SizeTextTest, HugeAndNegativeSizesAreText) {
    EXPECT_EQ(301U, SizeText({1e300, -1, {}, {}}).find(" x -1 (2645833"));
    EXPECT_EQ("0 x inf (0.0 x inf mm), portrait",
              SizeText({0, std::numeric_limits<double>::infinity(), {}, {}}));
}

TEST(SizeTextTest, TheLocaleDoesNotMatter) {
    std::setlocale(LC_ALL, "de-DE");
    EXPECT_EQ("0.5 x 1.5 (0.1 x 0.4 mm), portrait", SizeText({0.5, 1.5, {}, {}}));
    std::setlocale(LC_ALL, "C");
}

TEST(SizeTextTest, BoxesAreFourNumbers) { EXPECT_EQ("-1,2.5,3,0", BoxText({-1, 2.5, 3, 0})); }

TEST(SizeTextTest, BytesAreGroupedByThousands) {
    EXPECT_EQ("0 bytes", BytesText(0));
    EXPECT_EQ("1 byte", BytesText(1));
    EXPECT_EQ("999 bytes", BytesText(999));
    EXPECT_EQ("1,000 bytes", BytesText(1'000));
    EXPECT_EQ("12,345,678 bytes", BytesText(12'345'678));
}

TEST(DocumentPrinterTest, ShowsPartsSizesAndTicketsWhereTheyHang) {
    EXPECT_EQ(
        "XPS document, 1 fixed document, 1 page\n"
        "  sequence  /docs/sequence.xml\n"
        "    ticket  /docs/tickets/job.xml  764 bytes\n"
        "      psk:PageMediaSize = psk:ISOA4 (psk:MediaSizeWidth 210000, psk:MediaSizeHeight 297000)\n"
        "    document 1  /docs/one/document.xml\n"
        "      page 1  /docs/one/A%20Page.xml  793.76 x 1122.56 (210.0 x 297.0 mm), portrait, 300 bytes\n"
        "        ticket  /docs/tickets/page.xml  510 bytes\n"
        "          psk:PageOrientation = psk:Portrait\n",
        PrintedSample("names.xps"));
}

TEST(DocumentPrinterTest, ShowsTheWholeSample) {
    const std::string text = PrintedSample("sample.xps");
    EXPECT_TRUE(
        text.starts_with("XPS document, 3 fixed documents, 10 pages\n"
                         "  thumbnail  /Metadata/thumbnail.png  image/png, "))
        << text;
    for (const char* part : {
             "\n        ticket  /Documents/1/Metadata/Portrait_PT.xml  as above\n",
             "\n        BleedBox    -12,-12,840,1080\n        ContentBox  48,48,720,960\n",
             "\n      stamp:JobStamp = stamp:Confidential\n",
             "\n        resource  /Resources/Images/corners.png  image/png, 185 bytes\n",
             "\n      page 2  /Documents/2/Pages/2.fpage  1056 x 816 (279.4 x 215.9 mm), landscape, ",
         })
        EXPECT_NE(std::string::npos, text.find(part)) << part << text;
    EXPECT_EQ(std::string::npos, text.find("other parts")) << text;
    EXPECT_EQ(std::string::npos, text.find("findings")) << text;
}

TEST(DocumentPrinterTest, TellsOpenXps) {
    EXPECT_TRUE(PrintedSample("sample.oxps").starts_with("OpenXPS document, 3 fixed documents, 10 pages\n"));
}

TEST(DocumentPrinterTest, InterleavedAndUtf16DocumentsReadAsAnyOther) {
    EXPECT_EQ(PrintedSample("sample.xps"), PrintedSample("streamed.xps"));
    EXPECT_EQ(
        "XPS document, 1 fixed document, 1 page\n"
        "  sequence  /s.fdseq\n"
        "    document 1  /d.fdoc\n"
        "      page 1  /p.fpage  793.76 x 1122.56 (210.0 x 297.0 mm), portrait, 604 bytes\n",
        PrintedSample("utf16.xps"));
}

TEST(DocumentPrinterTest, ShowsWhatIsWrongInItsPlace) {
    XpsDocument document = XpsDocument::Open(std::filesystem::path(SAMPLES_FOLDER) / "minimal.xps");
    package::FixedPage& page = document.sequence.documents[0].pages[0];
    page.markup = "no markup";
    page.ticket = document.AddPart("/t.xml", package::kPrintTicketContentType, "<t/>");
    page.resources.push_back("/none.ttf");
    document.sequence.ticket = "/none.xml";
    static_cast<void>(document.AddPart("/other", "", "1"));
    EXPECT_EQ(
        "XPS document, 1 fixed document, 1 page\n"
        "  sequence  /s.fdseq\n"
        "    ticket  is missing, /none.xml\n"
        "    document 1  /d.fdoc\n"
        "      page 1  /p.fpage  its size cannot be read, 9 bytes\n"
        "        ticket  /t.xml  4 bytes\n"
        "          is no print ticket: The root element is not PrintTicket\n"
        "        resource  /none.ttf  is missing\n"
        "  other parts\n"
        "    /other  no content type, 1 byte\n",
        Printed(document));
}

TEST(DocumentPrinterTest, EveryDocumentOfTheCorpusIsShown) {
    std::filesystem::path folder = std::filesystem::path(SOURCE_FOLDER) / ".." / "shared" / "corpus";
    if (const char* pFolder = std::getenv("CORPUS_FOLDER")) folder = pFolder;
    if (!std::filesystem::is_directory(folder))
        GTEST_SKIP() << "no corpus of documents at " << common::PathText(folder);
    std::size_t shown = 0;
    for (const auto& each : std::filesystem::recursive_directory_iterator(folder)) {
        if (!each.is_regular_file() || each.path().extension() == ".md") continue;
        try {
            const XpsDocument document = XpsDocument::Open(each.path());
            const std::string text = Printed(document);
            const std::size_t findings = text.find("  findings\n");
            EXPECT_EQ(!document.Findings().empty(), findings != std::string::npos) << each.path();
            EXPECT_EQ(0, std::ranges::count(text, '\0')) << each.path();
            ++shown;
        } catch (const common::Error&) {
            // What may be refused, and why, is the package's business.
        }
    }
    EXPECT_GT(shown, 100U);
}

}  // namespace
}  // namespace devkit::filterhost
