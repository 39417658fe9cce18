#pragma once

#include <cstddef>
#include <cstdint>

namespace devkit::common {

// How much markup may ask of the program that reads it. Markup beyond a limit is refused with an XmlError
// before the memory or the time is spent.
struct XmlLimits {
    std::size_t maxBytes = std::size_t{64} << 20;
    // Nested elements; the XML library allows no more than the default.
    int maxDepth = 256;
    // Of one element, namespace declarations among them.
    int maxAttributes = 4'096;
};

// The same for a package: one beyond a limit is refused with an Error. Sizes are bytes after decompression
// where not said otherwise.
struct Limits {
    // Entries of the zip archive. The default leaves room for two parts beside each page of a job that has as
    // many pages as maxReferences allows.
    std::uint64_t maxEntries = 300'000;
    // What is read of the file to list its entries.
    std::uint64_t maxDirectoryBytes = std::uint64_t{64} << 20;
    // One part, by its declared and by its real size.
    std::uint64_t maxPartBytes = std::uint64_t{512} << 20;
    // All parts together, by their declared sizes.
    std::uint64_t maxPackageBytes = std::uint64_t{8} << 30;
    // The content types, relationships, the sequence, a fixed document or a ticket: markup that is held as a
    // whole.
    XmlLimits structure;
    // A page, whose markup is read as it comes.
    XmlLimits page{.maxBytes = std::size_t{512} << 20};
    // Documents and pages that the sequence and the documents refer to, repetitions counted.
    std::size_t maxReferences = 100'000;
};

}  // namespace devkit::common
