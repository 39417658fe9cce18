#include "base/xml/xmlutility.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <string_view>

#include "base/logging/exceptions.h"
#include "domtest.h"
#include "domtext.h"
#include "platform/bstr.h"
#include "platform/variant.h"
#include "streammemory.h"
#include "thrown.h"

namespace {

using base::exception::HresultError;
using base::xml::CreateDom;
using base::xml::DomToString;
using base::xml::LoadDom;
using base::xml::LoadDomFromString;
using platform::ComPtr;
using platform::Variant;

using Dom = ComPtr<IXMLDOMDocument2>;

class XmlUtility : public tests::DomTest {};

ComPtr<IStream> StreamOf(std::string_view bytes) {
    ComPtr<IStream> stream;
    EXPECT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()), S_OK);
    ULONG written = 0;
    EXPECT_EQ(stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written), S_OK);
    EXPECT_EQ(stream->Seek({}, STREAM_SEEK_SET, nullptr), S_OK);
    return stream;
}

Dom LoadBytes(std::string_view bytes) {
    const ComPtr<IStream> stream = StreamOf(bytes);
    return LoadDom(Variant(static_cast<IUnknown*>(stream.Get())).Get());
}

std::wstring RootText(const Dom& dom) {
    ComPtr<IXMLDOMElement> root;
    EXPECT_EQ(dom->get_documentElement(root.Put()), S_OK);
    if (!root) return L"<no root>";
    platform::Bstr text;
    EXPECT_EQ(root->get_text(text.Put()), S_OK);
    return std::wstring(text.View());
}

template <typename Action>
HRESULT ThrownBy(Action&& action) {
    try {
        action();
    } catch (const HresultError& error) {
        return error.GetHresult();
    }
    return S_OK;
}

std::string ByteText(std::wstring_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

TEST_F(XmlUtility, CreatedDocumentIsEmptyAndLoadsSynchronously) {
    const Dom dom = CreateDom();
    ComPtr<IXMLDOMElement> root;
    EXPECT_EQ(dom->get_documentElement(root.Put()), S_FALSE);
    EXPECT_FALSE(root);
    VARIANT_BOOL async = VARIANT_TRUE;
    EXPECT_EQ(dom->get_async(&async), S_OK);
    EXPECT_EQ(async, VARIANT_FALSE);
}

TEST_F(XmlUtility, EachCreatedDocumentIsANewOne) {
    const Dom first = CreateDom();
    const Dom second = CreateDom();
    EXPECT_NE(first.Get(), second.Get());
}

TEST_F(XmlUtility, TextIsLoadedAndSavedAsItWas) {
    const std::wstring_view text = L"<p:a xmlns:p=\"urn:p\" p:b=\"1\" c=\"&lt;\"><!--x--><d>t</d><e/></p:a>";
    EXPECT_EQ(tests::DomText(LoadDomFromString(text).Get()), text);
}

TEST_F(XmlUtility, TextWithAnEncodingDeclarationIsLoadedAsTheTextItIs) {
    EXPECT_EQ(RootText(LoadDomFromString(L"<?xml version=\"1.0\" encoding=\"UTF-8\"?><a>\u00E9\u6F22</a>")),
              L"\u00E9\u6F22");
}

TEST_F(XmlUtility, TextOutsideAsciiAndTheBasicPlaneIsSavedWhole) {
    const std::wstring_view text = L"<a b=\"\u00E9\">\u6F22\U0001F600</a>";
    EXPECT_EQ(tests::DomText(LoadDomFromString(text).Get()), text);
}

TEST_F(XmlUtility, TextThatIsNotWellFormedThrowsEFail) {
    EXPECT_EQ(ThrownBy([] { static_cast<void>(LoadDomFromString(L"<a><b></a>")); }), E_FAIL);
    EXPECT_EQ(ThrownBy([] { static_cast<void>(LoadDomFromString(L"")); }), E_FAIL);
    EXPECT_EQ(ThrownBy([] { static_cast<void>(LoadDomFromString(L"<a/><b/>")); }), E_FAIL);
}

TEST_F(XmlUtility, TextWithADocumentTypeThrowsEFail) {
    EXPECT_EQ(
        ThrownBy([] { static_cast<void>(LoadDomFromString(L"<!DOCTYPE a [<!ENTITY e \"x\">]><a>&e;</a>")); }),
        E_FAIL);
}

TEST_F(XmlUtility, AFailureNamesTheThrowingFile) {
    try {
        static_cast<void>(LoadDomFromString(L"<a>"));
        FAIL();
    } catch (const HresultError& error) {
        EXPECT_THAT(error.what(), testing::StartsWith("base/xml/xmlutility.cpp("));
    }
}

TEST_F(XmlUtility, StreamsOfEveryUnicodeEncodingAreLoaded) {
    const std::wstring_view body = L"<a>\u00E9\u6F22</a>";
    const std::string utf8 = "<a>\xC3\xA9\xE6\xBC\xA2</a>";
    EXPECT_EQ(RootText(LoadBytes(utf8)), L"\u00E9\u6F22");
    EXPECT_EQ(RootText(LoadBytes("\xEF\xBB\xBF" + utf8)), L"\u00E9\u6F22");
    EXPECT_EQ(RootText(LoadBytes("<?xml version=\"1.0\" encoding=\"utf-8\"?>" + utf8)), L"\u00E9\u6F22");
    EXPECT_EQ(RootText(LoadBytes("\xFF\xFE" + ByteText(body))), L"\u00E9\u6F22");
}

TEST_F(XmlUtility, AStreamIsLoadedFromItsCurrentPosition) {
    const ComPtr<IStream> stream = StreamOf("12345<a>x</a>");
    LARGE_INTEGER skip = {};
    skip.QuadPart = 5;
    ASSERT_EQ(stream->Seek(skip, STREAM_SEEK_SET, nullptr), S_OK);
    EXPECT_EQ(RootText(LoadDom(Variant(static_cast<IUnknown*>(stream.Get())).Get())), L"x");
}

TEST_F(XmlUtility, AStreamThatIsNotWellFormedThrowsEFail) {
    EXPECT_EQ(ThrownBy([] { static_cast<void>(LoadBytes("<a")); }), E_FAIL);
    EXPECT_EQ(ThrownBy([] { static_cast<void>(LoadBytes("")); }), E_FAIL);
}

TEST_F(XmlUtility, ASourceThatCannotBeLoadedThrows) {
    EXPECT_TRUE(FAILED(ThrownBy([] { static_cast<void>(LoadDom(Variant().Get())); })));
    EXPECT_TRUE(FAILED(ThrownBy([] { static_cast<void>(LoadDom(Variant(LONG{5}).Get())); })));
}

TEST_F(XmlUtility, TheSourceStreamIsReleased) {
    const ComPtr<IStream> stream = StreamOf("<a/>");
    {
        const Variant source(static_cast<IUnknown*>(stream.Get()));
        const Dom dom = LoadDom(source.Get());
    }
    stream->AddRef();
    EXPECT_EQ(stream->Release(), 1u);
}

TEST_F(XmlUtility, ADocumentWithAUtf16DeclarationIsSavedAsText) {
    const Dom dom =
        LoadBytes("\xFF\xFE" + ByteText(L"<?xml version=\"1.0\" encoding=\"UTF-16\"?><a>\u6F22</a>"));
    const std::wstring text = DomToString(dom.Get());
    EXPECT_THAT(text, testing::StartsWith(L"<?xml version=\"1.0\""));
    EXPECT_THAT(text, testing::HasSubstr(L"<a>\u6F22</a>"));
}

TEST_F(XmlUtility, AnEmptyDocumentIsSavedAsNoElement) {
    EXPECT_EQ(DomToString(CreateDom().Get()).find(L'<'), std::wstring::npos);
}

TEST_F(XmlUtility, SavingWithoutMemoryForAStreamThrowsItsCode) {
    const Dom dom = CreateDom();
    const tests::FailingStreamMemory failing(E_OUTOFMEMORY);
    EXPECT_EQ(E_OUTOFMEMORY, tests::ThrownCode([&] { static_cast<void>(DomToString(dom.Get())); }));
}

TEST_F(XmlUtility, SavingANullDocumentThrows) {
    try {
        static_cast<void>(DomToString(nullptr));
        FAIL();
    } catch (const std::invalid_argument& error) {
        EXPECT_THAT(error.what(),
                    testing::MatchesRegex("base/xml/xmlutility\\.cpp\\(\\d+\\) : pDom is null\\.\n"));
    }
}

}  // namespace
