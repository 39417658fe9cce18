#pragma once

#include <cstddef>
#include <exception>
#include <filesystem>
#include <mutex>
#include <string>

#include "devkit/filterhost/tracefile.h"

namespace devkit::validate {

// A trace of a validation: a row for each test, with the runs that it made one after the other. Any thread
// may call; what cannot be written is thrown by Check alone.
class TestTrace {
  public:
    // Replaces a file that is there. Throws UsageError.
    explicit TestTrace(std::filesystem::path path);

    // The row of a test that begins.
    [[nodiscard]] std::size_t Begin(const std::string& test);
    void Take(std::size_t row, const filterhost::Event& event);
    void End(std::size_t row);
    // Throws UsageError when something could not be written.
    void Check();

  private:
    template <typename Write>
    void Guarded(Write&& write);

    filterhost::TraceFile m_file;
    std::mutex m_lock;
    std::size_t m_rows = 0;
    std::exception_ptr m_failure;
};

}  // namespace devkit::validate
