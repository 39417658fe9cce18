#include "devkit/msxml/loading.h"

#include <cstdio>

#include "devkit/msxml/domundertest.h"
#include "devkit/msxml/errorcodes.h"
#include "devkit/msxml/scriptedstream.h"

namespace devkit::msxml::tests {
namespace {

// A file in the folder for temporary files that goes with the object.
class TemporaryFile {
  public:
    explicit TemporaryFile(std::string_view bytes) {
        wchar_t folder[MAX_PATH] = {};
        GetTempPathW(MAX_PATH, folder);
        wchar_t path[MAX_PATH] = {};
        EXPECT_NE(GetTempFileNameW(folder, L"dom", 0, path), 0U);
        m_path = path;
        const HANDLE file = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
        DWORD written = 0;
        EXPECT_TRUE(WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
        CloseHandle(file);
    }
    ~TemporaryFile() { DeleteFileW(m_path.c_str()); }

    [[nodiscard]] const std::wstring& Path() const { return m_path; }

  private:
    std::wstring m_path;
};

Variant& ByteArray(Variant& variant, std::string_view bytes) {
    SAFEARRAY* const pArray = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    void* pData = nullptr;
    EXPECT_EQ(SafeArrayAccessData(pArray, &pData), S_OK);
    std::memcpy(pData, bytes.data(), bytes.size());
    SafeArrayUnaccessData(pArray);
    VARIANT* const pVariant = variant.Put();
    pVariant->vt = VT_ARRAY | VT_UI1;
    pVariant->parray = pArray;
    return variant;
}

HRESULT LoadValue(const DocumentPtr& pDocument, const VARIANT& value) {
    VARIANT_BOOL isLoaded = VARIANT_TRUE;
    const HRESULT result = pDocument->load(value, &isLoaded);
    EXPECT_EQ(isLoaded, result == S_OK ? VARIANT_TRUE : VARIANT_FALSE);
    return result;
}

class Loading : public Conformance {};
RUN_FOR_BOTH_MAKERS(Loading);

TEST_P(Loading, AnIStreamIsOnlyReadUntilItGivesNothing) {
    const DocumentPtr pDocument = New();
    ScriptedIStream stream("<a>text</a>");
    EXPECT_EQ(LoadObject(pDocument, &stream), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a>text</a>");
}

TEST_P(Loading, ShortReadsAreNoEnd) {
    const DocumentPtr pDocument = New();
    ScriptedIStream stream("<a>text</a>");
    stream.step = 1;
    EXPECT_EQ(LoadObject(pDocument, &stream), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a>text</a>");
    EXPECT_EQ(stream.calls, 12);
}

TEST_P(Loading, SFalseIsNoEnd) {
    const DocumentPtr pDocument = New();
    ScriptedIStream stream("<a>text</a>");
    stream.step = 3;
    stream.success = S_FALSE;
    EXPECT_EQ(LoadObject(pDocument, &stream), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a>text</a>");
}

TEST_P(Loading, ASequentialStreamWillDo) {
    const DocumentPtr pDocument = New();
    ScriptedSequence stream("<a/>");
    EXPECT_EQ(LoadObject(pDocument, &stream), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a/>");
}

TEST_P(Loading, ReadsFromTheCurrentPosition) {
    const ComPtr<IStream> pStream = StreamOf("garbage<a/>");
    LARGE_INTEGER start;
    start.QuadPart = 7;
    ASSERT_EQ(pStream->Seek(start, STREAM_SEEK_SET, nullptr), S_OK);
    const DocumentPtr pDocument = New();
    EXPECT_EQ(LoadObject(pDocument, pStream.Get()), S_OK);
    EXPECT_EQ(NameOf(RootOf(pDocument).Get()), L"a");
}

TEST_P(Loading, AStreamAtItsEndIsNoDocument) {
    const DocumentPtr pDocument = New();
    const ComPtr<IStream> pStream = StreamOf("<a/>");
    ASSERT_EQ(pStream->Seek(LARGE_INTEGER{}, STREAM_SEEK_END, nullptr), S_OK);
    EXPECT_NE(LoadObject(pDocument, pStream.Get()), S_OK);
    EXPECT_FALSE(RootOf(pDocument));
}

TEST_P(Loading, AByteArray) {
    const DocumentPtr pDocument = New();
    Variant array;
    EXPECT_EQ(LoadValue(pDocument, ByteArray(array, "<a>\xC3\xA4</a>").Get()), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a>\x00e4</a>");
}

TEST_P(Loading, AFile) {
    const TemporaryFile file("<a/>");
    const DocumentPtr pDocument = New();
    EXPECT_EQ(LoadValue(pDocument, Variant(file.Path()).Get()), S_OK);
    EXPECT_EQ(NameOf(RootOf(pDocument).Get()), L"a");
}

TEST_P(Loading, AMissingFileIsReportedAsAParseError) {
    const DocumentPtr pDocument = New();
    EXPECT_EQ(LoadValue(pDocument, Variant(std::wstring_view(L"C:\\no such folder\\none.xml")).Get()),
              S_FALSE);
    EXPECT_FALSE(RootOf(pDocument));
    if (OnWine()) GTEST_SKIP() << "Wine 8: the code is E_FAIL";
    EXPECT_EQ(ErrorCode(pDocument), static_cast<HRESULT>(0x800C0006));
}

TEST_P(Loading, AnotherDocument) {
    const DocumentPtr pSource = From(L"<a b=\"1\"><c/></a>");
    const DocumentPtr pDocument = New();
    EXPECT_EQ(LoadObject(pDocument, pSource.Get()), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a b=\"1\"><c/></a>");
    EXPECT_EQ(XmlOf(RootOf(pSource).Get()), L"<a b=\"1\"><c/></a>");
}

TEST_P(Loading, OldContentGoes) {
    const DocumentPtr pDocument = From(L"<a/>");
    EXPECT_EQ(LoadText(pDocument, L"<b/>"), S_OK);
    EXPECT_EQ(NameOf(RootOf(pDocument).Get()), L"b");
}

TEST_P(Loading, OldNodesStayUsable) {
    const DocumentPtr pDocument = From(L"<a><b c=\"1\"/></a>");
    const NodePtr pOld = ChildAt(RootOf(pDocument).Get(), 0);
    EXPECT_EQ(LoadText(pDocument, L"<z/>"), S_OK);
    EXPECT_EQ(NameOf(pOld.Get()), L"b");
    EXPECT_EQ(XmlOf(pOld.Get()), L"<b c=\"1\"/>");
}

TEST_P(Loading, TextThatIsNotWellFormedIsSFalseWithAParseError) {
    const DocumentPtr pDocument = New();
    EXPECT_EQ(LoadText(pDocument, L"<a><b></a>"), S_FALSE);
    EXPECT_NE(ErrorCode(pDocument), S_OK);
    EXPECT_FALSE(RootOf(pDocument));
    EXPECT_EQ(LoadText(pDocument, L"<a/>"), S_OK);
    EXPECT_EQ(ErrorCode(pDocument), S_OK);
}

TEST_P(Loading, AFlagPointerMayBeNull) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: load faults for a null flag pointer";
    const DocumentPtr pDocument = New();
    EXPECT_EQ(pDocument->loadXML(Bstr(L"<a/>").Get(), nullptr), S_OK);
    const ComPtr<IStream> pStream = StreamOf("<b/>");
    EXPECT_EQ(pDocument->load(Variant(pStream.Get()).Get(), nullptr), S_OK);
    EXPECT_EQ(NameOf(RootOf(pDocument).Get()), L"b");
}

TEST_P(Loading, AnEmptyTextIsNoDocument) {
    const DocumentPtr pDocument = New();
    EXPECT_EQ(LoadText(pDocument, L""), S_FALSE);
    EXPECT_EQ(LoadText(pDocument, L"  "), S_FALSE);
}

TEST_P(Loading, ADeclarationInATextSaysNothingAboutItsEncoding) {
    const DocumentPtr pDocument = New();
    for (const wchar_t* encoding : {L"UTF-8", L"utf-16", L"iso-8859-1"}) {
        const std::wstring text =
            L"<?xml version=\"1.0\" encoding=\"" + std::wstring(encoding) + L"\"?><a>\x20ac</a>";
        EXPECT_EQ(LoadText(pDocument, text), S_OK) << encoding;
        EXPECT_EQ(TextOf(RootOf(pDocument).Get()), L"\x20ac");
    }
}

TEST_P(Loading, SpaceBeforeTheDeclarationIsRefused) {
    EXPECT_EQ(LoadText(New(), L" <?xml version=\"1.0\"?><a/>"), S_FALSE);
}

TEST_P(Loading, AValueThatIsNoSourceIsInvalid) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: such a value is S_FALSE";
    const DocumentPtr pDocument = New();
    VARIANT value;
    VariantInit(&value);
    EXPECT_EQ(LoadValue(pDocument, value), E_INVALIDARG);
    value.vt = VT_NULL;
    EXPECT_EQ(LoadValue(pDocument, value), E_INVALIDARG);
}

TEST_P(Loading, WhiteSpaceBetweenElementsIsDropped) {
    const DocumentPtr pDocument = From(L"<a>\n  <b/>\n  <c> x </c>\n</a>");
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a><b/><c> x </c></a>");
}

TEST_P(Loading, WhiteSpaceIsKeptWhereItIsPreserved) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: the xml property changes line breaks";
    const DocumentPtr pDocument = New();
    ASSERT_EQ(pDocument->put_preserveWhiteSpace(VARIANT_TRUE), S_OK);
    ASSERT_EQ(LoadText(pDocument, L"<a>\n <b/>\n</a>"), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a>\n <b/>\n</a>");
}

TEST_P(Loading, DeeperThanTheLimitFails) {
    std::wstring text;
    for (int i = 0; i < 256; ++i) text += L"<a>";
    for (int i = 0; i < 256; ++i) text += L"</a>";
    const DocumentPtr pDocument = New();
    EXPECT_EQ(LoadText(pDocument, text), S_OK);
    if (OnWine()) GTEST_SKIP() << "Wine 8: the limit is the XML library's own, with E_FAIL as its code";
    EXPECT_EQ(LoadText(pDocument, L"<a>" + text + L"</a>"), S_FALSE);
    EXPECT_EQ(ErrorCode(pDocument), Hresult(XmlElementDepth));
}

TEST_P(Loading, ADoctypeIsRefused) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: DTDs are accepted";
    const DocumentPtr pDocument = New();
    EXPECT_EQ(LoadText(pDocument, L"<!DOCTYPE a><a/>"), S_FALSE);
    EXPECT_EQ(ErrorCode(pDocument), static_cast<HRESULT>(0xC00CE584));
    EXPECT_EQ(LoadText(pDocument, L"<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>"), S_FALSE);
    EXPECT_EQ(ErrorCode(pDocument), static_cast<HRESULT>(0xC00CE584));
}

TEST_P(Loading, ReadyStateIsComplete) {
    const DocumentPtr pDocument = From(L"<a/>");
    long state = 0;
    ASSERT_EQ(pDocument->get_readyState(&state), S_OK);
    EXPECT_EQ(state, 4);
    EXPECT_EQ(pDocument->get_readyState(nullptr), E_INVALIDARG);
}

using KitLoading = KitDom;

TEST_F(KitLoading, AFailingReadGivesItsCodeWhicheverItIs) {
    for (int failing = 1;; ++failing) {
        ASSERT_LE(failing, 8);
        const DocumentPtr pDocument = From(L"<old/>");
        ScriptedIStream stream("<a>text</a>");
        stream.step = 2;
        stream.failingCall = failing;
        const HRESULT result = LoadObject(pDocument, &stream);
        if (stream.calls < failing) {
            EXPECT_EQ(result, S_OK);
            EXPECT_EQ(failing, 8);
            return;
        }
        EXPECT_EQ(result, STG_E_READFAULT);
        EXPECT_EQ(ErrorCode(pDocument), STG_E_READFAULT);
        EXPECT_FALSE(RootOf(pDocument));
        EXPECT_EQ(stream.calls, failing);
    }
}

TEST_F(KitLoading, ADocumentLoadsItself) {
    const DocumentPtr pDocument = From(L"<a><b/></a>");
    EXPECT_EQ(LoadObject(pDocument, pDocument.Get()), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a><b/></a>");
}

TEST_F(KitLoading, ADocumentOfTheSystem) {
    const DocumentPtr pSource = Parsed(Maker::System, L"<a b=\"1\"/>");
    const DocumentPtr pDocument = New();
    EXPECT_EQ(LoadObject(pDocument, pSource.Get()), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a b=\"1\"/>");
}

TEST_F(KitLoading, AnEmptyDocumentIsNoSource) {
    const DocumentPtr pDocument = From(L"<a/>");
    EXPECT_EQ(LoadObject(pDocument, New().Get()), S_FALSE);
    EXPECT_EQ(ErrorCode(pDocument), Hresult(XmlMissingRoot));
    EXPECT_FALSE(RootOf(pDocument));
}

TEST_F(KitLoading, AnObjectOfAnotherKindIsInvalid) {
    const DocumentPtr pDocument = New();
    EXPECT_EQ(LoadObject(pDocument, ChildrenOf(pDocument.Get()).Get()), E_INVALIDARG);
    EXPECT_EQ(LoadObject(pDocument, nullptr), E_INVALIDARG);
}

TEST_F(KitLoading, ReferencesAreFollowed) {
    const ComPtr<IStream> pStream = StreamOf("<a/>");
    const DocumentPtr pDocument = New();
    const Variant direct(pStream.Get());
    VARIANT copy = direct.Get();
    VARIANT reference;
    VariantInit(&reference);
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = &copy;
    EXPECT_EQ(LoadValue(pDocument, reference), S_OK);
    EXPECT_EQ(NameOf(RootOf(pDocument).Get()), L"a");
}

TEST_F(KitLoading, NothingIsFetchedFromElsewhere) {
    const DocumentPtr pDocument = New();
    for (const wchar_t* path :
         {L"http://localhost/a.xml", L"file:///C:/a.xml", L"\\\\server\\share\\a.xml", L"//server/a.xml"}) {
        EXPECT_EQ(LoadValue(pDocument, Variant(std::wstring_view(path)).Get()), S_FALSE) << path;
        EXPECT_EQ(ErrorCode(pDocument), static_cast<HRESULT>(0x800C000D)) << path;
    }
}

TEST_F(KitLoading, AFileLeavesItsPath) {
    const TemporaryFile good("<a/>");
    const TemporaryFile bad("<a>");
    const DocumentPtr pDocument = New();
    ASSERT_EQ(LoadValue(pDocument, Variant(good.Path()).Get()), S_OK);
    Bstr url;
    ASSERT_EQ(pDocument->get_url(url.Put()), S_OK);
    EXPECT_EQ(url.View(), good.Path());
    ASSERT_EQ(LoadValue(pDocument, Variant(bad.Path()).Get()), S_FALSE);
    ComPtr<IXMLDOMParseError> pError;
    ASSERT_EQ(pDocument->get_parseError(pError.Put()), S_OK);
    ASSERT_EQ(pError->get_url(url.Put()), S_OK);
    EXPECT_EQ(url.View(), bad.Path());
    ASSERT_EQ(LoadText(pDocument, L"<a/>"), S_OK);
    EXPECT_EQ(pDocument->get_url(url.Put()), S_FALSE);
}

TEST_F(KitLoading, APreservedSpaceIsKept) {
    const DocumentPtr pDocument =
        From(L"<a> <b xml:space=\"preserve\"> <c> </c><d xml:space=\"default\"> </d></b> </a>");
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()),
              L"<a><b xml:space=\"preserve\"> <c> </c><d xml:space=\"default\"/></b></a>");
}

TEST_F(KitLoading, ADoctypeThatIsAllowedIsSkipped) {
    const DocumentPtr pDocument = New();
    VARIANT no;
    VariantInit(&no);
    no.vt = VT_BOOL;
    no.boolVal = VARIANT_FALSE;
    ASSERT_EQ(pDocument->setProperty(Bstr(L"ProhibitDTD").Get(), no), S_OK);
    ASSERT_EQ(LoadText(pDocument, L"<!DOCTYPE a [<!ENTITY e 'x'><!ATTLIST a b CDATA 'c'>]><a/>"), S_OK);
    EXPECT_EQ(XmlOf(pDocument.Get()), L"<a/>\r\n");
    ComPtr<IXMLDOMDocumentType> pType;
    EXPECT_EQ(pDocument->get_doctype(pType.Put()), S_FALSE);
    for (const wchar_t* text :
         {L"<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>", L"<!DOCTYPE a [<!ENTITY e 'x'>]><a b='&e;'/>",
          L"<!DOCTYPE a SYSTEM 'file:///none.dtd'><a>&e;</a>",
          L"<!DOCTYPE a SYSTEM 'file:///none.dtd'><a b='&e;'/>",
          L"<!DOCTYPE a [<!ENTITY % p SYSTEM 'file:///none.ent'>%p;]><a>&e;</a>"}) {
        EXPECT_EQ(LoadText(pDocument, text), S_FALSE) << text;
        EXPECT_EQ(ErrorCode(pDocument), Hresult(XmlEntityUndefined)) << text;
    }
}

TEST_F(KitLoading, ADoctypeHasItsOwnCodeForTheNewParser) {
    const DocumentPtr pDocument = New();
    ASSERT_EQ(pDocument->setProperty(Bstr(L"NewParser").Get(), Variant(LONG{1}).Get()), S_OK);
    EXPECT_EQ(LoadText(pDocument, L"<!DOCTYPE a><a/>"), S_FALSE);
    EXPECT_EQ(ErrorCode(pDocument), static_cast<HRESULT>(0xC00CEE4E));
}

TEST_F(KitLoading, AbortAndAsyncDoNothing) {
    const DocumentPtr pDocument = New();
    ASSERT_EQ(pDocument->put_async(VARIANT_TRUE), S_OK);
    ASSERT_EQ(LoadText(pDocument, L"<a/>"), S_OK);
    EXPECT_EQ(pDocument->abort(), S_OK);
    EXPECT_EQ(NameOf(RootOf(pDocument).Get()), L"a");
}

}  // namespace
}  // namespace devkit::msxml::tests
