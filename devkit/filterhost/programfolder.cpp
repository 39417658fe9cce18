#include "devkit/filterhost/programfolder.h"

#include "platform/windows.h"

#include <string>

namespace devkit::filterhost {

std::filesystem::path ProgramFolder() {
    // The longest path that Windows knows.
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return std::filesystem::path(path).parent_path();
}

}  // namespace devkit::filterhost
