#include "devkit/pipeline/documentconsumer.h"

#include "devkit/pipeline/pageobjects.h"
#include "devkit/pipeline/pipelinecontrol.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

class DocumentConsumerTest : public PartsTest {
  protected:
    // The one consumer of the test.
    DocumentConsumer& Consumer() {
        if (!m_consumer) m_consumer = MakeObject<DocumentConsumer>(Context());
        return *m_consumer.Get();
    }
    // Brings the consumer to where pages may be sent.
    DocumentConsumer& ReadyForPages() {
        EXPECT_EQ(Consumer().SendXpsDocument(XpsDocument().Get()), S_OK);
        EXPECT_EQ(Consumer().SendFixedDocumentSequence(Sequence().Get()), S_OK);
        EXPECT_EQ(Consumer().SendFixedDocument(FirstDocument().Get()), S_OK);
        return Consumer();
    }
    HRESULT NewEmptyPart(REFIID iid, const wchar_t* uri = L"/new") {
        ComPtr<IUnknown> part;
        ComPtr<IPrintWriteStream> stream;
        const HRESULT hr = Consumer().GetNewEmptyPart(uri, iid, part.PutVoid(), stream.Put());
        EXPECT_EQ(SUCCEEDED(hr), static_cast<bool>(part));
        EXPECT_EQ(SUCCEEDED(hr), static_cast<bool>(stream));
        if (stream) stream->Close();
        return hr;
    }
    void TearDown() override {
        m_consumer.Reset();
        PartsTest::TearDown();
    }

  private:
    ComPtr<DocumentConsumer> m_consumer;
};

TEST_F(DocumentConsumerTest, TakesPartsInOrderAndTheEnd) {
    ReadyForPages();
    EXPECT_EQ(Consumer().SendFixedPage(FirstPage().Get()), S_OK);
    EXPECT_EQ(Consumer().SendFixedPage(SecondPage().Get()), S_OK);
    EXPECT_FALSE(Consumer().IsClosed());
    EXPECT_EQ(Consumer().CloseSender(), S_OK);
    EXPECT_TRUE(Consumer().IsClosed());
    EXPECT_EQ(Consumer().Sent().size(), 5U);
    EXPECT_EQ(Breaches(), Lines{});
}

TEST_F(DocumentConsumerTest, ASecondXpsDocumentIsABreachThoughItIsAnotherObject) {
    EXPECT_EQ(Consumer().SendXpsDocument(XpsDocument().Get()), S_OK);
    EXPECT_EQ(Consumer().SendXpsDocument(XpsDocument().Get()), CallOutOfOrder);
    EXPECT_EQ(Breaches(), Lines{"a second XpsDocument was sent"});
}

TEST_F(DocumentConsumerTest, ASecondSequenceIsABreachThoughItIsAnotherObject) {
    ReadyForPages();
    EXPECT_EQ(Consumer().SendFixedDocumentSequence(Sequence().Get()), CallOutOfOrder);
    EXPECT_EQ(Breaches(), Lines{"a second FixedDocumentSequence was sent"});
}

TEST_F(DocumentConsumerTest, APartSentTwiceIsABreachThroughAnyOfItsObjects) {
    ReadyForPages();
    const auto page = FirstPage();
    EXPECT_EQ(Consumer().SendFixedPage(page.Get()), S_OK);
    EXPECT_EQ(Consumer().SendFixedPage(page.Get()), CallOutOfOrder);
    EXPECT_EQ(Breaches(), Lines{"FixedPage /1/1.fpage was sent twice"});
    EXPECT_EQ(Consumer().Sent().size(), 4U);
}

TEST_F(DocumentConsumerTest, NothingMayComeAfterCloseSender) {
    EXPECT_EQ(Consumer().SendXpsDocument(XpsDocument().Get()), S_OK);
    EXPECT_EQ(Consumer().CloseSender(), S_OK);
    EXPECT_EQ(Consumer().SendFixedDocumentSequence(Sequence().Get()), CallOutOfOrder);
    EXPECT_EQ(Consumer().SendXpsUnknown(MakeObject<PipelineControl>(Context()).Get()), CallOutOfOrder);
    EXPECT_EQ(NewEmptyPart(__uuidof(IPartPrintTicket)), CallOutOfOrder);
    EXPECT_EQ(Consumer().CloseSender(), CallOutOfOrder);
    EXPECT_EQ(Breaches(),
              (Lines{"SendFixedDocumentSequence of FixedDocumentSequence /seq.fdseq came after CloseSender",
                     "SendXpsUnknown of an object of the filter's own came after CloseSender",
                     "GetNewEmptyPart of /new came after CloseSender", "CloseSender was called twice"}));
}

TEST_F(DocumentConsumerTest, ACancelledJobMayCloseTwiceAndItsPartsFailQuietly) {
    ReadyForPages();
    const auto page = FirstPage();
    Context()->Cancel();
    EXPECT_EQ(Consumer().CloseSender(), S_OK);
    EXPECT_EQ(Consumer().SendFixedPage(page.Get()), JobCancelled);
    EXPECT_EQ(NewEmptyPart(__uuidof(IPartPrintTicket)), JobCancelled);
    EXPECT_EQ(Consumer().CloseSender(), S_OK);
    EXPECT_EQ(Breaches(), Lines{});
}

TEST_F(DocumentConsumerTest, MakesPartsOfThePermittedKindsAlone) {
    EXPECT_EQ(NewEmptyPart(__uuidof(IFixedDocument)), S_OK);
    EXPECT_EQ(NewEmptyPart(__uuidof(IFixedPage)), S_OK);
    EXPECT_EQ(NewEmptyPart(__uuidof(IPartImage)), S_OK);
    EXPECT_EQ(NewEmptyPart(__uuidof(IPartThumbnail)), S_OK);
    EXPECT_EQ(NewEmptyPart(__uuidof(IPartFont)), S_OK);
    EXPECT_EQ(NewEmptyPart(__uuidof(IPartPrintTicket)), S_OK);
    EXPECT_EQ(NewEmptyPart(__uuidof(IPartColorProfile)), S_OK);
    EXPECT_EQ(Breaches(), Lines{});
    EXPECT_EQ(NewEmptyPart(__uuidof(IXpsDocument)), E_NOINTERFACE);
    EXPECT_EQ(NewEmptyPart(__uuidof(IFixedDocumentSequence)), E_NOINTERFACE);
    EXPECT_EQ(NewEmptyPart(__uuidof(IPartResourceDictionary)), E_NOINTERFACE);
    EXPECT_EQ(NewEmptyPart(__uuidof(IPartBase)), E_NOINTERFACE);
    EXPECT_EQ(NewEmptyPart(__uuidof(IUnknown)), E_NOINTERFACE);
    EXPECT_EQ(Breaches(), Lines(5, "GetNewEmptyPart of /new asks for an interface that it cannot make"));
}

TEST_F(DocumentConsumerTest, ANewPartKeepsTheNameAsTheFilterGaveIt) {
    EXPECT_EQ(UriOf(NewPart<IPartPrintTicket>(L"/a\\b .xml", "").Get()), L"/a\\b .xml");
}

TEST_F(DocumentConsumerTest, ANewPartsStreamMustBeClosedBeforeItIsAttached) {
    ComPtr<IPartPrintTicket> ticket;
    ComPtr<IPrintWriteStream> stream;
    ASSERT_EQ(
        Consumer().GetNewEmptyPart(L"/t.xml", __uuidof(IPartPrintTicket), ticket.PutVoid(), stream.Put()),
        S_OK);
    const auto page = FirstPage();
    EXPECT_EQ(page->SetPrintTicket(ticket.Get()), CallOutOfOrder);
    EXPECT_EQ(Breaches(),
              Lines{"SetPrintTicket of FixedPage /1/1.fpage was given PrintTicket /t.xml while its "
                    "write stream is open"});
    stream->Close();
    EXPECT_EQ(page->SetPrintTicket(ticket.Get()), S_OK);
}

TEST_F(DocumentConsumerTest, ANewPageCanBeSentOnceItIsWritten) {
    ReadyForPages();
    const auto page = NewPart<IFixedPage>(L"/extra.fpage", "<FixedPage/>");
    EXPECT_EQ(Consumer().SendFixedPage(page.Get()), S_OK);
    const std::vector<SentPart> sent = Consumer().Sent();
    EXPECT_EQ(sent.back().name, "/extra.fpage");
    EXPECT_TRUE(sent.back().part->IsNew());
    EXPECT_EQ(*sent.back().part->Read(), "<FixedPage/>");
}

TEST_F(DocumentConsumerTest, AllChangesToASentPageAreBreaches) {
    ReadyForPages();
    const auto page = FirstPage();
    ASSERT_EQ(Consumer().SendFixedPage(page.Get()), S_OK);
    ComPtr<IPrintWriteStream> stream;
    EXPECT_EQ(page->GetWriteStream(stream.Put()), CallOutOfOrder);
    EXPECT_EQ(page->SetPrintTicket(nullptr), CallOutOfOrder);
    EXPECT_EQ(page->SetPagePart(nullptr), CallOutOfOrder);
    EXPECT_EQ(page->DeleteResource(L"/1/image.png"), CallOutOfOrder);
    EXPECT_EQ(page->SetPartCompression(Compression_Fast), CallOutOfOrder);
    EXPECT_EQ(Breaches(), (Lines{"GetWriteStream changes FixedPage /1/1.fpage, which was already sent",
                                 "SetPrintTicket changes FixedPage /1/1.fpage, which was already sent",
                                 "SetPagePart changes FixedPage /1/1.fpage, which was already sent",
                                 "DeleteResource changes FixedPage /1/1.fpage, which was already sent",
                                 "SetPartCompression changes FixedPage /1/1.fpage, which was already sent"}));
}

TEST_F(DocumentConsumerTest, RefusesNullPointers) {
    EXPECT_EQ(Consumer().SendXpsDocument(nullptr), E_POINTER);
    EXPECT_EQ(Consumer().SendFixedDocumentSequence(nullptr), E_POINTER);
    EXPECT_EQ(Consumer().SendFixedDocument(nullptr), E_POINTER);
    EXPECT_EQ(Consumer().SendFixedPage(nullptr), E_POINTER);
    EXPECT_EQ(Consumer().SendXpsUnknown(nullptr), E_POINTER);
    EXPECT_EQ(NewEmptyPart(__uuidof(IFixedPage), nullptr), E_POINTER);
    EXPECT_EQ(Consumer().GetNewEmptyPart(L"/new", __uuidof(IFixedPage), nullptr, nullptr), E_POINTER);
    EXPECT_EQ(Breaches().size(), 7U);
}

TEST_F(DocumentConsumerTest, HoldsAForeignObjectUntilItIsToldToReleaseIt) {
    ComPtr<PipelineControl> foreign = MakeObject<PipelineControl>(Context());
    EXPECT_EQ(Consumer().SendXpsUnknown(foreign.Get()), S_OK);
    EXPECT_EQ(foreign->AddRef(), 3U);
    EXPECT_EQ(foreign->Release(), 2U);
    Consumer().ReleaseForeignParts();
    EXPECT_EQ(foreign->AddRef(), 2U);
    EXPECT_EQ(foreign->Release(), 1U);
}

TEST_F(DocumentConsumerTest, AResourceMayBeSentAsAnUnknownPart) {
    ComPtr<IUnknown> image;
    ASSERT_EQ(FirstPage()->GetPagePart(L"/1/image.png", image.Put()), S_OK);
    EXPECT_EQ(Consumer().SendXpsUnknown(image.Get()), S_OK);
    ASSERT_EQ(Consumer().Sent().size(), 1U);
    EXPECT_EQ(Consumer().Sent()[0].kind, PartKind::Unknown);
    EXPECT_EQ(Consumer().Sent()[0].name, "/1/image.png");
}

TEST_F(DocumentConsumerTest, EachSendFailsAsPlannedAndNothingIsTaken) {
    Switches switches;
    switches.faults.push_back({"", "", 1, E_OUTOFMEMORY, true});
    const auto document = XpsDocument();
    Use(switches);
    EXPECT_EQ(Consumer().SendXpsDocument(document.Get()), E_OUTOFMEMORY);
    EXPECT_EQ(Consumer().SendXpsUnknown(document.Get()), E_OUTOFMEMORY);
    EXPECT_EQ(NewEmptyPart(__uuidof(IFixedPage)), E_OUTOFMEMORY);
    EXPECT_EQ(Consumer().CloseSender(), E_OUTOFMEMORY);
    EXPECT_TRUE(Consumer().IsClosed());
    EXPECT_TRUE(Consumer().Sent().empty());
    EXPECT_EQ(Breaches(), Lines{});
}

}  // namespace
}  // namespace devkit::pipeline
