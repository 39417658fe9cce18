#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "devkit/fuzz/basedocuments.h"
#include "devkit/fuzz/environment.h"

namespace devkit::fuzz {

// What a mutation changes.
enum class Layer : std::uint8_t {
    Page,        // the markup of a page
    Structure,   // content types, relationships, the sequence, documents
    Ticket,      // a ticket of the document
    Parts,       // which parts there are
    Entry,       // what the archive says of an entry
    Archive,     // the bytes of the archive
    Provider,    // the device, and what the print ticket provider answers
    Pipeline,    // what the pipeline answers, and when it cancels
    Properties,  // the property bags
    UserTicket,
};
[[nodiscard]] const char* NameOf(Layer layer) noexcept;

struct Mutation {
    Layer layer = Layer::Page;
    std::uint64_t seed = 0;
};

// A bad job: a good document and what is done to it. Each mutation has a seed of its own, so that it stays
// much the same when another is left out.
struct FuzzCase {
    std::size_t base = 0;  // of the base documents
    std::vector<Mutation> mutations;
};
// What the seed says, with so many base documents: it is the same for the same number.
[[nodiscard]] FuzzCase CaseOf(std::uint64_t seed, std::size_t baseCount);

// The job itself.
struct BadJob {
    std::string package;
    Environment environment;
    std::vector<std::string> done;  // by each mutation, "a number set in 1.fpage"; empty where it did nothing
};
[[nodiscard]] BadJob MakeJob(const FuzzCase& fuzzCase, const std::vector<BaseDocument>& bases);

}  // namespace devkit::fuzz
