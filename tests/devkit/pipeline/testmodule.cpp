#include "devkit/pipeline/testmodule.h"

#include "platform/windows.h"

#include <string>

namespace devkit::pipeline {

std::filesystem::path ProgramFolder() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return std::filesystem::path(path).parent_path();
}

std::filesystem::path TestFilterPath() { return ProgramFolder() / "testfilter.dll"; }

}  // namespace devkit::pipeline
