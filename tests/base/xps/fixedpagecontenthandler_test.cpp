#include "base/xps/fixedpagecontenthandler.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string_view>

#include "base/xps/fakeattributes.h"
#include "base/xps/gdiplusguard.h"
#include "platform/comptr.h"

namespace base::xps {
namespace {

using platform::ComPtr;

// Calls the handler as a reader would, and as one never should.
class FixedPageContentHandlerTest : public testing::Test {
  protected:
    HRESULT Start(std::wstring_view localName, std::wstring_view name, ISAXAttributes* pAttributes) {
        return m_handler->startElement(L"", 0, localName.data(), static_cast<int>(localName.size()),
                                       name.data(), static_cast<int>(name.size()), pAttributes);
    }
    HRESULT Start(std::wstring_view name) {
        FakeAttributes none({});
        return Start(name, name, &none);
    }
    HRESULT End() { return m_handler->endElement(nullptr, 0, nullptr, 0, nullptr, 0); }
    [[nodiscard]] std::string Written() const { return m_sink.str(); }

    std::ostringstream m_sink;
    ComPtr<FixedPageContentHandler> m_handler =
        ComPtr<FixedPageContentHandler>::Adopt(new FixedPageContentHandler(m_sink, 270, 1));
};

TEST_F(FixedPageContentHandlerTest, TheDocumentStartsWithItsDeclaration) {
    EXPECT_EQ(S_OK, m_handler->startDocument());
    EXPECT_EQ(S_OK, m_handler->endDocument());
    EXPECT_EQ(R"(<?xml version="1.0" encoding="utf-8"?>)", Written());
}

TEST_F(FixedPageContentHandlerTest, AnEndTagTooManyFails) {
    EXPECT_EQ(E_FAIL, End());
    EXPECT_EQ(S_OK, Start(L"a"));
    EXPECT_EQ(S_OK, End());
    EXPECT_EQ(E_FAIL, End());
    EXPECT_EQ("<a></a>", Written());
}

TEST_F(FixedPageContentHandlerTest, TheRootClosesWithTheCanvassEndTagFirst) {
    EXPECT_EQ(S_OK, Start(L"FixedPage"));
    const std::string open = Written();
    EXPECT_EQ(S_OK, End());
    EXPECT_EQ(open + "</Canvas></FixedPage>", Written());
}

TEST_F(FixedPageContentHandlerTest, EventsThatAreNotElementsWriteNothing) {
    EXPECT_EQ(S_OK, m_handler->putDocumentLocator(nullptr));
    EXPECT_EQ(S_OK, m_handler->startPrefixMapping(L"p", 1, L"urn:p", 5));
    EXPECT_EQ(S_OK, m_handler->endPrefixMapping(L"p", 1));
    EXPECT_EQ(S_OK, m_handler->characters(L"text", 4));
    EXPECT_EQ(S_OK, m_handler->ignorableWhitespace(L" ", 1));
    EXPECT_EQ(S_OK, m_handler->processingInstruction(L"t", 1, L"d", 1));
    EXPECT_EQ(S_OK, m_handler->skippedEntity(L"e", 1));
    EXPECT_EQ("", Written());
}

TEST_F(FixedPageContentHandlerTest, ADeclarationComesFromTheAttributesAndNotFromTheMapping) {
    FakeAttributes declaration({{L"", L"xmlns:p", L"urn:p"}});
    EXPECT_EQ(S_OK, m_handler->startPrefixMapping(L"p", 1, L"urn:p", 5));
    EXPECT_EQ(S_OK, Start(L"a", L"p:a", &declaration));
    EXPECT_EQ(S_OK, End());
    EXPECT_EQ(S_OK, m_handler->endPrefixMapping(L"p", 1));
    EXPECT_EQ(R"(<p:a xmlns:p="urn:p"></p:a>)", Written());
}

TEST_F(FixedPageContentHandlerTest, ADeclarationWithItsLocalNameIsCarriedOnceAsWell) {
    FakeAttributes declaration({{L"p", L"xmlns:p", L"urn:p"}});
    EXPECT_EQ(S_OK, Start(L"a", L"p:a", &declaration));
    EXPECT_EQ(S_OK, End());
    EXPECT_EQ(R"(<p:a xmlns:p="urn:p"></p:a>)", Written());
}

TEST_F(FixedPageContentHandlerTest, AttributesThatCannotBeReadAreAllLeftOut) {
    FakeAttributes attributes({{L"a", L"a", L"1"}, {L"b", L"b", L"2"}});
    attributes.failingValue = 1;
    EXPECT_EQ(S_OK, Start(L"Path", L"Path", &attributes));
    EXPECT_EQ(S_OK, Start(L"Path", L"Path", nullptr));
    EXPECT_EQ("<Path><Path>", Written());
}

TEST_F(FixedPageContentHandlerTest, ARootWhoseAttributesCannotBeReadHasASizeOfZero) {
    EXPECT_EQ(S_OK, Start(L"FixedPage", L"FixedPage", nullptr));
    EXPECT_EQ(
        R"(<FixedPage Height="0.00" Width="0.00"><Canvas RenderTransform="0.00,-1.00,1.00,0.00,0.00,0.00">)",
        Written());
}

TEST_F(FixedPageContentHandlerTest, ANullNameIsAFailureAndOpensNothing) {
    FakeAttributes none({});
    EXPECT_EQ(E_FAIL, m_handler->startElement(nullptr, 0, L"a", 1, nullptr, 0, &none));
    EXPECT_EQ(E_FAIL, m_handler->startElement(nullptr, 0, L"FixedPage", 9, nullptr, 0, &none));
    EXPECT_EQ(E_FAIL, m_handler->startElement(nullptr, 0, nullptr, 0, nullptr, 0, nullptr));
    EXPECT_EQ(E_FAIL, m_handler->startElement(nullptr, 0, L"a", 1, L"a", -1, &none));
    EXPECT_EQ("", Written());
    EXPECT_EQ(E_FAIL, End());
}

TEST_F(FixedPageContentHandlerTest, ANullLocalNameIsNoPage) {
    FakeAttributes none({});
    EXPECT_EQ(S_OK, m_handler->startElement(nullptr, 0, nullptr, 0, L"FixedPage", 9, &none));
    EXPECT_EQ("<FixedPage>", Written());
}

TEST_F(FixedPageContentHandlerTest, NamesNeedNoTerminator) {
    FakeAttributes none({});
    EXPECT_EQ(S_OK, m_handler->startElement(L"", 0, L"PathData", 4, L"PathData", 4, &none));
    EXPECT_EQ("<Path>", Written());
}

TEST_F(FixedPageContentHandlerTest, EveryCallbackFailsOnceTheSinkHasFailed) {
    EXPECT_EQ(S_OK, Start(L"a"));
    EXPECT_EQ(S_OK, Start(L"b"));
    m_sink.setstate(std::ios::badbit);
    EXPECT_EQ(E_FAIL, m_handler->startDocument());
    EXPECT_EQ(E_FAIL, Start(L"c"));
    EXPECT_EQ(E_FAIL, Start(L"FixedPage"));
    EXPECT_EQ(E_FAIL, End());
    EXPECT_EQ("<a><b>", Written());
}

TEST_F(FixedPageContentHandlerTest, ElementsLeftOpenAreClosedWhenTheHandlerGoes) {
    EXPECT_EQ(S_OK, Start(L"a"));
    EXPECT_EQ(S_OK, Start(L"b"));
    m_handler.Reset();
    EXPECT_EQ("<a><b></b></a>", Written());
}

TEST_F(FixedPageContentHandlerTest, GdiplusIsUpForAsLongAsAHandlerLives) {
    EXPECT_EQ(1u, GdiplusGuard::UseCount());
    auto second = ComPtr<FixedPageContentHandler>::Adopt(new FixedPageContentHandler(m_sink, 0, 1));
    EXPECT_EQ(2u, GdiplusGuard::UseCount());
    m_handler.Reset();
    EXPECT_EQ(1u, GdiplusGuard::UseCount());
    EXPECT_EQ(Gdiplus::Ok, GdiplusGuard::LastStatus());
    second.Reset();
    EXPECT_EQ(0u, GdiplusGuard::UseCount());
    EXPECT_EQ(Gdiplus::GdiplusNotInitialized, GdiplusGuard::LastStatus());
}

}  // namespace
}  // namespace base::xps
