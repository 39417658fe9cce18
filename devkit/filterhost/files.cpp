#include "devkit/filterhost/files.h"

#include "platform/windows.h"

#include "devkit/common/file.h"
#include "devkit/filterhost/exitstatus.h"

namespace devkit::filterhost {

std::filesystem::path ProgramPath() {
    // The longest path that Windows knows.
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

std::filesystem::path ProgramFolder() { return ProgramPath().parent_path(); }

std::string ReadFile(const std::filesystem::path& path, std::string_view option) try {
    common::FileSource file(path);
    std::string bytes(static_cast<std::size_t>(file.Size()), '\0');
    bytes.resize(file.ReadAt(0, bytes.data(), bytes.size()));
    return bytes;
} catch (const common::Error& error) {
    throw UsageError(std::string(option) + ": " + error.what());
}

std::string ProblemOf(const common::Error& error, std::string_view document) {
    const std::string text = error.what();
    const std::string itself = ", " + std::string(document);
    return text.ends_with(itself) ? text.substr(0, text.size() - itself.size()) : text;
}

}  // namespace devkit::filterhost
