#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "devkit/package/limits.h"
#include "devkit/package/storage.h"

namespace devkit::package {

struct ZipEntry {
    std::string name;  // UTF-8, as the archive spells it
    std::uint64_t size = 0;
    std::uint64_t compressedSize = 0;
    bool encrypted = false;
    bool deflated = false;  // else stored, when `readable`
    bool readable = false;  // stored or deflated, and not encrypted
};

// A zip archive that is read. Failures are PackageErrors.
class ZipArchive {
  public:
    // `where` names the archive in messages. Lists the entries and holds them to the limits that concern the
    // archive as such.
    ZipArchive(std::shared_ptr<ByteSource> source, std::string where, const Limits& limits);
    ~ZipArchive();

    [[nodiscard]] const std::vector<ZipEntry>& Entries() const noexcept { return m_entries; }
    [[nodiscard]] const std::string& Where() const noexcept { return m_where; }
    [[nodiscard]] ByteSource& Source() const noexcept { return *m_source; }
    // Appends the entry's bytes. Refuses what is not what the directory says, and more than `most` bytes.
    void Read(std::size_t index, std::uint64_t most, std::string& bytes) const;

  private:
    struct Reader;

    std::shared_ptr<ByteSource> m_source;
    std::string m_where;
    std::unique_ptr<Reader> m_reader;
    std::vector<ZipEntry> m_entries;
};

// What is to be different in a copy of an archive. The bytes are borrowed.
struct ZipEdit {
    struct Replacement {
        std::size_t index = 0;
        std::optional<std::string> newName;
        const std::string* pBytes = nullptr;
    };
    struct Addition {
        std::string name;
        const std::string* pBytes = nullptr;
    };

    std::vector<Replacement> replaced;
    std::vector<std::size_t> removed;
    std::vector<Addition> added;  // in this order, behind all others

    [[nodiscard]] bool IsEmpty() const noexcept {
        return replaced.empty() && removed.empty() && added.empty();
    }
};

// Writes a copy of the archive with the edit. Entries that the edit does not name keep their compressed
// bytes, their names, their dates and their order. Throws PackageError.
void WriteZip(const ZipArchive& archive, const ZipEdit& edit, ByteSink& sink);

}  // namespace devkit::package
