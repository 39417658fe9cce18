#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <ostream>
#include <regex>
#include <set>
#include <sstream>

#include <nlohmann/json.hpp>

#include "devkit/common/checks.h"
#include "devkit/filterhost/program.h"

// The table of docs/checks.md of what a filter can do, and what the host answers, is true.

namespace devkit::filterhost {
namespace {

using Json = nlohmann::json;
using Path = std::filesystem::path;
using Strings = std::vector<std::string>;

constexpr const char* kStreamClass = "{C1D7F0A2-35D4-4E0B-9C53-6B1C5A7E9D12}";

struct Mode {
    std::string name;
    std::string input = "minimal.xps";
    Strings options;
    unsigned long status = 0;
    Strings lines;  // "…" stands for any text
};
std::ostream& operator<<(std::ostream& stream, const Mode& mode) { return stream << mode.name; }

Strings Split(const std::string& text, const std::string& separator) {
    Strings pieces;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find(separator, start)) != std::string::npos;
         start = end + separator.size())
        pieces.push_back(text.substr(start, end - start));
    pieces.push_back(text.substr(start));
    return pieces;
}

std::string Trimmed(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(' ');
    if (begin == std::string::npos) return {};
    return text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

// What stands between the backquotes.
Strings Quoted(const std::string& cell) {
    Strings texts;
    const Strings pieces = Split(cell, "`");
    for (std::size_t i = 1; i + 1 < pieces.size(); i += 2) texts.push_back(pieces[i]);
    return texts;
}

std::vector<Mode> ReadTable() {
    std::vector<Mode> modes;
    std::ifstream file(Path(SOURCE_FOLDER) / "docs" / "checks.md");
    bool isInTable = false;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("| Mode |")) isInTable = true;
        if (!isInTable || !line.starts_with("| `")) continue;
        const Strings cells = Split(line, " | ");
        if (cells.size() != 5) throw std::runtime_error("not five cells: " + line);
        Mode mode;
        mode.name = Quoted(cells[0]).at(0);
        if (const Strings options = Quoted(cells[2]); !options.empty()) mode.options = Split(options[0], " ");
        if (!mode.options.empty() && mode.options[0].ends_with(".xps")) {
            mode.input = mode.options[0];
            mode.options.erase(mode.options.begin());
        }
        mode.status = std::stoul(Trimmed(cells[3]));
        mode.lines = Quoted(cells[4]);
        modes.push_back(std::move(mode));
    }
    return modes;
}

// A rule or a finding that docs/checks.md explains.
struct Explained {
    std::string id;
    std::string text;  // what the host says
    std::string advice;
    bool isRule = false;
};

std::vector<Explained> ReadExplained() {
    std::vector<Explained> all;
    std::ifstream file(Path(SOURCE_FOLDER) / "docs" / "checks.md");
    bool isInTable = false;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("| Id |")) isInTable = true;
        if (line.empty()) isInTable = false;
        if (!isInTable || !line.starts_with("| ")) continue;
        const Strings cells = Split(line, " | ");
        const Strings texts = Quoted(cells.at(1));
        if (texts.empty()) continue;
        const std::string& advice = cells.back();
        // Of a rule it says where it comes from, too.
        all.push_back({cells[0].substr(2), texts[0], advice.substr(0, advice.size() - 2), cells.size() == 5});
    }
    return all;
}

bool Matches(const std::string& line, const std::string& pattern) {
    static const std::regex special(R"([.^$|()\[\]{}*+?\\])");
    std::string expression;
    for (const std::string& piece : Split(pattern, "\xE2\x80\xA6"))
        expression += std::regex_replace(piece, special, R"(\$&)") + ".*";
    expression.resize(expression.size() - 2);
    return std::regex_match(line, std::regex(expression));
}

// The lines of the program about the input, without the names in front; and of its summary what a filter did
// with the parts, and the findings.
Strings LinesOf(const Ended& ended, const std::string& input) {
    Strings lines;
    const std::string prefix = "filterhost: " + input + ": ";
    for (const std::string& line : Split(ended.error, "\n")) {
        if (line.starts_with(prefix)) lines.push_back(line.substr(prefix.size()));
    }
    for (const std::string& line : Split(ended.out, "\n")) {
        if (line.starts_with("  of ") || line.starts_with("  finding: ")) lines.push_back(line.substr(2));
    }
    return lines;
}

// What was said is in the report, too.
void CheckReport(const Path& report, const Strings& lines) {
    const Json json = ReportedInputs(report);
    ASSERT_EQ(1U, json.size());
    for (const std::string& line : lines) {
        const auto holds = [&](const char* key, const char* prefix) {
            const std::string text = line.substr(std::string(prefix).size());
            return std::ranges::any_of(json[0][key], [&](const Json& each) { return each["text"] == text; });
        };
        if (line.starts_with("breach: ")) {
            EXPECT_TRUE(holds("breaches", "breach: ")) << line;
        } else if (line.starts_with("finding: ")) {
            EXPECT_TRUE(holds("findings", "finding: ")) << line;
        }
    }
    if (!json[0]["crash"].is_null()) {
        ASSERT_FALSE(lines.empty());
        EXPECT_TRUE(lines[0].starts_with(json[0]["crash"]["text"].get<std::string>())) << json[0]["crash"];
    }
}

// Each complaint has the id under which docs/checks.md explains its text.
void CheckIds(const Path& report) {
    const std::vector<Explained> all = ReadExplained();
    const Json input = ReportedInputs(report).at(0);
    for (const char* const key : {"breaches", "findings"}) {
        for (const Json& complaint : input[key]) {
            const auto explained = std::ranges::find(all, complaint["id"].get<std::string>(), &Explained::id);
            ASSERT_NE(all.end(), explained) << complaint;
            EXPECT_TRUE(Matches(complaint["text"], explained->text)) << complaint;
            EXPECT_EQ(Json(explained->advice), complaint["advice"]) << complaint;
        }
    }
}

class ModeTest : public testing::TestWithParam<Mode> {};

TEST_P(ModeTest, IsAnsweredAsTheTableSays) {
    const Mode& mode = GetParam();
    const Path report = FreshFolder("mode") / "r.json";
    const std::string input = Text(Sample(mode.input));
    Strings arguments{input, "--no-output", "--json", Text(report)};
    arguments.insert(arguments.end(), mode.options.begin(), mode.options.end());
    arguments = RunArguments(arguments);
    if (mode.name.starts_with("stream:")) {
        arguments[4] = kStreamClass;
        arguments.insert(arguments.end(), {"--input", "stream", "--output", "stream"});
    }
    const Ended ended = RunProgram(arguments, mode.name.c_str());
    EXPECT_EQ(mode.status, ended.status) << ended.error;
    const Strings lines = LinesOf(ended, input);
    ASSERT_EQ(mode.lines.size(), lines.size()) << ended.error << ended.out;
    for (std::size_t i = 0; i < lines.size(); ++i)
        EXPECT_TRUE(Matches(lines[i], mode.lines[i])) << lines[i] << "\nis not\n" << mode.lines[i];
    CheckReport(report, lines);
    CheckIds(report);
}

INSTANTIATE_TEST_SUITE_P(Table, ModeTest, testing::ValuesIn(ReadTable()));

TEST(Modes, AreAllInTheTable) {
    std::set<std::string> listed;
    for (const Mode& mode : ReadTable())
        EXPECT_TRUE(listed.insert(mode.name).second) << mode.name << " twice";
    EXPECT_LE(70U, listed.size());
    std::string source;
    for (const auto& file : std::filesystem::directory_iterator(Path(SOURCE_FOLDER) / "tests" / "devkit" /
                                                                "pipeline" / "testfilter")) {
        source += FileBytes(file.path());
    }
    const std::regex named(R"re((?:Is\(|m(?:_m)?ode == |BadTicket\{)"([^"]+)")re");
    std::set<std::string> missing;
    for (std::sregex_iterator match(source.begin(), source.end(), named), end; match != end; ++match) {
        if (!listed.contains((*match)[1])) missing.insert((*match)[1]);
    }
    // Of the tests of fuzzing, and of those of properties.
    EXPECT_EQ((std::set<std::string>{"doors", "exit-process-for-names"}), missing);
}

TEST(Modes, BreakRulesThatAreExplained) {
    const std::vector<Explained> all = ReadExplained();
    for (const Mode& mode : ReadTable()) {
        for (const std::string& line : mode.lines) {
            const bool isBreach = line.starts_with("breach: ");
            if (!isBreach && !line.starts_with("finding: ")) continue;
            const std::string text = line.substr(line.find(' ') + 1);
            const auto explains = [&](const Explained& each) {
                return each.isRule == isBreach && Matches(text, each.text);
            };
            EXPECT_TRUE(std::ranges::any_of(all, explains)) << line;
        }
    }
}

TEST(Checks, HaveTheIdsAndTheAdviceOfTheirPage) {
    std::map<std::string, std::string> explained;
    for (const Explained& each : ReadExplained())
        EXPECT_TRUE(explained.emplace(each.id, each.advice).second) << each.id << " twice";
    std::map<std::string, std::string> known;
    for (const common::CheckFacts& check : common::AllChecks()) known.emplace(check.id, check.advice);
    EXPECT_EQ(explained, known);
    EXPECT_EQ(known.size(), common::AllChecks().size());
}

}  // namespace
}  // namespace devkit::filterhost
