#pragma once

#include <string>
#include <vector>

#include "devkit/fuzz/random.h"
#include "devkit/package/rawarchive.h"

namespace devkit::fuzz {

// The entries of a package, in their order.
using Entries = std::vector<package::RawEntry>;

// Which entries a layer of mutations is about.
[[nodiscard]] bool IsPage(const package::RawEntry& entry);
[[nodiscard]] bool IsTicket(const package::RawEntry& entry);
// Content types, relationships, the sequence, documents: what says which parts there are.
[[nodiscard]] bool IsStructure(const package::RawEntry& entry);

// Each changes one thing and gives what was done, in a few words.
//
// Which parts there are, under which names, with which bytes.
std::string MutateParts(Entries& entries, Random& random);
// Markup of one of the entries that `isWanted`; nothing where there is none.
std::string MutateOne(Entries& entries, bool (*isWanted)(const package::RawEntry&), Random& random);
// What the archive says of an entry, which need not be true.
std::string MutateEntry(Entries& entries, Random& random);
// The bytes of the archive.
std::string MutateArchive(std::string& archive, Random& random);

}  // namespace devkit::fuzz
