#include "devkit/filterhost/texttable.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace devkit::filterhost {
namespace {

TEST(TextTable, KeepsATextOnceAndNamesItByItsNumber) {
    TextTable table;
    EXPECT_EQ(0U, table.Add("one"));
    EXPECT_EQ(1U, table.Add("two"));
    EXPECT_EQ(0U, table.Add("one"));
    EXPECT_EQ(std::nullopt, table.Add(std::nullopt));
    EXPECT_EQ(2U, table.Add(""));
    EXPECT_EQ((std::deque<std::string>{"one", "two", ""}), table.All());
}

TEST(TextTable, KnowsItsTextsAfterAMove) {
    constexpr TextId kMany = 1000;
    TextTable table;
    for (TextId i = 0; i < kMany; ++i) table.Add("text " + std::to_string(i));
    TextTable moved = std::move(table);
    for (TextId i = 0; i < kMany; ++i) EXPECT_EQ(i, moved.Add("text " + std::to_string(i)));
    EXPECT_EQ(kMany, moved.All().size());
}

}  // namespace
}  // namespace devkit::filterhost
