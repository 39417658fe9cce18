#include "devkit/pipeline/part.h"

#include "devkit/pipeline/fixture.h"

namespace devkit::pipeline {
namespace {

TEST(Part, KnowsAResourcesKindByItsContentType) {
    EXPECT_EQ(KindOfContentType("image/png"), PartKind::Image);
    EXPECT_EQ(KindOfContentType("IMAGE/JPEG"), PartKind::Image);
    EXPECT_EQ(KindOfContentType("image/tiff; charset=x"), PartKind::Image);
    EXPECT_EQ(KindOfContentType("image/vnd.ms-photo ; a=b"), PartKind::Image);
    EXPECT_EQ(KindOfContentType("application/vnd.ms-opentype"), PartKind::Font);
    EXPECT_EQ(KindOfContentType("application/vnd.ms-package.obfuscated-opentype"), PartKind::Font);
    EXPECT_EQ(KindOfContentType("application/vnd.ms-color.iccprofile"), PartKind::ColorProfile);
    EXPECT_EQ(KindOfContentType("application/vnd.ms-package.xps-resourcedictionary+xml"),
              PartKind::ResourceDictionary);
    EXPECT_EQ(KindOfContentType("application/vnd.ms-printing.printticket+xml"), PartKind::PrintTicket);
    EXPECT_EQ(KindOfContentType("image/gif"), PartKind::Unknown);
    EXPECT_EQ(KindOfContentType(""), PartKind::Unknown);
}

TEST(Part, ReadsTheInputOnceWhileItsBytesAreHeld) {
    int reads = 0;
    Part part(PartKind::FixedPage, InputPart{"/1.fpage", "", [&] {
                                                 ++reads;
                                                 return std::make_shared<const std::string>("markup");
                                             }});
    EXPECT_EQ(reads, 0);
    {
        const Bytes first = part.Read();
        const Bytes second = part.Read();
        EXPECT_EQ(*second, "markup");
        EXPECT_EQ(reads, 1);
    }
    EXPECT_EQ(*part.Read(), "markup");
    EXPECT_EQ(reads, 2);
}

TEST(Part, OldBytesStayReadableUntilTheNewOnesAreClosed) {
    Part part(PartKind::FixedPage, InMemory("/1.fpage", "", "old"));
    const auto writing = part.BeginWriting();
    ASSERT_NE(writing, nullptr);
    EXPECT_TRUE(part.IsBeingWritten());
    EXPECT_EQ(part.BeginWriting(), nullptr);
    writing->Append("new", 3);
    EXPECT_EQ(*part.Read(), "old");
    EXPECT_FALSE(part.IsWritten());
    writing->Close();
    EXPECT_FALSE(part.IsBeingWritten());
    EXPECT_TRUE(part.IsWritten());
    EXPECT_EQ(*part.Read(), "new");
    EXPECT_EQ(*part.ReadInput(), "old");
}

TEST(Part, CanBeWrittenAgain) {
    Part part(PartKind::FixedPage, InMemory("/1.fpage", "", "old"));
    part.BeginWriting()->Close();
    EXPECT_EQ(*part.Read(), "");
    const auto writing = part.BeginWriting();
    writing->Append("again", 5);
    writing->Close();
    EXPECT_EQ(*part.Read(), "again");
}

TEST(Part, ANewOneHasNoBytesUntilItIsWritten) {
    Part part(PartKind::PrintTicket, "/new.xml");
    EXPECT_TRUE(part.IsNew());
    EXPECT_EQ(*part.Read(), "");
    EXPECT_EQ(part.Title(), "PrintTicket /new.xml");
}

TEST(Part, WithoutANameIsTitledByItsKind) {
    EXPECT_EQ(Part(PartKind::XpsDocument, std::string()).Title(), "XpsDocument");
}

}  // namespace
}  // namespace devkit::pipeline
