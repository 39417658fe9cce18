#include "devkit/pipeline/documentconsumer.h"

#include <functional>
#include <map>

#include "devkit/pipeline/pageobjects.h"
#include "devkit/pipeline/partfactory.h"
#include "devkit/pipeline/partobject.h"
#include "devkit/pipeline/pipelinecontrol.h"
#include "temporaryfolder.h"
#include "temporaryplace.h"

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
        EXPECT_EQ(S_OK, Consumer().SendXpsDocument(XpsDocument().Get()));
        EXPECT_EQ(S_OK, Consumer().SendFixedDocumentSequence(Sequence().Get()));
        EXPECT_EQ(S_OK, Consumer().SendFixedDocument(FirstDocument().Get()));
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
    EXPECT_EQ(S_OK, Consumer().SendFixedPage(FirstPage().Get()));
    EXPECT_EQ(S_OK, Consumer().SendFixedPage(SecondPage().Get()));
    EXPECT_FALSE(Consumer().IsClosed());
    EXPECT_EQ(S_OK, Consumer().CloseSender());
    EXPECT_TRUE(Consumer().IsClosed());
    EXPECT_EQ(5U, Consumer().Sent().size());
    EXPECT_EQ(Lines{}, Breaches());
}

TEST_F(DocumentConsumerTest, ASecondXpsDocumentIsABreachThoughItIsAnotherObject) {
    EXPECT_EQ(S_OK, Consumer().SendXpsDocument(XpsDocument().Get()));
    EXPECT_EQ(kCallOutOfOrder, Consumer().SendXpsDocument(XpsDocument().Get()));
    EXPECT_EQ(Lines{"a second XpsDocument was sent"}, Breaches());
}

TEST_F(DocumentConsumerTest, ASecondSequenceIsABreachThoughItIsAnotherObject) {
    ReadyForPages();
    EXPECT_EQ(kCallOutOfOrder, Consumer().SendFixedDocumentSequence(Sequence().Get()));
    EXPECT_EQ(Lines{"a second FixedDocumentSequence was sent"}, Breaches());
}

TEST_F(DocumentConsumerTest, APartSentTwiceIsABreachThroughAnyOfItsObjects) {
    ReadyForPages();
    const auto page = FirstPage();
    EXPECT_EQ(S_OK, Consumer().SendFixedPage(page.Get()));
    EXPECT_EQ(kCallOutOfOrder, Consumer().SendFixedPage(page.Get()));
    EXPECT_EQ(Lines{"FixedPage /1/1.fpage was sent twice"}, Breaches());
    EXPECT_EQ(4U, Consumer().Sent().size());
}

TEST_F(DocumentConsumerTest, NothingMayComeAfterCloseSender) {
    EXPECT_EQ(S_OK, Consumer().SendXpsDocument(XpsDocument().Get()));
    EXPECT_EQ(S_OK, Consumer().CloseSender());
    EXPECT_EQ(kCallOutOfOrder, Consumer().SendFixedDocumentSequence(Sequence().Get()));
    EXPECT_EQ(kCallOutOfOrder, Consumer().SendXpsUnknown(MakeObject<PipelineControl>(Context()).Get()));
    EXPECT_EQ(kCallOutOfOrder, NewEmptyPart(__uuidof(IPartPrintTicket)));
    EXPECT_EQ(kCallOutOfOrder, Consumer().CloseSender());
    EXPECT_EQ((Lines{"SendFixedDocumentSequence of FixedDocumentSequence /seq.fdseq came after CloseSender",
                     "SendXpsUnknown of an object of the filter's own came after CloseSender",
                     "GetNewEmptyPart of /new came after CloseSender", "CloseSender was called twice"}),
              Breaches());
}

TEST_F(DocumentConsumerTest, ACancelledJobMayCloseTwiceAndItsPartsFailQuietly) {
    ReadyForPages();
    const auto page = FirstPage();
    Context()->Cancel();
    EXPECT_EQ(S_OK, Consumer().CloseSender());
    EXPECT_EQ(kJobCancelled, Consumer().SendFixedPage(page.Get()));
    EXPECT_EQ(kJobCancelled, NewEmptyPart(__uuidof(IPartPrintTicket)));
    EXPECT_EQ(S_OK, Consumer().CloseSender());
    EXPECT_EQ(Lines{}, Breaches());
}

TEST_F(DocumentConsumerTest, MakesPartsOfThePermittedKindsAlone) {
    EXPECT_EQ(S_OK, NewEmptyPart(__uuidof(IFixedDocument)));
    EXPECT_EQ(S_OK, NewEmptyPart(__uuidof(IFixedPage)));
    EXPECT_EQ(S_OK, NewEmptyPart(__uuidof(IPartImage)));
    EXPECT_EQ(S_OK, NewEmptyPart(__uuidof(IPartThumbnail)));
    EXPECT_EQ(S_OK, NewEmptyPart(__uuidof(IPartFont)));
    EXPECT_EQ(S_OK, NewEmptyPart(__uuidof(IPartPrintTicket)));
    EXPECT_EQ(S_OK, NewEmptyPart(__uuidof(IPartFont2)));
    EXPECT_EQ(S_OK, NewEmptyPart(__uuidof(IPartColorProfile)));
    EXPECT_EQ(S_OK, NewEmptyPart(__uuidof(IPartResourceDictionary)));
    EXPECT_EQ(Lines{}, Breaches());
    EXPECT_EQ(E_NOINTERFACE, NewEmptyPart(__uuidof(IXpsDocument)));
    EXPECT_EQ(E_NOINTERFACE, NewEmptyPart(__uuidof(IFixedDocumentSequence)));
    EXPECT_EQ(E_NOINTERFACE, NewEmptyPart(__uuidof(IPartBase)));
    EXPECT_EQ(E_NOINTERFACE, NewEmptyPart(__uuidof(IUnknown)));
    const std::string before = "GetNewEmptyPart of /new asks for {";
    const std::string after = "}, which is not the interface of a part that it makes";
    EXPECT_EQ((Lines{before + "E8D907DB-62A9-4A95-ABE7-E01763DD30F8" + after,
                     before + "8028D181-2C32-4249-8493-1BFB22045574" + after,
                     before + "36D51E28-369E-43BA-A666-9540C62C3F58" + after,
                     before + "00000000-0000-0000-C000-000000000046" + after}),
              Breaches());
}

TEST_F(DocumentConsumerTest, ANewPartKeepsTheNameAsTheFilterGaveIt) {
    EXPECT_EQ(L"/a\\b .xml", UriOf(NewPart<IPartPrintTicket>(L"/a\\b .xml", "").Get()));
}

TEST_F(DocumentConsumerTest, ANewPartsStreamMustBeClosedBeforeItIsAttached) {
    ComPtr<IPartPrintTicket> ticket;
    ComPtr<IPrintWriteStream> stream;
    ASSERT_EQ(S_OK, Consumer().GetNewEmptyPart(L"/t.xml", __uuidof(IPartPrintTicket), ticket.PutVoid(),
                                               stream.Put()));
    const auto page = FirstPage();
    EXPECT_EQ(kCallOutOfOrder, page->SetPrintTicket(ticket.Get()));
    EXPECT_EQ(Lines{"SetPrintTicket of FixedPage /1/1.fpage was given PrintTicket /t.xml while its "
                    "write stream is open"},
              Breaches());
    stream->Close();
    EXPECT_EQ(S_OK, page->SetPrintTicket(ticket.Get()));
}

TEST_F(DocumentConsumerTest, ANewPageCanBeSentOnceItIsWritten) {
    ReadyForPages();
    const auto page = NewPart<IFixedPage>(L"/extra.fpage", "<FixedPage/>");
    EXPECT_EQ(S_OK, Consumer().SendFixedPage(page.Get()));
    const SentParts sent = Consumer().Sent();
    EXPECT_EQ("/extra.fpage", sent.back().name);
    EXPECT_TRUE(sent.back().part->IsNew());
    EXPECT_EQ("<FixedPage/>", *sent.back().part->Read());
}

TEST_F(DocumentConsumerTest, WhatWasSentIsTakenOnce) {
    ReadyForPages();
    EXPECT_EQ(S_OK, Consumer().SendFixedPage(NewPart<IFixedPage>(L"/extra.fpage", "<FixedPage/>").Get()));
    const std::size_t count = Consumer().Sent().size();
    const SentParts taken = Consumer().TakeSent();
    EXPECT_EQ(count, taken.size());
    EXPECT_EQ("/extra.fpage", taken.back().name);
    EXPECT_TRUE(Consumer().Sent().empty());
    EXPECT_TRUE(Consumer().TakeSent().empty());
}

// The first page with new markup, a new ticket and a new picture, each longer than what stays in memory.
ComPtr<IFixedPage> LongPage(DocumentConsumer& consumer, ComPtr<IFixedPage> page, const std::string& bytes) {
    const auto write = [&bytes](IPrintWriteStream* pStream) {
        ULONG count = 0;
        EXPECT_EQ(S_OK, pStream->WriteBytes(bytes.data(), static_cast<ULONG>(bytes.size()), &count));
        pStream->Close();
    };
    ComPtr<IPrintWriteStream> stream;
    EXPECT_EQ(S_OK, page->GetWriteStream(stream.Put()));
    write(stream.Get());
    ComPtr<IPartPrintTicket> ticket;
    EXPECT_EQ(S_OK, consumer.GetNewEmptyPart(L"/t.xml", __uuidof(IPartPrintTicket), ticket.PutVoid(),
                                             stream.Put()));
    write(stream.Get());
    EXPECT_EQ(S_OK, page->SetPrintTicket(ticket.Get()));
    ComPtr<IPartImage> image;
    EXPECT_EQ(S_OK, consumer.GetNewEmptyPart(L"/i.png", __uuidof(IPartImage), image.PutVoid(), stream.Put()));
    write(stream.Get());
    EXPECT_EQ(S_OK, page->SetPagePart(image.Get()));
    return page;
}

TEST_F(DocumentConsumerTest, ATicketThatWasReplacedIsNotKept) {
    DocumentConsumer& consumer = ReadyForPages();
    const ComPtr<IFixedPage> page = FirstPage();
    const PartPtr part = PartOf(page.Get());
    const std::weak_ptr<Part> before = part->inputTicket;
    EXPECT_EQ(S_OK, page->SetPrintTicket(NewPart<IPartPrintTicket>(L"/t.xml", "new").Get()));
    EXPECT_EQ(S_OK, consumer.SendFixedPage(page.Get()));
    EXPECT_TRUE(before.expired());
    EXPECT_TRUE(consumer.Sent().back().TicketReplaced());
    const ComPtr<IFixedPage> kept = FirstPage();
    EXPECT_EQ(S_OK, consumer.SendFixedPage(kept.Get()));
    EXPECT_FALSE(consumer.Sent().back().TicketReplaced());
}

// A job whose first document has 600 pages, every second of them with a ticket and resources.
std::shared_ptr<const JobInput> LongJob() {
    const auto job = SampleJob();
    std::vector<PageInput>& pages = job->documents[0].pages;
    while (pages.size() < 600) pages.push_back(pages[pages.size() % 2]);
    return job;
}

PartPtr NewTicket(std::string_view bytes) { return Made(PartKind::PrintTicket, "/t", bytes); }

// Sends all parts of the long job. `touch` is called with each page before that is sent, by its number.
void SendLongJob(DocumentConsumer& consumer, const ContextPtr& context,
                 const std::function<void(std::size_t, const PartPtr&)>& touch) {
    JobParts parts(LongJob());
    std::size_t number = 0;
    for (GivenPart given = *parts.Next(); given.part != nullptr; given = *parts.Next()) {
        const ComPtr<IUnknown> object = MakePartObject(context, given.part);
        const auto send =
            [&]<typename Interface>(HRESULT (STDMETHODCALLTYPE DocumentConsumer::*method)(Interface*)) {
                ComPtr<Interface> part;
                EXPECT_EQ(S_OK, object->QueryInterface(__uuidof(Interface), part.PutVoid()));
                given.part.reset();
                EXPECT_EQ(S_OK, (consumer.*method)(part.Get()));
            };
        switch (given.part->Kind()) {
            case PartKind::XpsDocument:
                send(&DocumentConsumer::SendXpsDocument);
                break;
            case PartKind::FixedDocumentSequence:
                send(&DocumentConsumer::SendFixedDocumentSequence);
                break;
            case PartKind::FixedDocument:
                send(&DocumentConsumer::SendFixedDocument);
                break;
            default:
                touch(number++, given.part);
                send(&DocumentConsumer::SendFixedPage);
        }
    }
}

// "markup [x], ticket /t [y]".
std::string TextOf(const PageChange& change) {
    std::string text;
    if (change.markup) text = "markup [" + change.markup->Read() + "]";
    if (!change.ticketReplaced) return text;
    if (!text.empty()) text += ", ";
    return text + (change.ticket ? "ticket " + change.ticket->name + " [" + change.ticket->bytes.Read() + "]"
                                 : "no ticket");
}

// The pages of which not only the place is kept, by their number: what was made of them, or nothing when they
// are kept whole.
std::map<std::size_t, std::string> PagesKept(const SentParts& sent) {
    std::map<std::size_t, std::string> kept;
    std::size_t number = 0;
    for (const SentPart& each : sent) {
        if (each.kind != PartKind::FixedPage) continue;
        if (each.place) {
            EXPECT_EQ(nullptr, each.part);
            EXPECT_EQ("", each.name);
            EXPECT_EQ(0U, each.place->document);
            EXPECT_EQ(number, each.place->page);
            EXPECT_FALSE(each.MarkupRewritten() || each.TicketReplaced());
            if (each.change) kept.emplace(number, TextOf(*each.change));
        } else {
            EXPECT_NE(nullptr, each.part);
            EXPECT_EQ(nullptr, each.change);
            kept.emplace(number, "");
        }
        ++number;
    }
    return kept;
}

// Of the last 256 parts nothing is let go.
std::map<std::size_t, std::string> TheLastPages() {
    std::map<std::size_t, std::string> pages;
    for (std::size_t page = 600 + 5 - 256 - 3; page < 601; ++page) pages.emplace(page, "");
    return pages;
}

TEST_F(DocumentConsumerTest, OfAPageThatWentOnAsItCameOnlyThePlaceIsKept) {
    SendLongJob(Consumer(), Context(), [](std::size_t, const PartPtr&) {});
    EXPECT_EQ(605U, Consumer().Sent().size());
    EXPECT_EQ(TheLastPages(), PagesKept(Consumer().Sent()));
}

TEST_F(DocumentConsumerTest, APageThatIsHeldOrHasOtherResourcesIsKept) {
    std::vector<std::shared_ptr<void>> held;
    const std::map<std::size_t, std::function<void(const PartPtr&)>> touches{
        {10, [&](const PartPtr& page) { held.push_back(page); }},
        {20, [&](const PartPtr& page) { held.push_back(page->ticket); }},
        {30, [&](const PartPtr& page) { held.push_back(page->resources[1]); }},
        {40, [&](const PartPtr& page) { held.push_back(page->ticket = NewTicket("new")); }},
        {50, [](const PartPtr& page) { Write(*page->ticket, ""); }},
        {60, [](const PartPtr& page) { Write(*page->resources.back(), ""); }},
        {70, [&](const PartPtr& page) { held.push_back(page->ticket->BeginWriting()); }},
        {80, [&](const PartPtr& page) { held.push_back(page->resources[0]->BeginWriting()); }},
        {90,
         [](const PartPtr& page) {
             page->ticket = std::make_shared<Part>(PartKind::PrintTicket,
                                                   InputPart{"/another", "", [] { return Bytes(); }});
             Write(*page->ticket, "new");
         }},
        {100,
         [](const PartPtr& page) { page->ticket = std::make_shared<Part>(PartKind::PrintTicket, "/t"); }},
        {111,
         [&](const PartPtr& page) {
             page->ticket = NewTicket("new");
             held.push_back(page->ticket->BeginWriting());
         }},
        {120, [](const PartPtr& page) { page->deleted.emplace_back("/1/font.odttf"); }},
        {131,
         [](const PartPtr& page) {
             page->resources.push_back(std::make_shared<Part>(PartKind::Image, "/new.png"));
             page->resources.back()->attached = true;
         }},
    };
    SendLongJob(Consumer(), Context(), [&](std::size_t number, const PartPtr& page) {
        if (const auto touch = touches.find(number); touch != touches.end()) touch->second(page);
    });
    std::map<std::size_t, std::string> expected = TheLastPages();
    for (const auto& [number, touch] : touches) expected.emplace(number, "");
    EXPECT_EQ(expected, PagesKept(Consumer().Sent()));
}

TEST_F(DocumentConsumerTest, OfAPageThatWasChangedThePlaceIsKeptAndTheChange) {
    struct Row {
        std::function<void(const PartPtr&)> touch;
        std::string expected;
    };
    const std::map<std::size_t, Row> rows{
        {10, {[](const PartPtr& page) { Write(*page, "new"); }, "markup [new]"}},
        {20, {[](const PartPtr& page) { Write(*page, ""); }, "markup []"}},
        {30, {[](const PartPtr& page) { page->ticket = NewTicket("its"); }, "ticket /t [its]"}},
        {41, {[](const PartPtr& page) { page->ticket = NewTicket("first"); }, "ticket /t [first]"}},
        {50, {[](const PartPtr& page) { page->ticket = nullptr; }, "no ticket"}},
        {60,
         {[](const PartPtr& page) {
              Write(*page, "new");
              page->ticket = NewTicket("its");
          },
          "markup [new], ticket /t [its]"}},
    };
    SendLongJob(Consumer(), Context(), [&](std::size_t number, const PartPtr& page) {
        if (const auto row = rows.find(number); row != rows.end()) row->second.touch(page);
    });
    std::map<std::size_t, std::string> expected = TheLastPages();
    for (const auto& [number, row] : rows) expected.emplace(number, row.expected);
    EXPECT_EQ(expected, PagesKept(Consumer().Sent()));
}

TEST_F(DocumentConsumerTest, WhatTheFilterMadeIsHeldUntilItIsUsed) {
    std::vector<std::weak_ptr<Part>> made;
    SendLongJob(Consumer(), Context(), [&](std::size_t number, const PartPtr& page) {
        if (number > 1) return;
        ASSERT_EQ(S_OK, NewEmptyPart(__uuidof(IPartPrintTicket), number == 0 ? L"/first" : L"/second"));
        ComPtr<IPartPrintTicket> ticket;
        ComPtr<IPrintWriteStream> stream;
        ASSERT_EQ(S_OK, Consumer().GetNewEmptyPart(L"/t", __uuidof(IPartPrintTicket), ticket.PutVoid(),
                                                   stream.Put()));
        stream->Close();
        page->ticket = PartOf(ticket.Get());
        page->ticket->attached = true;
        made.emplace_back(page->ticket);
    });
    std::map<std::size_t, std::string> expected = TheLastPages();
    expected.emplace(0, "ticket /t []");
    expected.emplace(1, "ticket /t []");
    EXPECT_EQ(expected, PagesKept(Consumer().Sent()));
    EXPECT_TRUE(made.at(0).expired() && made.at(1).expired());
    EXPECT_EQ((std::vector<std::string>{"PrintTicket /first", "PrintTicket /second"}),
              Consumer().Unattached());
}

TEST_F(DocumentConsumerTest, WhatIsSentWaitsInATemporaryFile) {
    const tests::TemporaryFolder folder;
    const tests::TemporaryPlace place(folder / "");
    const std::string bytes(common::ByteStore::kInMemory + 1, 'x');
    DocumentConsumer& consumer = ReadyForPages();
    const ComPtr<IFixedPage> page = LongPage(consumer, FirstPage(), bytes);
    EXPECT_TRUE(folder.Names().empty());
    EXPECT_EQ(S_OK, consumer.SendFixedPage(page.Get()));
    ASSERT_EQ(1U, folder.Names().size());
    const std::string name = *folder.Names().begin();
    EXPECT_TRUE(name.starts_with("filterhost-")) << name;
    const PartPtr part = consumer.Sent().back().part;
    EXPECT_TRUE(bytes == *part->Read());
    EXPECT_TRUE(bytes == *part->ticket->Read());
    EXPECT_TRUE(bytes == *part->resources.back()->Read());
    EXPECT_EQ("", Context()->StorageFailure());
}

TEST_F(DocumentConsumerTest, WithoutRoomForWhatIsSentNothingIsLostButTheOutput) {
    const tests::TemporaryFolder folder;
    const tests::TemporaryPlace place(folder / "nowhere");
    const std::string bytes(common::ByteStore::kInMemory + 1, 'x');
    DocumentConsumer& consumer = ReadyForPages();
    const ComPtr<IFixedPage> page = LongPage(consumer, FirstPage(), bytes);
    EXPECT_EQ(S_OK, consumer.SendFixedPage(page.Get()));
    EXPECT_TRUE(bytes == *consumer.Sent().back().part->Read());
    EXPECT_TRUE(Context()->StorageFailure().starts_with("there is no folder for temporary files: "))
        << Context()->StorageFailure();
    EXPECT_EQ(Lines{}, Breaches());
}

TEST_F(DocumentConsumerTest, AllChangesToASentPageAreBreaches) {
    ReadyForPages();
    const auto page = FirstPage();
    ASSERT_EQ(S_OK, Consumer().SendFixedPage(page.Get()));
    ComPtr<IPrintWriteStream> stream;
    EXPECT_EQ(kCallOutOfOrder, page->GetWriteStream(stream.Put()));
    EXPECT_EQ(kCallOutOfOrder, page->SetPrintTicket(nullptr));
    EXPECT_EQ(kCallOutOfOrder, page->SetPagePart(nullptr));
    EXPECT_EQ(kCallOutOfOrder, page->DeleteResource(L"/1/image.png"));
    EXPECT_EQ(kCallOutOfOrder, page->SetPartCompression(Compression_Fast));
    EXPECT_EQ((Lines{"GetWriteStream changes FixedPage /1/1.fpage, which was already sent",
                     "SetPrintTicket changes FixedPage /1/1.fpage, which was already sent",
                     "SetPagePart changes FixedPage /1/1.fpage, which was already sent",
                     "DeleteResource changes FixedPage /1/1.fpage, which was already sent",
                     "SetPartCompression changes FixedPage /1/1.fpage, which was already sent"}),
              Breaches());
}

TEST_F(DocumentConsumerTest, RefusesNullPointers) {
    EXPECT_EQ(E_POINTER, Consumer().SendXpsDocument(nullptr));
    EXPECT_EQ(E_POINTER, Consumer().SendFixedDocumentSequence(nullptr));
    EXPECT_EQ(E_POINTER, Consumer().SendFixedDocument(nullptr));
    EXPECT_EQ(E_POINTER, Consumer().SendFixedPage(nullptr));
    EXPECT_EQ(E_POINTER, Consumer().SendXpsUnknown(nullptr));
    EXPECT_EQ(E_POINTER, NewEmptyPart(__uuidof(IFixedPage), nullptr));
    EXPECT_EQ(E_POINTER, Consumer().GetNewEmptyPart(L"/new", __uuidof(IFixedPage), nullptr, nullptr));
    EXPECT_EQ(7U, Breaches().size());
}

TEST_F(DocumentConsumerTest, HoldsAForeignObjectUntilItIsToldToReleaseIt) {
    ComPtr<PipelineControl> foreign = MakeObject<PipelineControl>(Context());
    EXPECT_EQ(S_OK, Consumer().SendXpsUnknown(foreign.Get()));
    EXPECT_EQ(3U, foreign->AddRef());
    EXPECT_EQ(2U, foreign->Release());
    Consumer().ReleaseForeignParts();
    EXPECT_EQ(2U, foreign->AddRef());
    EXPECT_EQ(1U, foreign->Release());
}

TEST_F(DocumentConsumerTest, AResourceMayBeSentAsAnUnknownPart) {
    ComPtr<IUnknown> image;
    ASSERT_EQ(S_OK, FirstPage()->GetPagePart(L"/1/image.png", image.Put()));
    EXPECT_EQ(S_OK, Consumer().SendXpsUnknown(image.Get()));
    ASSERT_EQ(1U, Consumer().Sent().size());
    EXPECT_EQ(PartKind::Unknown, Consumer().Sent()[0].kind);
    EXPECT_EQ("/1/image.png", Consumer().Sent()[0].name);
}

TEST_F(DocumentConsumerTest, EachSendFailsAsPlannedAndNothingIsTaken) {
    Behaviour behaviour;
    behaviour.faults.push_back({"", "", 1, E_OUTOFMEMORY, true});
    const auto document = XpsDocument();
    Use(behaviour);
    EXPECT_EQ(E_OUTOFMEMORY, Consumer().SendXpsDocument(document.Get()));
    EXPECT_EQ(E_OUTOFMEMORY, Consumer().SendXpsUnknown(document.Get()));
    EXPECT_EQ(E_OUTOFMEMORY, NewEmptyPart(__uuidof(IFixedPage)));
    EXPECT_EQ(E_OUTOFMEMORY, Consumer().CloseSender());
    EXPECT_TRUE(Consumer().IsClosed());
    EXPECT_TRUE(Consumer().Sent().empty());
    EXPECT_EQ(Lines{}, Breaches());
}

}  // namespace
}  // namespace devkit::pipeline
