#pragma once

#include "platform/windows.h"

#include <filesystem>
#include <string>

namespace tests {

// The folder of the running program, in which the build puts all programs and libraries.
[[nodiscard]] inline std::filesystem::path ProgramFolder() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return std::filesystem::path(path).parent_path();
}

}  // namespace tests
