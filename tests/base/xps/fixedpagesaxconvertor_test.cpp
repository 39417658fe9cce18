#include "base/xps/fixedpagesaxconvertor.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "base/logging/exceptions.h"
#include "base/xps/localechange.h"
#include "base/xps/pagerewrite.h"
#include "base/xps/saxreaders.h"
#include "thrown.h"

namespace base::xps {
namespace {

// The start of every Letter page that is turned, and its end.
#define CANVAS R"(<Canvas RenderTransform="0.00,-1.00,1.00,0.00,0.00,816.00">)"
#define TAIL "</Canvas></FixedPage>"

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

TEST(FixedPageSaxConvertorTest, WritesTheDeclarationFirstAndNoLineBreakAfterIt) {
    MemoryPage page(kSmallPage);
    FixedPageSaxConvertor().Convert(page);
    EXPECT_EQ(kSmallPageRewritten, page.output.content);
}

TEST(FixedPageSaxConvertorTest, ClosesTheWriteStreamOnceAndThenSeeksTheReadStreamToItsStart) {
    MemoryPage page(kSmallPage);
    FixedPageSaxConvertor().Convert(page);
    EXPECT_EQ(1, page.output.closes);
    EXPECT_EQ(std::vector<std::string>{"Seek 0 0"}, page.input.calls);
    EXPECT_EQ(0u, page.input.position);
}

TEST(FixedPageSaxConvertorTest, AReadStreamThatCannotGoBackIsNoFailure) {
    MemoryPage page(kSmallPage);
    page.input.seekResult = STG_E_INVALIDFUNCTION;
    FixedPageSaxConvertor().Convert(page);
    EXPECT_EQ(kSmallPageRewritten, page.output.content);
    EXPECT_EQ(1, page.output.closes);
}

TEST(FixedPageSaxConvertorTest, ReadsAStreamThatGivesAFewBytesAtATime) {
    for (const std::size_t most : {1U, 2U, 3U, 7U, 2047U, 2049U}) {
        for (const bool endComesWithData : {true, false}) {
            MemoryPage page(LargePage());
            page.input.mostPerRead = most;
            page.input.endComesWithData = endComesWithData;
            FixedPageSaxConvertor().Convert(page);
            ASSERT_EQ(LargePageRewritten(), page.output.content) << most << endComesWithData;
        }
    }
}

TEST(FixedPageSaxConvertorTest, ReadsAPageWhoseSizeIsAMultipleOfTheReadersBlock) {
    for (const bool endComesWithData : {true, false}) {
        std::string markup = kSmallPage;
        markup.append(2 * 2048 - markup.size(), ' ');
        MemoryPage page(markup);
        page.input.endComesWithData = endComesWithData;
        FixedPageSaxConvertor().Convert(page);
        EXPECT_EQ(kSmallPageRewritten, page.output.content);
    }
}

TEST(FixedPageSaxConvertorTest, CompletesShortWrites) {
    for (const std::size_t most : {1U, 3U, 1000U, 65535U}) {
        MemoryPage page(LargePage());
        page.output.mostPerWrite = most;
        FixedPageSaxConvertor().Convert(page);
        ASSERT_EQ(LargePageRewritten(), page.output.content) << most;
    }
}

TEST(FixedPageSaxConvertorTest, HandsTheMarkupOnInLargeBlocks) {
    MemoryPage page(LargePage());
    FixedPageSaxConvertor().Convert(page);
    EXPECT_EQ(page.output.content.size() / (64 * 1024) + 1, page.output.writes);
}

TEST(FixedPageSaxConvertorTest, AWriteThatTakesNothingIsAFailure) {
    MemoryPage small(kSmallPage);
    small.output.mostPerWrite = 0;
    EXPECT_THROW(FixedPageSaxConvertor().Convert(small), std::overflow_error);
    EXPECT_EQ(0, small.output.closes);

    MemoryPage large(LargePage());
    large.output.mostPerWrite = 0;
    EXPECT_EQ(E_FAIL, tests::ThrownCode([&] { FixedPageSaxConvertor().Convert(large); }));
    EXPECT_EQ(1u, large.output.writes);
    EXPECT_EQ(0, large.output.closes);
}

TEST(FixedPageSaxConvertorTest, WhicheverWriteFailsThePageIsNotClosed) {
    for (std::size_t failing = 1;; ++failing) {
        ASSERT_LT(failing, 1000u);
        MemoryPage page(LargePage());
        page.output.failingWrite = failing;
        HRESULT code = S_OK;
        const std::string overflow = tests::MessageOf<std::overflow_error>(
            [&] { code = tests::ThrownCode([&] { FixedPageSaxConvertor().Convert(page); }); });
        const bool failed = code != S_OK || !overflow.empty();
        if (!overflow.empty()) {
            EXPECT_TRUE(overflow.ends_with("IPrintWriteStream::WriteBytes failed.\n")) << overflow;
        } else if (failed) {
            EXPECT_EQ(E_FAIL, code);
        }
        EXPECT_EQ(1u, page.output.References());
        EXPECT_EQ(1u, page.input.References());
        if (!failed) {
            EXPECT_EQ(LargePageRewritten(), page.output.content);
            EXPECT_GT(failing, page.output.writes);
            break;
        }
        EXPECT_EQ(failing, page.output.writes) << "written to after a failure";
        EXPECT_EQ(0, page.output.closes);
    }
}

TEST(FixedPageSaxConvertorTest, WhicheverReadFailsThePageIsNotClosed) {
    for (std::size_t failing = 1;; ++failing) {
        ASSERT_LT(failing, 1000u);
        MemoryPage page(LargePage());
        page.input.mostPerRead = 20000;
        page.input.failingRead = failing;
        const HRESULT result = tests::ThrownCode([&] { FixedPageSaxConvertor().Convert(page); });
        EXPECT_EQ(1u, page.output.References());
        EXPECT_EQ(1u, page.input.References());
        if (SUCCEEDED(result)) {
            EXPECT_EQ(LargePageRewritten(), page.output.content);
            EXPECT_GT(failing, page.input.reads);
            break;
        }
        EXPECT_EQ(STG_E_READFAULT, result) << failing;
        EXPECT_EQ(0, page.output.closes);
        EXPECT_TRUE(LargePageRewritten().starts_with(page.output.content));
    }
}

TEST(FixedPageSaxConvertorTest, MarkupThatIsNotWellFormedFailsAndIsNotClosed) {
    for (const char* markup : {"", " ", "no markup", "<FixedPage", "<FixedPage>", "<FixedPage></Path>",
                               "<FixedPage/><FixedPage/>", R"(<FixedPage a="1" a="2"/>)", "<x:FixedPage/>",
                               R"(<FixedPage Width="816" Height="1056"><Path></FixedPage>)"}) {
        MemoryPage page(markup);
        EXPECT_TRUE(FAILED(tests::ThrownCode([&] { FixedPageSaxConvertor().Convert(page); }))) << markup;
        EXPECT_EQ("", page.output.content) << "a page that failed is given no more text";
        EXPECT_EQ(0, page.output.closes);
        EXPECT_EQ(1u, page.output.References());
        EXPECT_EQ(1u, page.input.References());
    }
}

// The elements that a failure leaves open have end tags of more than a block together.
TEST(FixedPageSaxConvertorTest, AfterAFailedParseNothingMoreReachesThePage) {
    const std::string name(4096, 'n');
    std::string markup = R"(<FixedPage Width="816" Height="1056">)";
    for (int depth = 0; depth < 100; ++depth) markup += "<" + name + ">";
    MemoryPage page(markup + "<Path></Broken>");
    EXPECT_TRUE(FAILED(tests::ThrownCode([&] { FixedPageSaxConvertor().Convert(page); })));
    EXPECT_GT(page.output.content.size(), 100u * 4096u - 65536u);
    EXPECT_EQ(std::string::npos, page.output.content.find("</"));
    EXPECT_EQ(0, page.output.closes);
}

TEST(FixedPageSaxConvertorTest, APageThatAnswersWithoutABytesEndOrFailureFails) {
    MemoryPage page(kSmallPage);
    page.input.mostPerRead = 0;
    EXPECT_EQ(STG_E_READFAULT, tests::ThrownCode([&] { FixedPageSaxConvertor().Convert(page); }));
    EXPECT_EQ(0, page.output.closes);
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
        EXPECT_EQ(expected, page.output.content);
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
    explicit RecordingPage(std::string step) : failing(std::move(step)), memory(kSmallPage) {}

    void Validate() override { FixedPageSaxConvertor().Convert(*this); }
    platform::ComPtr<IPrintReadStream> GetPageReadStream() override {
        Step("read");
        return memory.GetPageReadStream();
    }
    platform::ComPtr<IPrintWriteStream> GetPageWriteStream() override {
        Step("write");
        return memory.GetPageWriteStream();
    }
    platform::ComPtr<ISAXContentHandler> CreateContentHandler(std::ostream& sink) override {
        Step("handler");
        return memory.CreateContentHandler(sink);
    }

    std::vector<std::string> steps;
    std::string failing;
    MemoryPage memory;

  private:
    void Step(const std::string& name) {
        steps.push_back(name);
        if (name == failing) throw exception::HresultError(E_ACCESSDENIED, "page", 1);
    }
};

TEST(FixedPageSaxConvertorTest, AsksForTheWriteStreamThenTheHandlerThenTheReadStream) {
    RecordingPage page("");
    FixedPageSaxConvertor().Convert(page);
    EXPECT_EQ((std::vector<std::string>{"write", "handler", "read"}), page.steps);
    EXPECT_EQ(kSmallPageRewritten, page.memory.output.content);
}

TEST(FixedPageSaxConvertorTest, AStepOfTheSourceThatFailsEndsTheRewrite) {
    const std::vector<std::string> steps = {"write", "handler", "read"};
    for (std::size_t failing = 0; failing < steps.size(); ++failing) {
        RecordingPage page(steps[failing]);
        EXPECT_EQ(E_ACCESSDENIED, tests::ThrownCode([&] { FixedPageSaxConvertor().Convert(page); }));
        EXPECT_EQ(std::vector<std::string>(steps.begin(), steps.begin() + static_cast<int>(failing) + 1),
                  page.steps);
        EXPECT_EQ("", page.memory.output.content);
        EXPECT_EQ(0, page.memory.output.closes);
        EXPECT_EQ(1u, page.memory.output.References());
        EXPECT_EQ(1u, page.memory.input.References());
    }
}

// The readers of these tests outlive the rewrite, as the system's may.
class KeptReaderTest : public testing::Test {
  protected:
    HRESULT Convert(FixedPageSource& page) {
        return tests::ThrownCode([&] { FixedPageSaxConvertor().Convert(page); });
    }
    void ExpectNoHandler() {
        ASSERT_EQ(1u, m_readers.Readers().size());
        EXPECT_FALSE(m_readers.Readers()[0]->Handler());
    }

    tests::CallRecorder m_calls;
    tests::KeptSaxReaders m_readers{m_calls};
};

using Calls = std::vector<std::string>;

TEST_F(KeptReaderTest, ParsesWithTheHandlerAndTheReadersDefaultsAndThenTakesTheHandlerBack) {
    MemoryPage page(kSmallPage);
    EXPECT_EQ(S_OK, Convert(page));
    EXPECT_EQ(kSmallPageRewritten, page.output.content);
    EXPECT_EQ((Calls{"putContentHandler", "parse", "putContentHandler null"}), m_calls.Calls());
    ExpectNoHandler();
}

TEST_F(KeptReaderTest, AReaderThatTakesNoHandlerIsNotAskedToParse) {
    m_calls.Fail("putContentHandler", E_ACCESSDENIED);
    MemoryPage page(kSmallPage);
    EXPECT_EQ(E_ACCESSDENIED, Convert(page));
    EXPECT_EQ(Calls{"putContentHandler"}, m_calls.Calls());
    EXPECT_EQ(0u, page.input.reads);
    EXPECT_EQ("", page.output.content);
    EXPECT_EQ(0, page.output.closes);
    ExpectNoHandler();
}

TEST_F(KeptReaderTest, AReaderThatDoesNotParseFailsWithItsCodeAndLosesTheHandler) {
    m_calls.Fail("parse", E_ACCESSDENIED);
    MemoryPage page(kSmallPage);
    EXPECT_EQ(E_ACCESSDENIED, Convert(page));
    EXPECT_EQ((Calls{"putContentHandler", "parse", "putContentHandler null"}), m_calls.Calls());
    EXPECT_EQ("", page.output.content);
    EXPECT_EQ(0, page.output.closes);
    EXPECT_EQ(Calls{}, page.input.calls);
    ExpectNoHandler();
}

TEST_F(KeptReaderTest, APageThatIsNotWellFormedTakesTheHandlerBackToo) {
    MemoryPage page("<FixedPage><Path>");
    EXPECT_TRUE(FAILED(Convert(page)));
    ExpectNoHandler();
}

TEST_F(KeptReaderTest, APageWithoutItsReadStreamTakesTheHandlerBackToo) {
    RecordingPage page("read");
    EXPECT_EQ(E_ACCESSDENIED, Convert(page));
    EXPECT_EQ((Calls{"putContentHandler", "putContentHandler null"}), m_calls.Calls());
    ExpectNoHandler();
}

TEST(FixedPageSaxConvertorTest, AThreadOutsideEveryApartmentCannotMakeTheReader) {
    HRESULT result = S_OK;
    MemoryPage page(kSmallPage);
    // The process's multithreaded apartment would be this thread's as well, so it is left for the moment.
    CoUninitialize();
    result = tests::ThrownCode([&] { FixedPageSaxConvertor().Convert(page); });
    ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_MULTITHREADED));
    EXPECT_EQ(CO_E_NOTINITIALIZED, result);
    EXPECT_EQ(0u, page.output.writes);
}

}  // namespace
}  // namespace base::xps
