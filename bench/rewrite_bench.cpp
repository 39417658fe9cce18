#include <benchmark/benchmark.h>

#include <utility>

#include "base/xps/fixedpagesaxconvertor.h"
#include "bench/glyphpage.h"

namespace bench {
namespace {

constexpr std::int64_t kMegabyte = 1024 * 1024;

void Floor(benchmark::State& state) {
    GlyphPageStream page(static_cast<std::uint64_t>(state.range(0) * kMegabyte));
    for (auto _ : state) ParseOnly(page);
    state.SetBytesProcessed(static_cast<std::int64_t>(page.Size()) * state.iterations());
}

void Rewrite(benchmark::State& state) {
    GlyphPage page(static_cast<std::uint64_t>(state.range(0) * kMegabyte));
    for (auto _ : state) base::xps::FixedPageSaxConvertor().Convert(page);
    state.SetBytesProcessed(static_cast<std::int64_t>(page.input.Size()) * state.iterations());
}

// Each floor right before what it is the floor of.
const bool kRewritesRegistered = [] {
    for (const std::int64_t size : {1, 10, 100}) {
        for (const auto& [name, run] : {std::pair("Floor", &Floor), std::pair("Rewrite", &Rewrite)}) {
            benchmark::RegisterBenchmark(name, run)
                ->ArgName("MB")
                ->Arg(size)
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
        }
    }
    return true;
}();

}  // namespace
}  // namespace bench
