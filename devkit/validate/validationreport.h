#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "devkit/filterhost/settings.h"
#include "devkit/validate/testresult.h"

namespace devkit::validate {

// The results of a validation for programs, in UTF-8: one JSON object, as docs/validation.schema.json
// describes it.
[[nodiscard]] std::string WriteJson(const filterhost::ValidateSettings& settings,
                                    const std::vector<TestResult>& results);

// The same for build servers, in the form that JUnit's runner for Ant has made common: a test case a test.
[[nodiscard]] std::string WriteJunit(const filterhost::ValidateSettings& settings,
                                     const std::vector<TestResult>& results);

// Replaces a file that is there. Throws UsageError, beginning with the option, when it cannot be written.
void WriteReport(const std::filesystem::path& path, const char* option, const std::string& text);

// The tests that failed in a validation, by what WriteJson made of it. Throws UsageError.
[[nodiscard]] std::set<std::string, std::less<>> ReadFailed(const std::filesystem::path& json);

}  // namespace devkit::validate
