#include "devkit/edges/edgetable.h"

#include "platform/windows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <set>
#include <span>
#include <thread>

#include "devkit/edges/marked.h"

namespace devkit::edges {
namespace {

// This program's table, found as a host finds that of a filter.
std::span<unsigned char> Table() {
    auto* const pFunction = reinterpret_cast<TableFunction*>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(nullptr), kTableFunction)));
    std::size_t size = 0;
    unsigned char* const pTable = pFunction == nullptr ? nullptr : pFunction(&size);
    return {pTable, size};
}

// The edges of a call, on a thread that comes from nowhere.
std::set<std::size_t> EdgesOf(const std::function<void()>& call) {
    const std::span<unsigned char> table = Table();
    std::ranges::fill(table, static_cast<unsigned char>(0));
    std::thread(call).join();
    std::set<std::size_t> edges;
    for (std::size_t i = 0; i < table.size(); ++i) {
        if (table[i] != 0) edges.insert(i);
    }
    return edges;
}
std::set<std::size_t> EdgesOf(int number) {
    return EdgesOf([number] { Marked(number); });
}

TEST(EdgeTable, IsFoundByItsName) {
    ASSERT_NE(nullptr, Table().data());
    EXPECT_LT(Table().size(), kMostEdges + 1);
    EXPECT_TRUE(EdgesOf(0).size() > 1) << EdgesOf(0).size();
}

TEST(EdgeTable, HasTheSameMarksForTheSameWay) {
    EXPECT_EQ(EdgesOf(0), EdgesOf(0));
    EXPECT_EQ(EdgesOf(5), EdgesOf(5));
}

TEST(EdgeTable, HasAMarkForEachEdgeAndNotForEachBlock) {
    const auto added = [](const std::set<std::size_t>& to, const std::set<std::size_t>& from) {
        return std::ranges::count_if(to, [&](std::size_t edge) { return !from.contains(edge); });
    };
    EXPECT_LT(0, added(EdgesOf(1), EdgesOf(0)));
    // Past the condition's body: over no block that the other way does not go over.
    EXPECT_LT(0, added(EdgesOf(0), EdgesOf(1)));
    EXPECT_EQ(0, added(EdgesOf(2), EdgesOf(1)));
}

// Those that come when the loop comes back to where it began.
std::set<std::size_t> EdgesBackOf(void (*pLoop)(int)) {
    const std::set<std::size_t> once = EdgesOf([pLoop] { pLoop(1); });
    const std::set<std::size_t> often = EdgesOf([pLoop] { pLoop(5); });
    std::set<std::size_t> back;
    std::ranges::set_difference(often, once, std::inserter(back, back.end()));
    return back;
}

TEST(EdgeTable, HasAMarkForEachBlockThatFollowsItself) {
    const std::set<std::size_t> back = EdgesBackOf(&Loop);
    ASSERT_FALSE(back.empty());
    EXPECT_NE(back, EdgesBackOf(&OtherLoop));
}

TEST(EdgeTable, LeavesTheThreadsErrorAlone) {
    SetLastError(ERROR_CRC);
    Marked(3);
    EXPECT_EQ(ERROR_CRC, GetLastError());
}

}  // namespace
}  // namespace devkit::edges
