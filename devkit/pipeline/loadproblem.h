#pragma once

#include "platform/windows.h"

#include <filesystem>
#include <string>

namespace devkit::pipeline {

// Why the system did not load the DLL, as the end of a line that begins with its name: "is not a DLL", "has
// 32 bits, this program 64", "needs hidden.dll, which is missing". `error` is the system's code, whose name
// is the answer where the file says nothing.
[[nodiscard]] std::string LoadProblem(const std::filesystem::path& dll, DWORD error);

}  // namespace devkit::pipeline
