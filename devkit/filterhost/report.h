#pragma once

#include <filesystem>
#include <string>

#include "devkit/common/file.h"
#include "devkit/filterhost/runresult.h"

namespace devkit::filterhost {

// The report for programs: a JSON array of one object an input, in UTF-8. The file is whole after every
// result, so that an end by force leaves a report of what there was.
class Report {
  public:
    // Replaces a file that is there. Throws UsageError when it cannot be written, as Add does.
    explicit Report(std::filesystem::path path);

    void Add(const RunResult& result);

  private:
    void Write(std::string_view text);

    const std::filesystem::path m_path;
    common::FileHandle m_file;
    bool m_isEmpty = true;
};

// The text of one object, without line feed at the end.
[[nodiscard]] std::string WriteResult(const RunResult& result);

}  // namespace devkit::filterhost
