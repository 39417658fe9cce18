#pragma once

#include "platform/windows.h"

#include <filesystem>
#include <string>

namespace tests {

// While it lives the system's folder for temporary files is another.
class TemporaryPlace {
  public:
    explicit TemporaryPlace(const std::filesystem::path& folder) {
        wchar_t before[MAX_PATH + 1] = L"";
        GetEnvironmentVariableW(L"TMP", before, MAX_PATH);
        m_before = before;
        SetEnvironmentVariableW(L"TMP", folder.c_str());
    }
    TemporaryPlace(const TemporaryPlace&) = delete;
    TemporaryPlace& operator=(const TemporaryPlace&) = delete;
    ~TemporaryPlace() { SetEnvironmentVariableW(L"TMP", m_before.empty() ? nullptr : m_before.c_str()); }

  private:
    std::wstring m_before;
};

}  // namespace tests
