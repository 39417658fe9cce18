#include "devkit/filterhost/optiontext.h"

#include "devkit/filterhost/exitstatus.h"
#include "platform/utf.h"

namespace devkit::filterhost {

std::filesystem::path PathOf(const std::string& text) { return {platform::ToUtf16(text)}; }

std::filesystem::path Absolute(const std::string& text) { return std::filesystem::absolute(PathOf(text)); }

std::optional<std::filesystem::path> Absolute(const std::optional<std::string>& text) {
    return text ? std::optional(Absolute(*text)) : std::nullopt;
}

CLSID ClassOf(const std::string& text) {
    CLSID clsid{};
    if (FAILED(IIDFromString(platform::ToUtf16(text).c_str(), &clsid))) {
        throw UsageError("--clsid: \"" + text +
                         "\" is not of the form {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}");
    }
    return clsid;
}

}  // namespace devkit::filterhost
