#pragma once

#include <filesystem>
#include <string>

#include "devkit/filterhost/reportfile.h"
#include "devkit/filterhost/runresult.h"
#include "devkit/filterhost/settings.h"

namespace devkit::filterhost {

// The report for programs, in UTF-8: one JSON object with what was run and one object an input, as
// docs/report.schema.json describes it. The file is whole after every result.
class Report {
  public:
    // Replaces a file that is there. Throws UsageError when it cannot be written, as Add does.
    Report(std::filesystem::path path, const RunSettings& settings);

    void Add(const RunResult& result);

  private:
    ReportFile m_file;
    bool m_isEmpty = true;
};

// The text of one input's object, without line feed at the end.
[[nodiscard]] std::string WriteResult(const RunResult& result);

}  // namespace devkit::filterhost
