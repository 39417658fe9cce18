#include "devkit/common/recordlist.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <optional>

#include "temporaryplace.h"

namespace devkit::common {
namespace {

struct Inner {
    std::optional<std::string> text;
    std::optional<double> number;

    friend bool operator==(const Inner&, const Inner&) = default;
};
struct Outer {
    std::string name;
    std::optional<Inner> inner;
    bool flag = false;
    std::chrono::nanoseconds time{0};
    Inner always;
    std::vector<Inner> list;

    friend bool operator==(const Outer&, const Outer&) = default;
};
template <typename Visit>
void RecordFields(Visit& visit, MaybeConst<Inner> auto& inner) {
    visit(inner.text, inner.number);
}
template <typename Visit>
void RecordFields(Visit& visit, MaybeConst<Outer> auto& outer) {
    visit(outer.name, outer.inner, outer.flag, outer.time, outer.always, outer.list);
}

Outer Whole() {
    return {"name",
            Inner{"text", 1.5},
            true,
            std::chrono::nanoseconds(-7),
            {std::string("a\0b", 3), {}},
            {Inner{"one", {}}, Inner()}};
}

TEST(RecordTest, AStructureComesBackAsItWas) {
    std::string bytes;
    RecordWriter write(bytes);
    write(Whole(), Outer(), std::string("end"));
    RecordReader read(bytes);
    Outer first;
    // What is unset in the record is unset afterwards.
    Outer second = Whole();
    std::string end;
    read(first, second, end);
    EXPECT_EQ(Whole(), first);
    EXPECT_EQ(Outer(), second);
    EXPECT_EQ("end", end);
    EXPECT_EQ("", read.Rest());
}

TEST(RecordTest, ARecordThatIsCutOffIsAnError) {
    std::string bytes;
    RecordWriter write(bytes);
    write(Whole());
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        Outer outer;
        RecordReader read(std::string_view(bytes).substr(0, size));
        EXPECT_THROW(read(outer), std::out_of_range) << size;
    }
}

std::vector<std::string> AllOf(const RecordList<std::string>& list) {
    std::vector<std::string> all;
    for (const std::string& each : list) all.push_back(each);
    return all;
}

TEST(RecordListTest, HasAllElementsInTheirOrderInMemoryOrNot) {
    constexpr std::size_t kMost = RecordList<std::string>::kInMemory * 3 + 1;
    RecordList<std::string> list;
    std::vector<std::string> expected;
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(expected, AllOf(list));
    for (std::size_t i = 0; i < kMost; ++i) {
        list.push_back("element " + std::to_string(i));
        expected.push_back("element " + std::to_string(i));
        ASSERT_EQ(expected.size(), list.size());
        ASSERT_EQ(expected.back(), list.back());
        if (i % 100 < 2 || i % RecordList<std::string>::kInMemory < 2) {
            ASSERT_EQ(expected, AllOf(list)) << i;
        }
    }
    // Read once more, and after it has moved.
    EXPECT_EQ(expected, AllOf(list));
    const RecordList<std::string> moved = std::move(list);
    EXPECT_EQ(expected, AllOf(moved));
}

TEST(RecordListTest, StartsWithWhatItIsGiven) {
    const RecordList<Outer> list({Whole(), Outer()});
    EXPECT_EQ(2U, list.size());
    EXPECT_EQ(Whole(), *list.begin());
}

// The temporary files of this process.
std::size_t CountFiles() {
    const std::string start = "filterhost-" + std::to_string(GetCurrentProcessId()) + "-";
    std::size_t count = 0;
    for (const auto& each : std::filesystem::directory_iterator(std::filesystem::temp_directory_path()))
        count += PathText(each.path().filename()).starts_with(start);
    return count;
}

TEST(RecordListTest, AFewElementsNeedNoFile) {
    const std::size_t before = CountFiles();
    RecordList<std::string> list;
    for (std::size_t i = 0; i < RecordList<std::string>::kInMemory; ++i) list.push_back("x");
    EXPECT_EQ(before, CountFiles());
    list.push_back("x");
    EXPECT_EQ(before + 1, CountFiles());
    list = RecordList<std::string>();
    EXPECT_EQ(before, CountFiles());
}

TEST(RecordListTest, WhereThereCanBeNoFileAllStaysInMemory) {
    RecordList<std::string> list;
    std::vector<std::string> expected;
    {
        const tests::TemporaryPlace nowhere(L"Z:\\there\\is\\no\\such\\folder");
        for (std::size_t i = 0; i < RecordList<std::string>::kInMemory * 2; ++i) {
            list.push_back(std::to_string(i));
            expected.push_back(std::to_string(i));
        }
    }
    list.push_back("last");
    expected.emplace_back("last");
    EXPECT_EQ(expected, AllOf(list));
}

}  // namespace
}  // namespace devkit::common
