#include "beside.h"

#include "platform/windows.h"

namespace devkit::prntvpt {

std::filesystem::path Beside(const std::filesystem::path& name) {
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return std::filesystem::path(path).parent_path() / name;
}

std::filesystem::path SimulatedDll() { return Beside(L"simulated") / L"prntvpt.dll"; }

}  // namespace devkit::prntvpt
