#include "base/xps/fixedpagesaxhandlerbase.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "base/logging/exceptions.h"
#include "base/xps/fakeattributes.h"
#include "base/xps/gdiplusguard.h"
#include "platform/comptr.h"
#include "thrown.h"

namespace base::xps {
namespace {

using platform::ComPtr;

// Gives the tests what derived handlers see.
class Handler final : public FixedPageSaxHandlerBase {
  public:
    using FixedPageSaxHandlerBase::AttributeTable;
    using FixedPageSaxHandlerBase::ParseBox;
    using FixedPageSaxHandlerBase::ReadAttributes;
    using FixedPageSaxHandlerBase::ReadPage;
    using FixedPageSaxHandlerBase::RewriteBleedBox;
    using FixedPageSaxHandlerBase::RewriteContentBox;
    using FixedPageSaxHandlerBase::RewriteSize;
    using FixedPageSaxHandlerBase::TextOf;
    using FixedPageSaxHandlerBase::ToAttributes;
    using FixedPageSaxHandlerBase::ToTable;

    explicit Handler(bool& isDestroyed) : m_isDestroyed(isDestroyed) {}
    ~Handler() override { m_isDestroyed = true; }

  private:
    bool& m_isDestroyed;
};

class FixedPageSaxHandlerBaseTest : public testing::Test {
  protected:
    FixedPageSaxHandlerBaseTest() { BuildPageMatrix(kLetter, 270, 1, m_matrix); }
    void TearDown() override {
        m_handler.Reset();
        EXPECT_TRUE(m_isDestroyed);
    }

    static constexpr Box kLetter = {0, 0, 816, 1056};

    GdiplusGuard m_guard;
    Matrix m_matrix;
    bool m_isDestroyed = false;
    ComPtr<Handler> m_handler = ComPtr<Handler>::Adopt(new Handler(m_isDestroyed));
};

TEST_F(FixedPageSaxHandlerBaseTest, AnswersIUnknownAndISaxContentHandlerOnly) {
    ComPtr<IUnknown> unknown;
    ComPtr<ISAXContentHandler> content;
    EXPECT_EQ(S_OK, m_handler.QueryTo(unknown));
    EXPECT_EQ(S_OK, m_handler.QueryTo(content));
    EXPECT_EQ(static_cast<IUnknown*>(content.Get()), unknown.Get());
    void* none = this;
    EXPECT_EQ(E_NOINTERFACE, m_handler->QueryInterface(__uuidof(ISAXErrorHandler), &none));
    EXPECT_EQ(nullptr, none);
    EXPECT_EQ(E_POINTER, m_handler->QueryInterface(__uuidof(IUnknown), nullptr));
}

TEST_F(FixedPageSaxHandlerBaseTest, CountsItsReferencesFromOneAndIsDestroyedWithTheLast) {
    EXPECT_EQ(2u, m_handler->AddRef());
    EXPECT_EQ(1u, m_handler->Release());
    EXPECT_FALSE(m_isDestroyed);
    EXPECT_EQ(0u, m_handler.Detach()->Release());
    EXPECT_TRUE(m_isDestroyed);
}

TEST_F(FixedPageSaxHandlerBaseTest, EveryEventReturnsSOkWhateverItIsGiven) {
    EXPECT_EQ(S_OK, m_handler->putDocumentLocator(nullptr));
    EXPECT_EQ(S_OK, m_handler->startDocument());
    EXPECT_EQ(S_OK, m_handler->endDocument());
    EXPECT_EQ(S_OK, m_handler->startPrefixMapping(nullptr, 0, nullptr, 0));
    EXPECT_EQ(S_OK, m_handler->endPrefixMapping(nullptr, 0));
    EXPECT_EQ(S_OK, m_handler->startElement(nullptr, 0, nullptr, 0, nullptr, 0, nullptr));
    EXPECT_EQ(S_OK, m_handler->endElement(nullptr, 0, nullptr, 0, nullptr, 0));
    EXPECT_EQ(S_OK, m_handler->characters(nullptr, 0));
    EXPECT_EQ(S_OK, m_handler->ignorableWhitespace(nullptr, 0));
    EXPECT_EQ(S_OK, m_handler->processingInstruction(nullptr, 0, nullptr, 0));
    EXPECT_EQ(S_OK, m_handler->skippedEntity(nullptr, 0));
}

TEST_F(FixedPageSaxHandlerBaseTest, ReadsAttributesInTheReadersOrder) {
    FakeAttributes source(
        {{L"b", L"p:b", L"2"}, {L"UnicodeString", L"UnicodeString", L"<"}, {L"", L"xmlns", L"u"}});
    const auto attributes = m_handler->ReadAttributes(&source);
    ASSERT_EQ(3u, attributes.size());
    EXPECT_EQ(L"p:b", attributes[0].name);
    EXPECT_EQ(L"2", attributes[0].value);
    EXPECT_FALSE(attributes[0].isEscaped);
    EXPECT_EQ(L"UnicodeString", attributes[1].name);
    EXPECT_EQ(L"<", attributes[1].value);
    EXPECT_TRUE(attributes[1].isEscaped);
    EXPECT_EQ(L"xmlns", attributes[2].name);
    EXPECT_EQ(L"u", attributes[2].value);
    EXPECT_FALSE(attributes[2].isEscaped);
}

TEST_F(FixedPageSaxHandlerBaseTest, ThereAreNoAttributesWhenTheCountANameOrAValueCannotBeRead) {
    const std::vector<FakeAttributes::Attribute> three = {
        {L"a", L"a", L"1"}, {L"b", L"b", L"2"}, {L"c", L"c", L"3"}};
    FakeAttributes noCount(three);
    noCount.lengthResult = E_FAIL;
    EXPECT_TRUE(m_handler->ReadAttributes(&noCount).empty());
    for (int index = 0; index < 3; ++index) {
        FakeAttributes noName(three);
        noName.failingName = index;
        EXPECT_TRUE(m_handler->ReadAttributes(&noName).empty());
        FakeAttributes noValue(three);
        noValue.failingValue = index;
        EXPECT_TRUE(m_handler->ReadAttributes(&noValue).empty());
        FakeAttributes noStorage(three);
        noStorage.nullValue = index;
        noStorage.nullLength = 1;
        EXPECT_TRUE(m_handler->ReadAttributes(&noStorage).empty());
        noStorage.nullLength = -1;
        EXPECT_TRUE(m_handler->ReadAttributes(&noStorage).empty());
        for (int FakeAttributes::*pName : {&FakeAttributes::nullLocalName, &FakeAttributes::nullName}) {
            FakeAttributes noText(three);
            noText.*pName = index;
            noText.nullLength = 1;
            EXPECT_TRUE(m_handler->ReadAttributes(&noText).empty());
        }
    }
    EXPECT_TRUE(m_handler->ReadAttributes(nullptr).empty());
}

TEST_F(FixedPageSaxHandlerBaseTest, AnEmptyValueNeedsNoStorage) {
    FakeAttributes source({{L"a", L"a", L"1"}});
    source.nullValue = 0;
    const auto attributes = m_handler->ReadAttributes(&source);
    ASSERT_EQ(1u, attributes.size());
    EXPECT_EQ(L"", attributes[0].value);
    EXPECT_NE(nullptr, attributes[0].value.data());
}

TEST_F(FixedPageSaxHandlerBaseTest, ALaterDuplicateOverwritesAnEarlierOneInTheTable) {
    const TagAttribute attributes[] = {{L"b", L"1"}, {L"a", L"2"}, {L"b", L"3", true}};
    const auto table = Handler::ToTable(attributes);
    const auto sorted = Handler::ToAttributes(table);
    ASSERT_EQ(2u, sorted.size());
    EXPECT_EQ(L"a", sorted[0].name);
    EXPECT_EQ(L"2", sorted[0].value);
    EXPECT_EQ(L"b", sorted[1].name);
    EXPECT_EQ(L"3", sorted[1].value);
    EXPECT_TRUE(sorted[1].isEscaped);
}

TEST_F(FixedPageSaxHandlerBaseTest, ReadingThePageAddsAMissingSizeWithAnEmptyValue) {
    Handler::AttributeTable table;
    table[L"Width"].text = L"816";
    const Box page = Handler::ReadPage(table);
    EXPECT_EQ(816, page.Width());
    EXPECT_EQ(0, page.Height());
    ASSERT_EQ(2u, table.size());
    EXPECT_EQ(L"", table[L"Height"].text);
}

TEST_F(FixedPageSaxHandlerBaseTest, ASizeThatIsMissingCannotBeRewritten) {
    for (const wchar_t* missing : {L"Width", L"Height"}) {
        Handler::AttributeTable table;
        table[L"Width"].text = L"816";
        table[L"Height"].text = L"1056";
        table.erase(missing);
        EXPECT_EQ(
            "base/xps/fixedpagesaxhandlerbase.cpp(LINE) : "
            "FixedPage Hegiht/Width attribute is required by XPS.\n",
            tests::Thrown<exception::Error>([&] { Handler::RewriteSize(table, kLetter, m_matrix); }))
            << missing;
        EXPECT_EQ(1u, table.size());
    }
}

TEST_F(FixedPageSaxHandlerBaseTest, TheSizeTradesPlaces) {
    Handler::AttributeTable table;
    const Box page = Handler::ReadPage(table);
    EXPECT_EQ(0, page.Width());
    Handler::RewriteSize(table, kLetter, m_matrix);
    EXPECT_EQ(L"1056.00", table[L"Width"].text);
    EXPECT_EQ(L"816.00", table[L"Height"].text);
}

TEST_F(FixedPageSaxHandlerBaseTest, ABoxThatIsAbsentStaysAbsent) {
    Handler::AttributeTable table;
    Handler::RewriteBleedBox(table, kLetter, m_matrix);
    Handler::RewriteContentBox(table, kLetter, m_matrix);
    EXPECT_TRUE(table.empty());
}

TEST_F(FixedPageSaxHandlerBaseTest, ABoxIsParsedIntoItsEdges) {
    const Box box = Handler::ParseBox(L"1,2.5,30,40");
    EXPECT_EQ(1, box.left);
    EXPECT_EQ(2.5f, box.top);
    EXPECT_EQ(31, box.right);
    EXPECT_EQ(42.5f, box.bottom);
}

TEST_F(FixedPageSaxHandlerBaseTest, AnEmptyBoxAndAnyCountButFourAreRejected) {
    const auto messageOf = [](std::wstring_view text) {
        return tests::Thrown<std::invalid_argument>([&] { (void)Handler::ParseBox(text); });
    };
    EXPECT_EQ("base/xps/fixedpagesaxhandlerbase.cpp(LINE) : text is empty.\n", messageOf(L""));
    for (const wchar_t* text : {L"1", L"1,2", L"1,2,3", L"1,2,3,4,5", L"1,2,3,4,", L",1,2,3,4", L"1,,2,3",
                                L",,,", L" ", L"1 2 3 4"}) {
        EXPECT_EQ(
            "base/xps/fixedpagesaxhandlerbase.cpp(LINE) : "
            "the value comma deliminated should consist 4 value.\n",
            messageOf(text))
            << text;
    }
}

TEST_F(FixedPageSaxHandlerBaseTest, TheTextOfANullPointerHasNoStorage) {
    EXPECT_EQ(nullptr, Handler::TextOf(nullptr, 3).data());
    EXPECT_EQ(nullptr, Handler::TextOf(L"abc", -1).data());
    EXPECT_EQ(L"ab", Handler::TextOf(L"abc", 2));
    EXPECT_NE(nullptr, Handler::TextOf(L"abc", 0).data());
}

}  // namespace
}  // namespace base::xps
