#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace devkit::filterhost {

// Tells a person who watches how far a run is, on one line of the console that is wiped at the end; silent in
// a pipe, and for a run that is over at once.
class Progress {
  public:
    // `total` is the number of parts of the input.
    Progress(std::string input, std::size_t total, bool wanted);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    // Part `number`, counted from 1, was asked for. For one thread.
    void Asked(unsigned number);

  private:
    using Clock = std::chrono::steady_clock;

    const std::string m_input;
    const std::size_t m_total;
    const bool m_shown;
    Clock::time_point m_next;
    std::size_t m_length = 0;
};

}  // namespace devkit::filterhost
