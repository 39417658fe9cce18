#include "devkit/package/partname.h"

#include <libxml/uri.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <vector>

#include "devkit/common/text.h"

namespace devkit::package {

namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";

int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

bool IsAlphanumeric(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool IsUnreserved(char c) {
    return IsAlphanumeric(c) || std::string_view("-._~").find(c) != std::string_view::npos;
}

// What a segment may hold as it is (RFC 3986, pchar).
bool IsSegmentCharacter(char c) {
    return IsUnreserved(c) || std::string_view("!$&'()*+,;=:@").find(c) != std::string_view::npos;
}

// The byte that a percent-encoding at the start of the text stands for, -1 when there is none.
int EncodedByte(std::string_view text) {
    if (text.size() < 3 || text[0] != '%') return -1;
    const int high = HexValue(text[1]);
    const int low = HexValue(text[2]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

std::string Encode(char c) {
    const auto value = static_cast<unsigned char>(c);
    return {'%', kHexDigits[value >> 4], kHexDigits[value & 15]};
}

std::vector<std::string> Segments(std::string_view path) {
    std::vector<std::string> segments(1);
    for (const char c : path) {
        if (c == '/' || c == '\\') {
            segments.emplace_back();
        } else {
            segments.back() += c;
        }
    }
    return segments;
}

// Undoes the encoding of what needs none and encodes what is illegal. An encoded slash separates segments.
std::string LegalCharacters(std::string_view wanted) {
    std::string legal;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const int byte = EncodedByte(wanted.substr(i));
        const char c = byte < 0 ? wanted[i] : static_cast<char>(byte);
        if (byte >= 0) i += 2;
        const bool plain = byte < 0 ? IsSegmentCharacter(c) : IsUnreserved(c);
        legal += c == '\\' || c == '/' ? "/" : plain ? std::string(1, c) : Encode(c);
    }
    return legal;
}

bool IsRelationshipsFolder(std::string_view segment) { return NameKey(segment) == "/_rels"; }

bool IsSlash(char c) { return c == '/' || c == '\\'; }

}  // namespace

std::string NameKey(std::string_view name) {
    std::string key = "/";
    const std::size_t start = !name.empty() && (name[0] == '/' || name[0] == '\\') ? 1 : 0;
    for (std::size_t i = start; i < name.size(); ++i) {
        const int byte = EncodedByte(name.substr(i));
        if (byte < 0) {
            key += name[i] == '\\' ? '/' : common::LowerAscii(name[i]);
        } else if (byte == '/' || byte == '\\') {
            key += '%';
        } else {
            key += common::LowerAscii(static_cast<char>(byte));
            i += 2;
        }
    }
    return key;
}

std::string ResolveReference(std::string_view sourcePart, std::string_view reference) {
    const bool hasScheme = reference.find(':') < reference.find_first_of("/\\#");
    if (reference.empty() || hasScheme) return {};
    reference = reference.substr(0, reference.find('#'));
    if (reference.empty()) return std::string(sourcePart);
    std::string name = "/";
    if (!IsSlash(reference[0])) name += sourcePart.substr(0, sourcePart.rfind('/') + 1);
    name += reference;
    std::ranges::replace(name, '\\', '/');
    const auto isEmpty = [](char left, char right) { return left == '/' && right == '/'; };
    name.erase(std::unique(name.begin(), name.end(), isEmpty), name.end());
    xmlNormalizeURIPath(name.data());
    name.resize(std::strlen(name.data()));
    if (name.ends_with('/')) name.pop_back();
    return name;
}

std::string MakeLegalName(std::string_view wantedName) {
    std::string name;
    for (std::string& segment : Segments(LegalCharacters(wantedName))) {
        // A segment must not end with a dot (OPC, 6.2.2.2); "_rels" would make it a relationships part.
        segment.erase(segment.find_last_not_of('.') + 1);
        if (!segment.empty() && !IsRelationshipsFolder(segment)) name += "/" + segment;
    }
    return name.empty() ? "/part" : name;
}

std::string RelationshipsPartOf(std::string_view sourcePart) {
    const std::size_t slash = sourcePart.rfind('/');
    const std::size_t start = slash == std::string_view::npos ? 0 : slash + 1;
    return std::string(sourcePart.substr(0, start)) + "_rels/" + std::string(sourcePart.substr(start)) +
           ".rels";
}

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
