#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "devkit/common/content.h"
#include "devkit/common/storage.h"
#include "devkit/package/ziparchive.h"

namespace devkit::package {

// What is to be different in a copy of an archive.
struct ZipEdit {
    struct Replacement {
        std::size_t index = 0;
        std::optional<std::string> newName;
        common::Content bytes;
    };
    struct Addition {
        std::string name;
        common::Content bytes;
    };

    std::vector<Replacement> replaced;
    std::vector<std::size_t> removed;
    std::vector<Addition> added;  // in this order, behind all others

    [[nodiscard]] bool IsEmpty() const noexcept {
        return replaced.empty() && removed.empty() && added.empty();
    }
};

// Writes a copy of the archive with the edit. Entries that the edit does not name keep their compressed
// bytes, their names, their dates and their order. Throws common::Error.
void WriteZip(const ZipArchive& archive, ZipEdit edit, common::ByteSink& sink);

}  // namespace devkit::package
