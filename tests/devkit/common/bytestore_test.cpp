#include "devkit/common/bytestore.h"

#include <gtest/gtest.h>

#include <optional>
#include <thread>
#include <vector>

#include "devkit/common/error.h"
#include "temporaryfolder.h"
#include "temporaryplace.h"
#include "thrown.h"

namespace devkit::common {
namespace {

using tests::TemporaryFolder;
using tests::TemporaryPlace;

std::shared_ptr<const std::string> Bytes(std::size_t size, char first) {
    std::string bytes(size, first);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(first + static_cast<int>(i % 7));
    return std::make_shared<const std::string>(std::move(bytes));
}

TEST(ByteStore, KeepsInMemoryUpToItsBound) {
    const TemporaryFolder folder;
    const TemporaryPlace place(folder / "");
    ByteStore store(10);
    EXPECT_EQ("12345", store.Keep(std::make_shared<const std::string>("12345")).Read());
    EXPECT_EQ("67890", store.Keep(std::make_shared<const std::string>("67890")).Read());
    EXPECT_TRUE(folder.Names().empty());
    EXPECT_EQ("x", store.Keep(std::make_shared<const std::string>("x")).Read());
    EXPECT_EQ(1U, folder.Names().size());
    // What needs no room is in the way of nobody.
    EXPECT_EQ("", store.Keep(std::make_shared<const std::string>()).Read());
}

TEST(ByteStore, GivesBackWhatItWasGivenInAnyOrder) {
    const TemporaryFolder folder;
    const TemporaryPlace place(folder / "");
    ByteStore store(1000);
    std::vector<std::shared_ptr<const std::string>> given;
    std::vector<Content> kept;
    for (const std::size_t size :
         {400U, 500U, 70'000U, 90'000U, 200'000U, 3U, 1'000'000U, 0U, 300'000U, 77U}) {
        given.push_back(Bytes(size, static_cast<char>('A' + given.size())));
        kept.push_back(store.Keep(given.back()));
    }
    for (std::size_t i = given.size(); i-- > 0;) {
        EXPECT_EQ(given[i]->size(), kept[i].Size());
        EXPECT_TRUE(*given[i] == kept[i].Read()) << i;
    }
    // A piece from the middle, and nothing behind the end.
    std::string piece(8, '-');
    EXPECT_EQ(8U, kept[3].Source().ReadAt(89'000, piece.data(), 8));
    EXPECT_EQ(given[3]->substr(89'000, 8), piece);
    EXPECT_EQ(2U, kept[3].Source().ReadAt(89'998, piece.data(), 8));
    EXPECT_EQ(0U, kept[3].Source().ReadAt(90'000, piece.data(), 8));
}

TEST(ByteStore, TheFileLivesAsLongAsAnybodyReadsIt) {
    const TemporaryFolder folder;
    const TemporaryPlace place(folder / "");
    std::optional<Content> kept;
    {
        ByteStore store(0);
        kept = store.Keep(Bytes(300'000, 'a'));
    }
    EXPECT_EQ(1U, folder.Names().size());
    EXPECT_EQ(*Bytes(300'000, 'a'), kept->Read());
    kept.reset();
    EXPECT_TRUE(folder.Names().empty());
}

TEST(ByteStore, ServesSeveralThreads) {
    ByteStore store(0);
    std::vector<std::thread> threads(4);
    std::vector<int> wrong(threads.size());
    for (std::size_t i = 0; i < threads.size(); ++i) {
        threads[i] = std::thread([&, i] {
            for (std::size_t size = 1; size < 200; ++size) {
                const auto bytes = Bytes(size * 97, static_cast<char>('A' + i));
                wrong[i] += store.Keep(bytes).Read() != *bytes;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(std::vector<int>(threads.size()), wrong);
}

TEST(ByteStore, SaysWhyThereIsNoFile) {
    const TemporaryFolder folder;
    const TemporaryPlace place(folder / "nowhere");
    ByteStore store(3);
    EXPECT_EQ("abc", store.Keep(std::make_shared<const std::string>("abc")).Read());
    const auto keep = [&] { static_cast<void>(store.Keep(std::make_shared<const std::string>("d"))); };
    EXPECT_THROW(keep(), StorageError);
    const std::string error = tests::MessageOf<Error>(keep);
    EXPECT_TRUE(error.starts_with("there is no folder for temporary files: ")) << error;
}

}  // namespace
}  // namespace devkit::common
