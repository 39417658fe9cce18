#pragma once

#include "platform/windows.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "devkit/common/uniquehandle.h"

namespace devkit::filterhost {

using common::UniqueHandle;

// This program, started anew with a pipe in each direction, to do a part of its work in a process of its own.
// The child's command line is `COMMAND READ WRITE`: the handles of its ends of the pipes, which carry lines
// of text. For one thread.
class ChildProcess {
  public:
    // std::system_error when the process cannot be started.
    explicit ChildProcess(std::wstring_view command);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    // Ends the commands, at which the process leaves; ends it, if it has not in five seconds.
    ~ChildProcess();

    // Sends a line, which holds no line feed. A child that is gone is noticed by Read.
    void Send(std::string_view line);

    using Clock = std::chrono::steady_clock;
    enum class Got { Line, Nothing, End };
    // Waits for the next line until `deadline`. End: the process is gone, and all that it said has been read.
    [[nodiscard]] Got Read(std::string& line, Clock::time_point deadline);

    // After Got::End. Ends a process that is still there after five seconds.
    [[nodiscard]] DWORD ExitCode() const;

  private:
    void ReadLines();

    UniqueHandle m_process;
    UniqueHandle m_read;
    UniqueHandle m_write;
    std::mutex m_lock;
    std::condition_variable m_changed;
    std::deque<std::string> m_lines;
    bool m_ended = false;
    std::thread m_reader;
};

// The end of the child: its commands come from `read`, what it tells goes to `write`. Any thread may tell.
class ParentProcess {
  public:
    // Takes over the handles, numbers among the arguments of `command`, and keeps processes that this one
    // starts from inheriting them. Ctrl+C is from here on the parent's to hear, and what a crash would show
    // in a box is not shown. Throws UsageError for arguments that are no handles.
    ParentProcess(std::string_view read, std::string_view write, std::string_view command);

    // The next command; nothing when the parent is gone.
    [[nodiscard]] std::optional<std::string> Read();
    // Sends a line, which holds no line feed, as a whole. A parent that is gone is noticed by Read.
    void Tell(std::string_view line);
    // The same for a thread that may have been stopped anywhere: takes no lock for longer than a moment and
    // no memory. `line` ends with its line feed.
    void TellLast(std::string_view line) noexcept;

  private:
    UniqueHandle m_read;
    UniqueHandle m_write;
    std::timed_mutex m_lock;
    std::string m_rest;  // read, but not yet given
};

}  // namespace devkit::filterhost
