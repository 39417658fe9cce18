#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <ostream>
#include <regex>
#include <sstream>

#include "devkit/validate/battery.h"
#include "devkit/validate/validatedfilter.h"

// What docs/checks.md says of the battery, and of which test catches which misbehaviour, is true.

namespace devkit::validate {
namespace {

using Names = std::set<std::string>;
using Path = std::filesystem::path;

std::vector<std::string> CellsOf(const std::string& row) {
    std::vector<std::string> cells;
    static const std::regex cell(R"(\|\s*([^|]*?)\s*(?=\|))");
    for (std::sregex_iterator match(row.begin(), row.end(), cell), end; match != end; ++match)
        cells.push_back((*match)[1]);
    return cells;
}

// The rows of the table whose first column is headed so.
std::vector<std::vector<std::string>> RowsOf(const std::string& head) {
    std::vector<std::vector<std::string>> rows;
    std::ifstream file(Path(SOURCE_FOLDER) / "docs" / "checks.md");
    bool isInTable = false;
    for (std::string line; std::getline(file, line);) {
        if (!line.starts_with("|")) isInTable = false;
        if (isInTable && line.starts_with("| `")) rows.push_back(CellsOf(line));
        if (line.starts_with("| " + head + " |")) isInTable = true;
    }
    return rows;
}

// What stands between backquotes.
Names Quoted(const std::string& cell) {
    Names names;
    static const std::regex quoted("`([^`]+)`");
    for (std::sregex_iterator match(cell.begin(), cell.end(), quoted), end; match != end; ++match)
        names.insert((*match)[1]);
    return names;
}

std::string OnlyName(const std::string& cell) {
    const Names names = Quoted(cell);
    return names.empty() ? std::string() : *names.begin();
}

struct Row {
    std::string mode;
    unsigned level = 0;  // 0: no test catches it
    Names tests;
};
std::ostream& operator<<(std::ostream& stream, const Row& row) { return stream << row.mode; }

std::vector<Row> ReadMatrix() {
    std::vector<Row> matrix;
    for (const std::vector<std::string>& cells : RowsOf("Misbehaviour")) {
        const unsigned level = cells.at(1).empty() ? 0 : static_cast<unsigned>(std::stoul(cells[1]));
        matrix.push_back({OnlyName(cells[0]), level, Quoted(cells.at(2))});
    }
    return matrix;
}

unsigned LevelOf(const std::string& name) {
    for (const validate::Test& test : Battery())
        if (test.name == name) return test.level;
    return 0;
}

bool IsLong() { return std::getenv("PAGEVALIDATE_LONG") != nullptr; }

Validated ValidateRow(const Row& row, std::vector<std::string> more) {
    // Whatever the part at which a job is cancelled; each costs the time of a hang.
    if (row.level == 6) more.insert(more.end(), {"--cases", "1"});
    // Whatever the page asks for.
    if (row.level == 5) more.insert(more.end(), {"--cases", "3"});
    if (!row.mode.starts_with("stream:")) return ValidateMode(row.mode.c_str(), more);
    more.insert(more.end(), {"--input", "stream", "--output", "stream"});
    return ValidateMode(row.mode.c_str(), more, kStreamClass);
}

class MatrixTest : public testing::TestWithParam<Row> {};

// In the short form the tests that are named, and level 1 for what begins there; in the long form every test
// of the levels below and of the highest that is named.
TEST_P(MatrixTest, SaysWhichTestsCatchTheMode) {
    const Row& row = GetParam();
    if (IsLong() || row.level == 0) {
        unsigned highest = 3;
        for (const std::string& name : row.tests) highest = std::max(highest, LevelOf(name));
        const Validated all = ValidateRow(row, {"--level", std::to_string(highest), "--timeout", "4"});
        EXPECT_EQ(row.tests, all.failed) << all.ended.out << all.ended.error;
    }
    if (row.level == 0) return;
    std::string names;
    for (const std::string& name : row.tests) names += (names.empty() ? "^(" : "|") + name;
    // All of them fail: what hangs need not be waited for as long as where a slow machine must not look like
    // it.
    const Validated named = ValidateRow(row, {"--level", "10", "--include", names + ")$", "--timeout", "2"});
    EXPECT_EQ(row.tests, named.failed) << named.ended.out << named.ended.error;
    EXPECT_EQ(1U, named.ended.status);
}

INSTANTIATE_TEST_SUITE_P(Table, MatrixTest, testing::ValuesIn(ReadMatrix()));

TEST(Matrix, HasEachModeAndTheLevelOfItsFirstTest) {
    Names modes;
    for (const auto& cells : RowsOf("Mode")) modes.insert(OnlyName(cells[0]));
    Names listed;
    for (const Row& row : ReadMatrix()) {
        EXPECT_TRUE(listed.insert(row.mode).second) << row.mode << " twice";
        unsigned lowest = row.tests.empty() ? 0 : kHighestLevel;
        for (const std::string& name : row.tests) lowest = std::min(lowest, LevelOf(name));
        EXPECT_EQ(lowest, row.level) << row.mode;
    }
    EXPECT_EQ(modes, listed);
}

TEST(Matrix, HasAModeThatEachTestCatches) {
    Names caught;
    for (const Row& row : ReadMatrix()) caught.insert(row.tests.begin(), row.tests.end());
    // The host writes the document, and takes care that it can be read whatever the filter sends.
    caught.insert("output-readable");
    Names all;
    for (const validate::Test& test : Battery()) all.insert(std::string(test.name));
    EXPECT_EQ(all, caught);
}

TEST(Matrix, LevelOneLooksAtTheModuleAlone) {
    const Names ofModule{"any-class",        "aggregate",       "take-null",        "pin-module",
                         "throw-initialize", "fail-initialize", "answer-any-query", "unloadable-too-soon"};
    for (const Row& row : ReadMatrix()) {
        const bool isOfModule = row.mode.starts_with("initialize:") || ofModule.contains(row.mode);
        EXPECT_EQ(isOfModule, row.level == 1) << row.mode;
    }
    for (const char* const mode : {"crash", "leak-self", "leave-thread"}) {
        const Validated first = ValidateMode(mode, {"--level", "1"});
        EXPECT_EQ(0U, first.ended.status) << mode << first.ended.out;
    }
}

TEST(Battery, IsOnItsPage) {
    std::vector<std::vector<std::string>> page = RowsOf("Test");
    ASSERT_EQ(Battery().size(), page.size());
    for (std::size_t i = 0; i < page.size(); ++i) {
        const validate::Test& test = Battery()[i];
        EXPECT_EQ("`" + std::string(test.name) + "`", page[i].at(0));
        EXPECT_EQ(std::to_string(test.level), page[i].at(1)) << test.name;
        EXPECT_EQ(test.claim, page[i].at(2)) << test.name;
        EXPECT_EQ(test.advice, page[i].at(3)) << test.name;
    }
}

}  // namespace
}  // namespace devkit::validate
