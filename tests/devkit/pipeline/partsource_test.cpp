#include "devkit/pipeline/partsource.h"

#include <atomic>
#include <thread>

#include "devkit/common/countedobject.h"
#include "devkit/pipeline/fixture.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

class Foreign final : public platform::ComIdentity<common::CountedObject, IUnknown> {};

// The names that the source gives until the end, "(object)" for one that is no part.
Lines NamesOf(PartSource& source) {
    Lines names;
    for (auto next = source.Next(); next && !next->IsEnd(); next = source.Next())
        names.push_back(next->part == nullptr ? "(object)" : next->part->Title());
    return names;
}

TEST(JobPartsTest, AreInThePipelinesOrderAndEndAsOftenAsAsked) {
    JobParts parts(SampleJob());
    EXPECT_EQ((Lines{"XpsDocument", "FixedDocumentSequence /seq.fdseq", "FixedDocument /1/1.fdoc",
                     "FixedPage /1/1.fpage", "FixedPage /1/2.fpage", "FixedDocument /2/2.fdoc",
                     "FixedPage /2/1.fpage"}),
              NamesOf(parts));
    EXPECT_TRUE(parts.Next()->IsEnd());
    EXPECT_TRUE(parts.Next()->IsEnd());
}

class PartChannelTest : public PipelineTest {
  protected:
    // The part as it arrives.
    static PartPtr Through(const PartPtr& part) {
        PartChannel channel;
        channel.Put(part);
        return channel.Next()->part;
    }
};

TEST_F(PartChannelTest, HandsOnInOrderUntilTheEnd) {
    PartChannel channel;
    channel.Put(std::make_shared<Part>(PartKind::FixedPage, "/1"));
    channel.Put(ComPtr<IUnknown>(MakeObject<Foreign>().Get()));
    channel.Put(std::make_shared<Part>(PartKind::FixedPage, "/2"));
    channel.Close();
    EXPECT_EQ((Lines{"FixedPage /1", "(object)", "FixedPage /2"}), NamesOf(channel));
    EXPECT_TRUE(channel.Next()->IsEnd());
}

TEST_F(PartChannelTest, APartArrivesWithWhatWasMadeOfIt) {
    const PartPtr page = std::make_shared<Part>(
        PartKind::FixedPage, InMemory("/1.fpage", "application/vnd.ms-package.xps-fixedpage+xml", "old"));
    Write(*page, "new");
    page->inputTicket =
        std::make_shared<Part>(PartKind::PrintTicket, InMemory("/old.xml", "ticket", "old ticket"));
    page->ticket = Made(PartKind::PrintTicket, "/new.xml", "new ticket");
    page->resources = {std::make_shared<Part>(PartKind::Image, InMemory("/i.png", "image/png", "image"))};
    page->sent = true;

    const PartPtr arrived = Through(page);
    ASSERT_NE(nullptr, arrived);
    EXPECT_NE(page, arrived);
    EXPECT_FALSE(arrived->sent);
    EXPECT_FALSE(arrived->IsNew());
    EXPECT_TRUE(arrived->IsWritten());
    EXPECT_EQ("new", *arrived->Read());
    EXPECT_EQ("new", *arrived->ReadInput());
    ASSERT_NE(nullptr, arrived->ticket);
    EXPECT_TRUE(arrived->ticket->IsNew());
    EXPECT_EQ("new ticket", *arrived->ticket->Read());
    EXPECT_TRUE((SentPart{PartKind::FixedPage, "/1.fpage", arrived}.TicketReplaced()));
    EXPECT_TRUE((SentPart{PartKind::FixedPage, "/1.fpage", arrived}.MarkupRewritten()));
    ASSERT_EQ(1U, arrived->resources.size());
    EXPECT_EQ("image", *arrived->resources[0]->Read());
    EXPECT_FALSE(arrived->resources[0]->IsWritten());
}

TEST_F(PartChannelTest, ATicketThatWasKeptIsNoneThatWasReplaced) {
    const PartPtr page = std::make_shared<Part>(PartKind::FixedPage, InMemory("/1.fpage", "page", "markup"));
    page->ticket = page->inputTicket =
        std::make_shared<Part>(PartKind::PrintTicket, InMemory("/t.xml", "ticket", "ticket"));
    const PartPtr arrived = Through(page);
    EXPECT_FALSE((SentPart{PartKind::FixedPage, "/1.fpage", arrived}.TicketReplaced()));
    EXPECT_FALSE((SentPart{PartKind::FixedPage, "/1.fpage", arrived}.MarkupRewritten()));
}

TEST_F(PartChannelTest, APartOnSeveralPagesStaysOne) {
    const PartPtr image = Made(PartKind::Image, "/i.png", "image");
    PartChannel channel;
    for (const char* name : {"/1", "/2"}) {
        const PartPtr page = std::make_shared<Part>(PartKind::FixedPage, name);
        page->resources = {image};
        channel.Put(page);
    }
    const PartPtr first = channel.Next()->part;
    const PartPtr second = channel.Next()->part;
    EXPECT_EQ(first->resources[0], second->resources[0]);
}

TEST_F(PartChannelTest, WhoSendsWaitsForRoom) {
    PartChannel channel(2);
    std::atomic<int> put = 0;
    std::thread sender([&] {
        for (int i = 0; i < 6; ++i) {
            channel.Put(std::make_shared<Part>(PartKind::FixedPage, "/" + std::to_string(i)));
            ++put;
        }
        channel.Close();
    });
    while (put < 2) Sleep(1);
    Sleep(50);
    EXPECT_EQ(2, put);
    static_cast<void>(channel.Next());
    for (int i = 0; i < 10000 && put < 3; ++i) Sleep(1);
    Sleep(50);
    EXPECT_EQ(3, put);
    EXPECT_EQ(5U, NamesOf(channel).size());
    sender.join();
}

TEST_F(PartChannelTest, AnAbandonedChannelLetsBothEndsGo) {
    PartChannel channel(1);
    channel.Put(ComPtr<IUnknown>(MakeObject<Foreign>().Get()));
    std::thread sender([&] { channel.Put(std::make_shared<Part>(PartKind::FixedPage, "/1")); });
    Sleep(20);
    channel.Abandon();
    sender.join();
    EXPECT_FALSE(channel.Next().has_value());
    PartChannel empty;
    std::thread receiver([&] { EXPECT_FALSE(empty.Next().has_value()); });
    Sleep(20);
    empty.Abandon();
    receiver.join();
}

}  // namespace
}  // namespace devkit::pipeline
