#include "devkit/fuzz/basedocuments.h"

#include <gtest/gtest.h>

#include "devkit/package/xpsdocument.h"
#include "temporaryfolder.h"

namespace devkit::fuzz {
namespace {

package::XpsDocument Open(const BaseDocument& base) {
    auto bytes = std::make_shared<const std::string>(package::BuildZip(base.entries));
    return package::XpsDocument::Open(
        package::Package::Open(std::make_unique<common::MemorySource>(std::move(bytes)), base.name));
}

TEST(BaseDocuments, TheProgramsOwnAreGood) {
    const std::vector<BaseDocument> bases = OwnDocuments();
    ASSERT_EQ(2U, bases.size());
    for (const BaseDocument& base : bases) {
        const package::XpsDocument document = Open(base);
        EXPECT_EQ(std::vector<std::string>{}, document.Findings()) << base.name;
        ASSERT_EQ(1U, document.sequence.documents.size());
        EXPECT_EQ(2U, document.sequence.documents[0].pages.size());
        EXPECT_TRUE(document.sequence.ticket.has_value());
        EXPECT_TRUE(document.sequence.documents[0].ticket.has_value());
        EXPECT_TRUE(document.sequence.documents[0].pages[0].ticket.has_value());
        EXPECT_FALSE(document.sequence.documents[0].pages[1].ticket.has_value());
    }
}

TEST(BaseDocuments, AFolderGivesWhatCanBeReadInTheOrderOfItsNames) {
    const tests::TemporaryFolder folder;
    std::filesystem::create_directories(folder / "b");
    const std::string archive = package::BuildZip({{"a.xml", "<a/>"}, {"b.xml", std::string(5000, 'b')}});
    tests::WriteFileBytes(folder / "b" / "two.oxps", archive);
    tests::WriteFileBytes(folder / "one.XPS", archive);
    tests::WriteFileBytes(folder / "no.xps", "no archive");
    tests::WriteFileBytes(folder / "other.zip", archive);
    tests::WriteFileBytes(folder / "large.xps", archive + std::string(kMostBaseBytes, ' '));
    const std::vector<BaseDocument> bases = DocumentsOf(folder / "");
    ASSERT_EQ(2U, bases.size());
    EXPECT_EQ("b\\two.oxps", bases[0].name);
    EXPECT_EQ("one.XPS", bases[1].name);
    ASSERT_EQ(2U, bases[0].entries.size());
    EXPECT_EQ("b.xml", bases[0].entries[1].name);
    EXPECT_EQ(std::string(5000, 'b'), bases[0].entries[1].data);
}

TEST(BaseDocuments, AFolderThatIsNotThereGivesNone) {
    const tests::TemporaryFolder folder;
    EXPECT_TRUE(DocumentsOf(folder / "none").empty());
}

}  // namespace
}  // namespace devkit::fuzz
