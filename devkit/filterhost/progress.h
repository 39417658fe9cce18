#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace devkit::filterhost {

// Tells a person who watches how far the work is, on one line of the console; silent in a pipe, and for work
// that is over at once. For one thread at a time.
class Progress {
  public:
    explicit Progress(bool wanted);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() { Clear(); }

    // Not oftener than a person can read.
    void Show(const std::string& text);
    // Wipes the line, so that something else can be printed.
    void Clear();

  private:
    using Clock = std::chrono::steady_clock;

    const bool m_shown;
    Clock::time_point m_next;
    std::size_t m_length = 0;
};

}  // namespace devkit::filterhost
