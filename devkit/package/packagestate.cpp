#include "devkit/package/packagestate.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "devkit/common/error.h"
#include "devkit/common/fnvhash.h"
#include "devkit/package/partname.h"

namespace devkit::package {

namespace {

constexpr std::string_view kContentTypes = "/[Content_Types].xml";
constexpr std::size_t kLongestName = 4'096;

bool IsContentTypes(std::string_view partName) { return NameKey(partName) == NameKey(kContentTypes); }

// Calls with each folder above the part: "/a/b" and "/a" for "/a/b/c". A name or a key.
template <typename Visit>
void EachFolder(const std::string& name, Visit visit) {
    for (std::size_t slash = name.rfind('/'); slash != 0 && slash != std::string::npos;
         slash = name.rfind('/', slash - 1))
        visit(name.substr(0, slash));
}

// The hash of a key; calls with that of each folder above it.
template <typename Visit>
std::uint64_t HashOf(const std::string& key, Visit visit) {
    common::FnvHash hash;
    for (std::size_t i = 0; i < key.size(); ++i) {
        if (key[i] == '/' && i != 0) visit(hash.Value());
        hash.Take(static_cast<unsigned char>(key[i]));
    }
    return hash.Value();
}

}  // namespace

std::vector<std::size_t> PackageState::Part::Pieces() const {
    std::vector<std::size_t> pieces;
    if (entry != kNoEntry) pieces.push_back(entry);
    if (morePieces) pieces.insert(pieces.end(), morePieces->begin(), morePieces->end());
    return pieces;
}

std::size_t PackageState::KeyHash::operator()(const std::string& key) const noexcept {
    return std::hash<std::string>()(key);
}

std::size_t PackageState::KeyHash::operator()(std::size_t place) const {
    return (*this)(NameKey(parts[place].name));
}

bool PackageState::KeyEqual::operator()(const std::string& key, std::size_t place) const {
    return key == NameKey(parts[place].name);
}

PackageState::PackageState(std::shared_ptr<common::ByteSource> source, std::string where,
                           const common::Limits& readLimits)
    : limits(readLimits), archive(std::move(source), std::move(where), readLimits) {
    TakeEntries();
    ReadContentTypes();
}

void PackageState::TakeEntries() {
    CheckSizes();
    m_byKey.reserve(archive.Entries().size());
    for (std::size_t i = 0; i < archive.Entries().size(); ++i) TakeEntry(i);
    JoinPieces();
}

void PackageState::CheckSizes() const {
    std::uint64_t total = 0;
    for (std::size_t i = 0; i < archive.Entries().size(); ++i) {
        const ZipEntry& entry = archive.Entries()[i];
        if (entry.size > limits.maxPartBytes)
            throw common::Error("is larger than " + std::to_string(limits.maxPartBytes) + " bytes",
                                archive.NameOf(i));
        total += entry.size;
        if (total > limits.maxPackageBytes)
            throw common::Error(
                "its parts are larger than " + std::to_string(limits.maxPackageBytes) + " bytes",
                archive.Where());
    }
}

void PackageState::TakeEntry(std::size_t index) {
    const ZipEntry& entry = archive.Entries()[index];
    const std::string entryName = archive.NameOf(index);
    if (LeavesPackage(entryName)) throw common::Error("an entry's name leaves the package", entryName);
    if (IsFolderName(entryName)) return;
    const std::optional<PieceName> piece = ParsePieceName(entryName);
    const std::string name = piece ? piece->part : PartNameOf(entryName);
    if (!entry.readable && !IsContentTypes(name))
        throw common::Error(
            entry.encrypted ? "is encrypted" : "is compressed in a way that packages do not use", entryName);
    if (!piece) {
        Part part;
        part.name = name;
        part.entry = static_cast<std::uint32_t>(index);
        Register(std::move(part));
        return;
    }
    const auto [place, isNew] = m_interleavedByKey.try_emplace(NameKey(name), m_interleaved.size());
    if (isNew) m_interleaved.push_back({name, {}});
    m_interleaved[place->second].pieces.push_back({piece->number, piece->last, index});
}

void PackageState::JoinPieces() {
    for (Interleaved& each : m_interleaved) {
        std::ranges::sort(each.pieces, {}, &Piece::number);
        Part part;
        part.name = std::move(each.name);
        part.interleaved = true;
        for (std::size_t i = 0; i < each.pieces.size(); ++i) {
            const bool isEnd = i + 1 == each.pieces.size();
            part.whole = part.whole && each.pieces[i].number == i && each.pieces[i].last == isEnd;
            if (i == 0) {
                part.entry = static_cast<std::uint32_t>(each.pieces[i].entry);
                part.morePieces = std::make_unique<std::vector<std::size_t>>();
            } else {
                part.morePieces->push_back(each.pieces[i].entry);
            }
        }
        if (SizeOf(part) > limits.maxPartBytes)
            throw common::Error("is larger than " + std::to_string(limits.maxPartBytes) + " bytes",
                                part.name);
        Register(std::move(part));
    }
    // The parts of the archive come in the order of their first entry.
    if (!m_interleaved.empty()) {
        m_byKey.clear();
        std::ranges::stable_sort(parts, {}, [](const Part& part) { return std::ranges::min(part.Pieces()); });
        for (std::size_t i = 0; i < parts.size(); ++i) m_byKey.insert(i);
    }
    m_interleaved.clear();
    m_interleavedByKey.clear();
}

void PackageState::Register(Part part) {
    const std::string key = NameKey(part.name);
    if (m_byKey.find(key) != m_byKey.end()) throw common::Error("two parts have the same name", part.name);
    part.number = static_cast<std::uint32_t>(parts.size());
    parts.push_back(std::move(part));
    m_byKey.insert(parts.size() - 1);
    static_cast<void>(HashOf(key, [this](std::uint64_t folder) { m_folders.insert(folder); }));
}

void PackageState::ReadContentTypes() {
    const Part* const pPart = Find(kContentTypes);
    try {
        if (pPart == nullptr) throw common::Error("is missing", kContentTypes);
        types = ContentTypes::Parse(Read(*pPart, limits.structure.maxBytes), limits.structure);
    } catch (const common::StorageError&) {
        throw;
    } catch (const common::Error& failure) {
        findings.emplace_back(failure.what());
        types = ContentTypes::Customary();
    }
}

const PackageState::Part* PackageState::Find(std::string_view name) const {
    const auto found = m_byKey.find(NameKey(name));
    if (found == m_byKey.end() || parts[*found].removed) return nullptr;
    return &parts[*found];
}

PackageState::Part& PackageState::Get(std::string_view name) {
    if (Find(name) == nullptr) throw common::Error("is missing", name);
    return parts[*m_byKey.find(NameKey(name))];
}

std::uint64_t PackageState::SizeOf(const Part& part) const {
    if (part.bytes) return part.bytes->Size();
    std::uint64_t size = archive.Entries()[part.entry].size;
    if (part.morePieces) {
        for (const std::size_t entry : *part.morePieces) size += archive.Entries()[entry].size;
    }
    return size;
}

std::string PackageState::Read(const Part& part, std::uint64_t most) const {
    if (part.bytes) return part.bytes->Read();
    if (!part.whole) throw common::Error("lacks a piece", part.name);
    std::string bytes;
    for (const std::size_t entry : part.Pieces()) archive.Read(entry, most - bytes.size(), bytes);
    return bytes;
}

bool PackageState::IsTaken(const std::string& key) const {
    if (Find(key) != nullptr || m_folders.contains(HashOf(key, [](std::uint64_t) {}))) return true;
    bool insidePart = false;
    EachFolder(key, [&](const std::string& folder) { insidePart = insidePart || Find(folder) != nullptr; });
    return insidePart;
}

std::string PackageState::FreeName(std::string_view wantedName) {
    std::string name = MakeLegalName(wantedName);
    if (name.size() > kLongestName)
        throw common::Error("the name of a new part is too long", name.substr(0, 64));
    std::string key = NameKey(name);
    if (!IsTaken(key)) return name;
    const std::size_t dot = name.rfind('.');
    const std::size_t stem = dot == std::string::npos || dot < name.rfind('/') + 2 ? name.size() : dot;
    std::size_t& number = m_lastNumbers.try_emplace(key, 1).first->second;
    // The number goes to the first segment that a part has already: a part cannot hold another one.
    std::size_t place = stem;
    EachFolder(name, [&](const std::string& folder) {
        if (Find(folder) != nullptr) place = folder.size();
    });
    for (;;) {
        std::string numbered = name;
        numbered.insert(place, "-" + std::to_string(++number));
        if (!IsTaken(NameKey(numbered))) return numbered;
    }
}

void PackageState::Put(const std::string& name, common::Content bytes) {
    const auto found = m_byKey.find(NameKey(name));
    if (found == m_byKey.end()) {
        Part part;
        part.name = name;
        Register(std::move(part));
    }
    Part& part = parts[*m_byKey.find(NameKey(name))];
    part.removed = false;
    part.whole = true;
    part.bytes = std::make_unique<common::Content>(std::move(bytes));
}

void PackageState::PutAside(const std::string& name, std::string bytes) {
    Put(name, m_aside.Keep(std::make_shared<const std::string>(std::move(bytes))));
}

void PackageState::Remove(std::string_view name) {
    if (Find(name) == nullptr) return;
    Part& part = Get(name);
    part.removed = true;
    part.bytes.reset();
    typesChanged = types.Forget(name) || typesChanged;
}

void PackageState::EditPart(const Part& part, const common::Content& bytes, ZipEdit& edit) {
    const std::string entryName = part.name.substr(1);
    if (part.entry == kNoEntry) {
        edit.added.push_back({entryName, bytes});
        return;
    }
    // New bytes make an interleaved part a part in one entry, at the place of its first piece.
    ZipEdit::Replacement replacement{part.entry, std::nullopt, bytes};
    if (part.interleaved) replacement.newName = entryName;
    edit.replaced.push_back(std::move(replacement));
    if (part.morePieces)
        edit.removed.insert(edit.removed.end(), part.morePieces->begin(), part.morePieces->end());
}

ZipEdit PackageState::Edit() const {
    ZipEdit edit;
    bool typesWritten = !typesChanged;
    for (const Part& part : parts) {
        if (part.removed) {
            const std::vector<std::size_t> pieces = part.Pieces();
            edit.removed.insert(edit.removed.end(), pieces.begin(), pieces.end());
        } else if (typesChanged && IsContentTypes(part.name)) {
            EditPart(part, types.Markup(), edit);
            typesWritten = true;
        } else if (part.bytes) {
            EditPart(part, *part.bytes, edit);
        }
    }
    if (!typesWritten) edit.added.push_back({std::string(kContentTypes.substr(1)), types.Markup()});
    return edit;
}

ZipEdit PackageState::TakeEdit() {
    ZipEdit edit = Edit();
    m_byKey.clear();
    m_byKey.rehash(0);
    parts.clear();
    types = {};
    return edit;
}

}  // namespace devkit::package
