#include "devkit/fuzz/markupscan.h"

#include <gtest/gtest.h>

#include <string>

namespace devkit::fuzz {
namespace {

using Lines = std::vector<std::string>;

std::string At(std::string_view markup, const Place& place) {
    return std::string(markup.substr(place.begin, place.Size()));
}

Lines Elements(std::string_view markup) {
    Lines lines;
    for (const ScannedElement& each : ScanMarkup(markup).elements) lines.push_back(At(markup, each.all));
    return lines;
}

Lines Attributes(std::string_view markup) {
    Lines lines;
    for (const ScannedAttribute& each : ScanMarkup(markup).attributes)
        lines.push_back(At(markup, each.name) + "|" + At(markup, each.value) + "|" + At(markup, each.all));
    return lines;
}

TEST(MarkupScan, FindsElementsWithWhatTheyHold) {
    constexpr std::string_view kScanned = "<?xml version=\"1.0\"?><a><b/>text<c d='e'><f></f></c></a>";
    EXPECT_EQ((Lines{"<a><b/>text<c d='e'><f></f></c></a>", "<b/>", "<c d='e'><f></f></c>", "<f></f>"}),
              Elements(kScanned));
    const MarkupScan scan = ScanMarkup(kScanned);
    EXPECT_EQ("<c d='e'>", At(kScanned, scan.elements[2].startTag));
    EXPECT_EQ("c", At(kScanned, scan.elements[2].name));
    EXPECT_EQ(2U, scan.elements[3].depth);
}

TEST(MarkupScan, FindsAttributesWithTheSpaceBeforeThem) {
    EXPECT_EQ((Lines{"x:b|1| x:b=\"1\"", "c|'>|\n c=\"'>\"", "d|| d=''"}),
              Attributes("<a x:b=\"1\"\n c=\"'>\" d=''/>"));
}

TEST(MarkupScan, PassesOverWhatIsNoElement) {
    EXPECT_EQ((Lines{"<a></a>"}), Elements("<!-- <b/> --><![CDATA[<c/>]]><!DOCTYPE d><?e <f/> ?><a></a>"));
}

TEST(MarkupScan, ComesToAnEndWhateverItReads) {
    for (const std::string_view markup :
         {"", "<", "<a", "<a b", "<a b=", "<a b=\"", "<a b=c>", "<a / / b='1'>", "</a></b>", "<a><b>", "<!--",
          "<![CDATA[", "<?", "<a =\"1\">", "<a \"b\">", "<<a>>", "< a>"}) {
        static_cast<void>(ScanMarkup(markup));
    }
    // What is not closed reaches to the end.
    EXPECT_EQ((Lines{"<a><b>", "<b>"}), Elements("<a><b>"));
    EXPECT_EQ((Lines{"b|1| b='1'"}), Attributes("<a / / b='1'>"));
}

}  // namespace
}  // namespace devkit::fuzz
