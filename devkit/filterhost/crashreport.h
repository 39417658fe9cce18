#pragma once

#include <functional>
#include <string>

namespace devkit::filterhost {

// While it lives, a crash of the process (an access violation in the filter, say) is told in one line with
// the exception, the module and the part that was being worked on, and ends the program with the status of a
// failed filter.
class CrashReport {
  public:
    CrashReport(std::string input, std::function<std::string()> lastPart);
    CrashReport(const CrashReport&) = delete;
    CrashReport& operator=(const CrashReport&) = delete;
    ~CrashReport();

  private:
    const std::string m_input;
    const std::function<std::string()> m_lastPart;

    friend struct CrashHandler;
};

}  // namespace devkit::filterhost
