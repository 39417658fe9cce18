#include "devkit/filterhost/files.h"

#include "devkit/filterhost/usageerror.h"
#include "devkit/package/file.h"

namespace devkit::filterhost {

std::string ReadFile(const std::filesystem::path& path, std::string_view option) try {
    package::FileSource file(path);
    std::string bytes(static_cast<std::size_t>(file.Size()), '\0');
    bytes.resize(file.ReadAt(0, bytes.data(), bytes.size()));
    return bytes;
} catch (const package::PackageError& error) {
    throw UsageError(std::string(option) + ": " + error.what());
}

void WriteFile(const std::filesystem::path& path, std::string_view bytes, std::string_view option) try {
    package::OutputFile file(path);
    file.WriteAt(0, bytes.data(), bytes.size());
    file.Commit();
} catch (const package::PackageError& error) {
    throw UsageError(std::string(option) + ": " + error.what());
}

std::string ProblemOf(const package::PackageError& error, std::string_view document) {
    const std::string text = error.what();
    const std::string itself = ", " + std::string(document);
    return text.ends_with(itself) ? text.substr(0, text.size() - itself.size()) : text;
}

}  // namespace devkit::filterhost
