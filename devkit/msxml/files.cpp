#include "devkit/msxml/files.h"

#include <urlmon.h>

#include <algorithm>
#include <array>
#include <memory>

namespace devkit::msxml {

namespace {

struct HandleCloser {
    void operator()(HANDLE handle) const noexcept { CloseHandle(handle); }
};
using File = std::unique_ptr<void, HandleCloser>;

File Open(const std::wstring& path, DWORD access, DWORD share, DWORD disposition) noexcept {
    const HANDLE handle =
        CreateFileW(path.c_str(), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    return File(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

bool IsSlash(wchar_t c) noexcept { return c == L'\\' || c == L'/'; }

bool IsLocal(std::wstring_view path) noexcept {
    if (path.find(L"://") != std::wstring_view::npos) return false;
    return path.size() < 2 || !IsSlash(path[0]) || !IsSlash(path[1]);
}

HRESULT LastError() noexcept { return HRESULT_FROM_WIN32(GetLastError()); }

HRESULT WriteAll(HANDLE file, std::string_view bytes) noexcept {
    while (!bytes.empty()) {
        const auto wanted = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), 1 << 20));
        DWORD written = 0;
        if (!WriteFile(file, bytes.data(), wanted, &written, nullptr)) return LastError();
        bytes.remove_prefix(written);
    }
    return S_OK;
}

}  // namespace

HRESULT ReadLocalFile(const std::wstring& path, std::string& bytes) {
    if (!IsLocal(path)) return INET_E_UNKNOWN_PROTOCOL;
    const File file = Open(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING);
    if (!file) return INET_E_OBJECT_NOT_FOUND;
    std::array<char, 65536> block;
    for (;;) {
        DWORD count = 0;
        const BOOL isRead =
            ReadFile(file.get(), block.data(), static_cast<DWORD>(block.size()), &count, nullptr);
        if (!isRead) return LastError();
        if (count == 0) return S_OK;
        bytes.append(block.data(), count);
    }
}

HRESULT WriteLocalFile(const std::wstring& path, std::string_view bytes) noexcept {
    if (!IsLocal(path)) return INET_E_UNKNOWN_PROTOCOL;
    File file = Open(path, GENERIC_WRITE, 0, CREATE_ALWAYS);
    if (!file) return LastError();
    const HRESULT result = WriteAll(file.get(), bytes);
    file.reset();
    if (FAILED(result)) DeleteFileW(path.c_str());
    return result;
}

}  // namespace devkit::msxml
