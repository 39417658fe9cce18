#include "devkit/validate/documents.h"

#include "platform/windows.h"

#include <stdexcept>
#include <string_view>
#include <system_error>

#include "devkit/common/file.h"
#include "platform/utf.h"

namespace devkit::validate {
namespace {

std::string_view CarriedBytes(const std::string& name) {
    const HRSRC place = FindResourceW(nullptr, platform::ToUtf16(name).c_str(), RT_RCDATA);
    const HGLOBAL loaded = place == nullptr ? nullptr : LoadResource(nullptr, place);
    if (loaded == nullptr) throw std::runtime_error("the program carries no document " + name);
    return {static_cast<const char*>(LockResource(loaded)), SizeofResource(nullptr, place)};
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
    const std::filesystem::path base = std::filesystem::temp_directory_path();
    const std::string prefix = "filterhost-" + std::to_string(GetCurrentProcessId()) + "-";
    constexpr int kAttempts = 1000;
    for (int i = 0; i < kAttempts && m_path.empty(); ++i) {
        const std::filesystem::path path = base / (prefix + std::to_string(i));
        std::error_code failure;
        if (std::filesystem::create_directory(path, failure)) m_path = path;
    }
    if (m_path.empty()) throw std::runtime_error("no folder can be made in " + common::PathText(base));
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

Document PutDocument(const std::string& name, const std::filesystem::path& folder) {
    Document document{name, folder / name};
    common::SaveFile(document.path, CarriedBytes(name));
    return document;
}

}  // namespace devkit::validate
