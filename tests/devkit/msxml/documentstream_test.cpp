#include "devkit/msxml/documentstream.h"

#include "devkit/msxml/domdocument.h"
#include "devkit/msxml/domundertest.h"
#include "devkit/msxml/errorcodes.h"

namespace devkit::msxml::tests {
namespace {

ComPtr<IStream> StreamFrom(const DocumentPtr& pDocument) {
    ComPtr<IStream> pStream;
    EXPECT_EQ(pDocument.QueryTo(pStream), S_OK);
    return pStream;
}

void Write(const ComPtr<IStream>& pStream, std::string_view bytes) {
    ULONG written = 0;
    ASSERT_EQ(pStream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written), S_OK);
    EXPECT_EQ(written, bytes.size());
}

void Rewind(const ComPtr<IStream>& pStream) {
    ASSERT_EQ(pStream->Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr), S_OK);
}

class StreamOfADocument : public Conformance {};
RUN_FOR_BOTH_MAKERS(StreamOfADocument);

TEST_P(StreamOfADocument, LoadsIntoAnotherDocument) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: the document has no IStream";
    const DocumentPtr pSource = From(L"<a b=\"1\"><c>\x20ac</c></a>");
    const DocumentPtr pCopy = New();
    EXPECT_EQ(LoadObject(pCopy, StreamFrom(pSource).Get()), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pCopy).Get()), L"<a b=\"1\"><c>\x20ac</c></a>");
}

TEST_P(StreamOfADocument, FillsTheDocumentWhenItIsReleased) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: the document has no IStream";
    const DocumentPtr pDocument = New();
    Write(StreamFrom(pDocument), "<a><b/></a>");
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a><b/></a>");
}

using KitStream = KitDom;

TEST_F(KitStream, ReadsTheDocumentAsItIsSaved) {
    const DocumentPtr pDocument = From(L"<?xml version=\"1.0\" encoding=\"utf-16\"?><a/>");
    EXPECT_EQ(BytesOf(StreamFrom(pDocument).Get()), Saved(pDocument));
}

TEST_F(KitStream, ReadsFromItsStartWithEachQuery) {
    const DocumentPtr pDocument = From(L"<a/>");
    const ComPtr<IStream> pFirst = StreamFrom(pDocument);
    char bytes[3] = {};
    ULONG count = 0;
    ASSERT_EQ(pFirst->Read(bytes, 3, &count), S_OK);
    const ComPtr<IStream> pSecond = StreamFrom(pDocument);
    EXPECT_NE(pFirst.Get(), pSecond.Get());
    ASSERT_EQ(pSecond->Read(bytes, 3, &count), S_OK);
    EXPECT_EQ(std::string_view(bytes, count), "<a/");
    ASSERT_EQ(pFirst->Read(bytes, 3, &count), S_OK);
    EXPECT_EQ(std::string_view(bytes, count), ">\r\n");
}

TEST_F(KitStream, ReadsByPieces) {
    const ComPtr<IStream> pStream = StreamFrom(From(L"<a/>"));
    std::string bytes;
    char byte = 0;
    ULONG count = 0;
    while (SUCCEEDED(pStream->Read(&byte, 1, &count)) && count == 1) bytes += byte;
    EXPECT_EQ(bytes, "<a/>\r\n");
    EXPECT_EQ(pStream->Read(&byte, 1, nullptr), S_OK);
}

TEST_F(KitStream, ShowsTheDocumentOfItsFirstUse) {
    const DocumentPtr pDocument = From(L"<a/>");
    const ComPtr<IStream> pStream = StreamFrom(pDocument);
    ASSERT_EQ(LoadText(pDocument, L"<b/>"), S_OK);
    EXPECT_EQ(BytesOf(pStream.Get()), "<b/>\r\n");
    ASSERT_EQ(LoadText(pDocument, L"<c/>"), S_OK);
    EXPECT_EQ(BytesOf(pStream.Get()), "<b/>\r\n");
}

TEST_F(KitStream, SeeksAndKnowsItsSize) {
    const ComPtr<IStream> pStream = StreamFrom(From(L"<a/>"));
    STATSTG stat = {};
    ASSERT_EQ(pStream->Stat(&stat, STATFLAG_NONAME), S_OK);
    EXPECT_EQ(stat.cbSize.QuadPart, 6U);
    EXPECT_EQ(stat.type, static_cast<DWORD>(STGTY_STREAM));
    EXPECT_EQ(stat.pwcsName, nullptr);
    LARGE_INTEGER move;
    move.QuadPart = -2;
    ULARGE_INTEGER position = {};
    ASSERT_EQ(pStream->Seek(move, STREAM_SEEK_END, &position), S_OK);
    EXPECT_EQ(position.QuadPart, 4U);
    char bytes[8] = {};
    ULONG count = 0;
    ASSERT_EQ(pStream->Read(bytes, 8, &count), S_OK);
    EXPECT_EQ(std::string_view(bytes, count), "\r\n");
    EXPECT_TRUE(FAILED(pStream->Seek(move, STREAM_SEEK_SET, nullptr)));
    EXPECT_EQ(pStream->Stat(nullptr, 0), STG_E_INVALIDPOINTER);
}

TEST_F(KitStream, CopiesAndClones) {
    const DocumentPtr pDocument = From(L"<a/>");
    const ComPtr<IStream> pStream = StreamFrom(pDocument);
    const ComPtr<IStream> pTarget = StreamOf({});
    ULARGE_INTEGER all;
    all.QuadPart = 100;
    ULARGE_INTEGER count = {};
    ASSERT_EQ(pStream->CopyTo(pTarget.Get(), all, nullptr, &count), S_OK);
    EXPECT_EQ(count.QuadPart, 6U);
    EXPECT_EQ(BytesOf(pTarget.Get()), "<a/>\r\n");
    EXPECT_EQ(pStream->CopyTo(nullptr, all, nullptr, nullptr), STG_E_INVALIDPOINTER);
    ComPtr<IStream> pClone;
    ASSERT_EQ(pStream->Clone(pClone.Put()), S_OK);
    EXPECT_EQ(BytesOf(pClone.Get()), "<a/>\r\n");
    EXPECT_EQ(pStream->Clone(nullptr), STG_E_INVALIDPOINTER);
}

TEST_F(KitStream, ADocumentThatCannotBeSavedCannotBeRead) {
    const DocumentPtr pDocument = From(L"<?xml version=\"1.0\" encoding=\"x-unknown\"?><a/>");
    const ComPtr<IStream> pStream = StreamFrom(pDocument);
    char byte = 0;
    ULONG count = 1;
    EXPECT_EQ(pStream->Read(&byte, 1, &count), Hresult(XmlInvalidEncoding));
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(pStream->Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr), Hresult(XmlInvalidEncoding));
}

TEST_F(KitStream, FillsTheDocumentAtCommit) {
    const DocumentPtr pDocument = From(L"<old/>");
    const ComPtr<IStream> pStream = StreamFrom(pDocument);
    Write(pStream, "<a>");
    Write(pStream, "</a>");
    EXPECT_EQ(NameOf(RootOf(pDocument).Get()), L"old");
    ASSERT_EQ(pStream->Commit(STGC_DEFAULT), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a/>");
}

TEST_F(KitStream, ACommittedTextIsNotLoadedAgainAtTheEnd) {
    const DocumentPtr pDocument = New();
    ComPtr<IStream> pStream = StreamFrom(pDocument);
    Write(pStream, "<a/>");
    ASSERT_EQ(pStream->Commit(STGC_DEFAULT), S_OK);
    const NodePtr pRoot(RootOf(pDocument).Get());
    ASSERT_EQ(pStream->Commit(STGC_DEFAULT), S_OK);
    pStream.Reset();
    EXPECT_EQ(RootOf(pDocument).Get(), static_cast<IXMLDOMElement*>(pRoot.Get()));
}

TEST_F(KitStream, WritingMoreAfterACommitLoadsTheWholeAgain) {
    const DocumentPtr pDocument = New();
    ComPtr<IStream> pStream = StreamFrom(pDocument);
    Write(pStream, "<a/>");
    ASSERT_EQ(pStream->Commit(STGC_DEFAULT), S_OK);
    Write(pStream, "<!--c-->");
    pStream.Reset();
    EXPECT_EQ(XmlOf(pDocument.Get()), L"<a/>\r\n<!--c-->\r\n");
}

TEST_F(KitStream, ARewoundStreamFillsTheDocumentAllTheSame) {
    const DocumentPtr pDocument = New();
    ComPtr<IStream> pStream = StreamFrom(pDocument);
    Write(pStream, "<a><b/></a>");
    Rewind(pStream);
    pStream.Reset();
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a><b/></a>");
}

TEST_F(KitStream, WhatWasWrittenCanBeReadBack) {
    const DocumentPtr pDocument = From(L"<old/>");
    const ComPtr<IStream> pStream = StreamFrom(pDocument);
    Write(pStream, "<a/>");
    EXPECT_EQ(BytesOf(pStream.Get()), "<a/>");
}

TEST_F(KitStream, AWriterMayOverwriteItsOwnText) {
    const DocumentPtr pDocument = New();
    ComPtr<IStream> pStream = StreamFrom(pDocument);
    Write(pStream, "<a/>");
    Rewind(pStream);
    Write(pStream, "<b");
    pStream.Reset();
    EXPECT_EQ(NameOf(RootOf(pDocument).Get()), L"b");
}

TEST_F(KitStream, TheFirstWriteDropsTheOldTextWhereverTheStreamStands) {
    const DocumentPtr pDocument = From(L"<old/>");
    ComPtr<IStream> pStream = StreamFrom(pDocument);
    ASSERT_EQ(pStream->Seek(LARGE_INTEGER{}, STREAM_SEEK_END, nullptr), S_OK);
    Write(pStream, "<a/>");
    pStream.Reset();
    EXPECT_EQ(XmlOf(pDocument.Get()), L"<a/>\r\n");
}

TEST_F(KitStream, AWriterMayCutTheStreamFirst) {
    const DocumentPtr pDocument = From(L"<old/>");
    ComPtr<IStream> pStream = StreamFrom(pDocument);
    ASSERT_EQ(pStream->SetSize(ULARGE_INTEGER{}), S_OK);
    pStream.Reset();
    EXPECT_EQ(NameOf(RootOf(pDocument).Get()), L"old");
    pStream = StreamFrom(pDocument);
    ASSERT_EQ(pStream->SetSize(ULARGE_INTEGER{}), S_OK);
    Write(pStream, "<a/>");
    pStream.Reset();
    EXPECT_EQ(NameOf(RootOf(pDocument).Get()), L"a");
}

TEST_F(KitStream, ATextThatIsNotWellFormedEmptiesTheDocument) {
    const DocumentPtr pDocument = From(L"<old/>");
    ComPtr<IStream> pStream = StreamFrom(pDocument);
    Write(pStream, "<a>");
    EXPECT_EQ(pStream->Commit(STGC_DEFAULT), Hresult(XmlUnclosedTag));
    EXPECT_EQ(ErrorCode(pDocument), Hresult(XmlUnclosedTag));
    EXPECT_FALSE(RootOf(pDocument));
    Write(pStream, "</a><b/>");
    pStream.Reset();
    EXPECT_EQ(ErrorCode(pDocument), Hresult(XmlMultipleRoots));
}

TEST_F(KitStream, UnusedStreamsChangeNothing) {
    const DocumentPtr pDocument = From(L"<a/>");
    StreamFrom(pDocument).Reset();
    ComPtr<IStream> pStream = StreamFrom(pDocument);
    EXPECT_EQ(pStream->Commit(STGC_DEFAULT), S_OK);
    static_cast<void>(BytesOf(pStream.Get()));
    pStream.Reset();
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a/>");
}

TEST_F(KitStream, LeadsBackToTheDocument) {
    const DocumentPtr pDocument = New();
    const ComPtr<IStream> pStream = StreamFrom(pDocument);
    ComPtr<IUnknown> pFromStream;
    ComPtr<IUnknown> pFromDocument;
    ASSERT_EQ(pStream.QueryTo(pFromStream), S_OK);
    ASSERT_EQ(pDocument.QueryTo(pFromDocument), S_OK);
    EXPECT_EQ(pFromStream.Get(), pFromDocument.Get());
    ComPtr<IStream> pSame;
    ASSERT_EQ(pStream.QueryTo(pSame), S_OK);
    EXPECT_EQ(pSame.Get(), pStream.Get());
    ComPtr<ISequentialStream> pSequence;
    EXPECT_EQ(pStream.QueryTo(pSequence), E_NOINTERFACE);
    EXPECT_EQ(pStream->QueryInterface(__uuidof(IStream), nullptr), E_POINTER);
}

TEST_F(KitStream, KeepsTheDocument) {
    ComPtr<IStream> pStream = StreamFrom(From(L"<a/>"));
    EXPECT_EQ(BytesOf(pStream.Get()), "<a/>\r\n");
    pStream.Reset();
    EXPECT_EQ(LiveObjectCount(), 0);
}

TEST_F(KitStream, SavingIntoAStreamOfAnotherDocumentFillsIt) {
    const DocumentPtr pTarget = New();
    ComPtr<IStream> pStream = StreamFrom(pTarget);
    ASSERT_EQ(From(L"<a/>")->save(Variant(pStream.Get()).Get()), S_OK);
    EXPECT_FALSE(RootOf(pTarget));
    pStream.Reset();
    EXPECT_EQ(NameOf(RootOf(pTarget).Get()), L"a");
}

TEST_F(KitStream, WhatIsNotOfferedSaysSo) {
    const ComPtr<IStream> pStream = StreamFrom(New());
    EXPECT_EQ(pStream->Revert(), E_NOTIMPL);
    EXPECT_EQ(pStream->LockRegion({}, {}, LOCK_WRITE), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(pStream->UnlockRegion({}, {}, LOCK_WRITE), STG_E_INVALIDFUNCTION);
}

}  // namespace
}  // namespace devkit::msxml::tests
