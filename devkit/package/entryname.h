#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace devkit::package {

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
