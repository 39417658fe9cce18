#include "base/logging/check.h"

#include "base/logging/log.h"

namespace base::logging {

const char* SourcePath(const std::source_location& where) noexcept {
    const std::string_view path = where.file_name();
    for (std::size_t end = path.size(); (end = path.rfind("src", end)) != std::string_view::npos; --end) {
        const auto isSeparator = [](char c) { return c == '/' || c == '\\'; };
        const bool startsHere = end == 0 || isSeparator(path[end - 1]);
        if (startsHere && end + 3 < path.size() && isSeparator(path[end + 3])) return path.data() + end + 4;
        if (end == 0) break;
    }
    return path.data();
}

std::string Located(std::string_view message, const std::source_location& where) {
    return Format("%s(%d) : %s\n", SourcePath(where), static_cast<int>(where.line()),
                  std::string(message).c_str());
}

void ThrowHresult(HRESULT hr, const std::source_location& where) {
    throw exception::HresultError(hr, SourcePath(where), static_cast<int>(where.line()));
}

}  // namespace base::logging
