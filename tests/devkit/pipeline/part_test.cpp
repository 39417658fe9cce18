#include "devkit/pipeline/part.h"

#include "devkit/common/bytestore.h"
#include "devkit/pipeline/fixture.h"
#include "devkit/pipeline/fontobfuscation.h"
#include "temporaryfolder.h"
#include "temporaryplace.h"

namespace devkit::pipeline {
namespace {

TEST(Part, KnowsAResourcesKindByItsContentType) {
    EXPECT_EQ(PartKind::Image, KindOfContentType("image/png"));
    EXPECT_EQ(PartKind::Image, KindOfContentType("IMAGE/JPEG"));
    EXPECT_EQ(PartKind::Image, KindOfContentType("image/tiff; charset=x"));
    EXPECT_EQ(PartKind::Image, KindOfContentType("image/vnd.ms-photo ; a=b"));
    EXPECT_EQ(PartKind::Font, KindOfContentType("application/vnd.ms-opentype"));
    EXPECT_EQ(PartKind::Font, KindOfContentType("application/vnd.ms-package.obfuscated-opentype"));
    EXPECT_EQ(PartKind::ColorProfile, KindOfContentType("application/vnd.ms-color.iccprofile"));
    EXPECT_EQ(PartKind::ResourceDictionary,
              KindOfContentType("application/vnd.ms-package.xps-resourcedictionary+xml"));
    EXPECT_EQ(PartKind::PrintTicket, KindOfContentType("application/vnd.ms-printing.printticket+xml"));
    EXPECT_EQ(PartKind::Unknown, KindOfContentType("image/gif"));
    EXPECT_EQ(PartKind::Unknown, KindOfContentType(""));
}

TEST(Part, ReadsTheInputOnceWhileItsBytesAreHeld) {
    int reads = 0;
    Part part(PartKind::FixedPage, InputPart{"/1.fpage", "", [&] {
                                                 ++reads;
                                                 return std::make_shared<const std::string>("markup");
                                             }});
    EXPECT_EQ(0, reads);
    {
        const Bytes first = part.Read();
        const Bytes second = part.Read();
        EXPECT_EQ("markup", *second);
        EXPECT_EQ(1, reads);
    }
    EXPECT_EQ("markup", *part.Read());
    EXPECT_EQ(2, reads);
}

TEST(Part, KeepsNothingOfWhatWasReadWhenItIsPutAside) {
    int reads = 0;
    common::ByteStore store;
    Part part(PartKind::FixedPage, InputPart{"/1.fpage", "", [&] {
                                                 ++reads;
                                                 return std::make_shared<const std::string>("markup");
                                             }});
    const Bytes held = part.Read();
    part.PutAside(store);
    EXPECT_EQ("markup", *part.Read());
    EXPECT_EQ(2, reads);
}

TEST(Part, OldBytesStayReadableUntilTheNewOnesAreClosed) {
    Part part(PartKind::FixedPage, InMemory("/1.fpage", "", "old"));
    const auto writing = part.BeginWriting();
    ASSERT_NE(nullptr, writing);
    EXPECT_TRUE(part.IsBeingWritten());
    EXPECT_EQ(nullptr, part.BeginWriting());
    writing->Append("new", 3);
    EXPECT_EQ("old", *part.Read());
    EXPECT_FALSE(part.IsWritten());
    writing->Close();
    EXPECT_FALSE(part.IsBeingWritten());
    EXPECT_TRUE(part.IsWritten());
    EXPECT_EQ("new", *part.Read());
    EXPECT_EQ("old", *part.ReadInput());
}

TEST(Part, CanBeWrittenAgain) {
    Part part(PartKind::FixedPage, InMemory("/1.fpage", "", "old"));
    Write(part, "");
    EXPECT_EQ("", *part.Read());
    Write(part, "again");
    EXPECT_EQ("again", *part.Read());
}

TEST(Part, WhatIsPutAsideIsReadAsBefore) {
    common::ByteStore store(0);
    Part part(PartKind::FixedPage, InMemory("/1.fpage", "", "old"));
    part.PutAside(store);
    EXPECT_FALSE(part.IsWritten());
    EXPECT_EQ("old", *part.Read());
    Write(part, "new");
    part.PutAside(store);
    part.PutAside(store);
    EXPECT_TRUE(part.IsWritten());
    EXPECT_EQ("new", *part.Read());
    EXPECT_EQ("new", part.Packaged().Read());
    EXPECT_EQ("old", *part.ReadInput());
    Part next(Part::HandedOn{}, part);
    EXPECT_TRUE(next.IsWritten());
    EXPECT_EQ("new", *next.Read());
    EXPECT_EQ("new", *next.ReadInput());
    Write(part, "newer");
    EXPECT_EQ("newer", *part.Read());
    EXPECT_EQ("newer", part.Packaged().Read());
    EXPECT_EQ("new", *next.Read());
}

TEST(Part, PutsAsideInTheStoreAndNotInMemory) {
    const tests::TemporaryFolder folder;
    const tests::TemporaryPlace place(folder / "");
    common::ByteStore store(0);
    Part part(PartKind::PrintTicket, "/new.xml");
    Write(part, "ticket");
    const std::weak_ptr<const std::string> bytes = part.Read();
    part.PutAside(store);
    EXPECT_TRUE(bytes.expired());
    EXPECT_EQ(1U, folder.Names().size());
    EXPECT_EQ("ticket", *part.Read());
}

TEST(Part, WhatWasNotPutAsideIsNoFinalChange) {
    common::ByteStore store;
    Part page(PartKind::FixedPage, {"/1.fpage", "", nullptr});
    EXPECT_FALSE(page.FinalChange());
    page.place = PagePlace{0, 0};
    EXPECT_TRUE(page.FinalChange().value().IsNone());
    Write(page, "<new/>");
    EXPECT_FALSE(page.FinalChange());
    page.PutAside(store);
    EXPECT_FALSE(page.FinalChange().value().IsNone());
    page.ticket = Made(PartKind::PrintTicket, "/t", "ticket");
    EXPECT_FALSE(page.FinalChange());
    page.ticket->PutAside(store);
    EXPECT_TRUE(page.FinalChange().value().ticketReplaced);
    const auto writing = page.BeginWriting();
    EXPECT_FALSE(page.FinalChange());
}

TEST(Part, ANewFontThatWasPutAsideIsObfuscatedInThePackage) {
    common::ByteStore store(0);
    const std::string name = "/{12345678-1234-1234-1234-123456789ABC}.odttf";
    Part font(PartKind::Font, name);
    font.obfuscate = true;
    const std::string plain(64, 'f');
    Write(font, plain);
    font.PutAside(store);
    EXPECT_EQ(plain, *font.Read());
    EXPECT_EQ(ToggleObfuscation(plain, name), font.Packaged().Read());
}

TEST(Part, ANewOneHasNoBytesUntilItIsWritten) {
    Part part(PartKind::PrintTicket, "/new.xml");
    EXPECT_TRUE(part.IsNew());
    EXPECT_EQ("", *part.Read());
    EXPECT_EQ("PrintTicket /new.xml", part.Title());
}

TEST(Part, WithoutANameIsTitledByItsKind) {
    EXPECT_EQ("XpsDocument", Part(PartKind::XpsDocument, std::string()).Title());
}

}  // namespace
}  // namespace devkit::pipeline
