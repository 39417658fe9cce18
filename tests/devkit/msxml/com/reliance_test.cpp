#include <thread>

#include "devkit/msxml/domundertest.h"
#include "devkit/msxml/scriptedstream.h"

// What a filter that edits print tickets relies on in the system's document.

namespace devkit::msxml::tests {
namespace {

class Reliance : public Conformance {
  protected:
    [[nodiscard]] static ComPtr<IStream> StreamOfDocument(const DocumentPtr& pDocument) {
        ComPtr<IStream> pStream;
        EXPECT_EQ(S_OK, pDocument.QueryTo(pStream));
        return pStream;
    }
    [[nodiscard]] DocumentPtr LoadedFrom(IUnknown* pSource) const {
        const DocumentPtr pDocument = New();
        EXPECT_EQ(S_OK, LoadObject(pDocument, pSource));
        return pDocument;
    }
    static void Put(const ComPtr<IStream>& pStream, std::string_view bytes) {
        ULONG written = 0;
        EXPECT_EQ(S_OK, pStream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written));
        EXPECT_EQ(bytes.size(), written);
    }
    static HRESULT ToStart(const ComPtr<IStream>& pStream) {
        return pStream->Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr);
    }
};
RUN_FOR_BOTH_MAKERS(Reliance);

TEST_P(Reliance, EachQueryForTheStreamStartsAtItsStartOrCanBeMovedThere) {
    if (HasGaps()) GTEST_SKIP() << "known gap: the document has no IStream";
    const DocumentPtr pDocument = From(L"<a><b/></a>");
    for (int query = 0; query < 3; ++query) {
        const ComPtr<IStream> pStream = StreamOfDocument(pDocument);
        if (query == 1) {
            EXPECT_EQ(S_OK, ToStart(pStream));
        }
        EXPECT_EQ(L"<a><b/></a>", XmlOf(RootOf(LoadedFrom(pStream.Get())).Get()));
    }
}

TEST_P(Reliance, TheStreamShowsChangesMadeAfterLoading) {
    if (HasGaps()) GTEST_SKIP() << "known gap: the document has no IStream";
    const DocumentPtr pDocument = From(L"<a/>");
    static_cast<void>(LoadedFrom(StreamOfDocument(pDocument).Get()));
    ASSERT_EQ(S_OK, RootOf(pDocument)->appendChild(MakeNode(pDocument, NODE_ELEMENT, L"b").Get(), nullptr));
    EXPECT_EQ(L"<a><b/></a>", XmlOf(RootOf(LoadedFrom(StreamOfDocument(pDocument).Get())).Get()));
}

TEST_P(Reliance, TheStreamOfADocumentWithAnEncodingLoadsAgain) {
    if (HasGaps()) GTEST_SKIP() << "known gap: the document has no IStream";
    for (const wchar_t* encoding : {L"utf-8", L"UTF-8", L"utf-16", L"UTF-16"}) {
        const DocumentPtr pDocument = From(L"<?xml version=\"1.0\" encoding=\"" + std::wstring(encoding) +
                                           L"\"?><a>\x20ac\xd83d\xde00</a>");
        const DocumentPtr pCopy = LoadedFrom(StreamOfDocument(pDocument).Get());
        EXPECT_EQ(L"\x20ac\xd83d\xde00", TextOf(RootOf(pCopy).Get())) << encoding;
    }
}

TEST_P(Reliance, AStreamWrittenInPiecesRewoundAndReleasedFillsTheDocument) {
    if (HasGaps()) GTEST_SKIP() << "known gap: the document has no IStream";
    const DocumentPtr pDocument = From(L"<old/>");
    ComPtr<IStream> pStream = StreamOfDocument(pDocument);
    for (const char* piece : {"<?xml version=\"1.0\"?>", "<a><b", "/>", "</a>"}) Put(pStream, piece);
    EXPECT_EQ(S_OK, ToStart(pStream));
    pStream.Reset();
    EXPECT_EQ(L"<a><b/></a>", XmlOf(RootOf(pDocument).Get()));
}

TEST_P(Reliance, LoadOfWhatIsNotWellFormedFromAStreamIsSFalse) {
    if (HasGaps()) GTEST_SKIP() << "known gap: the code is E_FAIL, and the old content stays";
    const DocumentPtr pDocument = From(L"<old/>");
    for (const char* text : {"<a>", "<a></b>", "", "no markup", "<a/><b/>"}) {
        EXPECT_EQ(S_FALSE, LoadObject(pDocument, StreamOf(text).Get())) << text;
        EXPECT_FALSE(RootOf(pDocument)) << text;
    }
}

TEST_P(Reliance, LoadFromAStreamThatFailsGivesNoDocument) {
    const DocumentPtr pDocument = From(L"<old/>");
    ScriptedIStream stream("<a/>");
    stream.failingCall = 1;
    EXPECT_NE(S_OK, LoadObject(pDocument, &stream));
    if (HasGaps()) GTEST_SKIP() << "known gap: the old content stays";
    EXPECT_FALSE(RootOf(pDocument));
}

TEST_P(Reliance, WithAsyncOffTheDocumentIsThereWhenLoadReturns) {
    const DocumentPtr pDocument = New();
    ASSERT_EQ(S_OK, pDocument->put_async(VARIANT_FALSE));
    std::string text = "<a>";
    for (int i = 0; i < 10000; ++i) text += "<b/>";
    ASSERT_EQ(S_OK, LoadObject(pDocument, StreamOf(text + "</a>").Get()));
    long state = 0;
    EXPECT_EQ(S_OK, pDocument->get_readyState(&state));
    EXPECT_EQ(4, state);
    long length = 0;
    EXPECT_EQ(S_OK, ChildrenOf(RootOf(pDocument).Get())->get_length(&length));
    EXPECT_EQ(10000, length);
}

TEST_P(Reliance, ExternalReferencesAreNotResolved) {
    const std::wstring_view text =
        L"<a xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
        L"xsi:schemaLocation=\"urn:a http://localhost:1/none.xsd\" "
        L"xsi:noNamespaceSchemaLocation=\"http://localhost:1/none.xsd\"/>";
    const DocumentPtr pDocument = New();
    EXPECT_EQ(S_OK, LoadText(pDocument, text));
    EXPECT_EQ(L"a", NameOf(RootOf(pDocument).Get()));
}

TEST_P(Reliance, XsiTypeLeavesTheTypedValueABstr) {
    const DocumentPtr pDocument = From(
        L"<a xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
        L"xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" xsi:type=\"xsd:integer\">42</a>");
    Variant value;
    ASSERT_EQ(S_OK, RootOf(pDocument)->get_nodeTypedValue(value.Put()));
    ASSERT_EQ(VT_BSTR, value.Type());
    EXPECT_STREQ(L"42", value.Text());
}

// A declaration of the namespace that the element's own prefix already has.
NodePtr Declare(const DocumentPtr& pDocument, IXMLDOMElement* pElement, std::wstring_view name,
                std::wstring_view uri) {
    ComPtr<IXMLDOMAttribute> pAttribute;
    EXPECT_EQ(S_OK, pDocument->createAttribute(Bstr(name).Get(), pAttribute.Put()));
    EXPECT_EQ(S_OK, pAttribute->put_value(Variant(uri).Get()));
    NodePtr pSet;
    EXPECT_EQ(S_OK, AttributesOf(pElement)->setNamedItem(pAttribute.Get(), pSet.Put()));
    return pSet;
}

TEST_P(Reliance, ADeclarationIsSetOverAPrefixThatTheElementUses) {
    const DocumentPtr pDocument = From(L"<p:a xmlns:p=\"urn:p\"/>");
    const NodePtr pSet = Declare(pDocument, RootOf(pDocument).Get(), L"xmlns:p", L"urn:p");
    ASSERT_TRUE(pSet);
    EXPECT_EQ(L"xmlns:p", NameOf(pSet.Get()));
    if (HasGaps()) GTEST_SKIP() << "known gap: the declaration is written twice";
    EXPECT_EQ(L"<p:a xmlns:p=\"urn:p\"/>", XmlOf(RootOf(pDocument).Get()));
}

TEST_P(Reliance, ACloneUnderARootThatGotItsDeclarationSoIsSavedWithoutASecondOne) {
    if (HasGaps()) GTEST_SKIP() << "known gap: the declaration is written again";
    const DocumentPtr pSource = From(L"<p:a xmlns:p=\"urn:p\"><p:b p:c=\"1\"/></p:a>");
    const DocumentPtr pTarget = From(L"<a/>");
    ASSERT_TRUE(Declare(pTarget, RootOf(pTarget).Get(), L"xmlns:p", L"urn:p"));
    NodePtr pClone;
    ASSERT_EQ(S_OK, ChildAt(RootOf(pSource).Get(), 0)->cloneNode(VARIANT_TRUE, pClone.Put()));
    ASSERT_EQ(S_OK, RootOf(pTarget)->appendChild(pClone.Get(), nullptr));
    EXPECT_EQ("<a xmlns:p=\"urn:p\"><p:b p:c=\"1\"/></a>", Saved(pTarget).substr(0, 37));
}

TEST_P(Reliance, AnXmlDeclarationBehindTheRootIsRefused) {
    if (HasGaps()) GTEST_SKIP() << "known gap: it is taken";
    const DocumentPtr pDocument = From(L"<a/>");
    ComPtr<IXMLDOMProcessingInstruction> pDeclaration;
    ASSERT_EQ(S_OK, pDocument->createProcessingInstruction(Bstr(L"xml").Get(), Bstr(L"version=\"1.0\"").Get(),
                                                           pDeclaration.Put()));
    EXPECT_TRUE(FAILED(pDocument->appendChild(pDeclaration.Get(), nullptr)));
    EXPECT_EQ(S_OK,
              pDocument->insertBefore(pDeclaration.Get(), Variant(RootOf(pDocument).Get()).Get(), nullptr));
}

// As long as another thread of the process is in COM, which keeps the server loaded.
TEST_P(Reliance, ADocumentIsUsedAndReleasedBehindItsThreadsCoUninitialize) {
    std::wstring text;
    std::thread([&] {
        ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)));
        DocumentPtr pDocument = From(L"<a><b/></a>");
        CoUninitialize();
        NodePtr pChild = ChildAt(RootOf(pDocument).Get(), 0);
        text = NameOf(pChild.Get());
        pDocument.Reset();
    }).join();
    EXPECT_EQ(L"b", text);
}

}  // namespace
}  // namespace devkit::msxml::tests
