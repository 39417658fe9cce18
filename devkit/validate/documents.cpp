#include "devkit/validate/documents.h"

#include "platform/windows.h"

#include <regex>
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

constexpr const char* kOwnerExtension = ".tmp";

void RemoveAbandoned(const std::filesystem::path& base) {
    static const std::regex kName("filterhost-[0-9]+-[0-9]+");
    std::error_code ignored;
    for (const auto& each : std::filesystem::directory_iterator(base, ignored)) {
        const std::filesystem::path& path = each.path();
        if (!each.is_directory(ignored) || !std::regex_match(common::PathText(path.filename()), kName))
            continue;
        std::filesystem::path owner = path;
        owner += kOwnerExtension;
        if (!std::filesystem::exists(owner, ignored)) std::filesystem::remove_all(path, ignored);
    }
}

}  // namespace

TemporaryFolder::TemporaryFolder() : m_path(m_owner.Path()) {
    m_path.replace_extension();
    RemoveAbandoned(m_path.parent_path());
    std::error_code failure;
    // Of a process of the same number.
    std::filesystem::remove_all(m_path, failure);
    if (!std::filesystem::create_directory(m_path, failure))
        throw std::runtime_error("no folder can be made: " + common::PathText(m_path));
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
