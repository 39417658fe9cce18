#include "devkit/msxml/saving.h"

#include "devkit/msxml/domundertest.h"
#include "devkit/msxml/errorcodes.h"
#include "devkit/msxml/scriptedstream.h"

namespace devkit::msxml::tests {
namespace {

// Without the line break behind each top-level node, which is the implementation's own affair.
std::string Flat(std::string bytes) {
    std::erase_if(bytes, [](char c) { return c == '\r' || c == '\n'; });
    return bytes;
}

class Saving : public Conformance {};
RUN_FOR_BOTH_MAKERS(Saving);

TEST_P(Saving, WithoutADeclarationItIsUtf8WithoutAMark) {
    EXPECT_EQ(Flat(Saved(From(L"<a>\x00e4\x20ac</a>"))), "<a>\xC3\xA4\xE2\x82\xAC</a>");
}

TEST_P(Saving, ADeclarationIsWrittenWhenThereIsOne) {
    EXPECT_EQ(Flat(Saved(From(L"<?xml version=\"1.0\" encoding=\"UTF-8\"?><a/>"))),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a/>");
}

TEST_P(Saving, ADeclarationCanBeAdded) {
    const DocumentPtr pDocument = From(L"<a/>");
    ComPtr<IXMLDOMProcessingInstruction> pDeclaration;
    ASSERT_EQ(pDocument->createProcessingInstruction(
                  Bstr(L"xml").Get(), Bstr(L"version=\"1.0\" encoding=\"utf-8\"").Get(), pDeclaration.Put()),
              S_OK);
    ASSERT_EQ(pDocument->insertBefore(pDeclaration.Get(), Variant(RootOf(pDocument).Get()).Get(), nullptr),
              S_OK);
    EXPECT_EQ(Flat(Saved(pDocument)), "<?xml version=\"1.0\" encoding=\"utf-8\"?><a/>");
}

TEST_P(Saving, TheDeclaredEncodingIsKept) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: always writes UTF-8";
    EXPECT_EQ(Flat(Saved(From(L"<?xml version=\"1.0\" encoding=\"iso-8859-1\"?><a>\x00e4</a>"))),
              "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?><a>\xE4</a>");
}

TEST_P(Saving, Utf16IsLittleEndianBehindAMark) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: always writes UTF-8";
    const std::string bytes = Saved(From(L"<?xml version=\"1.0\" encoding=\"utf-16\"?><a/>"));
    ASSERT_GE(bytes.size(), 6U);
    EXPECT_EQ(bytes.substr(0, 6), std::string("\xFF\xFE<\0?\0", 6));
    const DocumentPtr pAgain = New();
    ASSERT_EQ(LoadObject(pAgain, StreamOf(bytes).Get()), S_OK);
    EXPECT_EQ(NameOf(RootOf(pAgain).Get()), L"a");
}

TEST_P(Saving, ACharacterThatTheEncodingLacksFails) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: always writes UTF-8";
    const DocumentPtr pDocument = From(L"<?xml version=\"1.0\" encoding=\"iso-8859-1\"?><a>\x20ac</a>");
    const ComPtr<IStream> pStream = StreamOf({});
    EXPECT_TRUE(FAILED(pDocument->save(Variant(pStream.Get()).Get())));
    EXPECT_EQ(BytesOf(pStream.Get()), "");
}

TEST_P(Saving, WritesAtTheCurrentPositionAndStaysBehind) {
    const ComPtr<IStream> pStream = StreamOf("1234");
    ASSERT_EQ(pStream->Seek(LARGE_INTEGER{}, STREAM_SEEK_END, nullptr), S_OK);
    ASSERT_EQ(From(L"<a/>")->save(Variant(pStream.Get()).Get()), S_OK);
    ULONG written = 0;
    ASSERT_EQ(pStream->Write("5", 1, &written), S_OK);
    EXPECT_EQ(Flat(BytesOf(pStream.Get())), "1234<a/>5");
}

TEST_P(Saving, AStreamIsOnlyWrittenTo) {
    ScriptedIStream stream;
    ASSERT_EQ(From(L"<a/>")->save(Variant(&stream).Get()), S_OK);
    EXPECT_EQ(Flat(stream.written), "<a/>");
}

TEST_P(Saving, IntoAnotherDocumentReplacesItsContent) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: the content is not replaced as a whole";
    const DocumentPtr pTarget = From(L"<old/>");
    ASSERT_EQ(From(L"<a><b/></a>")->save(Variant(pTarget.Get()).Get()), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pTarget).Get()), L"<a><b/></a>");
}

TEST_P(Saving, ToAFile) {
    wchar_t folder[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, folder);
    const std::wstring path = std::wstring(folder) + L"saving_test.xml";
    ASSERT_EQ(From(L"<a b=\"1\"/>")->save(Variant(path).Get()), S_OK);
    const DocumentPtr pAgain = New();
    VARIANT_BOOL isLoaded = VARIANT_FALSE;
    EXPECT_EQ(pAgain->load(Variant(path).Get(), &isLoaded), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pAgain).Get()), L"<a b=\"1\"/>");
    EXPECT_TRUE(DeleteFileW(path.c_str()));
}

TEST_P(Saving, AnElementGetsTheDeclarationItNeeds) {
    const DocumentPtr pDocument = From(L"<a/>");
    ASSERT_EQ(
        RootOf(pDocument)->appendChild(MakeNode(pDocument, NODE_ELEMENT, L"p:b", L"urn:p").Get(), nullptr),
        S_OK);
    EXPECT_EQ(Flat(Saved(pDocument)), "<a><p:b xmlns:p=\"urn:p\"/></a>");
}

TEST_P(Saving, AnAttributeGetsTheDeclarationItNeeds) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: writes the attribute without its declaration";
    const DocumentPtr pDocument = From(L"<a/>");
    ComPtr<IXMLDOMAttribute> pAttribute;
    ASSERT_EQ(MakeNode(pDocument, NODE_ATTRIBUTE, L"xsi:type", L"urn:xsi").QueryTo(pAttribute), S_OK);
    ASSERT_EQ(pAttribute->put_value(Variant(std::wstring_view(L"xsd:integer")).Get()), S_OK);
    ASSERT_EQ(RootOf(pDocument)->setAttributeNode(pAttribute.Get(), nullptr), S_OK);
    EXPECT_EQ(Flat(Saved(pDocument)), "<a xmlns:xsi=\"urn:xsi\" xsi:type=\"xsd:integer\"/>");
}

TEST_P(Saving, ADeclarationInScopeIsNotRepeated) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: repeats the declaration";
    const DocumentPtr pDocument = From(L"<p:a xmlns:p=\"urn:p\"><p:b/></p:a>");
    ASSERT_EQ(
        RootOf(pDocument)->appendChild(MakeNode(pDocument, NODE_ELEMENT, L"p:c", L"urn:p").Get(), nullptr),
        S_OK);
    EXPECT_EQ(Flat(Saved(pDocument)), "<p:a xmlns:p=\"urn:p\"><p:b/><p:c/></p:a>");
}

TEST_P(Saving, AChildInNoNamespaceDoesNotInheritOne) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: writes the child without xmlns=\"\"";
    const DocumentPtr pDocument = From(L"<a xmlns=\"urn:d\"/>");
    ASSERT_EQ(RootOf(pDocument)->appendChild(MakeNode(pDocument, NODE_ELEMENT, L"b").Get(), nullptr), S_OK);
    EXPECT_EQ(Flat(Saved(pDocument)), "<a xmlns=\"urn:d\"><b xmlns=\"\"/></a>");
}

using KitSaving = KitDom;

TEST_F(KitSaving, TopLevelNodesEndTheirLines) {
    EXPECT_EQ(Saved(From(L"<?xml version=\"1.0\"?><!--c--><a><b/></a>")),
              "<?xml version=\"1.0\"?>\r\n<!--c-->\r\n<a><b/></a>\r\n");
    const DocumentPtr pDocument = New();
    ASSERT_EQ(pDocument->put_preserveWhiteSpace(VARIANT_TRUE), S_OK);
    ASSERT_EQ(LoadText(pDocument, L"<?xml version=\"1.0\"?>\n<a>\n</a>"), S_OK);
    EXPECT_EQ(Saved(pDocument), "<?xml version=\"1.0\"?><a>\n</a>");
}

TEST_F(KitSaving, AnEmptyDocumentIsNothing) { EXPECT_EQ(Saved(New()), ""); }

TEST_F(KitSaving, LongWritesAreCompleted) {
    ScriptedIStream stream;
    stream.step = 3;
    ASSERT_EQ(From(L"<a>text</a>")->save(Variant(&stream).Get()), S_OK);
    EXPECT_EQ(stream.written, "<a>text</a>\r\n");
    EXPECT_EQ(stream.calls, 5);
}

TEST_F(KitSaving, AFailingWriteGivesItsCodeWhicheverItIs) {
    for (int failing = 1;; ++failing) {
        ASSERT_LE(failing, 6);
        ScriptedIStream stream;
        stream.step = 3;
        stream.failingCall = failing;
        stream.failure = STG_E_MEDIUMFULL;
        const HRESULT result = From(L"<a>text</a>")->save(Variant(&stream).Get());
        if (stream.calls < failing) {
            EXPECT_EQ(result, S_OK);
            EXPECT_EQ(failing, 6);
            return;
        }
        EXPECT_EQ(result, STG_E_MEDIUMFULL);
        EXPECT_EQ(stream.calls, failing);
    }
}

TEST_F(KitSaving, AStreamThatTakesNothingIsFull) {
    ScriptedIStream stream;
    stream.step = 0;
    EXPECT_EQ(From(L"<a/>")->save(Variant(&stream).Get()), STG_E_MEDIUMFULL);
}

TEST_F(KitSaving, ASequentialStreamWillNotDo) {
    ScriptedSequence stream;
    EXPECT_EQ(From(L"<a/>")->save(Variant(&stream).Get()), E_INVALIDARG);
    EXPECT_EQ(stream.calls, 0);
}

TEST_F(KitSaving, IntoADocumentOfTheSystem) {
    const DocumentPtr pTarget = NewDocument(Maker::System);
    ASSERT_EQ(From(L"<?xml version=\"1.0\" encoding=\"utf-16\"?><a b=\"\x20ac\"/>")
                  ->save(Variant(pTarget.Get()).Get()),
              S_OK);
    EXPECT_EQ(ValueOf(AttributeOf(RootOf(pTarget).Get(), L"b").Get()), L"\x20ac");
}

TEST_F(KitSaving, IntoItselfChangesNothing) {
    const DocumentPtr pDocument = From(L"<a><b/></a>");
    ASSERT_EQ(pDocument->save(Variant(pDocument.Get()).Get()), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a><b/></a>");
}

TEST_F(KitSaving, ADestinationThatIsNoneIsInvalid) {
    const DocumentPtr pDocument = From(L"<a/>");
    EXPECT_EQ(pDocument->save(Variant().Get()), E_INVALIDARG);
    EXPECT_EQ(pDocument->save(Variant(LONG{1}).Get()), E_INVALIDARG);
    EXPECT_EQ(pDocument->save(Variant(ChildrenOf(pDocument.Get()).Get()).Get()), E_INVALIDARG);
    EXPECT_EQ(pDocument->save(Variant(RootOf(pDocument).Get()).Get()), E_INVALIDARG);
}

TEST_F(KitSaving, APathThatCannotBeWrittenGivesTheSystemsCode) {
    const DocumentPtr pDocument = From(L"<a/>");
    EXPECT_EQ(pDocument->save(Variant(std::wstring_view(L"C:\\no such folder\\a.xml")).Get()),
              HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    EXPECT_EQ(pDocument->save(Variant(std::wstring_view(L"http://localhost/a.xml")).Get()),
              static_cast<HRESULT>(0x800C000D));
}

TEST_F(KitSaving, AnUnknownEncodingFails) {
    const DocumentPtr pDocument = From(L"<?xml version=\"1.0\" encoding=\"x-unknown\"?><a/>");
    ScriptedIStream stream;
    EXPECT_EQ(pDocument->save(Variant(&stream).Get()), Hresult(XmlInvalidEncoding));
    EXPECT_EQ(stream.calls, 0);
}

}  // namespace
}  // namespace devkit::msxml::tests
