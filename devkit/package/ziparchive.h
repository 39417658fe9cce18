#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "devkit/common/limits.h"
#include "devkit/common/storage.h"

namespace devkit::package {

struct ZipEntry {
    std::uint64_t size = 0;
    std::uint64_t compressedSize = 0;
    bool encrypted = false;
    bool deflated = false;  // else stored, when `readable`
    bool readable = false;  // stored or deflated, and not encrypted
};

// A zip archive that is read. Failures are common::Errors.
class ZipArchive {
  public:
    // `where` names the archive in messages. Lists the entries and holds them to the limits that concern the
    // archive as such.
    ZipArchive(std::shared_ptr<common::ByteSource> source, std::string where, const common::Limits& limits);
    ~ZipArchive();

    [[nodiscard]] const std::vector<ZipEntry>& Entries() const noexcept { return m_entries; }
    // UTF-8, as the archive spells it.
    [[nodiscard]] std::string NameOf(std::size_t index) const;
    [[nodiscard]] const std::string& Where() const noexcept { return m_where; }
    [[nodiscard]] common::ByteSource& Source() const noexcept { return *m_source; }
    // Appends the entry's bytes. Refuses what is not what the directory says, and more than `most` bytes.
    void Read(std::size_t index, std::uint64_t most, std::string& bytes) const;
    // Gives back the memory of the list by which entries are read, until the next is.
    void Rest() const noexcept;

  private:
    struct Reader;

    // libzip's archive, opened where it rests.
    [[nodiscard]] Reader& Awake() const;

    std::shared_ptr<common::ByteSource> m_source;
    std::string m_where;
    common::Limits m_limits;
    mutable std::unique_ptr<Reader> m_reader;  // null while the archive rests
    std::vector<ZipEntry> m_entries;
};

}  // namespace devkit::package
