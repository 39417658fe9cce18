#pragma once

#include <string>
#include <vector>

#include "devkit/filterhost/settings.h"
#include "devkit/validate/testresult.h"

namespace devkit::validate {

// The results of a validation as a page to look at, in UTF-8: the verdict, what failed with what to do, and
// the tests with their claims. It needs no other file.
[[nodiscard]] std::string WritePage(const filterhost::ValidateSettings& settings, const std::string& filter,
                                    const std::vector<TestResult>& results);

}  // namespace devkit::validate
