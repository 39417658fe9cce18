#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace devkit::filterhost {

// How filterhost.exe ended, and what it wrote (UTF-8).
struct Ended {
    unsigned long status = 0;
    std::string out;
    std::string error;
};

// Runs the built program with the arguments (UTF-8) and waits for its end, at most two minutes; status 9999
// after that. The environment variable TESTFILTER_MODE is set to `mode` for it.
[[nodiscard]] Ended RunProgram(const std::vector<std::string>& arguments, const char* mode = "");

// Arguments that run the test filter over the inputs, with the given further ones.
[[nodiscard]] std::vector<std::string> RunArguments(std::vector<std::string> more);

// A run of the test filter over minimal.xps, with the inputs of its report.
struct Reported {
    Ended ended;
    std::filesystem::path output;  // where the document is, if one was written
    nlohmann::json report;
};

// In a folder of the test's own of that name, with the given further arguments.
[[nodiscard]] Reported RunReported(const std::string& folder, const char* mode,
                                   const std::vector<std::string>& more);

// A folder of the test's own, empty at its start.
[[nodiscard]] std::filesystem::path FreshFolder(const std::string& name);
[[nodiscard]] std::string Text(const std::filesystem::path& path);
[[nodiscard]] std::string FileBytes(const std::filesystem::path& path);
// The inputs of a report (--json).
[[nodiscard]] nlohmann::json ReportedInputs(const std::filesystem::path& report);
// A sample document of the project.
[[nodiscard]] std::filesystem::path Sample(const std::string& name);

}  // namespace devkit::filterhost
