#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
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

// The seeds of a case, one at least: the first one chooses the base document, and the mutations of each are
// done to what those of the seeds before it made.
using Chain = std::vector<std::uint64_t>;
// "1234/77/9001", and back; nothing for what is none.
[[nodiscard]] std::string TextOf(const Chain& chain);
[[nodiscard]] std::optional<Chain> ParseChain(std::string_view text);

// What the seeds say, with so many base documents: it is the same for the same number.
[[nodiscard]] FuzzCase CaseOf(const Chain& chain, std::size_t baseCount);

// The job itself.
struct BadJob {
    std::string package;
    Environment environment;
    std::vector<std::string> done;  // by each mutation, "a number set in 1.fpage"; empty where it did nothing
};
[[nodiscard]] BadJob MakeJob(const FuzzCase& fuzzCase, const std::vector<BaseDocument>& bases);

}  // namespace devkit::fuzz
