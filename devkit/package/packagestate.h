#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "devkit/common/bytestore.h"
#include "devkit/common/content.h"
#include "devkit/common/limits.h"
#include "devkit/common/storage.h"
#include "devkit/package/contenttypes.h"
#include "devkit/package/ziparchive.h"
#include "devkit/package/zipwriter.h"

namespace devkit::package {

// The parts of a package over the entries of its archive, and what is to become of them.
class PackageState {
  public:
    // A part as it stands: the archive's, changed, added or removed. Places are kept, so that the order of
    // the archive stays.
    struct Part {
        std::string name;
        std::unique_ptr<std::vector<std::size_t>> morePieces;  // the other entries, in the order of the data
        std::unique_ptr<common::Content> bytes;                // null while they are the archive's
        std::uint32_t entry = kNoEntry;                        // the first; none for an added part
        std::uint32_t number = 0;                              // no other part has it
        bool interleaved = false;
        bool whole = true;  // false when a piece is missing
        bool removed = false;

        [[nodiscard]] std::vector<std::size_t> Pieces() const;
    };
    static constexpr std::uint32_t kNoEntry = static_cast<std::uint32_t>(-1);

    PackageState(std::shared_ptr<common::ByteSource> source, std::string where, const common::Limits& limits);
    PackageState(const PackageState&) = delete;
    PackageState& operator=(const PackageState&) = delete;

    // Null when there is none; a removed part is not there.
    [[nodiscard]] const Part* Find(std::string_view name) const;
    // Throws when there is none.
    [[nodiscard]] Part& Get(std::string_view name);
    // Bytes after decompression, all pieces together.
    [[nodiscard]] std::uint64_t SizeOf(const Part& part) const;
    [[nodiscard]] std::string Read(const Part& part, std::uint64_t most) const;
    // A legal name that neither a part has nor a part's name starts or goes on with.
    [[nodiscard]] std::string FreeName(std::string_view wantedName);
    void Put(const std::string& name, common::Content bytes);
    // The same of bytes that are in memory, of which only some are kept there.
    void PutAside(const std::string& name, std::string bytes);
    void Remove(std::string_view name);
    // What tells the archive from the package as it stands.
    [[nodiscard]] ZipEdit Edit() const;
    // The same at the end: the package has no parts any more.
    [[nodiscard]] ZipEdit TakeEdit();

    common::Limits limits;
    ZipArchive archive;
    std::filesystem::path file;  // empty when the package was not read from a file
    // Not in one piece, which would be copied while it grows, and have room for twice as many.
    std::deque<Part> parts;
    ContentTypes types;
    bool typesChanged = false;
    std::vector<std::string> findings;

  private:
    static constexpr std::size_t kAsideInMemory = std::size_t{256} << 10;

    void TakeEntries();
    void TakeEntry(std::size_t index);
    void CheckSizes() const;
    void JoinPieces();
    void ReadContentTypes();
    void Register(Part part);
    [[nodiscard]] bool IsTaken(const std::string& key) const;
    static void EditPart(const Part& part, const common::Content& bytes, ZipEdit& edit);

    struct Piece {
        std::size_t number = 0;
        bool last = false;
        std::size_t entry = 0;
    };
    struct Interleaved {
        std::string name;
        std::vector<Piece> pieces;
    };

    common::ByteStore m_aside{kAsideInMemory};
    std::vector<Interleaved> m_interleaved;
    std::unordered_map<std::string, std::size_t> m_interleavedByKey;
    // The places of the parts by the keys of their names, which are made anew for each question: for the many
    // parts of a large document they would take more memory than all the rest.
    struct KeyHash {
        using is_transparent = void;
        const std::deque<Part>& parts;
        std::size_t operator()(const std::string& key) const noexcept;
        std::size_t operator()(std::size_t place) const;
    };
    struct KeyEqual {
        using is_transparent = void;
        const std::deque<Part>& parts;
        bool operator()(std::size_t left, std::size_t right) const noexcept { return left == right; }
        bool operator()(const std::string& key, std::size_t place) const;
        bool operator()(std::size_t place, const std::string& key) const { return (*this)(key, place); }
    };
    std::unordered_set<std::size_t, KeyHash, KeyEqual> m_byKey{0, KeyHash{parts}, KeyEqual{parts}};
    // The keys of the folders that parts are in, by their hashes: names can have so many folders that their
    // keys would take the square of their length. Two of one hash cost a new name a number.
    std::unordered_set<std::uint64_t> m_folders;
    std::unordered_map<std::string, std::size_t> m_lastNumbers;  // of names that were wanted before
};

}  // namespace devkit::package
