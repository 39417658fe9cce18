#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "devkit/filterhost/childprocess.h"
#include "devkit/filterhost/fuzzrunner.h"

namespace devkit::filterhost {

// The command of a process that runs bad jobs for another process of this
// program: see ChildProcess.
inline constexpr std::string_view kFuzzWorkCommand = "fuzz-work";

// Takes the order and then seeds from one handle, answers each with its end on
// the other, both as numbers. Ends the process when the parent is gone, or the
// process no good any longer.
[[noreturn]] void FuzzWork(std::string_view readHandle, std::string_view writeHandle);

// The parent's side: runs cases in a process of theirs, and in a new one after
// one that has ended it. For one thread.
class FuzzChild {
  public:
    // A case without an answer for the settings' timeout hangs. `settings` must
    // outlive the object.
    explicit FuzzChild(const FuzzSettings& settings) : m_settings(settings) {}

    // Throws std::system_error when no process can be started, std::runtime_error
    // when the filter cannot be loaded, UsageError when it has no table of edges
    // and the settings want one.
    [[nodiscard]] FuzzAnswer Run(const FuzzSeed& which);
    // The next case has a process that has run no other.
    void Renew() { m_process.reset(); }

  private:
    // A process that has run so many may have gathered something.
    static constexpr unsigned kMostCases = 500;

    [[nodiscard]] FuzzAnswer Answer();

    const FuzzSettings& m_settings;
    std::unique_ptr<ChildProcess> m_process;
    unsigned m_cases = 0;
};

}  // namespace devkit::filterhost
