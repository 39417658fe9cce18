#include "devkit/filterhost/reportfile.h"

#include <gtest/gtest.h>

#include "devkit/filterhost/exitstatus.h"
#include "temporaryfolder.h"
#include "thrown.h"

namespace devkit::filterhost {
namespace {

using tests::ReadFileBytes;
using tests::TemporaryFolder;

TEST(ReportFile, IsWholeAfterEveryAddition) {
    const TemporaryFolder folder;
    tests::WriteFileBytes(folder / "r", "old and longer than what comes");
    ReportFile file(folder / "r", "--json", "[", "]\n");
    EXPECT_EQ("[]\n", ReadFileBytes(folder / "r"));
    file.Add("1");
    EXPECT_EQ("[1]\n", ReadFileBytes(folder / "r"));
    file.Add(",2");
    file.ReplaceHead("(");
    EXPECT_EQ("(1,2]\n", ReadFileBytes(folder / "r"));
    EXPECT_EQ(std::set<std::string>{"r"}, folder.Names());
}

TEST(ReportFile, OneThatAnotherWritesIsLeftToIt) {
    const TemporaryFolder folder;
    ReportFile file(folder / "r", "--json", "[", "]");
    const std::string refusal =
        tests::MessageOf<UsageError>([&] { ReportFile(folder / "r", "--json", "{", "}"); });
    EXPECT_TRUE(refusal.starts_with("--json: cannot be written: ")) << refusal;
    EXPECT_TRUE(refusal.ends_with(", " + common::PathText(folder / "r"))) << refusal;
    file.Add("1");
    EXPECT_EQ("[1]", ReadFileBytes(folder / "r"));
    EXPECT_EQ(std::set<std::string>{"r"}, folder.Names());
}

}  // namespace
}  // namespace devkit::filterhost
