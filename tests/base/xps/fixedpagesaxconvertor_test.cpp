#include "base/xps/fixedpagesaxconvertor.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "base/logging/exceptions.h"
#include "base/xps/localechange.h"
#include "base/xps/pagerewrite.h"

namespace base::xps {
namespace {

struct Rewrite {
    const char* m_name;
    const char* m_input;
    const char* m_output;
};

void PrintTo(const Rewrite& rewrite, std::ostream* stream) { *stream << rewrite.m_name; }
std::string NameOf(const testing::TestParamInfo<Rewrite>& info) { return info.param.m_name; }

// Whole pages: the root and the Canvas round the content.
class PageRewriteTest : public testing::TestWithParam<Rewrite> {};

TEST_P(PageRewriteTest, WritesExactly) { EXPECT_EQ(GetParam().m_output, Rewritten(GetParam().m_input)); }

// The start of every Letter page that is turned, and its end.
#define CANVAS R"(<Canvas RenderTransform="0.00,-1.00,1.00,0.00,0.00,816.00">)"
#define TAIL "</Canvas></FixedPage>"

const Rewrite kPages[] = {
    {"APageIsTurnedAndItsContentWrapped", R"(<FixedPage Width="816" Height="1056"></FixedPage>)",
     R"(<FixedPage Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"AnEmptyRootInTheShortFormIsWrappedAsWell", R"(<FixedPage Width="816" Height="1056"/>)",
     R"(<FixedPage Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"APageWithoutHeightIsNotRejected", R"(<FixedPage Width="816"/>)",
     R"(<FixedPage Height="816.00" Width="0.00">)" CANVAS TAIL},
    {"APageWithoutWidthIsNotRejected", R"(<FixedPage Height="1056"/>)",
     R"(<FixedPage Height="0.00" Width="1056.00"><Canvas RenderTransform="0.00,-1.00,1.00,0.00,0.00,0.00">)" TAIL},
    {"APageWithoutAnyAttributeGetsASizeOfZero", R"(<FixedPage/>)",
     R"(<FixedPage Height="0.00" Width="0.00"><Canvas RenderTransform="0.00,-1.00,1.00,0.00,0.00,0.00">)" TAIL},
    {"ASizeThatIsNoNumberCountsAsZero", R"(<FixedPage Width="wide" Height=""/>)",
     R"(<FixedPage Height="0.00" Width="0.00"><Canvas RenderTransform="0.00,-1.00,1.00,0.00,0.00,0.00">)" TAIL},
    {"AFractionalSizeIsRoundedToTwoDecimals", R"(<FixedPage Width="793.7007874" Height="1122.519685"/>)",
     R"(<FixedPage Height="793.70" Width="1122.52"><Canvas RenderTransform="0.00,-1.00,1.00,0.00,0.00,793.70">)" TAIL},
    {"ASizeMayHaveBlanksASignAndAnExponent", R"(<FixedPage Width=" +8.16e2 " Height="1056px"/>)",
     R"(<FixedPage Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"TheRootsAttributesComeOutSortedByNameOtherElementsInDocumentOrder",
     R"(<FixedPage xml:lang="en-US" b="2" a="1" Width="816" Z="3" Height="1056"><Path b="2" a="1" Z="3" xml:lang="de"/></FixedPage>)",
     R"(<FixedPage Height="816.00" Width="1056.00" Z="3" a="1" b="2" xml:lang="en-US">)" CANVAS
     R"(<Path b="2" a="1" Z="3" xml:lang="de"></Path>)" TAIL},
    {"EachNamespaceDeclarationIsCarriedOnceOnTheElementThatMakesIt",
     R"(<FixedPage xmlns="urn:page" Width="816" xmlns:x="urn:x" Height="1056"><Path xmlns:y="urn:y" x:b="1" y:c="2"/><Path xmlns="urn:other" a="1" xmlns:z="urn:z"/></FixedPage>)",
     R"(<FixedPage Height="816.00" Width="1056.00" xmlns="urn:page" xmlns:x="urn:x">)" CANVAS
     R"(<Path x:b="1" y:c="2" xmlns:y="urn:y"></Path><Path a="1" xmlns="urn:other" xmlns:z="urn:z"></Path>)" TAIL},
    {"APrefixedRootKeepsItsNameAndTheCanvasHasNone",
     R"(<x:FixedPage xmlns:x="urn:x" Width="816" Height="1056"><x:Path/></x:FixedPage>)",
     R"(<x:FixedPage Height="816.00" Width="1056.00" xmlns:x="urn:x">)" CANVAS
     R"(<x:Path></x:Path></Canvas></x:FixedPage>)"},
    {"AContentBoxOfTheWholePageIsRemoved",
     R"(<FixedPage ContentBox="0,0,816,1056" Height="1056" Width="816"/>)",
     R"(<FixedPage Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"AContentBoxThatIsCoveredTurnedSurvivesWithItsFourEdges",
     R"(<FixedPage ContentBox="0,0,700,700" Height="1056" Width="816"/>)",
     R"(<FixedPage ContentBox="0.00,0.00,700.00,700.00" Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"AContentBoxKeepsItsCornerAndTakesTheTurnedSize",
     R"(<FixedPage ContentBox="10,20,300,400" Height="1056" Width="816"/>)",
     R"(<FixedPage ContentBox="10.00,20.00,410.00,320.00" Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"AContentBoxLeftOfThePageIsRemoved",
     R"(<FixedPage ContentBox="-0.5,0,300,400" Height="1056" Width="816"/>)",
     R"(<FixedPage Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"AContentBoxAboveThePageIsRemoved",
     R"(<FixedPage ContentBox="0,-0.5,300,400" Height="1056" Width="816"/>)",
     R"(<FixedPage Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"AContentBoxAsWideTurnedAsTheUnturnedPageSurvives",
     R"(<FixedPage ContentBox="0,0,1056,816" Height="1056" Width="816"/>)",
     R"(<FixedPage ContentBox="0.00,0.00,816.00,1056.00" Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"AContentBoxTooHighTurnedIsRemoved",
     R"(<FixedPage ContentBox="0,0,1057,816" Height="1056" Width="816"/>)",
     R"(<FixedPage Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"ABleedBoxThatStartsAtAPositiveLeftEdgeIsRemoved",
     R"(<FixedPage BleedBox="0.5,0,2000,2000" Height="1056" Width="816"/>)",
     R"(<FixedPage Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"ABleedBoxThatStartsAtAPositiveTopEdgeIsRemoved",
     R"(<FixedPage BleedBox="0,0.5,2000,2000" Height="1056" Width="816"/>)",
     R"(<FixedPage Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"ABleedBoxThatCoversTheUnturnedPageSurvivesWithItsFourEdges",
     R"(<FixedPage BleedBox="-10,-20,1076,856" Height="1056" Width="816"/>)",
     R"(<FixedPage BleedBox="-10.00,-20.00,846.00,1056.00" Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"ABleedBoxOfTheWholePageIsRemovedBecauseItsTurnedHeightIsTooSmall",
     R"(<FixedPage BleedBox="0,0,816,1056" Height="1056" Width="816"/>)",
     R"(<FixedPage Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"ABleedBoxTooNarrowTurnedIsRemoved", R"(<FixedPage BleedBox="0,0,1056,815" Height="1056" Width="816"/>)",
     R"(<FixedPage Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"TheTwoBoxesAreJudgedDifferently",
     R"(<FixedPage BleedBox="0,0,500,500" ContentBox="0,0,500,500" Height="1056" Width="816"/>)",
     R"(<FixedPage ContentBox="0.00,0.00,500.00,500.00" Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"ABleedBoxWithFiveNumbersIsDropped",
     R"(<FixedPage BleedBox="-10,-20,1076,856,1" Height="1056" Width="816"/>)",
     R"(<FixedPage Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"AnEmptyContentBoxIsDropped", R"(<FixedPage ContentBox="" Height="1056" Width="816"/>)",
     R"(<FixedPage Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"ABoxWithThreeNumbersIsDropped", R"(<FixedPage ContentBox="0,0,700" Height="1056" Width="816"/>)",
     R"(<FixedPage Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"ABoxWithAnEmptyPlaceIsDropped", R"(<FixedPage ContentBox="0,,700,700" Height="1056" Width="816"/>)",
     R"(<FixedPage Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"ABoxWithATrailingCommaIsDropped", R"(<FixedPage ContentBox="0,0,700,700," Height="1056" Width="816"/>)",
     R"(<FixedPage Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"ABoxMayHaveBlanksBetweenItsNumbers",
     R"(<FixedPage ContentBox=" 0 , 0 , 700 , 700 " Height="1056" Width="816"/>)",
     R"(<FixedPage ContentBox="0.00,0.00,700.00,700.00" Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"TextThatIsNoNumberCountsAsZeroInABox",
     R"(<FixedPage ContentBox="a,b,700,700" Height="1056" Width="816"/>)",
     R"(<FixedPage ContentBox="0.00,0.00,700.00,700.00" Height="816.00" Width="1056.00">)" CANVAS TAIL},
    {"APageInsideAPageIsTurnedAsWell",
     R"(<FixedPage Height="1056" Width="816"><FixedPage Height="20" Width="10"/></FixedPage>)",
     R"(<FixedPage Height="816.00" Width="1056.00">)" CANVAS
     R"(<FixedPage Height="10.00" Width="20.00"><Canvas RenderTransform="0.00,-1.00,1.00,0.00,0.00,10.00"></Canvas></FixedPage>)" TAIL},
    {"ARootOfAnotherNameIsCopied", R"(<Canvas Width="816" Height="1056"><Path/></Canvas>)",
     R"(<Canvas Width="816" Height="1056"><Path></Path></Canvas>)"},
    {"TheRootsUnicodeStringIsEscapedAndItsOtherValuesAreNot",
     R"(<FixedPage Height="1056" UnicodeString="&lt;&amp;" Width="816" z="&amp;"/>)",
     R"(<FixedPage Height="816.00" UnicodeString="&lt;&amp;" Width="1056.00" z="&">)" CANVAS TAIL},
};

INSTANTIATE_TEST_SUITE_P(Pages, PageRewriteTest, testing::ValuesIn(kPages), NameOf);

// What stands inside the page.
class ContentRewriteTest : public testing::TestWithParam<Rewrite> {};

TEST_P(ContentRewriteTest, WritesExactly) {
    EXPECT_EQ(GetParam().m_output, RewrittenContent(GetParam().m_input));
}

const Rewrite kContents[] = {
    {"AnEmptyElementInTheShortFormComesOutAsStartTagAndEndTag", R"(<Path/><Path />)",
     R"(<Path></Path><Path></Path>)"},
    {"ElementsNest", R"(<Canvas><Canvas Opacity="0.5"><Path Data="M 0,0"/></Canvas><Glyphs/></Canvas>)",
     R"(<Canvas><Canvas Opacity="0.5"><Path Data="M 0,0"></Path></Canvas><Glyphs></Glyphs></Canvas>)"},
    {"CharacterDataBetweenElementsIsNotReproduced",
     "\n <Canvas> text <Path/> more &amp; </Canvas>\n<![CDATA[x]]>", R"(<Canvas><Path></Path></Canvas>)"},
    {"CommentsAndProcessingInstructionsAreNotReproduced", R"(<!-- c --><?target data?><Path/>)",
     R"(<Path></Path>)"},
    {"ThePagesResourcesBecomeTheCanvass",
     R"(<FixedPage.Resources><ResourceDictionary/></FixedPage.Resources>)",
     R"(<Canvas.Resources><ResourceDictionary></ResourceDictionary></Canvas.Resources>)"},
    {"PrefixedResourcesLoseTheirPrefix", R"(<x:FixedPage.Resources xmlns:x="urn:x" x:a="1"/>)",
     R"(<Canvas.Resources x:a="1" xmlns:x="urn:x"></Canvas.Resources>)"},
    {"OtherPropertyElementsKeepTheirNames", R"(<Canvas><Canvas.Resources/><Canvas.Clip/></Canvas>)",
     R"(<Canvas><Canvas.Resources></Canvas.Resources><Canvas.Clip></Canvas.Clip></Canvas>)"},
    {"AUnicodeStringWithALessThanSignIsEscaped", R"(<Glyphs UnicodeString="a&lt;b"/>)",
     R"(<Glyphs UnicodeString="a&lt;b"></Glyphs>)"},
    {"AllFiveCharactersOfAUnicodeStringAreEscaped",
     R"(<Glyphs UnicodeString="&amp;&lt;&gt;&quot;&apos;&amp;lt;"/>)",
     R"(<Glyphs UnicodeString="&amp;&lt;&gt;&quot;&apos;&amp;lt;"></Glyphs>)"},
    {"AnEmptyUnicodeStringStaysEmpty", R"(<Glyphs UnicodeString="" Fill="#ff000000"/>)",
     R"(<Glyphs UnicodeString="" Fill="#ff000000"></Glyphs>)"},
    {"AUnicodeStringWithAPrefixIsEscapedAsWell", R"(<Glyphs xmlns:x="urn:x" x:UnicodeString="&amp;"/>)",
     R"(<Glyphs x:UnicodeString="&amp;" xmlns:x="urn:x"></Glyphs>)"},
    {"AnyOtherAttributeKeepsItsAmpersandRaw", R"(<Path FixedPage.NavigateUri="http://a/?b=1&amp;c=2"/>)",
     R"(<Path FixedPage.NavigateUri="http://a/?b=1&c=2"></Path>)"},
    {"AnyOtherAttributeKeepsItsQuotesAndBracketsRaw", R"(<Path a="&quot;&apos;&lt;&gt;" b='"'/>)",
     R"(<Path a=""'<>" b="""></Path>)"},
    {"ALineBreakInAnAttributeReferenceComesOutRaw", R"(<Path a="x&#10;y&#9;z"/>)",
     "<Path a=\"x\ny\tz\"></Path>"},
    {"MarkupOfOtherNamespacesIsCopied", R"(<x:Foo xmlns:x="urn:x"><x:Bar x:b="1"/></x:Foo>)",
     R"(<x:Foo xmlns:x="urn:x"><x:Bar x:b="1"></x:Bar></x:Foo>)"},
    {"ADeclarationThatRepeatsAnOuterOneStaysOnItsElement",
     R"(<Canvas xmlns:x="urn:x"><Path xmlns:x="urn:x" x:a="1"/><Path x:a="2"/></Canvas>)",
     R"(<Canvas xmlns:x="urn:x"><Path x:a="1" xmlns:x="urn:x"></Path><Path x:a="2"></Path></Canvas>)"},
    {"NamesAndValuesOutsideAsciiAreWrittenAsUtf8",
     "<\xC3\x84pfel \xC3\xBC=\"\xE2\x82\xAC \xF0\x9F\x98\x80\"/>",
     "<\xC3\x84pfel \xC3\xBC=\"\xE2\x82\xAC \xF0\x9F\x98\x80\"></\xC3\x84pfel>"},
    {"CharacterReferencesOutsideTheBasicPlaneAreWrittenAsUtf8",
     R"(<Glyphs UnicodeString="&#x1F600;&#x20AC;&#228;"/>)",
     "<Glyphs UnicodeString=\"\xF0\x9F\x98\x80\xE2\x82\xAC\xC3\xA4\"></Glyphs>"},
};

INSTANTIATE_TEST_SUITE_P(Contents, ContentRewriteTest, testing::ValuesIn(kContents), NameOf);

constexpr char kSmallPage[] = R"(<FixedPage Width="816" Height="1056"><Path Data="M 0,0"/></FixedPage>)";
const std::string kSmallPageRewritten = std::string(kDeclaration) +
                                        R"(<FixedPage Height="816.00" Width="1056.00">)" CANVAS
                                        R"(<Path Data="M 0,0"></Path>)" TAIL;

// More than two of the sink's blocks.
std::string LargePage() {
    std::string page = R"(<FixedPage Width="816" Height="1056">)";
    for (int i = 0; i < 3000; ++i) page += R"(<Glyphs OriginX="1" UnicodeString="0123456789"/>)";
    return page + "</FixedPage>";
}

std::string LargePageRewritten() {
    std::string page = std::string(kDeclaration) + R"(<FixedPage Height="816.00" Width="1056.00">)" CANVAS;
    for (int i = 0; i < 3000; ++i) page += R"(<Glyphs OriginX="1" UnicodeString="0123456789"></Glyphs>)";
    return page + TAIL;
}

HRESULT ResultOf(const std::function<void()>& action) {
    try {
        action();
        return S_OK;
    } catch (const exception::HresultError& error) {
        return error.GetHresult();
    }
}

TEST(FixedPageSaxConvertorTest, WritesTheDeclarationFirstAndNoLineBreakAfterIt) {
    MemoryPage page(kSmallPage);
    FixedPageSaxConvertor().Convert(page);
    EXPECT_EQ(kSmallPageRewritten, page.m_output.m_content);
}

TEST(FixedPageSaxConvertorTest, ClosesTheWriteStreamOnceAndThenSeeksTheReadStreamToItsStart) {
    MemoryPage page(kSmallPage);
    FixedPageSaxConvertor().Convert(page);
    EXPECT_EQ(1, page.m_output.m_closes);
    EXPECT_EQ(std::vector<std::string>{"Seek 0 0"}, page.m_input.m_calls);
    EXPECT_EQ(0u, page.m_input.m_position);
}

TEST(FixedPageSaxConvertorTest, AReadStreamThatCannotGoBackIsNoFailure) {
    MemoryPage page(kSmallPage);
    page.m_input.m_seekResult = STG_E_INVALIDFUNCTION;
    FixedPageSaxConvertor().Convert(page);
    EXPECT_EQ(kSmallPageRewritten, page.m_output.m_content);
    EXPECT_EQ(1, page.m_output.m_closes);
}

TEST(FixedPageSaxConvertorTest, ReadsAStreamThatGivesAFewBytesAtATime) {
    for (const std::size_t most : {1, 2, 3, 7, 2047, 2049}) {
        for (const bool endComesWithData : {true, false}) {
            MemoryPage page(LargePage());
            page.m_input.m_mostPerRead = most;
            page.m_input.m_endComesWithData = endComesWithData;
            FixedPageSaxConvertor().Convert(page);
            ASSERT_EQ(LargePageRewritten(), page.m_output.m_content) << most << endComesWithData;
        }
    }
}

TEST(FixedPageSaxConvertorTest, ReadsAPageWhoseSizeIsAMultipleOfTheReadersBlock) {
    for (const bool endComesWithData : {true, false}) {
        std::string markup = kSmallPage;
        markup.append(2 * 2048 - markup.size(), ' ');
        MemoryPage page(markup);
        page.m_input.m_endComesWithData = endComesWithData;
        FixedPageSaxConvertor().Convert(page);
        EXPECT_EQ(kSmallPageRewritten, page.m_output.m_content);
    }
}

TEST(FixedPageSaxConvertorTest, CompletesShortWrites) {
    for (const std::size_t most : {1, 3, 1000, 65535}) {
        MemoryPage page(LargePage());
        page.m_output.m_mostPerWrite = most;
        FixedPageSaxConvertor().Convert(page);
        ASSERT_EQ(LargePageRewritten(), page.m_output.m_content) << most;
    }
}

TEST(FixedPageSaxConvertorTest, HandsTheMarkupOnInLargeBlocks) {
    MemoryPage page(LargePage());
    FixedPageSaxConvertor().Convert(page);
    EXPECT_EQ(page.m_output.m_content.size() / (64 * 1024) + 1, page.m_output.m_writes);
}

TEST(FixedPageSaxConvertorTest, AWriteThatTakesNothingIsAFailure) {
    MemoryPage small(kSmallPage);
    small.m_output.m_mostPerWrite = 0;
    EXPECT_THROW(FixedPageSaxConvertor().Convert(small), std::overflow_error);
    EXPECT_EQ(0, small.m_output.m_closes);

    MemoryPage large(LargePage());
    large.m_output.m_mostPerWrite = 0;
    EXPECT_EQ(E_FAIL, ResultOf([&] { FixedPageSaxConvertor().Convert(large); }));
    EXPECT_EQ(1u, large.m_output.m_writes);
    EXPECT_EQ(0, large.m_output.m_closes);
}

TEST(FixedPageSaxConvertorTest, WhicheverWriteFailsThePageIsNotClosed) {
    for (std::size_t failing = 1;; ++failing) {
        MemoryPage page(LargePage());
        page.m_output.m_failingWrite = failing;
        bool failed = true;
        try {
            FixedPageSaxConvertor().Convert(page);
            failed = false;
        } catch (const exception::HresultError& error) {
            EXPECT_EQ(E_FAIL, error.GetHresult());
        } catch (const std::overflow_error& error) {
            EXPECT_TRUE(std::string_view(error.what()).ends_with("IPrintWriteStream::WriteBytes failed.\n"));
        }
        EXPECT_EQ(1u, page.m_output.m_references);
        EXPECT_EQ(1u, page.m_input.m_references);
        if (!failed) {
            EXPECT_EQ(LargePageRewritten(), page.m_output.m_content);
            EXPECT_GT(failing, page.m_output.m_writes);
            break;
        }
        EXPECT_EQ(failing, page.m_output.m_writes) << "written to after a failure";
        EXPECT_EQ(0, page.m_output.m_closes);
    }
}

TEST(FixedPageSaxConvertorTest, WhicheverReadFailsThePageIsNotClosed) {
    for (std::size_t failing = 1;; ++failing) {
        MemoryPage page(LargePage());
        page.m_input.m_mostPerRead = 20000;
        page.m_input.m_failingRead = failing;
        const HRESULT result = ResultOf([&] { FixedPageSaxConvertor().Convert(page); });
        EXPECT_EQ(1u, page.m_output.m_references);
        EXPECT_EQ(1u, page.m_input.m_references);
        if (SUCCEEDED(result)) {
            EXPECT_EQ(LargePageRewritten(), page.m_output.m_content);
            EXPECT_GT(failing, page.m_input.m_reads);
            break;
        }
        EXPECT_EQ(STG_E_READFAULT, result) << failing;
        EXPECT_EQ(0, page.m_output.m_closes);
        EXPECT_TRUE(LargePageRewritten().starts_with(page.m_output.m_content));
    }
}

TEST(FixedPageSaxConvertorTest, MarkupThatIsNotWellFormedFailsAndIsNotClosed) {
    for (const char* markup : {"", " ", "no markup", "<FixedPage", "<FixedPage>", "<FixedPage></Path>",
                               "<FixedPage/><FixedPage/>", R"(<FixedPage a="1" a="2"/>)", "<x:FixedPage/>",
                               R"(<FixedPage Width="816" Height="1056"><Path></FixedPage>)"}) {
        MemoryPage page(markup);
        EXPECT_TRUE(FAILED(ResultOf([&] { FixedPageSaxConvertor().Convert(page); }))) << markup;
        EXPECT_EQ("", page.m_output.m_content) << "a page that failed is given no more text";
        EXPECT_EQ(0, page.m_output.m_closes);
        EXPECT_EQ(1u, page.m_output.m_references);
        EXPECT_EQ(1u, page.m_input.m_references);
    }
}

TEST(FixedPageSaxConvertorTest, ReadsEveryEncodingThatTheReaderKnows) {
    const std::u16string text =
        u"<FixedPage Width=\"816\" Height=\"1056\"><Glyphs UnicodeString=\"\u20AC\U0001F600\"/></FixedPage>";
    const std::string expected = std::string(kDeclaration) +
                                 R"(<FixedPage Height="816.00" Width="1056.00">)" CANVAS
                                 "<Glyphs UnicodeString=\"\xE2\x82\xAC\xF0\x9F\x98\x80\"></Glyphs>" TAIL;

    std::string utf16("\xFF\xFE");
    utf16.append(reinterpret_cast<const char*>(text.data()), 2 * text.size());
    std::string utf16BigEndian("\xFE\xFF");
    for (const char16_t unit : text)
        utf16BigEndian += {static_cast<char>(unit >> 8), static_cast<char>(unit)};
    const std::string utf8 =
        "<FixedPage Width=\"816\" Height=\"1056\"><Glyphs "
        "UnicodeString=\"\xE2\x82\xAC\xF0\x9F\x98\x80\"/></FixedPage>";

    for (const std::string& markup :
         {utf16, utf16BigEndian, utf8, "\xEF\xBB\xBF" + utf8,
          "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\r\n" + utf8}) {
        MemoryPage page(markup);
        FixedPageSaxConvertor().Convert(page);
        EXPECT_EQ(expected, page.m_output.m_content);
    }
}

TEST(FixedPageSaxConvertorTest, AnAttributeOfAMegabyteComesThrough) {
    for (const char* name : {"Data", "UnicodeString"}) {
        // Odd, so that the pairs of surrogates lie on either side of every block's border.
        std::string value = "x";
        while (value.size() < 1024 * 1024)
            value +=
                "\xF0\x9F\x98\x80"
                "abc\xE2\x82\xAC";
        const std::string attribute = std::string(name) + "=\"" + value + "\"";
        EXPECT_EQ("<Path " + attribute + "></Path>", RewrittenContent("<Path " + attribute + "/>")) << name;
    }
}

TEST(FixedPageSaxConvertorTest, ADepthOfTwoHundredElementsComesThrough) {
    std::string markup;
    std::string end;
    for (int depth = 0; depth < 200; ++depth) {
        const std::string name = "Element" + std::to_string(depth);
        markup += "<" + name + ">";
        end = "</" + name + ">" + end;
    }
    EXPECT_EQ(markup + end, RewrittenContent(markup + end));
}

TEST(FixedPageSaxConvertorTest, AThousandAttributesComeThroughInTheirOrder) {
    std::string attributes;
    for (int i = 999; i >= 0; --i) attributes += " a" + std::to_string(i) + "=\"" + std::to_string(i) + "\"";
    EXPECT_EQ("<Path" + attributes + "></Path>", RewrittenContent("<Path" + attributes + "/>"));
}

TEST(FixedPageSaxConvertorTest, TheAngleAndTheScaleAreTheHandlersOwn) {
    EXPECT_EQ(
        R"(<FixedPage Height="1056.00" Width="816.00"><Canvas RenderTransform="1.00,0.00,0.00,1.00,0.00,0.00">)" TAIL,
        Rewritten(R"(<FixedPage Width="816" Height="1056"/>)", 0, 1));
    EXPECT_EQ(
        R"(<FixedPage Height="408.00" Width="528.00"><Canvas RenderTransform="0.00,-0.50,0.50,0.00,0.00,408.00">)" TAIL,
        Rewritten(R"(<FixedPage Width="816" Height="1056"/>)", 270, 0.5f));
}

TEST(FixedPageSaxConvertorTest, TheLocaleOfTheProcessDoesNotMatter) {
    const DecimalCommaLocale locale;
    if (!locale.IsInForce()) GTEST_SKIP() << "no locale with a decimal comma is installed";
    EXPECT_EQ(R"(<FixedPage ContentBox="0.50,0.25,20.50,10.25" Height="816.50" Width="1056.00">)"
              R"(<Canvas RenderTransform="0.00,-1.00,1.00,0.00,0.00,816.50">)" TAIL,
              Rewritten(R"(<FixedPage ContentBox="0.5,0.25,10,20" Width="816.5" Height="1056"/>)"));
}

// A source whose steps are recorded, and of which one fails.
class RecordingPage final : public FixedPageSource {
  public:
    explicit RecordingPage(std::string failing) : m_failing(std::move(failing)), m_page(kSmallPage) {}

    platform::ComPtr<IPrintReadStream> GetPageReadStream() override {
        Step("read");
        return m_page.GetPageReadStream();
    }
    platform::ComPtr<IPrintWriteStream> GetPageWriteStream() override {
        Step("write");
        return m_page.GetPageWriteStream();
    }
    platform::ComPtr<ISAXContentHandler> CreateContentHandler(std::ostream& sink) override {
        Step("handler");
        return m_page.CreateContentHandler(sink);
    }

    std::vector<std::string> m_steps;
    std::string m_failing;
    MemoryPage m_page;

  private:
    void Step(const std::string& name) {
        m_steps.push_back(name);
        if (name == m_failing) throw exception::HresultError(E_ACCESSDENIED, "page", 1);
    }
};

TEST(FixedPageSaxConvertorTest, AsksForTheWriteStreamThenTheHandlerThenTheReadStream) {
    RecordingPage page("");
    FixedPageSaxConvertor().Convert(page);
    EXPECT_EQ((std::vector<std::string>{"write", "handler", "read"}), page.m_steps);
    EXPECT_EQ(kSmallPageRewritten, page.m_page.m_output.m_content);
}

TEST(FixedPageSaxConvertorTest, AStepOfTheSourceThatFailsEndsTheRewrite) {
    const std::vector<std::string> steps = {"write", "handler", "read"};
    for (std::size_t failing = 0; failing < steps.size(); ++failing) {
        RecordingPage page(steps[failing]);
        EXPECT_EQ(E_ACCESSDENIED, ResultOf([&] { FixedPageSaxConvertor().Convert(page); }));
        EXPECT_EQ(std::vector<std::string>(steps.begin(), steps.begin() + static_cast<int>(failing) + 1),
                  page.m_steps);
        EXPECT_EQ("", page.m_page.m_output.m_content);
        EXPECT_EQ(0, page.m_page.m_output.m_closes);
        EXPECT_EQ(1u, page.m_page.m_output.m_references);
        EXPECT_EQ(1u, page.m_page.m_input.m_references);
    }
}

TEST(FixedPageSaxConvertorTest, AThreadOutsideEveryApartmentCannotMakeTheReader) {
    HRESULT result = S_OK;
    MemoryPage page(kSmallPage);
    // The process's multithreaded apartment would be this thread's as well, so it is left for the moment.
    CoUninitialize();
    result = ResultOf([&] { FixedPageSaxConvertor().Convert(page); });
    ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_MULTITHREADED));
    EXPECT_EQ(CO_E_NOTINITIALIZED, result);
    EXPECT_EQ(0u, page.m_output.m_writes);
}

}  // namespace
}  // namespace base::xps
