#include "devkit/prntvpt/merge/switches.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include "thrown.h"

namespace devkit::prntvpt {
namespace {

[[nodiscard]] std::string Refusal(std::string_view key, std::string_view value) {
    Switches switches;
    return tests::MessageOf<std::invalid_argument>([&] { SetSwitch(switches, key, value); });
}

TEST(Switches, DefaultsComeFirst) {
    EXPECT_EQ((std::vector<std::string>{"private=known",
                                        "strict=features",
                                        "prefixes=std",
                                        "order=device",
                                        "encoding=utf8",
                                        "whitespace=none",
                                        "duplicates=refuse",
                                        "mixed-values=first",
                                        "orphans=keep",
                                        "fallback=default",
                                        "option-props=strip",
                                        "drop-is-conflict=0",
                                        "thread=enforce",
                                        "bins=job",
                                        "no-scaling=0",
                                        "no-copies=0",
                                        "feed=scored",
                                        "imageable=oriented",
                                        "us=0",
                                        "private-size-names=0",
                                        "snapshot=0"}),
              DescribeSwitches(Switches()));
}

TEST(Switches, EveryValueOfEverySwitchIsReadAsItIsWritten) {
    const std::vector<std::vector<std::string>> table{
        {"private", "known", "strict", "all"},
        {"strict", "features", "options"},
        {"prefixes", "std", "mangled", "default-ns", "local", "collide"},
        {"order", "device", "input", "reversed"},
        {"encoding", "utf8", "utf8-bom", "utf16le"},
        {"whitespace", "none", "pretty", "comments"},
        {"duplicates", "refuse", "first"},
        {"mixed-values", "first", "refuse"},
        {"orphans", "keep", "prune"},
        {"fallback", "default", "nearest"},
        {"option-props", "strip", "keep-perfect"},
        {"drop-is-conflict", "0", "1"},
        {"thread", "enforce", "warn", "off"},
        {"bins", "job", "document", "page"},
        {"no-scaling", "0", "1"},
        {"no-copies", "0", "1"},
        {"feed", "scored", "property", "absent"},
        {"imageable", "oriented", "portrait", "absent"},
        {"us", "0", "1"},
        {"private-size-names", "0", "1"},
        {"snapshot", "0", "174760"},
    };
    for (const std::vector<std::string>& row : table) {
        for (std::size_t index = 1; index < row.size(); ++index) {
            Switches switches;
            SetSwitch(switches, row[0], row[index]);
            const std::vector<std::string> lines = DescribeSwitches(switches);
            EXPECT_NE(lines.end(), std::find(lines.begin(), lines.end(), row[0] + "=" + row[index]))
                << row[0] << " " << row[index];
        }
    }
    EXPECT_EQ(DescribeSwitches(Switches()).size(), table.size());
}

TEST(Switches, RefusesUnknownKeysAndValues) {
    EXPECT_EQ("there is no switch \"privat\"", Refusal("privat", "strict"));
    EXPECT_EQ("switch private: \"Strict\" is none of known, strict, all", Refusal("private", "Strict"));
    EXPECT_EQ("switch us: \"\" is none of 0, 1", Refusal("us", ""));
    EXPECT_EQ("switch snapshot: \"-1\" is none of 0 to 4194304", Refusal("snapshot", "-1"));
    EXPECT_EQ("switch snapshot: \"4194305\" is none of 0 to 4194304", Refusal("snapshot", "4194305"));
}

}  // namespace
}  // namespace devkit::prntvpt
