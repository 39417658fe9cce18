#include "devkit/msxml/documentpersistence.h"

#include "devkit/msxml/domundertest.h"
#include "devkit/msxml/errorcodes.h"
#include "devkit/msxml/scriptedstream.h"

namespace devkit::msxml::tests {
namespace {

ComPtr<IPersistStreamInit> PersistenceOf(const DocumentPtr& pDocument) {
    ComPtr<IPersistStreamInit> pPersistence;
    EXPECT_EQ(pDocument.QueryTo(pPersistence), S_OK);
    return pPersistence;
}

class Persistence : public Conformance {};
RUN_FOR_BOTH_MAKERS(Persistence);

TEST_P(Persistence, LoadsAndSaves) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: Save writes UTF-16";
    const DocumentPtr pDocument = New();
    ASSERT_EQ(PersistenceOf(pDocument)->Load(StreamOf("<a><b/></a>").Get()), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a><b/></a>");
    const ComPtr<IStream> pStream = StreamOf({});
    ASSERT_EQ(PersistenceOf(pDocument)->Save(pStream.Get(), TRUE), S_OK);
    EXPECT_EQ(BytesOf(pStream.Get()).substr(0, 11), "<a><b/></a>");
}

TEST_P(Persistence, IsOneObjectForBothInterfaces) {
    const DocumentPtr pDocument = New();
    ComPtr<IPersistStream> pStream;
    ASSERT_EQ(pDocument.QueryTo(pStream), S_OK);
    EXPECT_EQ(static_cast<void*>(pStream.Get()), static_cast<void*>(PersistenceOf(pDocument).Get()));
}

TEST_P(Persistence, LeadsBackToTheDocument) {
    const DocumentPtr pDocument = New();
    ComPtr<IUnknown> pFromPersistence;
    ComPtr<IUnknown> pFromDocument;
    ASSERT_EQ(PersistenceOf(pDocument).QueryTo(pFromPersistence), S_OK);
    ASSERT_EQ(pDocument.QueryTo(pFromDocument), S_OK);
    EXPECT_EQ(pFromPersistence.Get(), pFromDocument.Get());
}

using KitPersistence = KitDom;

TEST_F(KitPersistence, NamesTheClass) {
    CLSID id = {};
    const DocumentPtr pDocument = New();
    ASSERT_EQ(PersistenceOf(pDocument)->GetClassID(&id), S_OK);
    EXPECT_TRUE(id == platform::CLSID_DomDocument60);
    EXPECT_EQ(PersistenceOf(pDocument)->GetClassID(nullptr), E_POINTER);
}

TEST_F(KitPersistence, IsDirtyOnceChanged) {
    const DocumentPtr pDocument = New();
    const ComPtr<IPersistStreamInit> pPersistence = PersistenceOf(pDocument);
    EXPECT_EQ(pPersistence->IsDirty(), S_FALSE);
    ASSERT_EQ(pPersistence->Load(StreamOf("<a/>").Get()), S_OK);
    EXPECT_EQ(pPersistence->IsDirty(), S_FALSE);
    ASSERT_EQ(RootOf(pDocument)->put_text(Bstr(L"x").Get()), S_OK);
    EXPECT_EQ(pPersistence->IsDirty(), S_OK);
    const ComPtr<IStream> pStream = StreamOf({});
    ASSERT_EQ(pPersistence->Save(pStream.Get(), FALSE), S_OK);
    EXPECT_EQ(pPersistence->IsDirty(), S_OK);
    ASSERT_EQ(pPersistence->Save(pStream.Get(), TRUE), S_OK);
    EXPECT_EQ(pPersistence->IsDirty(), S_FALSE);
}

TEST_F(KitPersistence, TellsWhyALoadFails) {
    const DocumentPtr pDocument = New();
    EXPECT_EQ(PersistenceOf(pDocument)->Load(StreamOf("<a>").Get()), Hresult(XmlUnclosedTag));
    EXPECT_EQ(ErrorCode(pDocument), Hresult(XmlUnclosedTag));
    ScriptedIStream failing("<a/>");
    failing.failingCall = 1;
    EXPECT_EQ(PersistenceOf(pDocument)->Load(&failing), STG_E_READFAULT);
    EXPECT_EQ(PersistenceOf(pDocument)->Load(nullptr), E_INVALIDARG);
}

TEST_F(KitPersistence, TellsWhyASaveFails) {
    const DocumentPtr pDocument = From(L"<a/>");
    ScriptedIStream failing;
    failing.failingCall = 1;
    failing.failure = STG_E_WRITEFAULT;
    EXPECT_EQ(PersistenceOf(pDocument)->Save(&failing, TRUE), STG_E_WRITEFAULT);
    EXPECT_EQ(PersistenceOf(pDocument)->IsDirty(), S_OK);
    EXPECT_EQ(PersistenceOf(pDocument)->Save(nullptr, TRUE), E_INVALIDARG);
}

TEST_F(KitPersistence, StartsAnew) {
    const DocumentPtr pDocument = From(L"<a/>");
    ASSERT_EQ(PersistenceOf(pDocument)->InitNew(), S_OK);
    EXPECT_FALSE(RootOf(pDocument));
    EXPECT_EQ(PersistenceOf(pDocument)->IsDirty(), S_FALSE);
}

TEST_F(KitPersistence, DoesNotTellItsSize) {
    ULARGE_INTEGER size;
    size.QuadPart = 1;
    const DocumentPtr pDocument = New();
    EXPECT_EQ(PersistenceOf(pDocument)->GetSizeMax(&size), E_NOTIMPL);
    EXPECT_EQ(size.QuadPart, 0U);
}

}  // namespace
}  // namespace devkit::msxml::tests
