#include "devkit/common/file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>

#include "devkit/common/error.h"
#include "temporaryfolder.h"
#include "thrown.h"

namespace devkit::common {
namespace {

using tests::MessageOf;
using tests::ReadFileBytes;
using tests::TemporaryFolder;
using tests::WriteFileBytes;
using Names = std::set<std::string>;

TEST(FileSourceTest, ReadsAnywhere) {
    const TemporaryFolder folder;
    WriteFileBytes(folder / "a", "0123456789");
    FileSource source(folder / "a");
    std::string buffer(4, '-');
    EXPECT_EQ(10U, source.Size());
    EXPECT_EQ(4U, source.ReadAt(3, buffer.data(), 4));
    EXPECT_EQ("3456", buffer);
    EXPECT_EQ(2U, source.ReadAt(8, buffer.data(), 4));
    EXPECT_EQ("8956", buffer);
    EXPECT_EQ(0U, source.ReadAt(10, buffer.data(), 4));
    EXPECT_EQ(0U, source.ReadAt(1'000'000'000'000, buffer.data(), 4));
}

TEST(FileSourceTest, AFileThatIsNotThereIsAnError) {
    const TemporaryFolder folder;
    const std::string error = MessageOf<Error>([&] { FileSource(folder / "none"); });
    EXPECT_TRUE(error.starts_with("cannot be opened: ")) << error;
    EXPECT_TRUE(error.ends_with(", " + PathText(folder / "none"))) << error;
}

TEST(FileSourceTest, AFolderIsAnError) {
    const TemporaryFolder folder;
    EXPECT_TRUE(MessageOf<Error>([&] { FileSource(folder / "."); }).starts_with("cannot be opened: "));
}

TEST(OutputFileTest, AppearsWhenItIsWhole) {
    const TemporaryFolder folder;
    OutputFile file(folder / "out");
    file.WriteAt(0, "abcdef", 6);
    file.WriteAt(2, "XY", 2);
    EXPECT_FALSE(folder.Names().contains("out"));
    file.Commit();
    EXPECT_EQ(Names{"out"}, folder.Names());
    EXPECT_EQ("abXYef", ReadFileBytes(folder / "out"));
}

TEST(OutputFileTest, WritesOfAnySizeInAnyOrderMakeTheWhole) {
    const TemporaryFolder folder;
    std::string expected;
    {
        OutputFile file(folder / "out");
        std::uint32_t random = 1;
        const auto next = [&random](std::uint32_t below) {
            random = random * 1'664'525 + 1'013'904'223;
            return (random >> 8) % below;
        };
        for (int i = 0; i < 400; ++i) {
            const std::string bytes(next(i % 40 == 0 ? 700'000 : 5'000), static_cast<char>('a' + i % 26));
            // Now and then back over what is there, as an archive does with the head of an entry.
            const bool back = i % 3 == 0 && !expected.empty();
            const std::size_t at = back ? next(static_cast<std::uint32_t>(expected.size())) : expected.size();
            file.WriteAt(at, bytes.data(), bytes.size());
            expected.resize(std::max(expected.size(), at + bytes.size()));
            expected.replace(at, bytes.size(), bytes);
        }
        file.Commit();
    }
    EXPECT_TRUE(ReadFileBytes(folder / "out") == expected);
    FileSource source(folder / "out");
    std::string read(expected.size(), '\0');
    for (std::size_t at = 0, size = 1; at < read.size(); at += size, size = size * 3 % 300'007 + 1)
        source.ReadAt(at, read.data() + at, std::min(size, read.size() - at));
    EXPECT_TRUE(read == expected);
}

TEST(OutputFileTest, ReplacesAFileThatIsThere) {
    const TemporaryFolder folder;
    WriteFileBytes(folder / "out", "old and longer");
    {
        OutputFile file(folder / "out");
        file.WriteAt(0, "new", 3);
        EXPECT_EQ("old and longer", ReadFileBytes(folder / "out"));
        file.Commit();
    }
    EXPECT_EQ(Names{"out"}, folder.Names());
    EXPECT_EQ("new", ReadFileBytes(folder / "out"));
}

TEST(SaveFile, PutsTheBytesInThePlaceOfAFile) {
    const TemporaryFolder folder;
    WriteFileBytes(folder / "out", "old and longer");
    SaveFile(folder / "out", "new");
    EXPECT_EQ(Names{"out"}, folder.Names());
    EXPECT_EQ("new", ReadFileBytes(folder / "out"));
}

TEST(OutputFileTest, LeavesNothingWithoutCommit) {
    const TemporaryFolder folder;
    WriteFileBytes(folder / "out", "old");
    {
        OutputFile file(folder / "out");
        file.WriteAt(0, "new", 3);
        EXPECT_EQ(2U, folder.Names().size());
    }
    EXPECT_EQ(Names{"out"}, folder.Names());
    EXPECT_EQ("old", ReadFileBytes(folder / "out"));
}

TEST(OutputFileTest, TwoOutputsOfOneNameDoNotMeet) {
    const TemporaryFolder folder;
    OutputFile first(folder / "out");
    OutputFile second(folder / "out");
    first.WriteAt(0, "1", 1);
    second.WriteAt(0, "2", 1);
    second.Commit();
    EXPECT_EQ("2", ReadFileBytes(folder / "out"));
    first.Commit();
    EXPECT_EQ("1", ReadFileBytes(folder / "out"));
    EXPECT_EQ(Names{"out"}, folder.Names());
}

TEST(OutputFileTest, AFolderThatIsNotThereIsAnError) {
    const TemporaryFolder folder;
    const std::string error = MessageOf<Error>([&] { OutputFile(folder / "none" / "out"); });
    EXPECT_TRUE(error.starts_with("cannot be written: ")) << error;
    EXPECT_TRUE(error.ends_with(", " + PathText(folder / "none" / "out"))) << error;
}

TEST(OutputFileTest, AFolderInItsPlaceIsAnErrorThatLeavesNothing) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "out");
    OutputFile file(folder / "out");
    file.WriteAt(0, "x", 1);
    EXPECT_TRUE(MessageOf<Error>([&] { file.Commit(); }).starts_with("cannot be written: "));
    EXPECT_EQ(Names{"out"}, folder.Names());
}

TEST(OutputFileTest, NamesOutsideAsciiWork) {
    const TemporaryFolder folder;
    OutputFile file(folder / L"\x00E9\x4E2D.xps");
    file.Commit();
    EXPECT_TRUE(std::filesystem::exists(folder / L"\x00E9\x4E2D.xps"));
    EXPECT_TRUE(PathText(folder / L"\x00E9\x4E2D.xps").ends_with("\xC3\xA9\xE4\xB8\xAD.xps"));
}

}  // namespace
}  // namespace devkit::common
