#include "devkit/filterhost/fileversion.h"

#include "platform/windows.h"

#include <cstddef>
#include <vector>

namespace devkit::filterhost {

std::optional<std::string> FileVersionOf(const std::filesystem::path& path) {
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeW(path.c_str(), &ignored);
    std::vector<std::byte> block(size);
    if (size == 0 || !GetFileVersionInfoW(path.c_str(), 0, size, block.data())) return std::nullopt;
    void* pInfo = nullptr;
    UINT length = 0;
    if (!VerQueryValueW(block.data(), L"\\", &pInfo, &length) || length < sizeof(VS_FIXEDFILEINFO))
        return std::nullopt;
    const auto& info = *static_cast<const VS_FIXEDFILEINFO*>(pInfo);
    const auto text = [](WORD number) { return std::to_string(number); };
    return text(HIWORD(info.dwFileVersionMS)) + "." + text(LOWORD(info.dwFileVersionMS)) + "." +
           text(HIWORD(info.dwFileVersionLS)) + "." + text(LOWORD(info.dwFileVersionLS));
}

}  // namespace devkit::filterhost
