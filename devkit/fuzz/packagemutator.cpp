#include "devkit/fuzz/packagemutator.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "devkit/common/text.h"
#include "devkit/fuzz/hostilevalues.h"
#include "devkit/fuzz/markupmutator.h"
#include "devkit/fuzz/markupscan.h"

namespace devkit::fuzz {
namespace {

using package::RawEntry;

// A document of UTF-16 has a zero in every second byte.
bool Mentions(const RawEntry& entry, std::string_view name) {
    if (entry.data.find(name) != std::string::npos) return true;
    std::string wide;
    for (const char letter : name) (wide += letter) += '\0';
    return entry.data.find(wide) != std::string::npos;
}

bool EndsWith(const RawEntry& entry, std::string_view end) {
    return entry.name.size() >= end.size() &&
           common::EqualIgnoringCase(std::string_view(entry.name).substr(entry.name.size() - end.size()),
                                     end);
}

std::string DropPart(Entries& entries, Random& random) {
    const auto dropped = entries.begin() + static_cast<std::ptrdiff_t>(random.Below(entries.size()));
    std::string done = "dropped " + dropped->name;
    entries.erase(dropped);
    return done;
}

std::string DoublePart(Entries& entries, Random& random) {
    const RawEntry copy = random.Pick(entries);
    entries.insert(entries.begin() + static_cast<std::ptrdiff_t>(random.Below(entries.size() + 1)), copy);
    return "doubled " + copy.name;
}

std::string RenamePart(Entries& entries, Random& random) {
    RawEntry& entry = entries[random.Below(entries.size())];
    std::string before = entry.name;
    const std::string name = HostileName(random);
    entry.name = name.starts_with('/') && !random.OneIn(4) ? name.substr(1) : name;
    entry.name.resize(std::min<std::size_t>(entry.name.size(), 0xFFFF));
    return "renamed " + before;
}

std::string RespellPart(Entries& entries, Random& random) {
    RawEntry& entry = entries[random.Below(entries.size())];
    if (entry.name.empty()) return {};
    char& letter = entry.name[random.Below(entry.name.size())];
    letter =
        letter == common::LowerAscii(letter) ? static_cast<char>(letter ^ 0x20) : common::LowerAscii(letter);
    return "respelt " + entry.name;
}

std::string SplitPart(Entries& entries, Random& random) {
    const std::size_t place = random.Below(entries.size());
    const RawEntry whole = entries[place];
    const std::size_t middle = random.Below(whole.data.size() + 1);
    // The second piece is the last one, or is not called so, or comes first.
    const char* const last = random.OneIn(4) ? "/[1].piece" : "/[1].last.piece";
    const std::string first = random.OneIn(8) ? "/[2].piece" : "/[0].piece";
    entries[place] = RawEntry(whole.name + first, whole.data.substr(0, middle));
    const RawEntry second(whole.name + last, whole.data.substr(middle));
    entries.insert(random.OneIn(4) ? entries.begin() : entries.end(), second);
    return "split " + whole.name;
}

std::string SwapBytes(Entries& entries, Random& random) {
    RawEntry& first = entries[random.Below(entries.size())];
    RawEntry& second = entries[random.Below(entries.size())];
    std::swap(first.data, second.data);
    return "swapped the bytes of " + first.name + " and " + second.name;
}

std::string EmptyPart(Entries& entries, Random& random) {
    RawEntry& entry = entries[random.Below(entries.size())];
    entry.data.clear();
    return "emptied " + entry.name;
}

std::string AddParts(Entries& entries, Random& random) {
    static constexpr std::array<std::size_t, 3> kCounts{1, 100, 3000};
    const std::size_t count = random.Pick(kCounts);
    for (std::size_t i = 0; i < count; ++i)
        entries.emplace_back("added/" + std::to_string(i) + ".xml", std::string("<a/>"));
    return "added " + common::Counted(count, "part");
}

// A value of a structure's attribute: another name, or that of another part.
std::string Retarget(Entries& entries, Random& random) {
    std::vector<RawEntry*> structures;
    for (RawEntry& entry : entries)
        if (IsStructure(entry)) structures.push_back(&entry);
    if (structures.empty()) return {};
    RawEntry& entry = *random.Pick(structures);
    const MarkupScan scan = ScanMarkup(entry.data);
    if (scan.attributes.empty()) return {};
    const Place place = random.Pick(scan.attributes).value;
    const std::string name = random.OneIn(2) ? HostileName(random) : "/" + random.Pick(entries).name;
    entry.data.replace(place.begin, place.Size(), name);
    return "retargeted in " + entry.name;
}

constexpr std::array kPartMutators{DropPart,  DoublePart, RenamePart, RespellPart, SplitPart,
                                   SwapBytes, EmptyPart,  AddParts,   Retarget,    Retarget};

}  // namespace

bool IsPage(const RawEntry& entry) { return Mentions(entry, "<FixedPage"); }

bool IsTicket(const RawEntry& entry) { return Mentions(entry, "PrintTicket"); }

bool IsStructure(const RawEntry& entry) {
    return EndsWith(entry, ".rels") || EndsWith(entry, "[Content_Types].xml") || EndsWith(entry, ".fdseq") ||
           EndsWith(entry, ".fdoc");
}

std::string MutateParts(Entries& entries, Random& random) {
    if (entries.empty()) return {};
    return random.Pick(kPartMutators)(entries, random);
}

std::string MutateOne(Entries& entries, bool (*isWanted)(const RawEntry&), Random& random) {
    std::vector<RawEntry*> wanted;
    for (RawEntry& entry : entries)
        if (isWanted(entry)) wanted.push_back(&entry);
    if (wanted.empty()) return {};
    RawEntry& entry = *random.Pick(wanted);
    return MutateMarkup(entry.data, random) + " in " + entry.name;
}

std::string MutateEntry(Entries& entries, Random& random) {
    static constexpr std::array<std::uint32_t, 7> kSizes{0,          1,          0x7FFFFFFF, 0x80000000,
                                                         0xFFFFFFFE, 0xFFFFFFFF, 4096};
    if (entries.empty()) return {};
    RawEntry& entry = entries[random.Below(entries.size())];
    switch (random.Below(7)) {
        case 0:
            entry.crc = static_cast<std::uint32_t>(random.Next());
            return "another checksum of " + entry.name;
        case 1:
            entry.size = random.Pick(kSizes);
            return "another size of " + entry.name;
        case 2:
            entry.compressedSize = random.Pick(kSizes);
            return "another compressed size of " + entry.name;
        case 3:
            entry.localOffset = random.OneIn(2) ? 0 : random.Pick(kSizes);
            return "another place of " + entry.name;
        case 4:
            entry.method = static_cast<std::uint16_t>(random.OneIn(2) ? 8 : random.Next());
            return "another method of " + entry.name;
        case 5:
            entry.data = package::DeflatedZeros(std::size_t{1} << random.Below(21));
            entry.method = 8;
            return "zeros for " + entry.name;
        default:
            entry.flags = static_cast<std::uint16_t>(1U << random.Below(16));
            return "a flag of " + entry.name;
    }
}

std::string MutateArchive(std::string& archive, Random& random) {
    if (archive.empty()) return {};
    const std::size_t at = random.Below(archive.size());
    const std::size_t size = std::min(std::size_t{1} << random.Below(12), archive.size() - at);
    switch (random.Below(6)) {
        case 0:
            archive[at] = static_cast<char>(archive[at] ^ (1 << random.Below(8)));
            return "a bit turned";
        case 1:
            for (std::size_t i = 0; i < 4 && at + i < archive.size(); ++i)
                archive[at + i] = static_cast<char>(random.OneIn(2) ? 0xFF : random.Below(256));
            return "bytes changed";
        case 2:
            archive.resize(at);
            return "the end cut off";
        case 3:
            archive.erase(at, size);
            return "a block cut out";
        case 4:
            archive.insert(at, archive.substr(random.Below(archive.size()), size));
            return "a block doubled";
        default:
            // Behind the data, in the directory.
            for (std::size_t i = 0; i < 2; ++i) {
                const std::size_t last = random.Below(std::min<std::size_t>(archive.size(), 256));
                archive[archive.size() - 1 - last] = static_cast<char>(random.Below(256));
            }
            return "bytes of the end changed";
    }
}

}  // namespace devkit::fuzz
