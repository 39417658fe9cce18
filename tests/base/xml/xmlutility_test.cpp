#include "base/xml/xmlutility.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "base/logging/exceptions.h"
#include "domfaults.h"
#include "domslots.h"
#include "domtest.h"
#include "domtext.h"
#include "failingallocation.h"
#include "platform/bstr.h"
#include "platform/variant.h"
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
    EXPECT_EQ(S_OK, CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()));
    ULONG written = 0;
    EXPECT_EQ(S_OK, stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written));
    EXPECT_EQ(S_OK, stream->Seek({}, STREAM_SEEK_SET, nullptr));
    return stream;
}

Dom LoadBytes(std::string_view bytes) {
    const ComPtr<IStream> stream = StreamOf(bytes);
    return LoadDom(Variant(static_cast<IUnknown*>(stream.Get())).Get());
}

std::wstring RootText(const Dom& dom) {
    ComPtr<IXMLDOMElement> root;
    EXPECT_EQ(S_OK, dom->get_documentElement(root.Put()));
    if (!root) return L"<no root>";
    platform::Bstr text;
    EXPECT_EQ(S_OK, root->get_text(text.Put()));
    return std::wstring(text.View());
}

std::string ByteText(std::wstring_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

TEST_F(XmlUtility, CreatedDocumentIsEmptyAndLoadsSynchronously) {
    const Dom dom = CreateDom();
    ComPtr<IXMLDOMElement> root;
    EXPECT_EQ(S_FALSE, dom->get_documentElement(root.Put()));
    EXPECT_FALSE(root);
    VARIANT_BOOL async = VARIANT_TRUE;
    EXPECT_EQ(S_OK, dom->get_async(&async));
    EXPECT_EQ(VARIANT_FALSE, async);
}

TEST_F(XmlUtility, EachCreatedDocumentIsANewOne) {
    const Dom first = CreateDom();
    const Dom second = CreateDom();
    EXPECT_NE(first.Get(), second.Get());
}

TEST_F(XmlUtility, TextIsLoadedAndSavedAsItWas) {
    const std::wstring_view text = L"<p:a xmlns:p=\"urn:p\" p:b=\"1\" c=\"&lt;\"><!--x--><d>t</d><e/></p:a>";
    EXPECT_EQ(text, tests::DomText(LoadDomFromString(text).Get()));
}

TEST_F(XmlUtility, TextWithAnEncodingDeclarationIsLoadedAsTheTextItIs) {
    EXPECT_EQ(L"\u00E9\u6F22",
              RootText(LoadDomFromString(L"<?xml version=\"1.0\" encoding=\"UTF-8\"?><a>\u00E9\u6F22</a>")));
}

TEST_F(XmlUtility, TextOutsideAsciiAndTheBasicPlaneIsSavedWhole) {
    const std::wstring_view text = L"<a b=\"\u00E9\">\u6F22\U0001F600</a>";
    EXPECT_EQ(text, tests::DomText(LoadDomFromString(text).Get()));
}

TEST_F(XmlUtility, TextThatIsNotWellFormedThrowsEFail) {
    EXPECT_EQ(E_FAIL, tests::ThrownCode([] { static_cast<void>(LoadDomFromString(L"<a><b></a>")); }));
    EXPECT_EQ(E_FAIL, tests::ThrownCode([] { static_cast<void>(LoadDomFromString(L"")); }));
    EXPECT_EQ(E_FAIL, tests::ThrownCode([] { static_cast<void>(LoadDomFromString(L"<a/><b/>")); }));
}

TEST_F(XmlUtility, TextWithADocumentTypeThrowsEFail) {
    EXPECT_EQ(E_FAIL, tests::ThrownCode([] {
                  static_cast<void>(LoadDomFromString(L"<!DOCTYPE a [<!ENTITY e \"x\">]><a>&e;</a>"));
              }));
}

TEST_F(XmlUtility, AFailureNamesTheThrowingFile) {
    EXPECT_THAT(tests::Thrown<HresultError>([] { static_cast<void>(LoadDomFromString(L"<a>")); }),
                testing::StartsWith("base/xml/xmlutility.cpp("));
}

TEST_F(XmlUtility, StreamsOfEveryUnicodeEncodingAreLoaded) {
    const std::wstring_view body = L"<a>\u00E9\u6F22</a>";
    const std::string utf8 = "<a>\xC3\xA9\xE6\xBC\xA2</a>";
    EXPECT_EQ(L"\u00E9\u6F22", RootText(LoadBytes(utf8)));
    EXPECT_EQ(L"\u00E9\u6F22", RootText(LoadBytes("\xEF\xBB\xBF" + utf8)));
    EXPECT_EQ(L"\u00E9\u6F22", RootText(LoadBytes("<?xml version=\"1.0\" encoding=\"utf-8\"?>" + utf8)));
    EXPECT_EQ(L"\u00E9\u6F22", RootText(LoadBytes("\xFF\xFE" + ByteText(body))));
}

TEST_F(XmlUtility, AStreamIsLoadedFromItsCurrentPosition) {
    const ComPtr<IStream> stream = StreamOf("12345<a>x</a>");
    LARGE_INTEGER skip = {};
    skip.QuadPart = 5;
    ASSERT_EQ(S_OK, stream->Seek(skip, STREAM_SEEK_SET, nullptr));
    EXPECT_EQ(L"x", RootText(LoadDom(Variant(static_cast<IUnknown*>(stream.Get())).Get())));
}

TEST_F(XmlUtility, AStreamThatIsNotWellFormedThrowsEFail) {
    EXPECT_EQ(E_FAIL, tests::ThrownCode([] { static_cast<void>(LoadBytes("<a")); }));
    EXPECT_EQ(E_FAIL, tests::ThrownCode([] { static_cast<void>(LoadBytes("")); }));
}

TEST_F(XmlUtility, ASourceThatCannotBeLoadedThrows) {
    EXPECT_TRUE(FAILED(tests::ThrownCode([] { static_cast<void>(LoadDom(Variant().Get())); })));
    EXPECT_TRUE(FAILED(tests::ThrownCode([] { static_cast<void>(LoadDom(Variant(LONG{5}).Get())); })));
}

TEST_F(XmlUtility, TheSourceStreamIsReleased) {
    const ComPtr<IStream> stream = StreamOf("<a/>");
    {
        const Variant source(static_cast<IUnknown*>(stream.Get()));
        const Dom dom = LoadDom(source.Get());
    }
    stream->AddRef();
    EXPECT_EQ(1u, stream->Release());
}

TEST_F(XmlUtility, ADocumentWithAUtf16DeclarationIsSavedAsText) {
    const Dom dom =
        LoadBytes("\xFF\xFE" + ByteText(L"<?xml version=\"1.0\" encoding=\"UTF-16\"?><a>\u6F22</a>"));
    const std::wstring text = DomToString(dom.Get());
    EXPECT_THAT(text, testing::StartsWith(L"<?xml version=\"1.0\""));
    EXPECT_THAT(text, testing::HasSubstr(L"<a>\u6F22</a>"));
}

TEST_F(XmlUtility, AnEmptyDocumentIsSavedAsNoElement) {
    EXPECT_EQ(std::wstring::npos, DomToString(CreateDom().Get()).find(L'<'));
}

TEST_F(XmlUtility, SavingWithoutMemoryForAStreamThrowsItsCode) {
    const Dom dom = CreateDom();
    const tests::FailingStreamMemory failing(E_OUTOFMEMORY);
    EXPECT_EQ(E_OUTOFMEMORY, tests::ThrownCode([&] { static_cast<void>(DomToString(dom.Get())); }));
}

bool LoadLies(const char* name, const void*) { return std::string_view(name).starts_with("load"); }

TEST_F(XmlUtility, ALoadThatSucceedsWithoutADocumentThrowsEFail) {
    const tests::DomFaults faults(&LoadLies, S_OK);
    EXPECT_EQ(E_FAIL, tests::ThrownCode([] { static_cast<void>(LoadDomFromString(L"<a/>")); }));
    EXPECT_EQ(E_FAIL, tests::ThrownCode([] { static_cast<void>(LoadBytes("<a/>")); }));
}

// What a document saves, whatever is in it.
std::string g_saved;
HRESULT STDMETHODCALLTYPE SaveGiven(IXMLDOMDocument2*, VARIANT target) {
    ComPtr<IStream> stream;
    const HRESULT hr = ComPtr<IUnknown>(target.punkVal).QueryTo(stream);
    return FAILED(hr) ? hr : stream->Write(g_saved.data(), static_cast<ULONG>(g_saved.size()), nullptr);
}

TEST_F(XmlUtility, WhatIsSavedIsTextInEachEncodingThatADocumentMayChoose) {
    const Dom dom = CreateDom();
    tests::VtablePatches patches;
    patches.Replace(dom.Get(), tests::DocumentSave, &SaveGiven);
    const std::pair<std::string, std::wstring_view> saved[] = {
        {"<a>\xC3\xA4</a>", L"<a>\u00E4</a>"},
        {"\xEF\xBB\xBF<a>\xC3\xA4</a>", L"<a>\u00E4</a>"},
        {"\xFF\xFE" + ByteText(L"<a/>"), L"<a/>"},
        {ByteText(L"<a>\u00E4</a>"), L"<a>\u00E4</a>"},
        {"<", L"<"},
        {"ab", L"ab"},
        {"", L""},
    };
    for (const auto& [bytes, text] : saved) {
        g_saved = bytes;
        EXPECT_EQ(text, DomToString(dom.Get()));
    }
}

// A stream over memory: IUnknown has 3 slots, then come Read, Write and so on.
constexpr std::size_t kStreamRead = 3;
constexpr std::size_t kStreamStat = 12;

HRESULT STDMETHODCALLTYPE StatOfFourGigabytes(IStream*, STATSTG* pFacts, DWORD) {
    *pFacts = {};
    pFacts->cbSize.QuadPart = 1ull << 32;
    return S_OK;
}
HRESULT STDMETHODCALLTYPE RefuseToRead(IStream*, void*, ULONG, ULONG*) { return STG_E_READFAULT; }

TEST_F(XmlUtility, SavingThrowsForWhatIsTooLongOrCannotBeReadAgain) {
    const Dom dom = CreateDom();
    const ComPtr<IStream> stream = StreamOf("");
    {
        tests::VtablePatches patches;
        patches.Replace(stream.Get(), kStreamStat, &StatOfFourGigabytes);
        EXPECT_EQ(E_OUTOFMEMORY, tests::ThrownCode([&] { static_cast<void>(DomToString(dom.Get())); }));
    }
    tests::VtablePatches patches;
    patches.Replace(stream.Get(), kStreamRead, &RefuseToRead);
    EXPECT_EQ(STG_E_READFAULT, tests::ThrownCode([&] { static_cast<void>(DomToString(dom.Get())); }));
}

TEST_F(XmlUtility, SavingANullDocumentThrows) {
    EXPECT_EQ("base/xml/xmlutility.cpp(LINE) : pDom is null.\n",
              tests::Thrown<std::invalid_argument>([] { static_cast<void>(DomToString(nullptr)); }));
}

}  // namespace
