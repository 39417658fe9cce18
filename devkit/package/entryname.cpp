#include "devkit/package/entryname.h"

#include <charconv>

#include "devkit/package/partname.h"

namespace devkit::package {

namespace {

bool IsSlash(char c) { return c == '/' || c == '\\'; }

}  // namespace

bool LeavesPackage(std::string_view entryName) {
    if (!entryName.empty() && IsSlash(entryName[0])) return true;
    if (entryName.size() > 1 && entryName[1] == ':') return true;
    const std::string key = NameKey(entryName);
    return key.find("/../") != std::string::npos || key.ends_with("/..");
}

bool IsFolderName(std::string_view entryName) { return entryName.empty() || IsSlash(entryName.back()); }

std::optional<PieceName> ParsePieceName(std::string_view entryName) {
    constexpr std::string_view kPiece = "].piece";
    constexpr std::string_view kLastPiece = "].last.piece";
    constexpr std::size_t kMostDigits = 9;

    const std::size_t slash = entryName.find_last_of("/\\");
    if (slash == std::string_view::npos || slash == 0) return std::nullopt;
    const std::string segment = NameKey(entryName.substr(slash + 1)).substr(1);
    PieceName name;
    name.last = segment.ends_with(kLastPiece);
    if (!segment.starts_with('[') || (!name.last && !segment.ends_with(kPiece))) return std::nullopt;

    const char* const pStart = segment.data() + 1;
    const char* const pEnd = segment.data() + segment.find(']');
    if (pEnd == pStart || pEnd > pStart + kMostDigits) return std::nullopt;
    const std::string_view rest = std::string_view(segment).substr(segment.find(']'));
    const auto [pParsed, error] = std::from_chars(pStart, pEnd, name.number);
    if (error != std::errc() || pParsed != pEnd || rest != (name.last ? kLastPiece : kPiece))
        return std::nullopt;
    name.part = PartNameOf(entryName.substr(0, slash));
    return name;
}

std::string PartNameOf(std::string_view entryName) {
    std::string name = "/";
    for (const char c : entryName) name += c == '\\' ? '/' : c;
    return name;
}

}  // namespace devkit::package
