#include "devkit/fuzz/fuzzcase.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>

#include "devkit/fuzz/markupmutator.h"

namespace devkit::fuzz {
namespace {

struct LayerFacts {
    Layer layer;
    const char* name;
    unsigned share;  // of the cases that are mostly about it, in twentieths
};
constexpr std::array<LayerFacts, 10> kLayers{{{Layer::Page, "page", 7},
                                              {Layer::Structure, "structure", 2},
                                              {Layer::Ticket, "ticket", 4},
                                              {Layer::Parts, "parts", 1},
                                              {Layer::Entry, "entry", 1},
                                              {Layer::Archive, "archive", 1},
                                              {Layer::Provider, "provider", 1},
                                              {Layer::Pipeline, "pipeline", 1},
                                              {Layer::Properties, "properties", 1},
                                              {Layer::UserTicket, "user ticket", 1}}};

Layer PickLayer(Random& random) {
    std::size_t at = random.Below(20);
    for (const LayerFacts& each : kLayers) {
        if (at < each.share) return each.layer;
        at -= each.share;
    }
    return Layer::Page;
}

constexpr std::size_t kMostMutations = 6;

std::string Apply(const Mutation& mutation, Entries& entries, Environment& environment) {
    Random random(mutation.seed);
    switch (mutation.layer) {
        case Layer::Page:
            return MutateOne(entries, IsPage, random);
        case Layer::Structure:
            return MutateOne(entries, IsStructure, random);
        case Layer::Ticket:
            return MutateOne(entries, IsTicket, random);
        case Layer::Parts:
            return MutateParts(entries, random);
        case Layer::Entry:
            return MutateEntry(entries, random);
        case Layer::Provider:
            return MutateProvider(environment, random);
        case Layer::Pipeline:
            return MutatePipeline(environment, random);
        case Layer::Properties:
            return MutateProperties(environment, random);
        case Layer::UserTicket:
            return MutateUserTicket(environment, random);
        case Layer::Archive:
            break;
    }
    return {};
}

}  // namespace

const char* NameOf(Layer layer) noexcept { return kLayers[static_cast<std::size_t>(layer)].name; }

std::string TextOf(const Chain& chain) {
    std::string text;
    for (const std::uint64_t seed : chain) text += (text.empty() ? "" : "/") + std::to_string(seed);
    return text;
}

std::optional<Chain> ParseChain(std::string_view text) {
    Chain chain;
    for (;;) {
        std::uint64_t seed = 0;
        const auto [pEnd, error] = std::from_chars(text.data(), text.data() + text.size(), seed);
        if (error != std::errc()) return std::nullopt;
        chain.push_back(seed);
        text.remove_prefix(static_cast<std::size_t>(pEnd - text.data()));
        if (text.empty()) return chain;
        if (text.front() != '/') return std::nullopt;
        text.remove_prefix(1);
    }
}

FuzzCase CaseOf(const Chain& chain, std::size_t baseCount) {
    FuzzCase fuzzCase;
    for (std::size_t link = 0; link < chain.size(); ++link) {
        Random random(chain[link]);
        const std::size_t base = random.Below(baseCount);
        if (link == 0) fuzzCase.base = base;
        const Layer theme = PickLayer(random);
        const std::size_t count = 1 + std::min(random.Below(kMostMutations), random.Below(kMostMutations));
        for (std::size_t i = 0; i < count; ++i) {
            const Layer layer = random.OneIn(4) ? PickLayer(random) : theme;
            fuzzCase.mutations.push_back({layer, random.Next()});
        }
    }
    return fuzzCase;
}

BadJob MakeJob(const FuzzCase& fuzzCase, const std::vector<BaseDocument>& bases) {
    BadJob job;
    Entries entries = bases.at(fuzzCase.base).entries;
    for (const Mutation& mutation : fuzzCase.mutations)
        job.done.push_back(Apply(mutation, entries, job.environment));
    job.package = package::BuildZip(entries);
    // There is no archive before all else is done.
    for (std::size_t i = 0; i < fuzzCase.mutations.size(); ++i) {
        if (fuzzCase.mutations[i].layer != Layer::Archive) continue;
        Random random(fuzzCase.mutations[i].seed);
        job.done[i] = MutateArchive(job.package, random);
    }
    return job;
}

}  // namespace devkit::fuzz
