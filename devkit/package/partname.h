#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace devkit::package {

// Part names of the Open Packaging Conventions: "/" and segments without "." and "..", percent-encoded ASCII.

// What equivalent names have in common: lower case, percent-encoding undone where it is not needed, slashes
// for backslashes, one leading slash.
[[nodiscard]] std::string NameKey(std::string_view name);

// The absolute name that a reference leads to from a part ("/" for the package); a fragment and empty
// segments are dropped, and ".." at the top stays there (RFC 3986, 5.2). Empty when it leads out of the
// package.
[[nodiscard]] std::string ResolveReference(std::string_view sourcePart, std::string_view reference);

// A legal part name as near to the wanted one as may be: a backslash becomes a slash, illegal characters are
// percent-encoded as UTF-8, empty segments and those of dots alone are left out. "/part" when nothing is
// left.
[[nodiscard]] std::string MakeLegalName(std::string_view wantedName);

// "/a/_rels/b.xml.rels" for "/a/b.xml", "/_rels/.rels" for "/".
[[nodiscard]] std::string RelationshipsPartOf(std::string_view sourcePart);

// What the name of a zip entry says about the part behind it (OPC, 7.3).

// A name that leads out of the folder that an archive stands for: absolute, with a drive, or with "..".
[[nodiscard]] bool LeavesPackage(std::string_view entryName);

[[nodiscard]] bool IsFolderName(std::string_view entryName);

// "/name/[3].last.piece"
struct PieceName {
    std::string part;
    std::size_t number = 0;
    bool last = false;
};
// Empty when the entry is a part as a whole.
[[nodiscard]] std::optional<PieceName> ParsePieceName(std::string_view entryName);

// The part name of an entry that is no piece.
[[nodiscard]] std::string PartNameOf(std::string_view entryName);

}  // namespace devkit::package
