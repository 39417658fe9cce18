#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devkit/common/content.h"
#include "devkit/common/error.h"
#include "devkit/common/limits.h"
#include "devkit/common/storage.h"
#include "devkit/package/relationships.h"

namespace devkit::package {

class PackageState;

// A part of a package. Names are absolute ("/Documents/1/Pages/1.fpage") in the spelling of the package, and
// are found by equivalence: letter case of ASCII does not count.
struct PartInfo {
    std::string name;
    std::string contentType;   // as the package declares it, without parameters; empty when it declares none
    std::uint64_t size = 0;    // bytes after decompression, all pieces together
    bool whole = true;         // false when a piece of it is missing, so that it cannot be read
    std::uint32_t number = 0;  // no other part of the package has it
};

// A package of the Open Packaging Conventions on a zip archive. Parts are read when they are asked for;
// changes wait until Save, many new relationships in a temporary file. The file stays open, for reading, as
// long as the package lives. Not for use by two threads at once. Every failure is a common::Error.
class Package {
  public:
    [[nodiscard]] static Package Open(const std::filesystem::path& file, const common::Limits& limits = {});
    // `where` names the source in messages.
    [[nodiscard]] static Package Open(std::unique_ptr<common::ByteSource> source, std::string where,
                                      const common::Limits& limits = {});
    Package(Package&&) noexcept;
    Package& operator=(Package&&) noexcept;
    ~Package();

    // In the order of the archive, added parts last. Relationship parts and the content types are not among
    // them.
    [[nodiscard]] std::vector<PartInfo> Parts() const;
    [[nodiscard]] std::optional<PartInfo> Find(std::string_view name) const;
    [[nodiscard]] bool Contains(std::string_view name) const { return Find(name).has_value(); }
    // The part's bytes as they now stand.
    [[nodiscard]] std::string Read(std::string_view name) const;

    // Adds a part under a legal name made from the wanted one (see MakeLegalName), made unique by a number
    // where that is taken. Returns the name.
    std::string Add(std::string_view wantedName, std::string_view contentType, common::Content bytes);
    // Replaces the bytes of a part that is there; its place, name and content type stay.
    void Replace(std::string_view name, common::Content bytes);
    // Removes a part with its relationships. A part that is not there is no failure.
    void Remove(std::string_view name);

    // The relationships of a part, of the package for "/"; none when it has no relationships part.
    [[nodiscard]] std::vector<Relationship> Relationships(std::string_view source) const;
    // Replaces them; the relationships part is added, rewritten or, when there is none left, removed.
    void SetRelationships(std::string_view source, const std::vector<Relationship>& relationships);

    [[nodiscard]] const common::Limits& GetLimits() const noexcept;
    // The file's name, for messages.
    [[nodiscard]] const std::string& Where() const noexcept;
    // What is wrong with the package without keeping it from being read, one line each.
    [[nodiscard]] const std::vector<std::string>& Findings() const noexcept;

    // Writes the package to a file other than the one that it was read from. Entries that were not changed
    // keep their compressed bytes, their names and their order; a package without changes is copied byte for
    // byte. The file appears, or is replaced, when all is written; on failure nothing is left behind.
    void Save(const std::filesystem::path& file) const&;
    void Save(common::ByteSink& sink) const&;
    // The same of a package that has no parts any more afterwards, nor after a failure: what is known of them
    // goes before the writing begins, which takes as much memory once more.
    void Save(const std::filesystem::path& file) &&;
    void Save(common::ByteSink& sink) &&;

  private:
    explicit Package(std::unique_ptr<PackageState> state) noexcept;

    std::unique_ptr<PackageState> m_state;
};

}  // namespace devkit::package
