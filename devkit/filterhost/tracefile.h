#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "devkit/filterhost/reportfile.h"
#include "devkit/filterhost/runevent.h"

namespace devkit::filterhost {

// A trace of runs in the trace event format (an array of JSON objects, times in microseconds), which browsers
// and Perfetto show: a process row for each run, in it a row for each thread. The file is whole after each
// event, so that an end by force leaves one that can be opened. Any thread may call.
class TraceFile {
  public:
    // Replaces a file that is there. Throws UsageError.
    explicit TraceFile(std::filesystem::path path);

    // Gives the row, counted from 1, the name of its input.
    void Name(std::size_t row, const std::string& input);
    // Takes what a trace shows of the event: moments, and how a run ended too early.
    void Take(std::size_t row, const Event& event);
    // Ends what is still open in the row.
    void End(std::size_t row);

  private:
    // The row and the thread.
    using Line = std::pair<std::size_t, std::uint32_t>;

    void TakeMoment(std::size_t row, const TraceMoment& moment);
    void Write(std::string text);
    [[nodiscard]] double MicrosecondsOf(std::int64_t at) const;

    std::mutex m_lock;
    ReportFile m_file;
    const std::int64_t m_start;
    bool m_isFirst = true;
    std::map<Line, std::vector<std::string>> m_open;  // what has begun and not ended, by its name
    std::set<Line> m_named;
};

}  // namespace devkit::filterhost
