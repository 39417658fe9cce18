#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "base/xps/fixedpagecontenthandler.h"
#include "base/xps/pagerewrite.h"

namespace base::xps {
namespace {

// One line of markup, and the one line that the rewrite makes of it.
struct Rewrite {
    const char* name;
    const char* input;
    const char* output;
};

void PrintTo(const Rewrite& rewrite, std::ostream* stream) { *stream << rewrite.name; }
std::string NameOf(const testing::TestParamInfo<Rewrite>& info) { return info.param.name; }

// Whole pages: the root and the Canvas round the content.
class PageRewriteTest : public testing::TestWithParam<Rewrite> {};

TEST_P(PageRewriteTest, WritesExactly) { EXPECT_EQ(GetParam().output, Rewritten(GetParam().input)); }

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
    {"ABleedBoxOfExactlyTheUnturnedPageOnceTurnedSurvives",
     R"(<FixedPage BleedBox="0,0,1056,816" Height="1056" Width="816"/>)",
     R"(<FixedPage BleedBox="0.00,0.00,816.00,1056.00" Height="816.00" Width="1056.00">)" CANVAS TAIL},
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
    EXPECT_EQ(GetParam().output, RewrittenContent(GetParam().input));
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

}  // namespace
}  // namespace base::xps
