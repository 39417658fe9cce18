#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

#include "devkit/filterhost/reportfile.h"
#include "devkit/filterhost/runresult.h"
#include "devkit/filterhost/settings.h"

namespace devkit::filterhost {

// The report for build servers, in the form that JUnit's runner for Ant has made common: a test suite with a
// test case for each input. A filter that failed or broke a rule is a failure; an input that could not be
// read, or settings that were of no use, an error. The time is that of the runs, where it was measured. The
// file is whole after every result.
class JunitReport {
  public:
    // Replaces a file that is there. Throws UsageError when it cannot be written, as Add does.
    JunitReport(std::filesystem::path path, const RunSettings& settings);

    void Add(const RunResult& result);

  private:
    struct Counts {
        std::size_t tests = 0;
        std::size_t failures = 0;
        std::size_t errors = 0;
        double seconds = 0;
    };
    static std::string Head(const Counts& counts);

    const std::string m_className;
    ReportFile m_file;
    Counts m_counts;
};

// The text with "?" for what XML has no place for.
[[nodiscard]] std::string Printable(std::string text);

// The element of one input.
[[nodiscard]] std::string WriteTestCase(const RunResult& result, const std::string& className);

}  // namespace devkit::filterhost
