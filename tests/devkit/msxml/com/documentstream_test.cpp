#include "devkit/msxml/com/documentstream.h"

#include "devkit/msxml/com/answer.h"
#include "devkit/msxml/com/domdocument.h"
#include "devkit/msxml/domundertest.h"
#include "devkit/msxml/tree/xmlerror.h"

namespace devkit::msxml::tests {
namespace {

ComPtr<IStream> StreamFrom(const DocumentPtr& pDocument) {
    ComPtr<IStream> pStream;
    EXPECT_EQ(S_OK, pDocument.QueryTo(pStream));
    return pStream;
}

void Write(const ComPtr<IStream>& pStream, std::string_view bytes) {
    ULONG written = 0;
    ASSERT_EQ(S_OK, pStream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written));
    EXPECT_EQ(written, bytes.size());
}

void Rewind(const ComPtr<IStream>& pStream) {
    ASSERT_EQ(S_OK, pStream->Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr));
}

class StreamOfADocument : public Conformance {};
RUN_FOR_BOTH_MAKERS(StreamOfADocument);

TEST_P(StreamOfADocument, LoadsIntoAnotherDocument) {
    if (HasGaps()) GTEST_SKIP() << "known gap: the document has no IStream";
    const DocumentPtr pSource = From(L"<a b=\"1\"><c>\x20ac</c></a>");
    const DocumentPtr pCopy = New();
    EXPECT_EQ(S_OK, LoadObject(pCopy, StreamFrom(pSource).Get()));
    EXPECT_EQ(L"<a b=\"1\"><c>\x20ac</c></a>", XmlOf(RootOf(pCopy).Get()));
}

TEST_P(StreamOfADocument, FillsTheDocumentWhenItIsReleased) {
    if (HasGaps()) GTEST_SKIP() << "known gap: the document has no IStream";
    const DocumentPtr pDocument = New();
    Write(StreamFrom(pDocument), "<a><b/></a>");
    EXPECT_EQ(L"<a><b/></a>", XmlOf(RootOf(pDocument).Get()));
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
    ASSERT_EQ(S_OK, pFirst->Read(bytes, 3, &count));
    const ComPtr<IStream> pSecond = StreamFrom(pDocument);
    EXPECT_NE(pFirst.Get(), pSecond.Get());
    ASSERT_EQ(S_OK, pSecond->Read(bytes, 3, &count));
    EXPECT_EQ("<a/", std::string_view(bytes, count));
    ASSERT_EQ(S_OK, pFirst->Read(bytes, 3, &count));
    EXPECT_EQ(">\r\n", std::string_view(bytes, count));
}

TEST_F(KitStream, ReadsByPieces) {
    const ComPtr<IStream> pStream = StreamFrom(From(L"<a/>"));
    std::string bytes;
    char byte = 0;
    ULONG count = 0;
    while (SUCCEEDED(pStream->Read(&byte, 1, &count)) && count == 1) bytes += byte;
    EXPECT_EQ("<a/>\r\n", bytes);
    EXPECT_EQ(S_OK, pStream->Read(&byte, 1, nullptr));
}

TEST_F(KitStream, ShowsTheDocumentOfItsFirstUse) {
    const DocumentPtr pDocument = From(L"<a/>");
    const ComPtr<IStream> pStream = StreamFrom(pDocument);
    ASSERT_EQ(S_OK, LoadText(pDocument, L"<b/>"));
    EXPECT_EQ("<b/>\r\n", BytesOf(pStream.Get()));
    ASSERT_EQ(S_OK, LoadText(pDocument, L"<c/>"));
    EXPECT_EQ("<b/>\r\n", BytesOf(pStream.Get()));
}

TEST_F(KitStream, SeeksAndKnowsItsSize) {
    const ComPtr<IStream> pStream = StreamFrom(From(L"<a/>"));
    STATSTG stat = {};
    ASSERT_EQ(S_OK, pStream->Stat(&stat, STATFLAG_NONAME));
    EXPECT_EQ(6U, stat.cbSize.QuadPart);
    EXPECT_EQ(static_cast<DWORD>(STGTY_STREAM), stat.type);
    EXPECT_EQ(nullptr, stat.pwcsName);
    LARGE_INTEGER move;
    move.QuadPart = -2;
    ULARGE_INTEGER position = {};
    ASSERT_EQ(S_OK, pStream->Seek(move, STREAM_SEEK_END, &position));
    EXPECT_EQ(4U, position.QuadPart);
    char bytes[8] = {};
    ULONG count = 0;
    ASSERT_EQ(S_OK, pStream->Read(bytes, 8, &count));
    EXPECT_EQ("\r\n", std::string_view(bytes, count));
    EXPECT_TRUE(FAILED(pStream->Seek(move, STREAM_SEEK_SET, nullptr)));
    EXPECT_EQ(STG_E_INVALIDPOINTER, pStream->Stat(nullptr, 0));
}

TEST_F(KitStream, CopiesAndClones) {
    const DocumentPtr pDocument = From(L"<a/>");
    const ComPtr<IStream> pStream = StreamFrom(pDocument);
    const ComPtr<IStream> pTarget = StreamOf({});
    ULARGE_INTEGER all;
    all.QuadPart = 100;
    ULARGE_INTEGER count = {};
    ASSERT_EQ(S_OK, pStream->CopyTo(pTarget.Get(), all, nullptr, &count));
    EXPECT_EQ(6U, count.QuadPart);
    EXPECT_EQ("<a/>\r\n", BytesOf(pTarget.Get()));
    EXPECT_EQ(STG_E_INVALIDPOINTER, pStream->CopyTo(nullptr, all, nullptr, nullptr));
    ComPtr<IStream> pClone;
    ASSERT_EQ(S_OK, pStream->Clone(pClone.Put()));
    EXPECT_EQ("<a/>\r\n", BytesOf(pClone.Get()));
    EXPECT_EQ(STG_E_INVALIDPOINTER, pStream->Clone(nullptr));
}

TEST_F(KitStream, ADocumentThatCannotBeSavedCannotBeRead) {
    const DocumentPtr pDocument = From(L"<?xml version=\"1.0\" encoding=\"x-unknown\"?><a/>");
    const ComPtr<IStream> pStream = StreamFrom(pDocument);
    char byte = 0;
    ULONG count = 1;
    EXPECT_EQ(Hresult(XmlInvalidEncoding), pStream->Read(&byte, 1, &count));
    EXPECT_EQ(0U, count);
    EXPECT_EQ(Hresult(XmlInvalidEncoding), pStream->Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr));
}

TEST_F(KitStream, FillsTheDocumentAtCommit) {
    const DocumentPtr pDocument = From(L"<old/>");
    const ComPtr<IStream> pStream = StreamFrom(pDocument);
    Write(pStream, "<a>");
    Write(pStream, "</a>");
    EXPECT_EQ(L"old", NameOf(RootOf(pDocument).Get()));
    ASSERT_EQ(S_OK, pStream->Commit(STGC_DEFAULT));
    EXPECT_EQ(L"<a/>", XmlOf(RootOf(pDocument).Get()));
}

TEST_F(KitStream, ACommittedTextIsNotLoadedAgainAtTheEnd) {
    const DocumentPtr pDocument = New();
    ComPtr<IStream> pStream = StreamFrom(pDocument);
    Write(pStream, "<a/>");
    ASSERT_EQ(S_OK, pStream->Commit(STGC_DEFAULT));
    const NodePtr pRoot(RootOf(pDocument).Get());
    ASSERT_EQ(S_OK, pStream->Commit(STGC_DEFAULT));
    pStream.Reset();
    EXPECT_EQ(RootOf(pDocument).Get(), static_cast<IXMLDOMElement*>(pRoot.Get()));
}

TEST_F(KitStream, WritingMoreAfterACommitLoadsTheWholeAgain) {
    const DocumentPtr pDocument = New();
    ComPtr<IStream> pStream = StreamFrom(pDocument);
    Write(pStream, "<a/>");
    ASSERT_EQ(S_OK, pStream->Commit(STGC_DEFAULT));
    Write(pStream, "<!--c-->");
    pStream.Reset();
    EXPECT_EQ(L"<a/>\r\n<!--c-->\r\n", XmlOf(pDocument.Get()));
}

TEST_F(KitStream, ARewoundStreamFillsTheDocumentAllTheSame) {
    const DocumentPtr pDocument = New();
    ComPtr<IStream> pStream = StreamFrom(pDocument);
    Write(pStream, "<a><b/></a>");
    Rewind(pStream);
    pStream.Reset();
    EXPECT_EQ(L"<a><b/></a>", XmlOf(RootOf(pDocument).Get()));
}

TEST_F(KitStream, WhatWasWrittenCanBeReadBack) {
    const DocumentPtr pDocument = From(L"<old/>");
    const ComPtr<IStream> pStream = StreamFrom(pDocument);
    Write(pStream, "<a/>");
    EXPECT_EQ("<a/>", BytesOf(pStream.Get()));
}

TEST_F(KitStream, AWriterMayOverwriteItsOwnText) {
    const DocumentPtr pDocument = New();
    ComPtr<IStream> pStream = StreamFrom(pDocument);
    Write(pStream, "<a/>");
    Rewind(pStream);
    Write(pStream, "<b");
    pStream.Reset();
    EXPECT_EQ(L"b", NameOf(RootOf(pDocument).Get()));
}

TEST_F(KitStream, TheFirstWriteDropsTheOldTextWhereverTheStreamStands) {
    const DocumentPtr pDocument = From(L"<old/>");
    ComPtr<IStream> pStream = StreamFrom(pDocument);
    ASSERT_EQ(S_OK, pStream->Seek(LARGE_INTEGER{}, STREAM_SEEK_END, nullptr));
    Write(pStream, "<a/>");
    pStream.Reset();
    EXPECT_EQ(L"<a/>\r\n", XmlOf(pDocument.Get()));
}

TEST_F(KitStream, AWriterMayCutTheStreamFirst) {
    const DocumentPtr pDocument = From(L"<old/>");
    ComPtr<IStream> pStream = StreamFrom(pDocument);
    ASSERT_EQ(S_OK, pStream->SetSize(ULARGE_INTEGER{}));
    pStream.Reset();
    EXPECT_EQ(L"old", NameOf(RootOf(pDocument).Get()));
    pStream = StreamFrom(pDocument);
    ASSERT_EQ(S_OK, pStream->SetSize(ULARGE_INTEGER{}));
    Write(pStream, "<a/>");
    pStream.Reset();
    EXPECT_EQ(L"a", NameOf(RootOf(pDocument).Get()));
}

TEST_F(KitStream, ATextThatIsNotWellFormedEmptiesTheDocument) {
    const DocumentPtr pDocument = From(L"<old/>");
    ComPtr<IStream> pStream = StreamFrom(pDocument);
    Write(pStream, "<a>");
    EXPECT_EQ(Hresult(XmlUnclosedTag), pStream->Commit(STGC_DEFAULT));
    EXPECT_EQ(Hresult(XmlUnclosedTag), ErrorCode(pDocument));
    EXPECT_FALSE(RootOf(pDocument));
    Write(pStream, "</a><b/>");
    pStream.Reset();
    EXPECT_EQ(Hresult(XmlMultipleRoots), ErrorCode(pDocument));
}

TEST_F(KitStream, UnusedStreamsChangeNothing) {
    const DocumentPtr pDocument = From(L"<a/>");
    StreamFrom(pDocument).Reset();
    ComPtr<IStream> pStream = StreamFrom(pDocument);
    EXPECT_EQ(S_OK, pStream->Commit(STGC_DEFAULT));
    static_cast<void>(BytesOf(pStream.Get()));
    pStream.Reset();
    EXPECT_EQ(L"<a/>", XmlOf(RootOf(pDocument).Get()));
}

TEST_F(KitStream, LeadsBackToTheDocument) {
    const DocumentPtr pDocument = New();
    const ComPtr<IStream> pStream = StreamFrom(pDocument);
    ComPtr<IUnknown> pFromStream;
    ComPtr<IUnknown> pFromDocument;
    ASSERT_EQ(S_OK, pStream.QueryTo(pFromStream));
    ASSERT_EQ(S_OK, pDocument.QueryTo(pFromDocument));
    EXPECT_EQ(pFromStream.Get(), pFromDocument.Get());
    ComPtr<IStream> pSame;
    ASSERT_EQ(S_OK, pStream.QueryTo(pSame));
    EXPECT_EQ(pSame.Get(), pStream.Get());
    ComPtr<ISequentialStream> pSequence;
    EXPECT_EQ(E_NOINTERFACE, pStream.QueryTo(pSequence));
    EXPECT_EQ(E_POINTER, pStream->QueryInterface(__uuidof(IStream), nullptr));
}

TEST_F(KitStream, KeepsTheDocument) {
    ComPtr<IStream> pStream = StreamFrom(From(L"<a/>"));
    EXPECT_EQ("<a/>\r\n", BytesOf(pStream.Get()));
    pStream.Reset();
    EXPECT_EQ(0, LiveObjectCount());
}

TEST_F(KitStream, SavingIntoAStreamOfAnotherDocumentFillsIt) {
    const DocumentPtr pTarget = New();
    ComPtr<IStream> pStream = StreamFrom(pTarget);
    ASSERT_EQ(S_OK, From(L"<a/>")->save(Variant(pStream.Get()).Get()));
    EXPECT_FALSE(RootOf(pTarget));
    pStream.Reset();
    EXPECT_EQ(L"a", NameOf(RootOf(pTarget).Get()));
}

TEST_F(KitStream, WhatIsNotOfferedSaysSo) {
    const ComPtr<IStream> pStream = StreamFrom(New());
    EXPECT_EQ(E_NOTIMPL, pStream->Revert());
    EXPECT_EQ(STG_E_INVALIDFUNCTION, pStream->LockRegion({}, {}, LOCK_WRITE));
    EXPECT_EQ(STG_E_INVALIDFUNCTION, pStream->UnlockRegion({}, {}, LOCK_WRITE));
}

}  // namespace
}  // namespace devkit::msxml::tests
