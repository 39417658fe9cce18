#include "devkit/filterhost/devicefolder.h"

#include <set>
#include <system_error>

#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/files.h"
#include "platform/utf.h"

namespace devkit::filterhost {
namespace {

using Path = std::filesystem::path;

bool IsModel(const Path& folder) {
    std::error_code ignored;
    return std::filesystem::is_regular_file(folder / "device.json", ignored);
}

std::string NamesOfModels(const Path& models) {
    std::set<std::string> names;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(models, ignored)) {
        if (IsModel(entry.path())) names.insert(platform::ToUtf8(entry.path().filename().wstring()));
    }
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
    return text;
}

}  // namespace

Path FindDeviceFolder(const std::string& nameOrFolder) {
    const Path given(platform::ToUtf16(nameOrFolder));
    const Path models = ProgramFolder() / "devices";
    if (!given.has_parent_path() && IsModel(models / given)) return models / given;
    if (IsModel(given)) return std::filesystem::absolute(given);
    throw UsageError("--device: there is no device model \"" + nameOrFolder + "\"; the models here are " +
                     NamesOfModels(models));
}

}  // namespace devkit::filterhost
