#include "devkit/pipeline/ticketedobjects.h"

#include "devkit/pipeline/pageobjects.h"
#include "platform/bstr.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

class TicketedObjectsTest : public PartsTest {};

TEST_F(TicketedObjectsTest, GiveTheirNameAndTicket) {
    platform::Bstr uri;
    EXPECT_EQ(Sequence()->GetUri(uri.Put()), S_OK);
    EXPECT_EQ(uri.View(), L"/seq.fdseq");
    EXPECT_EQ(FirstDocument()->GetUri(uri.Put()), S_OK);
    EXPECT_EQ(uri.View(), L"/1/1.fdoc");
    EXPECT_EQ(TicketNameOf(*Sequence().Get()), L"/job_PT.xml");
    EXPECT_EQ(TicketNameOf(*FirstDocument().Get()), L"/1/PT.xml");
}

TEST_F(TicketedObjectsTest, AreNoPartBases) {
    ComPtr<IPartBase> base;
    EXPECT_EQ(Sequence().QueryTo(base), E_NOINTERFACE);
    EXPECT_EQ(FirstDocument().QueryTo(base), E_NOINTERFACE);
}

TEST_F(TicketedObjectsTest, EachAnswersItsOwnInterfaceAlone) {
    ComPtr<IFixedDocument> document;
    ComPtr<IFixedPage> page;
    EXPECT_EQ(Sequence().QueryTo(document), E_NOINTERFACE);
    EXPECT_EQ(FirstDocument().QueryTo(page), E_NOINTERFACE);
}

TEST_F(TicketedObjectsTest, TheTicketIsReadableAndReadableAgain) {
    const auto sequence = Sequence();
    ComPtr<IPartPrintTicket> ticket;
    ComPtr<IPrintReadStream> stream;
    ASSERT_EQ(sequence->GetPrintTicket(ticket.Put()), S_OK);
    ASSERT_EQ(ticket->GetStream(stream.Put()), S_OK);
    EXPECT_EQ(ReadAll(stream.Get()), "job ticket");
    ASSERT_EQ(ticket->GetStream(stream.Put()), S_OK);
    EXPECT_EQ(ReadAll(stream.Get()), "job ticket");
}

TEST_F(TicketedObjectsTest, WithoutATicketAnswersElementNotFound) {
    ComPtr<IFixedDocument> document;
    ASSERT_EQ(PartNumber(6).QueryTo(document), S_OK);
    ComPtr<IPartPrintTicket> ticket;
    EXPECT_EQ(document->GetPrintTicket(ticket.Put()), E_ELEMENT_NOT_FOUND);
    EXPECT_FALSE(ticket);
}

TEST_F(TicketedObjectsTest, WithoutATicketAnswersSuccessAndNullWhenSwitched) {
    Switches switches;
    switches.missingPart = MissingPart::SuccessWithNull;
    Use(switches);
    ComPtr<IFixedDocument> document;
    ASSERT_EQ(PartNumber(6).QueryTo(document), S_OK);
    ComPtr<IPartPrintTicket> ticket;
    EXPECT_EQ(document->GetPrintTicket(ticket.Put()), S_OK);
    EXPECT_FALSE(ticket);
}

TEST_F(TicketedObjectsTest, TakeANewTicketAndOneOfAnotherPart) {
    const auto document = FirstDocument();
    const auto made = NewPart<IPartPrintTicket>(L"/made.xml", "made");
    EXPECT_EQ(document->SetPrintTicket(made.Get()), S_OK);
    EXPECT_EQ(TicketNameOf(*document.Get()), L"/made.xml");
    ComPtr<IPartPrintTicket> ofTheJob;
    ASSERT_EQ(Sequence()->GetPrintTicket(ofTheJob.Put()), S_OK);
    EXPECT_EQ(document->SetPrintTicket(ofTheJob.Get()), S_OK);
    EXPECT_EQ(TicketNameOf(*document.Get()), L"/job_PT.xml");
    EXPECT_EQ(Breaches(), Lines{});
}

// A ticket that the filter implements itself.
class ForeignTicket final : public ComObject<IPartPrintTicket> {
  public:
    explicit ForeignTicket(ContextPtr context) : ComObject(std::move(context), "ForeignTicket") {}
    HRESULT STDMETHODCALLTYPE GetUri(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetStream(IPrintReadStream**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPartCompression(EXpsCompressionOptions*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetPartCompression(EXpsCompressionOptions) override { return E_NOTIMPL; }
};

TEST_F(TicketedObjectsTest, RefuseATicketThatIsNotThePipelines) {
    const auto sequence = Sequence();
    EXPECT_EQ(sequence->SetPrintTicket(MakeObject<ForeignTicket>(Context()).Get()), E_INVALIDARG);
    EXPECT_EQ(Breaches(),
              Lines{"SetPrintTicket of FixedDocumentSequence /seq.fdseq was given an object that is not "
                    "one of the pipeline's print tickets"});
    EXPECT_EQ(sequence->SetPrintTicket(nullptr), E_POINTER);
    EXPECT_EQ(TicketNameOf(*sequence.Get()), L"/job_PT.xml");
}

TEST_F(TicketedObjectsTest, TheDocumentGivesAndTakesTheThumbnail) {
    const auto document = XpsDocument();
    ComPtr<IPartThumbnail> thumbnail;
    ASSERT_EQ(document->GetThumbnail(thumbnail.Put()), S_OK);
    EXPECT_EQ(UriOf(thumbnail.Get()), L"/thumbnail.png");
    platform::Bstr type;
    EXPECT_EQ(thumbnail->GetThumbnailProperties(type.Put()), S_OK);
    EXPECT_EQ(type.View(), L"image/png");
    EXPECT_EQ(document->SetThumbnail(NewPart<IPartThumbnail>(L"/new.jpg", "x").Get()), S_OK);
    ASSERT_EQ(document->GetThumbnail(thumbnail.Put()), S_OK);
    EXPECT_EQ(UriOf(thumbnail.Get()), L"/new.jpg");
    EXPECT_EQ(document->SetThumbnail(nullptr), E_POINTER);
}

TEST_F(TicketedObjectsTest, ADocumentWithoutThumbnailAnswersElementNotFound) {
    const auto job = SampleJob();
    job->thumbnail.reset();
    ComPtr<IXpsDocument> document;
    ASSERT_EQ(PartNumber(1, job).QueryTo(document), S_OK);
    ComPtr<IPartThumbnail> thumbnail;
    EXPECT_EQ(document->GetThumbnail(thumbnail.Put()), E_ELEMENT_NOT_FOUND);
}

TEST_F(TicketedObjectsTest, FailAsPlanned) {
    Use(Failing("IFixedDocument::GetPrintTicket", E_ACCESSDENIED, "/1/1.fdoc"));
    ComPtr<IPartPrintTicket> ticket;
    EXPECT_EQ(FirstDocument()->GetPrintTicket(ticket.Put()), E_ACCESSDENIED);
    EXPECT_EQ(Sequence()->GetPrintTicket(ticket.Put()), S_OK);
}

}  // namespace
}  // namespace devkit::pipeline
