#include "devkit/validate/validatedfilter.h"

#include <regex>
#include <sstream>

#include "programfolder.h"

namespace devkit::validate {

Validated ValidateMode(const char* mode, const std::vector<std::string>& more, const char* filterClass) {
    std::vector<std::string> arguments{
        "validate", filterhost::Text(tests::ProgramFolder() / "testfilter.dll"), "--clsid", filterClass};
    arguments.insert(arguments.end(), more.begin(), more.end());
    Validated validated{filterhost::RunProgram(arguments, mode), {}, {}, {}};
    static const std::regex row(R"(\s*\d+\s+(\S+)\s+(passed|FAILED|skipped)\s.*)");
    std::istringstream lines(validated.ended.out);
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        if (!std::regex_match(line, match, row)) continue;
        auto& names = match[2] == "passed"   ? validated.passed
                      : match[2] == "FAILED" ? validated.failed
                                             : validated.skipped;
        names.insert(match[1]);
    }
    return validated;
}

}  // namespace devkit::validate
